#include "sources/AudioSource.h"

#include <cstdio>
#include <utility>

#include "base/Log.h"

namespace veloria {

namespace {

bool isFloat32(const AudioFormat& format) {
  return format.isFloat && format.bitsPerChannel == 32;
}

bool isUsable(const AudioBlock& block) {
  return block.format && isFloat32(*block.format) && block.unreadable.empty() && !block.channels.empty();
}

std::string formatNote(const std::optional<AudioFormat>& format, const std::string& unreadable) {
  if (!format) return "no format description";
  char text[128];
  std::snprintf(text, sizeof text, "rate=%.10g ch=%u flags=%u bits=%u", format->sampleRate, format->channels,
                format->flags, format->bitsPerChannel);
  std::string note = text;
  if (!unreadable.empty()) return note + " " + unreadable;
  return isFloat32(*format) ? note : note + " notFloat";
}

}  // namespace

AudioSource::AudioSource(std::unique_ptr<AudioTap> tap) : tap_(std::move(tap)) {}

AudioSource::~AudioSource() {
  stop();
}

void AudioSource::start() {
  if (isRunning()) return;
  tap_->stop();
  analysis_.reset();
  {
    const std::lock_guard guard(lock_);
    isRunning_ = true;
    lastError_.reset();
  }
  tap_->start({.audio = [this](const AudioBlock& block) { receive(block); },
               .started = [] { NimbraLog::debug("audio capture started"); },
               .failed = [this](const std::string& text) { fail(text); }});
}

void AudioSource::stop() {
  {
    const std::lock_guard guard(lock_);
    isRunning_ = false;
    bands_ = {};
  }
  tap_->stop();
}

AudioSource::Bands AudioSource::bands() const {
  const std::lock_guard guard(lock_);
  return bands_;
}

bool AudioSource::isRunning() const {
  const std::lock_guard guard(lock_);
  return isRunning_;
}

std::optional<std::string> AudioSource::lastError() const {
  const std::lock_guard guard(lock_);
  return lastError_;
}

AudioSource::Diagnostics AudioSource::diagnostics() const {
  const std::lock_guard guard(lock_);
  return diagnostics_;
}

void AudioSource::receive(const AudioBlock& block) {
  if (block.isAudio) describe(block);
  const bool usable = block.isAudio && isUsable(block);
  const auto analyzed = usable ? analysis_.add(block.channels) : std::nullopt;
  const std::lock_guard guard(lock_);
  ++diagnostics_.callbackCount;
  diagnostics_.audioCallbackCount += block.isAudio ? 1 : 0;
  diagnostics_.decodeFailures += block.isAudio && !usable ? 1 : 0;
  // stop() may be waiting for this call.
  if (analyzed && isRunning_) bands_ = *analyzed;
}

void AudioSource::describe(const AudioBlock& block) {
  Description description{block.format, block.unreadable};
  if (described_ == description) return;
  described_ = std::move(description);
  std::string note = formatNote(block.format, block.unreadable);
  const std::lock_guard guard(lock_);
  diagnostics_.lastFormatNote = std::move(note);
}

void AudioSource::fail(const std::string& text) {
  {
    const std::lock_guard guard(lock_);
    if (!isRunning_) return;
    isRunning_ = false;
    lastError_ = text;
    bands_ = {};
  }
  NimbraLog::debug("audio capture failed: " + text);
}

}  // namespace veloria
