#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "gpu/Types.h"

namespace veloria {

/// Turns premultiplied RGBA rows into straight ones, in place.
void unpremultiply(std::span<std::uint8_t> rgba);

/// Lays premultiplied RGBA rows over opaque RGBA rows of the same size; the result replaces the first.
void layOver(std::span<std::uint8_t> rgba, std::span<const std::uint8_t> ground);

/// The picture in a file, scaled to `size`, as straight RGBA rows. Throws WorkError when it can't be read or has more
/// than 64 million pixels.
std::vector<std::uint8_t> loadPicture(const std::string& path, gpu::Size size);

/// Writes straight RGBA rows as a PNG file, all or nothing. Throws WorkError when it can't.
void savePng(const std::string& path, gpu::Size size, std::span<const std::uint8_t> rgba);

}  // namespace veloria
