#include "gpu/metal/MetalError.h"

#include "gpu/Types.h"

namespace veloria::gpu::metal {

void fail(const std::string& what, NSError* error) {
  const std::string reason = plainString(error.localizedDescription);
  throw DeviceError(reason.empty() ? what : what + ": " + reason);
}

NSString* metalString(std::string_view text) {
  NSString* string = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
  return string == nil ? @"" : string;
}

std::string plainString(NSString* text) {
  const char* bytes = text.UTF8String;
  return bytes == nullptr ? std::string() : std::string(bytes);
}

}  // namespace veloria::gpu::metal
