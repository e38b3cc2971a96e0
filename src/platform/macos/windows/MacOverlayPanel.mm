#include <cmath>
#include <utility>

#include "platform/macos/windows/MacOverlayPanelFactory.h"
#include "platform/macos/windows/NimbraPanel.h"
#include "platform/macos/windows/WindowRules.h"

#import <QuartzCore/QuartzCore.h>

/// Passes the view's frames on.
@interface NimbraViewDelegate : NSObject <MTKViewDelegate>
@property(nonatomic, copy) dispatch_block_t onDraw;
@end

@implementation NimbraViewDelegate

- (void)drawInMTKView:(MTKView*)view {
  (void)view;
  if (self.onDraw != nil) self.onDraw();
}

// The renderer reads the size of each drawable.
- (void)mtkView:(MTKView*)view drawableSizeWillChange:(CGSize)size {
  (void)view;
  (void)size;
}

@end

namespace veloria {

namespace {

static_assert(MTLPixelFormatRGBA16Float == 115 && MTLPixelFormatBGRA8Unorm_sRGB == 81);

MTLPixelFormat viewFormat(gpu::PixelFormat wanted) {
  return wanted == gpu::PixelFormat::rgba16Float ? MTLPixelFormatRGBA16Float : MTLPixelFormatBGRA8Unorm_sRGB;
}

SystemLevels systemLevels() {
  return {.mainMenu = CGWindowLevelForKey(kCGMainMenuWindowLevelKey),
          .desktop = CGWindowLevelForKey(kCGDesktopWindowLevelKey)};
}

// Both have y growing upwards from the bottom left corner of the first screen.
NSRect systemRect(const Rect& rect) {
  return CGRectMake(rect.x, rect.y, rect.width, rect.height);
}

std::uint32_t wholePixels(CGFloat length) {
  return length > 0 ? static_cast<std::uint32_t>(std::lround(length)) : 0;
}

class MacOverlayPanel final : public OverlayPanel {
 public:
  MacOverlayPanel(const Screen& screen, const MetalSurfaceMaker& makeSurface, std::optional<long> debugLevel);
  ~MacOverlayPanel() override;

  gpu::Size drawableSize() const override;
  gpu::PixelFormat colorPixelFormat() const override;
  gpu::Drawable* currentDrawable() override;

  void setFrame(const Rect& frame, double scale) override;
  void setLevel(OverlayLevel level) override;
  std::string levelName(OverlayLevel level) const override;
  void setPixelFormat(gpu::PixelFormat wanted) override;
  void setPreferredFramesPerSecond(double rate) override;
  void setPaused(bool paused) override;
  void setDrawHandler(std::function<void()> handler) override;
  void orderFront() override;
  void orderOut() override;

 private:
  void configureSurface();

  std::optional<long> debugLevel_;
  gpu::PixelFormat wanted_ = gpu::PixelFormat::bgra8Unorm;
  NimbraMetalView* view_;
  NimbraPanel* panel_;
  NimbraViewDelegate* delegate_;
  std::unique_ptr<gpu::Surface> surface_;
};

MacOverlayPanel::MacOverlayPanel(const Screen& screen, const MetalSurfaceMaker& makeSurface,
                                 std::optional<long> debugLevel)
    : debugLevel_(debugLevel),
      view_([[NimbraMetalView alloc] initWithSize:CGSizeMake(screen.frame.width, screen.frame.height)]),
      panel_([[NimbraPanel alloc] initWithFrame:systemRect(screen.frame) view:view_]),
      delegate_([[NimbraViewDelegate alloc] init]),
      surface_(makeSurface((__bridge void*)view_.layer)) {
  // The surface gave the layer its device; a view without one never draws.
  view_.device = static_cast<CAMetalLayer*>(view_.layer).device;
  view_.delegate = delegate_;
}

MacOverlayPanel::~MacOverlayPanel() {
  delegate_.onDraw = nil;
  view_.paused = YES;
  view_.delegate = nil;
  [panel_ orderOut:nil];
  [panel_ close];
}

gpu::Size MacOverlayPanel::drawableSize() const {
  const CGSize size = view_.drawableSize;
  return {wholePixels(size.width), wholePixels(size.height)};
}

gpu::PixelFormat MacOverlayPanel::colorPixelFormat() const {
  return surface_->format();
}

gpu::Drawable* MacOverlayPanel::currentDrawable() {
  configureSurface();
  return surface_->nextDrawable();
}

void MacOverlayPanel::configureSurface() {
  surface_->configure(drawableSize(), wanted_);
}

// The view knows the scale itself.
void MacOverlayPanel::setFrame(const Rect& frame, double) {
  const NSRect wanted = systemRect(frame);
  if (!NSEqualRects(wanted, panel_.frame)) [panel_ setFrame:wanted display:YES];
  configureSurface();
}

void MacOverlayPanel::setLevel(OverlayLevel level) {
  panel_.level = windowLevel(level, debugLevel_, systemLevels());
}

std::string MacOverlayPanel::levelName(OverlayLevel level) const {
  return std::to_string(windowLevel(level, debugLevel_, systemLevels()));
}

void MacOverlayPanel::setPixelFormat(gpu::PixelFormat wanted) {
  wanted_ = wanted;
  const MTLPixelFormat format = viewFormat(wanted);
  if (view_.colorPixelFormat != format) view_.colorPixelFormat = format;
  configureSurface();
  [view_ configureLayerForHdr:wanted == gpu::PixelFormat::rgba16Float];
}

void MacOverlayPanel::setPreferredFramesPerSecond(double rate) {
  view_.preferredFramesPerSecond = viewFrameRate(rate);
}

void MacOverlayPanel::setPaused(bool paused) {
  view_.paused = paused;
}

void MacOverlayPanel::setDrawHandler(std::function<void()> handler) {
  if (!handler) {
    delegate_.onDraw = nil;
    return;
  }
  delegate_.onDraw = ^{
    handler();
  };
}

void MacOverlayPanel::orderFront() {
  [panel_ orderFrontRegardless];
}

void MacOverlayPanel::orderOut() {
  [panel_ orderOut:nil];
}

}  // namespace

MacOverlayPanelFactory::MacOverlayPanelFactory(MetalSurfaceMaker makeSurface, std::optional<long> debugLevel)
    : makeSurface_(std::move(makeSurface)), debugLevel_(debugLevel) {}

std::unique_ptr<OverlayPanel> MacOverlayPanelFactory::makePanel(const Screen& screen) {
  @autoreleasepool {
    return std::make_unique<MacOverlayPanel>(screen, makeSurface_, debugLevel_);
  }
}

Visibility MacOverlayPanelFactory::visibility(const Screen&, const Rect&, OverlayLevel level) {
  const std::string hint =
      menuBarHint(level, [NSWorkspace sharedWorkspace].accessibilityDisplayShouldReduceTransparency);
  return {hint.empty() ? Visibility::Kind::seen : Visibility::Kind::mayBeHidden, hint};
}

}  // namespace veloria
