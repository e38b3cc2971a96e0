#pragma once

#include <cstddef>
#include <span>

namespace veloria {

/// Takes interleaved pairs of floats in the machine's byte order apart: left, right, left, ... `bytes` needs no
/// alignment; bytes behind the last whole pair are left out. Returns the frames written, at most as many as fit into
/// the shorter of `left` and `right`.
std::size_t deinterleave(std::span<const std::byte> bytes, std::span<float> left, std::span<float> right);

}  // namespace veloria
