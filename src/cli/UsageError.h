#pragma once

#include <stdexcept>

namespace veloria::cli {

/// The command line is wrong. The text says what, and what would be right; it is one line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace veloria::cli
