#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "gpu/Device.h"
#include "ports/BarCaptureStream.h"
#include "render/TextureBox.h"

namespace veloria {

/// Turns pictures of the menu bar into textures and puts the newest one into a box that renderers share. Main thread;
/// the device must outlive it and the box's content.
class CaptureSink {
 public:
  /// Textures that are filled in turn: the one in the box stays as it is while the next is written, and so does the one
  /// before it, which frames in flight may still read.
  static constexpr std::size_t textureCount = 3;

  explicit CaptureSink(gpu::Device& device);

  /// Shows `picture` to renderers from their next frame on. One that can't be a texture, or whose size and bytes don't
  /// agree, is dropped, and the one before it stays.
  void publish(const BarPicture& picture);
  /// The same with a picture that is a texture already; not null. One that is not bgra8Unorm or that shaders can't read
  /// is dropped.
  void publish(std::shared_ptr<gpu::Texture> texture);
  /// Empties the box and lets the textures go.
  void clear();

  const std::shared_ptr<TextureBox>& box() const { return box_; }
  /// Pictures published since it was made.
  std::int64_t frameCount() const { return frameCount_; }

 private:
  gpu::Texture& nextTexture(gpu::Size size);

  gpu::Device& device_;
  std::shared_ptr<TextureBox> box_ = std::make_shared<TextureBox>();
  std::array<std::shared_ptr<gpu::Texture>, textureCount> textures_;
  std::size_t next_ = 0;
  std::shared_ptr<gpu::Texture> before_;  // of those that were made elsewhere; frames in flight may still read it
  std::int64_t frameCount_ = 0;
};

}  // namespace veloria
