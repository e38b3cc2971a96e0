#include "gpu/recording/RecordingLog.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace veloria::gpu::recording {

void Call::requireByteCount(std::size_t count) const {
  if (bytes.size() == count) return;
  throw std::length_error(function + " was given " + std::to_string(bytes.size()) + " bytes, not " +
                          std::to_string(count));
}

std::vector<Call> RecordingLog::ofKind(CallKind kind) const {
  std::vector<Call> found;
  std::copy_if(calls_.begin(), calls_.end(), std::back_inserter(found),
               [&](const Call& call) { return call.kind == kind; });
  return found;
}

std::size_t RecordingLog::count(CallKind kind) const {
  return static_cast<std::size_t>(
      std::count_if(calls_.begin(), calls_.end(), [&](const Call& call) { return call.kind == kind; }));
}

std::vector<std::string> RecordingLog::functions() const {
  std::vector<std::string> functions;
  for (const Call& call : calls_) {
    if (call.kind == CallKind::run) functions.push_back(call.function);
  }
  return functions;
}

}  // namespace veloria::gpu::recording
