#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

#include "gpu/Types.h"

namespace veloria::gpu::metal {

inline NSString* metalString(std::string_view text) {
  NSString* string = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
  return string == nil ? @"" : string;
}

/// Empty for nil.
inline std::string plainString(NSString* text) {
  const char* bytes = text.UTF8String;
  return bytes == nullptr ? std::string() : std::string(bytes);
}

/// Throws DeviceError with `what` and the error's text.
[[noreturn]] inline void fail(const std::string& what, NSError* error) {
  const std::string reason = plainString(error.localizedDescription);
  throw DeviceError(reason.empty() ? what : what + ": " + reason);
}

}  // namespace veloria::gpu::metal
