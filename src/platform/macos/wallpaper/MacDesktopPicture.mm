#include "platform/macos/wallpaper/MacDesktopPicture.h"

#import <AppKit/AppKit.h>
#import <dispatch/dispatch.h>

#include <exception>
#include <filesystem>
#include <utility>

#include "PictureDecoder.h"
#include "platform/macos/mainqueue/MainQueue.h"
#include "platform/macos/text/MacText.h"

namespace veloria {

namespace {

constexpr const char* queueLabel = "com.tollmere.Veloria.wallpaper";

dispatch_queue_t makeQueue() {
  dispatch_queue_attr_t quiet = dispatch_queue_attr_make_with_qos_class(DISPATCH_QUEUE_SERIAL, QOS_CLASS_UTILITY, 0);
  return dispatch_queue_create(queueLabel, quiet);
}

NSScreen* screenNumbered(std::uint32_t number) {
  for (NSScreen* screen in [NSScreen screens]) {
    id told = screen.deviceDescription[@"NSScreenNumber"];
    if ([told isKindOfClass:[NSNumber class]] && [told unsignedIntValue] == number) return screen;
  }
  return nil;
}

/// Empty when there is none in a file.
std::filesystem::path pictureOf(const Screen& screen) {
  NSScreen* known = screenNumbered(screen.number);
  if (known == nil) return {};
  return plainText([[NSWorkspace sharedWorkspace] desktopImageURLForScreen:known].path);
}

}  // namespace

/// What all requests need, one after the other, on the queue. Outlives the owner while one of them runs.
struct MacDesktopPicture::Worker {
  dispatch_queue_t queue = makeQueue();
  PictureDecoder decoder;

  Result<Pixels> load(const std::filesystem::path& path) {
    try {
      if (auto pixels = decoder.thumbnail(path)) return *std::move(pixels);
      return Failure{path.native() + ": it is no picture that can be read"};
    } catch (const std::exception& error) {
      return Failure{error.what()};
    }
  }
};

MacDesktopPicture::MacDesktopPicture()
    : worker_(std::make_shared<Worker>()), self_(std::make_shared<MacDesktopPicture*>(this)) {}

MacDesktopPicture::~MacDesktopPicture() = default;

void MacDesktopPicture::thumbnail(const Screen& screen, Answer answer) {
  if (answer_) return;
  answer_ = std::move(answer);
  const std::filesystem::path path = pictureOf(screen);
  if (path.empty()) return finish(Failure{"nobody tells which picture the desktop shows"});
  const auto worker = worker_;
  const std::weak_ptr<MacDesktopPicture*> self = self_;
  dispatch_async(worker->queue, ^{
    auto pixels = worker->load(path);
    postToMainQueue([self, pixels = std::move(pixels)] {
      if (const auto owner = self.lock()) (*owner)->finish(pixels);
    });
  });
}

void MacDesktopPicture::finish(Result<Pixels> pixels) {
  const Answer answer = std::exchange(answer_, nullptr);
  answer(std::move(pixels));
}

}  // namespace veloria
