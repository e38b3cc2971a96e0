#include "platform/linux/wallpaper/LinuxDesktopPicture.h"

#include <pthread.h>
#include <sys/resource.h>

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/linux/wallpaper/DecoderProcess.h"
#include "platform/linux/wallpaper/PictureLoader.h"

namespace veloria {

namespace {

constexpr std::chrono::seconds longestWait{1};
constexpr int lowPriority = 10;

/// Signals are the main thread's affair (a display server that goes away raises one), and frames come first.
void becomeQuietThread() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
  ::setpriority(PRIO_PROCESS, 0, lowPriority);  // on Linux: of this thread
}

}  // namespace

/// What all threads need, one after the other. Outlives the owner while one of them runs.
struct LinuxDesktopPicture::Worker {
  PictureLoader loader;
  PostToMain postToMain;

  Result<Pixels> load(const std::string& screen) {
    try {
      return loader.load(screen);
    } catch (const std::exception& error) {
      return Failure{error.what()};
    }
  }
};

/// Where one request's thread is, so that the owner can wait for it or give it up.
class LinuxDesktopPicture::Errand {
 public:
  /// Worker: false when the owner has given up. After true the owner waits until end().
  bool mayPost() {
    const std::lock_guard lock(mutex_);
    if (state_ == State::working) state_ = State::posting;
    return state_ == State::posting;
  }

  void end() {
    const std::lock_guard lock(mutex_);
    state_ = State::ended;
    changed_.notify_all();
  }

  /// Owner: afterwards the thread has ended its work or will not post.
  void awaitOrGiveUp() {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, longestWait, [this] { return state_ != State::working; });
    if (state_ == State::working) state_ = State::ended;
    changed_.wait(lock, [this] { return state_ == State::ended; });
  }

 private:
  enum class State { working, posting, ended };
  std::mutex mutex_;
  std::condition_variable changed_;
  State state_ = State::working;
};

LinuxDesktopPicture::LinuxDesktopPicture(const Environment& environment, const std::string& decoder,
                                         PostToMain postToMain)
    : worker_(std::make_shared<Worker>(
          Worker{PictureLoader(desktopSurroundings(environment),
                               [decoder](const auto& file) { return decodePictureWith(decoder, file); }),
                 std::move(postToMain)})),
      self_(std::make_shared<LinuxDesktopPicture*>(this)) {}

LinuxDesktopPicture::~LinuxDesktopPicture() {
  if (errand_) errand_->awaitOrGiveUp();
}

void LinuxDesktopPicture::thumbnail(const Screen& screen, Answer answer) {
  if (answer_) return;
  answer_ = std::move(answer);
  errand_ = std::make_shared<Errand>();
  const auto run = [worker = worker_, errand = errand_, name = screen.name, self = std::weak_ptr(self_)] {
    becomeQuietThread();
    auto pixels = worker->load(name);
    if (errand->mayPost()) {
      worker->postToMain([self, pixels = std::move(pixels)] {
        if (const auto owner = self.lock()) (*owner)->finish(pixels);
      });
    }
    errand->end();
  };
  try {
    std::thread(run).detach();
  } catch (const std::system_error& error) {  // no more threads
    errand_.reset();
    finish(Failure{error.what()});
  }
}

void LinuxDesktopPicture::finish(Result<Pixels> pixels) {
  const Answer answer = std::exchange(answer_, nullptr);
  answer(std::move(pixels));
}

}  // namespace veloria
