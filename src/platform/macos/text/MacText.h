#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

namespace veloria {

/// The system's text for UTF-8; empty for what is none.
NSString* systemText(std::string_view text);
/// UTF-8; empty for nil.
std::string plainText(NSString* text);

}  // namespace veloria
