#include "platform/macos/system/MacSystem.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "platform/macos/system/SettingsPaneAddress.h"
#include "platform/macos/text/MacText.h"

namespace veloria {

namespace {

using Handler = std::function<void()>;

NSWorkspace* workspace() {
  return [NSWorkspace sharedWorkspace];
}

id observe(const std::shared_ptr<Handler>& handler) {
  const std::weak_ptr<Handler> told = handler;
  return [workspace().notificationCenter addObserverForName:NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification
                                                     object:nil
                                                      queue:[NSOperationQueue mainQueue]
                                                 usingBlock:^(NSNotification*) {
                                                   const auto kept = told.lock();
                                                   const Handler now =
                                                       kept ? *kept : nullptr;  // it may set another one
                                                   if (now) now();
                                                 }];
}

double glassTint() {
  id tint = [[NSUserDefaults standardUserDefaults] objectForKey:systemText(MacSystem::glassTintKey)];
  return [tint isKindOfClass:[NSNumber class]] ? [tint doubleValue] : 0;
}

}  // namespace

struct MacSystem::Observer {
  std::shared_ptr<Handler> handler = std::make_shared<Handler>();
  id token = nil;
};

MacSystem::MacSystem() : observer_(std::make_unique<Observer>()) {
  observer_->token = observe(observer_->handler);
}

MacSystem::~MacSystem() {
  [workspace().notificationCenter removeObserver:observer_->token];
}

SystemFacts MacSystem::facts() {
  @autoreleasepool {
    return {.reduceTransparency = workspace().accessibilityDisplayShouldReduceTransparency,
            .increaseContrast = workspace().accessibilityDisplayShouldIncreaseContrast,
            .glassTint = glassTint()};
  }
}

void MacSystem::setChangeHandler(std::function<void()> handler) {
  *observer_->handler = std::move(handler);
}

Result<Done> MacSystem::open(SystemPane pane) {
  @autoreleasepool {
    NSURL* address = [NSURL URLWithString:systemText(paneAddress(pane))];
    if (address != nil && [workspace() openURL:address]) return Done{};
    return Failure{"System Settings could not be opened. Open it yourself."};
  }
}

}  // namespace veloria
