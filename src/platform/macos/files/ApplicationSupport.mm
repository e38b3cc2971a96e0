#include "platform/macos/files/ApplicationSupport.h"

#import <Foundation/Foundation.h>

#include <string>

#include "base/Log.h"
#include "platform/macos/files/SupportPlace.h"
#include "platform/macos/text/MacText.h"

namespace veloria {

std::optional<std::filesystem::path> applicationSupportFolder() {
  @autoreleasepool {
    NSFileManager* files = [NSFileManager defaultManager];
    NSError* error = nil;
    NSURL* all = [files URLForDirectory:NSApplicationSupportDirectory
                               inDomain:NSUserDomainMask
                      appropriateForURL:nil
                                 create:YES
                                  error:&error];
    const std::filesystem::path own = std::filesystem::path(plainText(all.path)) / supportFolderName;
    if (all != nil && [files createDirectoryAtPath:systemText(own.native())
                          withIntermediateDirectories:YES
                                           attributes:nil
                                                error:&error]) {
      return own;
    }
    NimbraLog::debug("no Application Support folder: " + plainText(error.localizedDescription));
    return std::nullopt;
  }
}

}  // namespace veloria
