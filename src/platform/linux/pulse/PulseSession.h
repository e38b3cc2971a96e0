#pragma once

#include <pulse/context.h>
#include <pulse/introspect.h>
#include <pulse/proplist.h>
#include <pulse/stream.h>
#include <pulse/subscribe.h>
#include <pulse/thread-mainloop.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/pulse/Monitor.h"
#include "ports/AudioTap.h"

namespace veloria {

struct PulseRelease {
  void operator()(pa_threaded_mainloop* loop) const { pa_threaded_mainloop_free(loop); }
  void operator()(pa_context* context) const { pa_context_unref(context); }
  void operator()(pa_stream* stream) const { pa_stream_unref(stream); }
  void operator()(pa_proplist* properties) const { pa_proplist_free(properties); }
};

template <typename T>
using PulsePtr = std::unique_ptr<T, PulseRelease>;

/// One run of PulseAudioTap, from connecting until the end. Made and destroyed on the main thread; while the loop's
/// thread runs, everything in it belongs to that thread.
class PulseSession {
 public:
  explicit PulseSession(AudioTap::Handlers handlers);
  /// Waits for the loop's thread to end; no handler runs afterwards.
  ~PulseSession();
  PulseSession(const PulseSession&) = delete;
  PulseSession& operator=(const PulseSession&) = delete;

 private:
  void connect();
  void onContextState();
  void watchOutputs();
  void onEvent(pa_subscription_event_type_t event);

  void findMonitor();
  void onServer(const pa_server_info* server);
  void onOutput(const pa_sink_info* output, int end);
  void monitorFound();
  void follow(const Monitor& monitor);

  void openStream(const Monitor& monitor);
  void onStreamState();
  void onStreamReady();
  void onStreamLost();
  void closeStream();
  bool recordsTheMonitor() const;

  void onReadable();
  void handOver(const void* data, std::size_t bytes);
  void handOverFrames(std::size_t frames);
  void handOverSilence();
  void expectMore();

  void await(pa_operation* operation);
  void fail(const std::string& text);
  std::string reason() const;
  void disconnect();

  static constexpr std::size_t maxFrames = 8192;

  AudioTap::Handlers handlers_;
  PulsePtr<pa_threaded_mainloop> loop_;
  PulsePtr<pa_context> context_;
  PulsePtr<pa_stream> stream_;
  pa_time_event* quiet_ = nullptr;  // owned by the loop
  bool connected_ = false;
  bool started_ = false;
  bool failed_ = false;

  bool finding_ = false;    // the server has been asked
  bool findAgain_ = false;  // the answer will be out of date
  std::optional<Output> output_;

  Monitor monitor_;  // of stream_, or of the previous one
  bool streamReady_ = false;
  std::optional<std::uint32_t> lostIndex_;  // the monitor whose stream was lost
  std::string lostReason_;

  std::array<float, maxFrames> left_{};
  std::array<float, maxFrames> right_{};
};

}  // namespace veloria
