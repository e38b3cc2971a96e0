#pragma once

#include <unistd.h>

#include <utility>

namespace veloria {

/// Owns a file descriptor; closes it at its end. Move-only.
class OwnedDescriptor {
 public:
  explicit OwnedDescriptor(int number = -1) : number_(number) {}
  ~OwnedDescriptor() { reset(); }
  OwnedDescriptor(OwnedDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept {
    if (this != &other) {
      reset();
      number_ = std::exchange(other.number_, -1);
    }
    return *this;
  }

  int get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }
  void reset() {
    if (number_ >= 0) ::close(std::exchange(number_, -1));
  }

 private:
  int number_;
};

}  // namespace veloria
