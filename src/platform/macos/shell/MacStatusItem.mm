#include "platform/macos/shell/MacStatusItem.h"

#import <AppKit/AppKit.h>

#include <utility>
#include <vector>

#include "platform/macos/shell/StatusClick.h"
#include "platform/macos/system/MacBasics.h"

/// Called by the status item's button.
@interface VeloriaStatusButtonTarget : NSObject
@property(nonatomic, copy) dispatch_block_t onClick;
- (void)buttonClicked:(id)sender;
@end

@implementation VeloriaStatusButtonTarget

- (void)buttonClicked:(id)sender {
  (void)sender;
  if (self.onClick != nil) self.onClick();
}

@end

/// Called by the menus' items.
@interface VeloriaMenuTarget : NSObject
@property(nonatomic, copy) void (^onChoice)(NSInteger tag);
- (void)choose:(NSMenuItem*)item;
@end

@implementation VeloriaMenuTarget

- (void)choose:(NSMenuItem*)item {
  if (self.onChoice != nil) self.onChoice(item.tag);
}

@end

namespace veloria {

namespace {

constexpr CGFloat symbolSize = 15;
constexpr NSEventMask clicks = NSEventMaskLeftMouseUp | NSEventMaskRightMouseUp;
static_assert(static_cast<NSUInteger>(clicks) == 20);

NSImage* makeIcon() {
  NSImage* symbol = [NSImage imageWithSystemSymbolName:@"sparkles" accessibilityDescription:@"Veloria"];
  NSImageSymbolConfiguration* size = [NSImageSymbolConfiguration configurationWithPointSize:symbolSize
                                                                                     weight:NSFontWeightRegular];
  NSImage* icon = [symbol imageWithSymbolConfiguration:size];
  [icon setTemplate:YES];
  return icon;
}

std::optional<CurrentEvent> currentEvent() {
  NSEvent* event = [NSApplication sharedApplication].currentEvent;
  if (event == nil) return std::nullopt;
  return CurrentEvent{static_cast<std::uint64_t>(event.type), static_cast<std::uint64_t>(event.modifierFlags)};
}

/// Every item that can be chosen has its index in `items` as its tag, tells `target`, which must live as long as the
/// menu, and carries the item's value.
NSMenu* makeStatusMenu(const Menu& menu, VeloriaMenuTarget* target, std::vector<MenuItem>& items);

void giveState(NSMenuItem* line, const MenuItem& item) {
  line.enabled = item.enabled;
  if (item.checked) line.state = *item.checked ? NSControlStateValueOn : NSControlStateValueOff;
}

void giveAction(NSMenuItem* line, const MenuItem& item, VeloriaMenuTarget* target, std::vector<MenuItem>& items) {
  if (item.action == MenuAction::none) return;
  line.target = target;
  line.action = @selector(choose:);
  line.tag = static_cast<NSInteger>(items.size());
  if (!item.value.empty()) line.representedObject = systemText(item.value);
  items.push_back(item);
}

NSMenuItem* makeLine(const MenuItem& item, VeloriaMenuTarget* target, std::vector<MenuItem>& items) {
  if (item.separator) return [NSMenuItem separatorItem];
  NSMenuItem* line = [[NSMenuItem alloc] initWithTitle:systemText(item.title)
                                                action:nil
                                         keyEquivalent:systemText(item.keyEquivalent)];
  line.keyEquivalentModifierMask = NSEventModifierFlagCommand;
  giveState(line, item);
  giveAction(line, item, target, items);
  if (!item.submenu.empty()) line.submenu = makeStatusMenu(item.submenu, target, items);
  return line;
}

NSMenu* makeStatusMenu(const Menu& menu, VeloriaMenuTarget* target, std::vector<MenuItem>& items) {
  NSMenu* made = [[NSMenu alloc] initWithTitle:@""];
  made.autoenablesItems = NO;  // the model says which can be chosen
  for (const MenuItem& item : menu) [made addItem:makeLine(item, target, items)];
  return made;
}

}  // namespace

struct MacStatusItem::Parts {
  NSStatusItem* item = [[NSStatusBar systemStatusBar] statusItemWithLength:NSVariableStatusItemLength];
  VeloriaStatusButtonTarget* buttonTarget = [[VeloriaStatusButtonTarget alloc] init];
  VeloriaMenuTarget* menuTarget = [[VeloriaMenuTarget alloc] init];
  Handlers handlers;
  Menu menu;
  std::vector<MenuItem> shownItems;  // by the tags of the menu that was shown last

  void clicked() const {
    const StatusClick click = statusClick(currentEvent());
    const auto handler = handlers.clicked;  // may be replaced by what it does
    if (handler) handler(click.click, click.controlHeld);
  }

  void chosen(NSInteger tag) const {
    if (tag < 0 || static_cast<std::size_t>(tag) >= shownItems.size()) return;
    const MenuItem choice = shownItems[static_cast<std::size_t>(tag)];
    const auto handler = handlers.chosen;
    if (handler) handler(choice);
  }
};

MacStatusItem::MacStatusItem() : parts_(std::make_unique<Parts>()) {
  Parts* parts = parts_.get();
  parts->buttonTarget.onClick = ^{
    parts->clicked();
  };
  parts->menuTarget.onChoice = ^(NSInteger tag) {
    parts->chosen(tag);
  };
  NSStatusBarButton* button = parts->item.button;
  button.image = makeIcon();
  button.imagePosition = NSImageOnly;
  button.toolTip = @"Veloria — click for settings";
  button.target = parts->buttonTarget;
  button.action = @selector(buttonClicked:);
  [button sendActionOn:clicks];
}

MacStatusItem::~MacStatusItem() {
  parts_->buttonTarget.onClick = nil;
  parts_->menuTarget.onChoice = nil;
  [[NSStatusBar systemStatusBar] removeStatusItem:parts_->item];
}

void MacStatusItem::setHandlers(Handlers handlers) {
  parts_->handlers = std::move(handlers);
}

void MacStatusItem::setMenu(const Menu& menu) {
  parts_->menu = menu;
}

// With a menu of its own the item would open that on every click, so it has one for this click only.
void MacStatusItem::showMenu() {
  parts_->shownItems.clear();
  parts_->item.menu = makeStatusMenu(parts_->menu, parts_->menuTarget, parts_->shownItems);
  [parts_->item.button performClick:nil];
  parts_->item.menu = nil;
}

std::optional<Rect> MacStatusItem::place() const {
  NSWindow* window = parts_->item.button.window;
  NSScreen* first = [NSScreen screens].firstObject;
  if (window == nil || first == nil) return std::nullopt;
  const NSRect frame = window.frame;
  const CGFloat top = first.frame.origin.y + first.frame.size.height;
  return Rect{frame.origin.x, top - frame.origin.y - frame.size.height, frame.size.width, frame.size.height};
}

void* MacStatusItem::anchor() const {
  return (__bridge void*)parts_->item.button;
}

}  // namespace veloria
