#include "platform/macos/system/UserDefaultsStorage.h"

#import <Foundation/Foundation.h>

#include "base/Log.h"
#include "base/StrictJson.h"
#include "platform/macos/system/MacBasics.h"

namespace veloria {

std::optional<std::string> UserDefaultsStorage::read(std::string_view key) {
  @autoreleasepool {
    NSData* data = [[NSUserDefaults standardUserDefaults] dataForKey:systemText(key)];
    if (data == nil) return std::nullopt;
    if (data.length > maximumJsonBytes) {
      NimbraLog::debug("settings not read: too many bytes");
      return std::nullopt;
    }
    return std::string(static_cast<const char*>(data.bytes), data.length);
  }
}

bool UserDefaultsStorage::write(std::string_view key, std::string_view bytes) {
  @autoreleasepool {
    NSData* data = [NSData dataWithBytes:bytes.data() length:bytes.size()];
    [[NSUserDefaults standardUserDefaults] setObject:data forKey:systemText(key)];
    return true;
  }
}

}  // namespace veloria
