#include "platform/linux/pulse/PulseAudioTap.h"

#include <pulse/context.h>
#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/proplist.h>
#include <pulse/rtclock.h>
#include <pulse/stream.h>
#include <pulse/subscribe.h>
#include <pulse/thread-mainloop.h>
#include <pulse/timeval.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "platform/linux/pulse/Monitor.h"
#include "sources/AudioAnalysis.h"

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

namespace {

constexpr std::uint32_t sampleRate = 48000;
constexpr std::uint32_t fragmentFrames = 1024;
constexpr std::size_t frameBytes = 2 * sizeof(float);
constexpr pa_usec_t patience = 200 * PA_USEC_PER_MSEC;
constexpr pa_sample_spec sampleSpec{PA_SAMPLE_FLOAT32NE, sampleRate, 2};
constexpr AudioFormat audioFormat{sampleRate, 2, PA_SAMPLE_FLOAT32NE, 32, true};

PulseSession& session(void* pointer) {
  return *static_cast<PulseSession*>(pointer);
}

PulsePtr<pa_context> makeContext(pa_mainloop_api* api) {
  const PulsePtr<pa_proplist> properties(pa_proplist_new());
  pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, "Veloria");
  pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, "veloria");
  return PulsePtr<pa_context>(pa_context_new_with_proplist(api, nullptr, properties.get()));
}

std::string orEmpty(const char* text) {
  return text != nullptr ? text : "";
}

}  // namespace

PulseSession::PulseSession(AudioTap::Handlers handlers)
    : handlers_(std::move(handlers)), loop_(pa_threaded_mainloop_new()) {
  if (!loop_) {
    fail("The sound client can't be set up.");
    return;
  }
  pa_threaded_mainloop_set_name(loop_.get(), "veloria-audio");
  // Connecting reads files and may ask the display server for the sound server's address: not for the main thread.
  pa_mainloop_api* api = pa_threaded_mainloop_get_api(loop_.get());
  const auto begin = [](pa_mainloop_api* own, pa_defer_event* event, void* self) {
    own->defer_enable(event, 0);
    session(self).connect();
  };
  api->defer_new(api, begin, this);
  if (pa_threaded_mainloop_start(loop_.get()) < 0) fail("The sound client's thread can't be started.");
}

PulseSession::~PulseSession() {
  if (loop_) pa_threaded_mainloop_stop(loop_.get());
  disconnect();
  stream_.reset();
  context_.reset();
}

void PulseSession::connect() {
  context_ = makeContext(pa_threaded_mainloop_get_api(loop_.get()));
  if (!context_) return fail("The sound client can't be set up.");
  const auto changed = [](pa_context*, void* self) { session(self).onContextState(); };
  pa_context_set_state_callback(context_.get(), changed, this);
  if (pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
    fail("The sound server can't be reached: " + reason() + ".");
  }
}

void PulseSession::onContextState() {
  switch (pa_context_get_state(context_.get())) {
    case PA_CONTEXT_READY:
      connected_ = true;
      watchOutputs();
      findMonitor();
      break;
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
      fail((connected_ ? "The sound server went away: " : "The sound server can't be reached: ") + reason() + ".");
      break;
    default:
      break;
  }
}

void PulseSession::watchOutputs() {
  const auto onQuiet = [](pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
    session(self).handOverSilence();
  };
  quiet_ = pa_context_rttime_new(context_.get(), PA_USEC_INVALID, onQuiet, this);
  const auto heard = [](pa_context*, pa_subscription_event_type_t event, std::uint32_t, void* self) {
    session(self).onEvent(event);
  };
  pa_context_set_subscribe_callback(context_.get(), heard, this);
  constexpr auto mask = static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SERVER | PA_SUBSCRIPTION_MASK_SINK);
  await(pa_context_subscribe(context_.get(), mask, nullptr, nullptr));
}

void PulseSession::onEvent(pa_subscription_event_type_t event) {
  const int facility = event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK;
  const int kind = event & PA_SUBSCRIPTION_EVENT_TYPE_MASK;
  // An output's own changes are its volume and the like, many per second while the user turns the knob.
  if (facility == PA_SUBSCRIPTION_EVENT_SINK && kind == PA_SUBSCRIPTION_EVENT_CHANGE) return;
  findMonitor();
}

void PulseSession::findMonitor() {
  if (failed_) return;
  findAgain_ = finding_;
  if (finding_) return;
  finding_ = true;
  output_.reset();
  const auto answered = [](pa_context*, const pa_server_info* info, void* self) { session(self).onServer(info); };
  await(pa_context_get_server_info(context_.get(), answered, this));
}

void PulseSession::onServer(const pa_server_info* server) {
  if (server == nullptr) return fail("The sound server does not report its default output: " + reason() + ".");
  if (orEmpty(server->default_sink_name).empty()) return monitorFound();
  const auto answered = [](pa_context*, const pa_sink_info* info, int end, void* self) {
    session(self).onOutput(info, end);
  };
  await(pa_context_get_sink_info_by_name(context_.get(), server->default_sink_name, answered, this));
}

void PulseSession::onOutput(const pa_sink_info* output, int end) {
  if (end != 0) {
    // An output that has vanished in between is not a failure: the server reports the next one.
    const bool refused = end < 0 && pa_context_errno(context_.get()) != PA_ERR_NOENTITY;
    return refused ? fail("The sound server does not describe its output: " + reason() + ".") : monitorFound();
  }
  output_ = Output{orEmpty(output->description), output->monitor_source, orEmpty(output->monitor_source_name)};
}

void PulseSession::monitorFound() {
  finding_ = false;
  if (findAgain_) return findMonitor();
  if (!output_) return;
  const Result<Monitor> monitor = monitorOf(*output_);
  monitor ? follow(*monitor) : fail(monitor.error());
}

void PulseSession::follow(const Monitor& monitor) {
  if (stream_ && monitor.index == monitor_.index) return;
  // A stream that is still being made can't be closed. Once it is ready, findMonitor() runs again. (PulseAudio answers
  // in order, so it is ready by now; other servers may not.)
  if (stream_ && !streamReady_) return;
  if (monitor.index == lostIndex_) return fail("The sound server refuses the recording: " + lostReason_ + ".");
  openStream(monitor);
}

void PulseSession::openStream(const Monitor& monitor) {
  closeStream();
  monitor_ = monitor;
  stream_.reset(pa_stream_new(context_.get(), "What is playing", &sampleSpec, nullptr));
  if (!stream_) return fail("The sound server refuses the recording: " + reason() + ".");
  pa_stream_set_state_callback(
      stream_.get(), [](pa_stream*, void* self) { session(self).onStreamState(); }, this);
  pa_stream_set_moved_callback(
      stream_.get(), [](pa_stream*, void* self) { session(self).onStreamState(); }, this);
  const auto readable = [](pa_stream*, std::size_t, void* self) { session(self).onReadable(); };
  pa_stream_set_read_callback(stream_.get(), readable, this);

  constexpr auto byServer = static_cast<std::uint32_t>(-1);
  const pa_buffer_attr buffer{byServer, byServer, byServer, byServer, fragmentFrames * frameBytes};
  constexpr auto flags = static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE |
                                                        PA_STREAM_DONT_INHIBIT_AUTO_SUSPEND | PA_STREAM_START_UNMUTED);
  if (pa_stream_connect_record(stream_.get(), monitor.name.c_str(), &buffer, flags) < 0) {
    fail("The sound server refuses the recording: " + reason() + ".");
  }
}

void PulseSession::onStreamState() {
  switch (pa_stream_get_state(stream_.get())) {
    case PA_STREAM_READY:
      return onStreamReady();
    case PA_STREAM_FAILED:
    case PA_STREAM_TERMINATED:
      return onStreamLost();
    default:
      return;
  }
}

void PulseSession::onStreamReady() {
  if (!recordsTheMonitor()) return fail("The sound server offers a source other than the output's monitor.");
  const bool first = !std::exchange(started_, true);
  streamReady_ = true;
  lostIndex_.reset();
  if (first) handlers_.started();
  findMonitor();
}

void PulseSession::onStreamLost() {
  lostIndex_ = monitor_.index;
  lostReason_ = reason();
  closeStream();
  findMonitor();
}

void PulseSession::closeStream() {
  if (!stream_) return;
  pa_stream_set_state_callback(stream_.get(), nullptr, nullptr);
  pa_stream_set_moved_callback(stream_.get(), nullptr, nullptr);
  pa_stream_set_read_callback(stream_.get(), nullptr, nullptr);
  pa_stream_disconnect(stream_.get());
  stream_.reset();
  streamReady_ = false;
}

bool PulseSession::recordsTheMonitor() const {
  return orEmpty(pa_stream_get_device_name(stream_.get())) == monitor_.name;
}

void PulseSession::onReadable() {
  if (!streamReady_) return;
  const void* data = nullptr;
  std::size_t bytes = 0;
  while (pa_stream_peek(stream_.get(), &data, &bytes) == 0 && bytes > 0) {
    handOver(data, bytes);
    pa_stream_drop(stream_.get());
  }
  expectMore();
}

/// `data` is null for a hole in the recording, which counts as silence.
void PulseSession::handOver(const void* data, std::size_t bytes) {
  const auto* from = static_cast<const std::byte*>(data);
  for (std::size_t done = 0; done + frameBytes <= bytes;) {
    std::size_t frames = std::min((bytes - done) / frameBytes, maxFrames);
    if (from != nullptr) {
      deinterleave({from + done, frames * frameBytes}, left_, right_);
    } else {
      std::fill_n(left_.begin(), frames, 0.0F);
      std::fill_n(right_.begin(), frames, 0.0F);
    }
    handOverFrames(frames);
    done += frames * frameBytes;
  }
}

void PulseSession::handOverFrames(std::size_t frames) {
  const std::array<std::span<const float>, 2> channels{std::span(left_).first(frames), std::span(right_).first(frames)};
  handlers_.audio({.isAudio = true, .format = audioFormat, .unreadable = {}, .channels = channels});
}

void PulseSession::handOverSilence() {
  handOver(nullptr, AudioAnalysis::blockSize * frameBytes);
}

/// A suspended output, a hanging server and a changing output deliver nothing, so the last sound would stay.
void PulseSession::expectMore() {
  pa_context_rttime_restart(context_.get(), quiet_, pa_rtclock_now() + patience);
}

void PulseSession::await(pa_operation* operation) {
  if (operation == nullptr) return fail("The sound server does not answer: " + reason() + ".");
  pa_operation_unref(operation);
}

void PulseSession::fail(const std::string& text) {
  if (std::exchange(failed_, true)) return;
  disconnect();
  handlers_.failed(text);
}

std::string PulseSession::reason() const {
  return pa_strerror(pa_context_errno(context_.get()));
}

void PulseSession::disconnect() {
  closeStream();
  if (!context_) return;
  pa_context_set_state_callback(context_.get(), nullptr, nullptr);
  pa_context_set_subscribe_callback(context_.get(), nullptr, nullptr);
  if (quiet_ != nullptr) pa_threaded_mainloop_get_api(loop_.get())->time_free(std::exchange(quiet_, nullptr));
  pa_context_disconnect(context_.get());
}

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
