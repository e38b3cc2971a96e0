#include "render/MenuBarCapture.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "base/Log.h"

namespace veloria {

MenuBarCapture::MenuBarCapture(gpu::Device& device, BarCaptureStream& stream) : stream_(stream), sink_(device) {}

MenuBarCapture::~MenuBarCapture() {
  stop();
}

void MenuBarCapture::start(std::uint32_t displayID, const Rect& rect, double scale) {
  const BarRegion wanted{displayID, rect, scale};
  if (isRunning_ && wanted == current_) return;
  stop();
  current_ = wanted;
  isRunning_ = true;
  stream_.start(wanted, {.started = [this](gpu::Size size) { started(size); },
                         .picture = [this](const BarPicture& picture) { sink_.publish(picture); },
                         .texture = [this](auto texture) { sink_.publish(std::move(texture)); },
                         .failed = [this](const std::string& message) { fail(message); }});
}

void MenuBarCapture::stop() {
  isRunning_ = false;
  stream_.stop();
  sink_.clear();
}

void MenuBarCapture::started(gpu::Size size) {
  lastError_.reset();
  if (!NimbraLog::enabled()) return;
  const auto text = [](double value) { return nlohmann::json(value).dump(); };
  const Rect& rect = current_.rect;
  NimbraLog::debug("capture started rect=(" + text(rect.x) + ", " + text(rect.y) + ", " + text(rect.width) + ", " +
                   text(rect.height) + ") " + std::to_string(size.width) + "x" + std::to_string(size.height));
}

// A picture that no longer follows the bar would leave the shapes of old text in the light.
void MenuBarCapture::fail(const std::string& message) {
  lastError_ = message;
  isRunning_ = false;
  sink_.clear();
  NimbraLog::debug("capture failed: " + message);
}

}  // namespace veloria
