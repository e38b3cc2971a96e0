#include "platform/macos/text/MacText.h"

namespace veloria {

NSString* systemText(std::string_view text) {
  NSString* string = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
  return string == nil ? @"" : string;
}

std::string plainText(NSString* text) {
  const char* bytes = text.UTF8String;
  return bytes == nullptr ? std::string() : std::string(bytes);
}

}  // namespace veloria
