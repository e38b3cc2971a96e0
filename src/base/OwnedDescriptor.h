#pragma once

#include <unistd.h>

#include <utility>

namespace veloria {

/// Owns a file descriptor and closes it. Move-only.
class OwnedDescriptor {
 public:
  explicit OwnedDescriptor(int number = -1) : number_(number) {}
  ~OwnedDescriptor() { reset(); }
  OwnedDescriptor(OwnedDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept {
    OwnedDescriptor old(std::exchange(number_, std::exchange(other.number_, -1)));
    return *this;
  }

  int get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }
  /// False if the system reports a late write error; the descriptor is closed anyway.
  bool close() { return number_ < 0 || ::close(std::exchange(number_, -1)) == 0; }
  void reset() { close(); }

 private:
  int number_;
};

}  // namespace veloria
