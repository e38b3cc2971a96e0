#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

namespace veloria::gpu::metal {

/// Throws DeviceError: what was asked, and what came back.
[[noreturn]] void fail(const std::string& what, NSError* error);

NSString* metalString(std::string_view text);
/// Empty for nil.
std::string plainString(NSString* text);

}  // namespace veloria::gpu::metal
