#pragma once

#include <string>
#include <utility>
#include <variant>

namespace veloria {

/// The reason of a failure: a text for a person, without a final line feed.
struct Failure {
  std::string text;
};

/// The value of an operation that returns nothing but success.
struct Done {};

/// A value, or the reason why there is none. True if there is a value.
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : content_(std::move(value)) {}
  Result(Failure failure) : content_(std::move(failure)) {}

  explicit operator bool() const { return std::holds_alternative<T>(content_); }

  /// The value; throws std::bad_variant_access if there is none.
  const T& operator*() const& { return std::get<T>(content_); }
  T& operator*() & { return std::get<T>(content_); }
  T&& operator*() && { return std::get<T>(std::move(content_)); }
  const T* operator->() const { return &std::get<T>(content_); }
  T* operator->() { return &std::get<T>(content_); }

  /// The reason; throws std::bad_variant_access if there is a value.
  const std::string& error() const { return std::get<Failure>(content_).text; }

 private:
  std::variant<T, Failure> content_;
};

}  // namespace veloria
