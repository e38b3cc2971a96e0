#include "platform/macos/screens/MacScreenProvider.h"

#import <AppKit/AppKit.h>
#import <dispatch/dispatch.h>

#include <utility>

#include "platform/macos/screens/ScreenList.h"
#include "platform/macos/text/MacText.h"

/// Listens for changes of the screens, and tells of those that come together once.
@interface VeloriaScreenObserver : NSObject
@property(nonatomic, copy) dispatch_block_t onChange;
@property(nonatomic) BOOL pending;
@end

@implementation VeloriaScreenObserver

- (void)screensChanged:(NSNotification*)notification {
  (void)notification;
  if (self.pending) return;
  self.pending = YES;
  __weak VeloriaScreenObserver* weakSelf = self;
  dispatch_async(dispatch_get_main_queue(), ^{
    [weakSelf tell];
  });
}

- (void)tell {
  self.pending = NO;
  if (self.onChange != nil) self.onChange();
}

@end

namespace veloria {

namespace {

Rect plainRect(NSRect rect) {
  return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

/// An area that is not there is told as one without a size.
std::optional<Rect> areaOf(NSRect rect) {
  if (NSIsEmptyRect(rect)) return std::nullopt;
  return plainRect(rect);
}

std::uint32_t screenNumber(NSScreen* screen) {
  id number = screen.deviceDescription[@"NSScreenNumber"];
  return [number isKindOfClass:[NSNumber class]] ? static_cast<NSNumber*>(number).unsignedIntValue : 0;
}

Screen describe(NSScreen* screen) {
  Screen described;
  described.number = screenNumber(screen);
  described.name = plainText(screen.localizedName);
  described.frame = plainRect(screen.frame);
  described.visibleFrame = plainRect(screen.visibleFrame);
  described.safeAreaTop = screen.safeAreaInsets.top;
  described.auxiliaryTopLeft = areaOf(screen.auxiliaryTopLeftArea);
  described.auxiliaryTopRight = areaOf(screen.auxiliaryTopRightArea);
  described.backingScale = screen.backingScaleFactor;
  described.statusBarThickness = [NSStatusBar systemStatusBar].thickness;
  return described;
}

}  // namespace

struct MacScreenProvider::Watch {
  VeloriaScreenObserver* observer = [[VeloriaScreenObserver alloc] init];
};

MacScreenProvider::MacScreenProvider() : watch_(std::make_unique<Watch>()) {
  [[NSNotificationCenter defaultCenter] addObserver:watch_->observer
                                           selector:@selector(screensChanged:)
                                               name:NSApplicationDidChangeScreenParametersNotification
                                             object:nil];
}

MacScreenProvider::~MacScreenProvider() {
  watch_->observer.onChange = nil;
  [[NSNotificationCenter defaultCenter] removeObserver:watch_->observer];
}

std::vector<Screen> MacScreenProvider::screens() {
  std::vector<Screen> told;
  @autoreleasepool {
    for (NSScreen* screen in [NSScreen screens]) told.push_back(describe(screen));
  }
  return checkedScreens(std::move(told));
}

std::optional<Screen> MacScreenProvider::mainScreen() {
  std::vector<Screen> told;
  @autoreleasepool {
    if (NSScreen* screen = [NSScreen mainScreen]; screen != nil) told.push_back(describe(screen));
  }
  told = checkedScreens(std::move(told));
  return told.empty() ? std::nullopt : std::optional(told.front());
}

void MacScreenProvider::setChangeHandler(std::function<void()> handler) {
  watch_->observer.onChange = ^{
    if (handler) handler();
  };
}

}  // namespace veloria
