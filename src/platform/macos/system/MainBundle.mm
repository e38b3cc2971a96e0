#include "platform/macos/system/MainBundle.h"

#import <Foundation/Foundation.h>

#include "platform/macos/text/MacText.h"

namespace veloria {

std::filesystem::path mainBundle() {
  @autoreleasepool {
    return plainText([NSBundle mainBundle].bundlePath);
  }
}

}  // namespace veloria
