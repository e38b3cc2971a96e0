#include "platform/macos/windows/MacScreens.h"

#import <AppKit/AppKit.h>
#import <dispatch/dispatch.h>

#include <utility>

#include "platform/macos/system/MacBasics.h"
#include "platform/macos/windows/WindowRules.h"

/// Listens for changes of the screens, and reports those that come together once.
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

/// The system gives an empty rectangle for an area that does not exist.
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
  described.panelEdge = PanelEdge::top;
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
  std::vector<Screen> described;
  @autoreleasepool {
    for (NSScreen* screen in [NSScreen screens]) described.push_back(describe(screen));
  }
  return checkedScreens(std::move(described));
}

std::optional<Screen> MacScreenProvider::mainScreen() {
  std::vector<Screen> described;
  @autoreleasepool {
    if (NSScreen* screen = [NSScreen mainScreen]; screen != nil) described.push_back(describe(screen));
  }
  described = checkedScreens(std::move(described));
  return described.empty() ? std::nullopt : std::optional(described.front());
}

void MacScreenProvider::setChangeHandler(std::function<void()> handler) {
  watch_->observer.onChange = ^{
    if (handler) handler();
  };
}

PointerSource macPointerSource() {
  // The system's global coordinates are ours.
  return {.location = []() -> std::optional<Point> {
            const NSPoint now = NSEvent.mouseLocation;
            return Point{now.x, now.y};
          },
          .reason = {}};
}

}  // namespace veloria
