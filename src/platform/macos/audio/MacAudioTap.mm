#include "platform/macos/audio/MacAudioTap.h"

#import <CoreMedia/CoreMedia.h>

#include <utility>

#include "SampleBufferAudio.h"
#include "platform/macos/audio/AudioBuffers.h"
#include "platform/macos/audio/AudioGate.h"
#include "platform/macos/audio/AudioTapSettings.h"
#include "platform/macos/stream/ScreenStream.h"

namespace veloria {

namespace {

using Settings = AudioTapSettings;

SCStreamConfiguration* configuration() {
  SCStreamConfiguration* configuration = [SCStreamConfiguration new];
  configuration.capturesAudio = YES;
  configuration.sampleRate = Settings::sampleRate;
  configuration.channelCount = Settings::channelCount;
  configuration.excludesCurrentProcessAudio = Settings::excludesOwnSound;
  configuration.width = Settings::pictureSide;
  configuration.height = Settings::pictureSide;
  configuration.minimumFrameInterval = CMTimeMake(Settings::secondsPerPicture, 1);
  configuration.queueDepth = Settings::queueDepth;
  return configuration;
}

StreamPlan plan(SCShareableContent* content) {
  SCDisplay* display = content.displays.firstObject;
  if (display == nil) return {.problem = Settings::noDisplay};
  SCContentFilter* filter = [[SCContentFilter alloc] initWithDisplay:display excludingWindows:@[]];
  return {.filter = filter, .configuration = configuration(), .problem = {}};
}

StreamRequest request(const std::shared_ptr<AudioGate>& gate) {
  StreamRequest request;
  request.queue = dispatch_queue_create(Settings::queueLabel, DISPATCH_QUEUE_SERIAL);
  request.outputs = {SCStreamOutputTypeScreen, SCStreamOutputTypeAudio};
  request.plan = plan;
  request.sample = [gate](CMSampleBufferRef buffer, SCStreamOutputType type) {
    if (type != SCStreamOutputTypeAudio) return gate->audio(pictureBlock());
    readAudio(buffer, [&](const AudioBlock& block) { gate->audio(block); });
  };
  request.started = [gate] { gate->started(); };
  request.failed = [gate](const std::string& reason) { gate->failed(reason); };
  return request;
}

}  // namespace

struct MacAudioTap::Run {
  std::shared_ptr<AudioGate> gate;
  VeloriaScreenStream* stream = nil;
};

MacAudioTap::MacAudioTap() = default;

MacAudioTap::~MacAudioTap() {
  stop();
}

void MacAudioTap::start(Handlers handlers) {
  stop();
  const auto gate = std::make_shared<AudioGate>(std::move(handlers));
  VeloriaScreenStream* stream = [[VeloriaScreenStream alloc] initWithRequest:request(gate)];
  run_ = std::make_unique<Run>(Run{gate, stream});
  [stream start];
}

void MacAudioTap::stop() {
  const auto run = std::exchange(run_, nullptr);
  if (!run) return;
  run->gate->close();
  [run->stream stop];
}

}  // namespace veloria
