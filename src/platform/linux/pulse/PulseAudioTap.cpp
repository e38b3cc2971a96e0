#include "platform/linux/pulse/PulseAudioTap.h"

#include <utility>

#include "PulseSession.h"

namespace veloria {

PulseAudioTap::PulseAudioTap() = default;

PulseAudioTap::~PulseAudioTap() = default;

void PulseAudioTap::start(Handlers handlers) {
  stop();
  session_ = std::make_unique<PulseSession>(std::move(handlers));
}

void PulseAudioTap::stop() {
  session_.reset();
}

}  // namespace veloria
