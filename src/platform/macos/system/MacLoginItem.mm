#include "platform/macos/system/MacLoginItem.h"

#import <Foundation/Foundation.h>
#import <ServiceManagement/ServiceManagement.h>

#include "platform/macos/text/MacText.h"

namespace veloria {

namespace {

SMAppService* service() {
  return SMAppService.mainAppService;
}

}  // namespace

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
