#include "platform/macos/status/StatusMenu.h"

#include "platform/macos/text/MacText.h"

@implementation VeloriaMenuTarget

- (void)choose:(NSMenuItem*)item {
  if (self.onChoice != nil) self.onChoice(item.tag);
}

@end

namespace veloria {

namespace {

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

}  // namespace

NSMenu* makeStatusMenu(const Menu& menu, VeloriaMenuTarget* target, std::vector<MenuItem>& items) {
  NSMenu* made = [[NSMenu alloc] initWithTitle:@""];
  made.autoenablesItems = NO;  // the model says which can be chosen
  for (const MenuItem& item : menu) [made addItem:makeLine(item, target, items)];
  return made;
}

}  // namespace veloria
