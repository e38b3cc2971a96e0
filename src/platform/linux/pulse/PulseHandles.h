#pragma once

#include <pulse/context.h>
#include <pulse/proplist.h>
#include <pulse/stream.h>
#include <pulse/thread-mainloop.h>

#include <memory>

namespace veloria {

struct PulseRelease {
  void operator()(pa_threaded_mainloop* loop) const { pa_threaded_mainloop_free(loop); }
  void operator()(pa_context* context) const { pa_context_unref(context); }
  void operator()(pa_stream* stream) const { pa_stream_unref(stream); }
  void operator()(pa_proplist* properties) const { pa_proplist_free(properties); }
};

template <typename T>
using PulsePtr = std::unique_ptr<T, PulseRelease>;

}  // namespace veloria
