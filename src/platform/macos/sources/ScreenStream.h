#pragma once

#import <CoreMedia/CoreMedia.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>
#import <dispatch/dispatch.h>

#include <functional>
#include <string>
#include <vector>

namespace veloria {

/// What a stream captures and how; if `filter` is nil, `problem` says why.
struct StreamPlan {
  SCContentFilter* filter = nil;
  SCStreamConfiguration* configuration = nil;
  std::string problem;
};

/// What a stream needs. The functions for the main thread are not called after the stream's stop.
struct StreamRequest {
  dispatch_queue_t queue = nil;  ///< serial
  std::vector<SCStreamOutputType> outputs;
  /// Main thread, once: decides what to capture of the content that exists.
  std::function<StreamPlan(SCShareableContent*)> plan;
  /// On `queue`, possibly for a moment after a stop. Must not throw.
  std::function<void(CMSampleBufferRef, SCStreamOutputType)> sample;
  std::function<void()> started;                   ///< main thread, once
  std::function<void(const std::string&)> failed;  ///< main thread, the last call; a message for a person
};

}  // namespace veloria

/// One run of a screen capture: lists the content, starts, delivers buffers and ends. Main thread.
@interface VeloriaScreenStream : NSObject <SCStreamDelegate, SCStreamOutput>
- (instancetype)initWithRequest:(veloria::StreamRequest)request;
/// Once.
- (void)start;
/// Ends it in any state, without waiting.
- (void)stop;
@end
