#include "platform/macos/shell/MacApplication.h"

#import <AppKit/AppKit.h>

#include "platform/macos/system/MacBasics.h"

namespace veloria {

void becomeAccessory() {
  [[NSApplication sharedApplication] setActivationPolicy:NSApplicationActivationPolicyAccessory];
}

void showCriticalAlert(const std::string& message, const std::string& informative) {
  @autoreleasepool {
    NSAlert* alert = [[NSAlert alloc] init];
    alert.alertStyle = NSAlertStyleCritical;
    alert.messageText = systemText(message);
    alert.informativeText = systemText(informative);
    // Without a Dock icon it would open behind other windows.
    [[NSApplication sharedApplication] activateIgnoringOtherApps:YES];
    [alert runModal];
  }
}

void writeToSystemLog(std::string_view line) {
  @autoreleasepool {
    NSLog(@"%@", systemText(line));
  }
}

std::filesystem::path mainBundle() {
  @autoreleasepool {
    return plainText([NSBundle mainBundle].bundlePath);
  }
}

}  // namespace veloria
