#include "platform/linux/wallpaper/LinuxDesktopPicture.h"

#include <pthread.h>
#include <sys/resource.h>

#include <chrono>
#include <csignal>
#include <exception>
#include <future>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/linux/wallpaper/PictureDecoder.h"
#include "platform/linux/wallpaper/PictureFinder.h"
#include "platform/linux/wallpaper/RootPixmap.h"

namespace veloria {

namespace {

constexpr std::chrono::seconds longestWait{1};
constexpr int lowPriority = 10;

/// The main thread handles signals (losing the display server raises one), and frames come first.
void becomeQuietThread() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
  ::setpriority(PRIO_PROCESS, 0, lowPriority);  // on Linux: of this thread
}

}  // namespace

/// Finds the picture and makes its thumbnail, on one thread after another. Outlives the owner while a thread runs.
struct LinuxDesktopPicture::Loader {
  DesktopSurroundings surroundings;
  PictureFile file;
  PostToMain postToMain;

  /// The first readable picture; else the failure of the first source that names one.
  Result<Pixels> load(const std::string& screen) {
    std::optional<Failure> problem;
    for (const PictureSource source : pictureSources(surroundings)) {
      if (source == PictureSource::rootPixmap) {
        if (auto pixels = rootPixmapThumbnail(surroundings.display, screen)) return *std::move(pixels);
      } else if (const auto path = findPicture(source, surroundings, screen)) {
        auto pixels = file.thumbnail(*path);
        if (pixels) return pixels;
        if (!problem) problem = Failure{pixels.error()};
      }
    }
    return problem.value_or(Failure{"the desktop does not say which picture it shows"});
  }
};

/// One request, shared by its thread and the owner.
struct LinuxDesktopPicture::Request {
  std::mutex mutex;
  bool wanted = true;  ///< under the mutex; false: the answer is not posted
  std::promise<void> ended;
};

LinuxDesktopPicture::LinuxDesktopPicture(const Environment& environment, const std::string& decoder,
                                         PostToMain postToMain)
    : loader_(std::make_shared<Loader>(
          Loader{desktopSurroundings(environment),
                 PictureFile([decoder](const auto& file) { return decodePictureWith(decoder, file); }),
                 std::move(postToMain)})),
      self_(std::make_shared<LinuxDesktopPicture*>(this)) {}

LinuxDesktopPicture::~LinuxDesktopPicture() {
  if (!request_) return;
  request_->ended.get_future().wait_for(longestWait);
  const std::lock_guard lock(request_->mutex);
  request_->wanted = false;
}

void LinuxDesktopPicture::thumbnail(const Screen& screen, Answer answer) {
  if (answer_) return;
  answer_ = std::move(answer);
  request_ = std::make_shared<Request>();
  const auto run = [loader = loader_, request = request_, name = screen.name, self = std::weak_ptr(self_)] {
    becomeQuietThread();
    Result<Pixels> pixels = Failure{};
    try {
      pixels = loader->load(name);
    } catch (const std::exception& error) {
      pixels = Failure{error.what()};
    }
    {
      const std::lock_guard lock(request->mutex);
      if (request->wanted) {
        loader->postToMain([self, pixels = std::move(pixels)] {
          if (const auto owner = self.lock()) (*owner)->finish(pixels);
        });
      }
    }
    request->ended.set_value();
  };
  try {
    std::thread(run).detach();
  } catch (const std::system_error& error) {  // no more threads
    request_.reset();
    finish(Failure{error.what()});
  }
}

void LinuxDesktopPicture::finish(Result<Pixels> pixels) {
  const Answer answer = std::exchange(answer_, nullptr);
  answer(std::move(pixels));
}

}  // namespace veloria
