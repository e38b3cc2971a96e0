#include "platform/macos/system/MacSystem.h"

#import <AppKit/AppKit.h>
#import <ServiceManagement/ServiceManagement.h>

#include <utility>

#include "platform/macos/system/MacBasics.h"
#include "platform/macos/system/SystemRules.h"

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

SMAppService* service() {
  return SMAppService.mainAppService;
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

bool MacLoginItem::isRegistered() {
  return service().status == SMAppServiceStatusEnabled;
}

Result<Done> MacLoginItem::add() {
  if (isRegistered()) return Done{};
  NSError* error = nil;
  const bool added = [service() registerAndReturnError:&error];
  if (service().status == SMAppServiceStatusRequiresApproval) {
    return Failure{"allow Veloria in System Settings, General, Login Items"};
  }
  if (!added) return Failure{plainText(error.localizedDescription)};
  return Done{};
}

Result<Done> MacLoginItem::remove() {
  if (service().status == SMAppServiceStatusNotRegistered) return Done{};
  NSError* error = nil;
  if (![service() unregisterAndReturnError:&error]) return Failure{plainText(error.localizedDescription)};
  return Done{};
}

}  // namespace veloria
