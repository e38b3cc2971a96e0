#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace veloria {

/// Values by lower-case channel name.
using ChannelValues = std::map<std::string, double, std::less<>>;

/// A parsed arithmetic expression. A plain value.
///
/// It is held flat, each operand before its operator, so that neither evaluating nor destroying an expression that
/// leans a long way to one side needs a deep stack.
class Expr {
 public:
  /// Groups, calls, signs and right sides of "^" inside each other.
  static constexpr int maxLevels = 200;
  static constexpr std::size_t maxNodes = 10'000;

  enum class Kind : std::uint8_t { number, channel, unary, binary, call };
  enum class Function : std::uint8_t {
    sin,
    cos,
    abs,
    sqrt,
    floor,
    min,
    max,
    pow,
    clamp,
    lerp,
    smoothstep,
    unknown,
  };

  struct Node {
    Kind kind = Kind::number;
    char op = 0;                            ///< unary: -; binary: + - * / % ^ < >
    Function function = Function::unknown;  ///< call
    std::uint32_t arguments = 0;            ///< call: how many operands before it are its arguments
    double number = 0;                      ///< number
    std::string name;                       ///< channel, call: lower case
    bool operator==(const Node&) const = default;
  };

  /// The nodes, operands first; the last one is the root.
  std::span<const Node> nodes() const { return nodes_; }

  /// The value with these channels; a channel that is not there counts as 0. Never fails and never allocates. The
  /// result may be NaN or infinite. Needs up to 80 KB of stack. Any thread.
  double eval(const ChannelValues& channels) const;

  bool operator==(const Expr&) const = default;

 private:
  friend class ExprParser;
  Expr() = default;

  std::vector<Node> nodes_;
};

/// The function that a lower-case name calls. An unknown function gives 0 whatever its arguments.
Expr::Function functionNamed(std::string_view name);

}  // namespace veloria
