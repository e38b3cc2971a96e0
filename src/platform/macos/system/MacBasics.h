#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <string>
#include <string_view>

namespace veloria {

/// The system's text for UTF-8; empty for invalid bytes.
NSString* systemText(std::string_view text);
/// UTF-8; empty for nil.
std::string plainText(NSString* text);

/// Runs `action` later on the main thread, whose owner has to serve its queue, as an application's event loop does. Any
/// thread.
void postToMainQueue(std::function<void()> action);

}  // namespace veloria
