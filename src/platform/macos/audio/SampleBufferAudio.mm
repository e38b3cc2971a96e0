#include "SampleBufferAudio.h"

#import <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "platform/macos/audio/AudioBuffers.h"

namespace veloria {

namespace {

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

}  // namespace

void readAudio(CMSampleBufferRef buffer, const std::function<void(const AudioBlock&)>& take) {
  const CMFormatDescriptionRef format = CMSampleBufferGetFormatDescription(buffer);
  const auto* told = format == nullptr ? nullptr : CMAudioFormatDescriptionGetStreamBasicDescription(format);
  if (told == nullptr) return take(undescribedBlock());
  const AudioFormat known = audioFormat(description(*told));
  BufferList list;
  if (const OSStatus status = list.askSize(buffer); status != 0)
    return take(unreadableBlock(known, "sizeStatus", status));
  if (const OSStatus status = list.fill(buffer); status != 0) {
    return take(unreadableBlock(known, "bufferListStatus", status));
  }
  std::vector<std::span<const float>> channels;
  take(blockOf(known, list.buffers(), channels));
}

}  // namespace veloria
