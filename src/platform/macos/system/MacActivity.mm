#include "platform/macos/system/MacActivity.h"

#import <AppKit/AppKit.h>
#import <IOKit/ps/IOPowerSources.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/macos/system/MacBasics.h"
#include "platform/macos/system/SystemRules.h"

namespace veloria {

namespace {

using Handler = std::function<void(ActivityNotification)>;

NSNotificationCenter* workspaceCenter() {
  return [NSWorkspace sharedWorkspace].notificationCenter;
}

id observe(NSString* name, ActivityNotification notification, const std::shared_ptr<Handler>& handler) {
  const std::weak_ptr<Handler> told = handler;
  return [workspaceCenter() addObserverForName:name
                                        object:nil
                                         queue:[NSOperationQueue mainQueue]
                                    usingBlock:^(NSNotification*) {
                                      const auto kept = told.lock();
                                      const Handler now = kept ? *kept : nullptr;  // it may set another one
                                      if (now) now(notification);
                                    }];
}

std::string stateOf(NSDictionary* description) {
  id state = description[systemText(powerSourceStateKey)];
  return [state isKindOfClass:[NSString class]] ? plainText(state) : std::string();
}

}  // namespace

struct MacActivity::Observers {
  std::shared_ptr<Handler> handler = std::make_shared<Handler>();
  std::vector<id> tokens;
};

MacActivity::MacActivity() : observers_(std::make_unique<Observers>()) {
#define VELORIA_OBSERVE(NAME, NOTIFICATION) \
  observers_->tokens.push_back(observe(NAME, Notification::NOTIFICATION, observers_->handler));
  VELORIA_WORKSPACE_NOTIFICATIONS(VELORIA_OBSERVE)
#undef VELORIA_OBSERVE
}

MacActivity::~MacActivity() {
  for (id token : observers_->tokens) [workspaceCenter() removeObserver:token];
}

void MacActivity::setHandler(std::function<void(Notification)> handler) {
  *observers_->handler = std::move(handler);
}

bool MacActivity::isOnBattery() {
  std::vector<std::string> states;
  @autoreleasepool {
    id snapshot = (__bridge_transfer id)IOPSCopyPowerSourcesInfo();
    if (snapshot == nil) return false;
    NSArray* sources = (__bridge_transfer NSArray*)IOPSCopyPowerSourcesList((__bridge CFTypeRef)snapshot);
    for (id source in sources) {
      const CFTypeRef list = (__bridge CFTypeRef)snapshot;
      states.push_back(
          stateOf((__bridge NSDictionary*)IOPSGetPowerSourceDescription(list, (__bridge CFTypeRef)source)));
    }
  }
  return isBatteryPower(states);
}

}  // namespace veloria
