#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace veloria {

class CharacterSplitter;

/// Values by lower-case channel name.
using ChannelValues = std::map<std::string, double, std::less<>>;

/// A parsed arithmetic expression. A plain value.
///
/// Stored flat, each operand before its operator, so that neither evaluating nor destroying a long chain of operators
/// needs a deep stack.
class Expr {
 public:
  /// The deepest nesting of groups, calls, signs and right sides of "^".
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
    std::uint32_t arguments = 0;            ///< call: the number of its arguments, the operands before it
    double number = 0;                      ///< number
    std::string name;                       ///< channel, call: lower case
    bool operator==(const Node&) const = default;
  };

  /// Parses one expression. Throws ScriptError with line 0.
  static Expr parse(std::string_view text, CharacterSplitter& splitter);

  /// The nodes, operands first; the last one is the root.
  std::span<const Node> nodes() const { return nodes_; }

  /// The value with these channels; a missing channel counts as 0. Never fails and never allocates. The
  /// result may be NaN or infinite. Needs up to 80 KB of stack. Any thread.
  double eval(const ChannelValues& channels) const;

  bool operator==(const Expr&) const = default;

 private:
  friend class ExprParser;
  Expr() = default;

  std::vector<Node> nodes_;
};

/// The function of a lower-case name. An unknown function always gives 0.
Expr::Function functionNamed(std::string_view name);

}  // namespace veloria
