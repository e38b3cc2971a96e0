#pragma once

#include <string>
#include <utility>
#include <variant>

namespace veloria {

/// Why something did not work: a text for a person, without a line feed at its end.
struct Failure {
  std::string text;
};

/// The value of an operation that has nothing to give but that it succeeded.
struct Done {};

/// A value, or the reason why there is none. True when there is a value.
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : content_(std::move(value)) {}
  Result(Failure failure) : content_(std::move(failure)) {}

  explicit operator bool() const { return std::holds_alternative<T>(content_); }

  /// The value. Only when there is one; throws std::bad_variant_access otherwise.
  const T& operator*() const& { return std::get<T>(content_); }
  T& operator*() & { return std::get<T>(content_); }
  T&& operator*() && { return std::get<T>(std::move(content_)); }
  const T* operator->() const { return &std::get<T>(content_); }
  T* operator->() { return &std::get<T>(content_); }

  /// The reason. Only when there is no value; throws std::bad_variant_access otherwise.
  const std::string& error() const { return std::get<Failure>(content_).text; }

 private:
  std::variant<T, Failure> content_;
};

}  // namespace veloria
