#include "BarStreamPlan.h"

#import <CoreGraphics/CoreGraphics.h>
#import <CoreVideo/CoreVideo.h>
#include <unistd.h>

#include <vector>

#include "base/Log.h"
#include "platform/macos/capture/BarCaptureSettings.h"

namespace veloria {

namespace {

SCDisplay* displayIn(SCShareableContent* content, std::uint32_t wanted) {
  std::vector<std::uint32_t> numbers;
  for (SCDisplay* display in content.displays) numbers.push_back(display.displayID);
  const auto index = displayToCapture(numbers, wanted);
  return index ? content.displays[*index] : nil;
}

OwnContent ownOf(SCShareableContent* content) {
  std::vector<int> applications;
  std::vector<int> owners;
  for (SCRunningApplication* application in content.applications) applications.push_back(application.processID);
  for (SCWindow* window in content.windows) owners.push_back(window.owningApplication.processID);
  return ownContent(applications, owners, ::getpid());
}

NSArray* windowsOf(SCShareableContent* content, const std::vector<std::size_t>& indices) {
  NSMutableArray* windows = [NSMutableArray array];
  for (const std::size_t index : indices) [windows addObject:content.windows[index]];
  return windows;
}

SCContentFilter* filterOf(SCShareableContent* content, SCDisplay* display) {
  const OwnContent own = ownOf(content);
  if (own.application) {
    return [[SCContentFilter alloc] initWithDisplay:display
                              excludingApplications:@[ content.applications[*own.application] ]
                                   exceptingWindows:@[]];
  }
  NimbraLog::debugf("capture: app not listed, falling back to %zu windows", own.windows.size());
  return [[SCContentFilter alloc] initWithDisplay:display excludingWindows:windowsOf(content, own.windows)];
}

SCStreamConfiguration* configurationOf(const BarCaptureSettings& settings) {
  const Rect& rect = settings.sourceRect;
  SCStreamConfiguration* configuration = [SCStreamConfiguration new];
  configuration.sourceRect = CGRectMake(rect.x, rect.y, rect.width, rect.height);
  configuration.width = settings.pictures.width;
  configuration.height = settings.pictures.height;
  configuration.pixelFormat = kCVPixelFormatType_32BGRA;
  configuration.colorSpaceName = kCGColorSpaceSRGB;
  configuration.showsCursor = BarCaptureSettings::showsCursor;
  configuration.queueDepth = BarCaptureSettings::queueDepth;
  configuration.scalesToFit = BarCaptureSettings::scalesToFit;
  configuration.minimumFrameInterval = CMTimeMake(1, BarCaptureSettings::framesPerSecond);
  return configuration;
}

}  // namespace

StreamPlan barStreamPlan(SCShareableContent* content, const BarRegion& region) {
  SCDisplay* display = displayIn(content, region.displayID);
  if (display == nil) return {.problem = noDisplayToCapture};
  const auto settings = barCaptureSettings(region);
  if (!settings) return {.problem = "The menu bar has no size that could be captured."};
  return {.filter = filterOf(content, display), .configuration = configurationOf(*settings), .problem = {}};
}

}  // namespace veloria
