#include "main/SignalWatch.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>
#include <vector>

#include "base/SocketCalls.h"
#include "platform/qt/QtEventLoop.h"

namespace veloria {

namespace {

// A signal handler can reach nothing but a global.
volatile sig_atomic_t signalPipe = -1;

extern "C" void noteSignal(int) {
  const char byte = 0;
  [[maybe_unused]] const auto written = write(static_cast<int>(signalPipe), &byte, 1);
}

}  // namespace

struct SignalWatch::State {
  Pipe pipe;
  std::vector<std::pair<int, struct sigaction>> former;
  std::shared_ptr<void> watch;
};

SignalWatch::SignalWatch(std::initializer_list<int> signals, std::function<void()> action)
    : state_(std::make_unique<State>()) {
  auto pipe = makePipe(false);
  if (!pipe) throw std::runtime_error("no pipe for signals");
  state_->pipe = *std::move(pipe);
  signalPipe = state_->pipe.writable.get();
  const int readable = state_->pipe.readable.get();
  state_->watch = watchDescriptor(readable, [readable, action = std::move(action)] {
    std::array<char, 16> bytes;
    while (read(readable, bytes.data(), bytes.size()) > 0) {
    }
    action();
  });
  for (const int signal : signals) {
    struct sigaction now {};
    now.sa_handler = noteSignal;
    now.sa_flags = SA_RESTART;
    struct sigaction former {};
    sigaction(signal, &now, &former);
    state_->former.emplace_back(signal, former);
  }
}

SignalWatch::~SignalWatch() {
  for (const auto& [signal, former] : state_->former) sigaction(signal, &former, nullptr);
  state_->watch.reset();
  signalPipe = -1;
}

}  // namespace veloria
