#include "platform/macos/sources/MacAudioTap.h"

#import <CoreFoundation/CoreFoundation.h>
#import <CoreMedia/CoreMedia.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "platform/macos/sources/AudioBuffers.h"
#include "platform/macos/sources/AudioGate.h"
#include "platform/macos/sources/ScreenStream.h"

namespace veloria {

namespace {

/// All sound that this Mac plays, except this process's own.
struct Settings {
  static constexpr const char* queueLabel = "com.tollmere.Veloria.audio";
  static constexpr int sampleRate = 48000;
  static constexpr int channelCount = 2;
  static constexpr bool excludesOwnSound = true;
  /// The stream has to carry pictures too: as few and as small as possible.
  static constexpr int pictureSide = 2;
  static constexpr int secondsPerPicture = 1;
  static constexpr int queueDepth = 3;
  static constexpr const char* noDisplay = "No display to attach the audio tap to.";
};

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

StreamDescription description(const AudioStreamBasicDescription& told) {
  return {.sampleRate = told.mSampleRate,
          .formatID = told.mFormatID,
          .formatFlags = told.mFormatFlags,
          .channelsPerFrame = told.mChannelsPerFrame,
          .bitsPerChannel = told.mBitsPerChannel};
}

/// A sample buffer's list of buffers, and what keeps their memory.
class BufferList {
 public:
  BufferList() = default;
  ~BufferList() {
    if (memory_ != nullptr) CFRelease(memory_);
  }
  BufferList(const BufferList&) = delete;
  BufferList& operator=(const BufferList&) = delete;

  OSStatus askSize(CMSampleBufferRef buffer) {
    std::size_t bytes = 0;
    const OSStatus status = CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(buffer, &bytes, nullptr, 0, nullptr,
                                                                                    nullptr, 0, nullptr);
    // Never less than the list's head, which says how many buffers follow.
    list_.resize(bytes / sizeof(std::max_align_t) + sizeof(AudioBufferList) / sizeof(std::max_align_t) + 1);
    bytes_ = bytes;
    return status;
  }

  OSStatus fill(CMSampleBufferRef buffer) {
    return CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(
        buffer, nullptr, head(), bytes_, nullptr, nullptr, kCMSampleBufferFlag_AudioBufferList_Assure16ByteAlignment,
        &memory_);
  }

  std::vector<std::span<const std::byte>> buffers() {
    std::vector<std::span<const std::byte>> all;
    const AudioBuffer* first = head()->mBuffers;
    const std::size_t room = list_.size() * sizeof(std::max_align_t) - offsetof(AudioBufferList, mBuffers);
    const std::size_t count = std::min<std::size_t>(head()->mNumberBuffers, room / sizeof(AudioBuffer));
    for (const AudioBuffer& buffer : std::span(first, count)) {
      const auto* bytes = static_cast<const std::byte*>(buffer.mData);
      all.emplace_back(bytes, bytes == nullptr ? 0 : buffer.mDataByteSize);
    }
    return all;
  }

 private:
  AudioBufferList* head() { return reinterpret_cast<AudioBufferList*>(list_.data()); }

  std::vector<std::max_align_t> list_;
  std::size_t bytes_ = 0;
  CMBlockBufferRef memory_ = nullptr;
};

/// Calls `use` once, with a block that is valid during the call. A block without samples says why it has none.
void readAudio(CMSampleBufferRef buffer, const std::function<void(const AudioBlock&)>& use) {
  const CMFormatDescriptionRef format = CMSampleBufferGetFormatDescription(buffer);
  const auto* told = format == nullptr ? nullptr : CMAudioFormatDescriptionGetStreamBasicDescription(format);
  if (told == nullptr) return use(undescribedBlock());
  const AudioFormat known = audioFormat(description(*told));
  BufferList list;
  if (const OSStatus status = list.askSize(buffer); status != 0)
    return use(unreadableBlock(known, "sizeStatus", status));
  if (const OSStatus status = list.fill(buffer); status != 0) {
    return use(unreadableBlock(known, "bufferListStatus", status));
  }
  std::vector<std::span<const float>> channels;
  use(blockOf(known, list.buffers(), channels));
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
