#include "platform/macos/sources/ScreenStream.h"

#import <Foundation/Foundation.h>

#include <utility>

#include "platform/macos/system/MacBasics.h"

using veloria::plainText;

@implementation VeloriaScreenStream {
  veloria::StreamRequest _request;
  SCStream* _stream;
  BOOL _ended;  // stopped or failed; main thread
}

- (instancetype)initWithRequest:(veloria::StreamRequest)request {
  self = [super init];
  if (self != nil) _request = std::move(request);
  return self;
}

- (void)start {
  __weak VeloriaScreenStream* weakSelf = self;
  [SCShareableContent getShareableContentExcludingDesktopWindows:YES
                                             onScreenWindowsOnly:YES
                                               completionHandler:^(SCShareableContent* content, NSError* error) {
                                                 dispatch_async(dispatch_get_main_queue(), ^{
                                                   [weakSelf useContent:content error:error];
                                                 });
                                               }];
}

- (void)stop {
  _ended = YES;
  [self endStream];
}

- (void)useContent:(SCShareableContent*)content error:(NSError*)error {
  if (_ended) return;
  if (content == nil) return [self fail:plainText(error.localizedDescription)];
  const veloria::StreamPlan plan = _request.plan(content);
  if (plan.filter == nil) return [self fail:plan.problem];
  _stream = [[SCStream alloc] initWithFilter:plan.filter configuration:plan.configuration delegate:self];
  if ([self addOutputs]) [self startCapture];
}

- (BOOL)addOutputs {
  for (const SCStreamOutputType type : _request.outputs) {
    NSError* error = nil;
    if ([_stream addStreamOutput:self type:type sampleHandlerQueue:_request.queue error:&error]) continue;
    [self fail:plainText(error.localizedDescription)];
    return NO;
  }
  return YES;
}

- (void)startCapture {
  __weak VeloriaScreenStream* weakSelf = self;
  SCStream* stream = _stream;
  [stream startCaptureWithCompletionHandler:^(NSError* error) {
    dispatch_async(dispatch_get_main_queue(), ^{
      VeloriaScreenStream* running = weakSelf;
      if (running != nil && !running->_ended) return [running startedWithError:error];
      // The stop came while it started, and may have had no effect.
      if (error == nil) [VeloriaScreenStream endStream:stream];
    });
  }];
}

- (void)startedWithError:(NSError*)error {
  if (error != nil) return [self fail:plainText(error.localizedDescription)];
  _request.started();
}

- (void)fail:(const std::string&)reason {
  if (_ended) return;
  _ended = YES;
  [self endStream];
  _request.failed(reason);
}

- (void)endStream {
  if (_stream != nil) [VeloriaScreenStream endStream:_stream];
  _stream = nil;
}

+ (void)endStream:(SCStream*)stream {
  [stream stopCaptureWithCompletionHandler:^(NSError*) {
    (void)stream;  // kept alive until it has stopped; an error does not matter
  }];
}

- (void)stream:(SCStream*)stream didOutputSampleBuffer:(CMSampleBufferRef)buffer ofType:(SCStreamOutputType)type {
  _request.sample(buffer, type);
}

- (void)stream:(SCStream*)stream didStopWithError:(NSError*)error {
  const std::string reason = plainText(error.localizedDescription);
  __weak VeloriaScreenStream* weakSelf = self;
  dispatch_async(dispatch_get_main_queue(), ^{
    [weakSelf fail:reason];
  });
}

@end
