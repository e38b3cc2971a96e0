#pragma once

#import <CoreMedia/CoreMedia.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>
#import <dispatch/dispatch.h>

#include <functional>
#include <string>
#include <vector>

namespace veloria {

/// What a stream shows and how; where `filter` is nil, `problem` says why there is none.
struct StreamPlan {
  SCContentFilter* filter = nil;
  SCStreamConfiguration* configuration = nil;
  std::string problem;
};

/// What a stream needs to know. The functions that run on the main thread do so before ScreenStream's stop only.
struct StreamRequest {
  dispatch_queue_t queue = nil;  ///< serial
  std::vector<SCStreamOutputType> outputs;
  /// Main thread, once: decides what is captured of what there is.
  std::function<StreamPlan(SCShareableContent*)> plan;
  /// On `queue`, also for a moment after a stop. Must not throw.
  std::function<void(CMSampleBufferRef, SCStreamOutputType)> sample;
  std::function<void()> started;                   ///< main thread, once
  std::function<void(const std::string&)> failed;  ///< main thread, the last call of all, with a sentence for a person
};

}  // namespace veloria

/// One run of a screen capture: asks what can be captured, starts, hands over buffers and ends. Main thread.
@interface VeloriaScreenStream : NSObject <SCStreamDelegate, SCStreamOutput>
- (instancetype)initWithRequest:(veloria::StreamRequest)request;
/// Once.
- (void)start;
/// Ends it, without waiting. In any state.
- (void)stop;
@end
