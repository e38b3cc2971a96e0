#pragma once

#import <AppKit/AppKit.h>

#include <functional>
#include <vector>

#include "ports/Menu.h"

/// Called by the menus' items.
@interface VeloriaMenuTarget : NSObject
@property(nonatomic, copy) void (^onChoice)(NSInteger tag);
- (void)choose:(NSMenuItem*)item;
@end

namespace veloria {

/// A menu of the system's, made from `menu`. Every item that can be chosen has its place in `items` as its tag, tells
/// `target`, which must live as long as the menu, and carries the item's value.
NSMenu* makeStatusMenu(const Menu& menu, VeloriaMenuTarget* target, std::vector<MenuItem>& items);

}  // namespace veloria
