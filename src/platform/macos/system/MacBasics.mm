#include "platform/macos/system/MacBasics.h"

#import <dispatch/dispatch.h>

#include <memory>
#include <utility>

namespace veloria {

NSString* systemText(std::string_view text) {
  NSString* string = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
  return string == nil ? @"" : string;
}

std::string plainText(NSString* text) {
  const char* bytes = text.UTF8String;
  return bytes == nullptr ? std::string() : std::string(bytes);
}

void postToMainQueue(std::function<void()> action) {
  const auto kept = std::make_shared<std::function<void()>>(std::move(action));
  dispatch_async(dispatch_get_main_queue(), ^{
    (*kept)();
  });
}

}  // namespace veloria
