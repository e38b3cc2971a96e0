#include "platform/macos/sources/AudioGate.h"

#include <utility>

namespace veloria {

AudioGate::AudioGate(AudioTap::Handlers handlers) : handlers_(std::move(handlers)) {}

void AudioGate::started() {
  const std::lock_guard guard(lock_);
  if (!closed_) tellStarted();
}

void AudioGate::audio(const AudioBlock& block) {
  const std::lock_guard guard(lock_);
  if (closed_) return;
  tellStarted();
  handlers_.audio(block);
}

void AudioGate::failed(const std::string& text) {
  const std::lock_guard guard(lock_);
  if (!std::exchange(closed_, true)) handlers_.failed(text);
}

void AudioGate::close() {
  const std::lock_guard guard(lock_);
  closed_ = true;
}

void AudioGate::tellStarted() {
  if (!std::exchange(started_, true)) handlers_.started();
}

}  // namespace veloria
