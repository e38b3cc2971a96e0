#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "gpu/Device.h"
#include "ports/BarCaptureStream.h"
#include "render/TextureBox.h"

namespace veloria {

/// Turns pictures of the menu bar into textures and puts the newest one into a box that renderers share. Main thread;
/// the device must outlive it and the box's content.
class CaptureSink {
 public:
  /// Textures, written in turn: neither the one in the box nor the one before it, which frames in flight may still
  /// read, is written.
  static constexpr std::size_t textureCount = 3;

  explicit CaptureSink(gpu::Device& device);

  /// Shows `picture` to renderers from their next frame on. Ignores a picture that is too large, empty, or whose size
  /// and bytes disagree.
  void publish(const BarPicture& picture);
  /// The same with a picture that is already a texture (not null). Ignores one that is not bgra8Unorm or not readable.
  void publish(std::shared_ptr<gpu::Texture> texture);
  /// Empties the box and releases the textures.
  void clear();

  const std::shared_ptr<TextureBox>& box() const { return box_; }
  /// Pictures published so far.
  std::int64_t frameCount() const { return frameCount_; }

 private:
  gpu::Texture& nextTexture(gpu::Size size);

  gpu::Device& device_;
  std::shared_ptr<TextureBox> box_ = std::make_shared<TextureBox>();
  std::array<std::shared_ptr<gpu::Texture>, textureCount> textures_;
  std::size_t next_ = 0;
  std::shared_ptr<gpu::Texture> previous_;  // of those that were made elsewhere; frames in flight may still read it
  std::int64_t frameCount_ = 0;
};

/// Keeps the newest picture of the menu bar in a box, where renderers find the text that the band must not cover. Main
/// thread. The device and the stream must outlive it.
///
/// Runs from start() until stop() or a failure, both of which empty the box; a failure also sets lastError(). It does
/// not retry by itself; the next start() does.
class MenuBarCapture {
 public:
  MenuBarCapture(gpu::Device& device, BarCaptureStream& stream);
  ~MenuBarCapture();
  MenuBarCapture(const MenuBarCapture&) = delete;
  MenuBarCapture& operator=(const MenuBarCapture&) = delete;

  /// Captures `rect` (points from the display's top left corner, y growing downwards) of the display, at `scale` pixels
  /// per point. No effect if it already captures exactly that.
  void start(std::uint32_t displayID, const Rect& rect, double scale);
  /// The box is empty when it returns.
  void stop();

  bool isRunning() const { return isRunning_; }
  /// Why the last start failed or the capture ended; empty once a capture has started again.
  const std::optional<std::string>& lastError() const { return lastError_; }
  const Rect& currentRect() const { return current_.rect; }
  std::uint32_t currentDisplayID() const { return current_.displayID; }
  std::int64_t frameCount() const { return sink_.frameCount(); }

  /// Never changes, so that renderers that hold it see every restart.
  const std::shared_ptr<TextureBox>& box() const { return sink_.box(); }

 private:
  void started(gpu::Size size);
  void fail(const std::string& message);

  BarCaptureStream& stream_;
  CaptureSink sink_;
  bool isRunning_ = false;
  std::optional<std::string> lastError_;
  BarRegion current_{.displayID = 0, .rect = {}, .scale = 0};
};

}  // namespace veloria
