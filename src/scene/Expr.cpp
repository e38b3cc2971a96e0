#include "scene/Expr.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace veloria {

namespace {

struct NamedFunction {
  std::string_view name;
  Expr::Function function;
};

using F = Expr::Function;

constexpr std::array functionNames{
    NamedFunction{"sin", F::sin},
    NamedFunction{"cos", F::cos},
    NamedFunction{"abs", F::abs},
    NamedFunction{"sqrt", F::sqrt},
    NamedFunction{"floor", F::floor},
    NamedFunction{"min", F::min},
    NamedFunction{"max", F::max},
    NamedFunction{"pow", F::pow},
    NamedFunction{"clamp", F::clamp},
    NamedFunction{"lerp", F::lerp},
    NamedFunction{"smoothstep", F::smoothstep},
};

double binary(char op, double left, double right) {
  switch (op) {
    case '+':
      return left + right;
    case '-':
      return left - right;
    case '*':
      return left * right;
    case '/':
      return right == 0 ? 0 : left / right;
    case '%':
      return right == 0 ? 0 : std::fmod(left, right);
    case '^':
      return std::pow(left, right);
    case '<':
      return left < right ? 1 : 0;
    case '>':
      return left > right ? 1 : 0;
    default:
      return 0;
  }
}

double clamped(double value, double low, double high) {
  const double raised = value <= low ? low : value;
  return high < raised ? high : raised;
}

// A NaN fails both tests and passes through.
double smoothstep(double edge0, double edge1, double value) {
  double x = value - edge0;
  if (edge1 - edge0 != 0) x /= edge1 - edge0;
  if (x <= 0) x = 0;
  if (x > 1) x = 1;
  return x * x * (3 - 2 * x);
}

double call(Expr::Function function, double a0, double a1, double a2) {
  switch (function) {
    case F::sin:
      return std::sin(a0);
    case F::cos:
      return std::cos(a0);
    case F::abs:
      return std::abs(a0);
    case F::sqrt:
      return a0 <= 0 ? 0 : std::sqrt(a0);
    case F::floor:
      return std::floor(a0);
    case F::min:
      return a1 < a0 ? a1 : a0;
    case F::max:
      return a0 <= a1 ? a1 : a0;
    case F::pow:
      return std::pow(a0, a1);
    case F::clamp:
      return clamped(a0, a1, a2);
    case F::lerp:
      return a0 + a2 * (a1 - a0);
    case F::smoothstep:
      return smoothstep(a0, a1, a2);
    case F::unknown:
      return 0;
  }
  return 0;
}

double callWith(Expr::Function function, std::span<const double> arguments) {
  const auto argument = [&](std::size_t i) { return i < arguments.size() ? arguments[i] : 0; };
  return call(function, argument(0), argument(1), argument(2));
}

double valueOf(const ChannelValues& channels, const std::string& name) {
  const auto found = channels.find(name);
  return found != channels.end() ? found->second : 0;
}

/// The operands that are waiting for their operator. Left without a value on purpose: only what is used gets touched.
class OperandStack {
 public:
  void push(double value) { values_[size_++] = value; }
  double pop() { return values_[--size_]; }
  std::span<const double> pop(std::size_t count) {
    size_ -= count;
    return {&values_[size_], count};
  }

 private:
  std::size_t size_ = 0;
  std::array<double, Expr::maxNodes + 1> values_;
};

}  // namespace

Expr::Function functionNamed(std::string_view name) {
  const auto* found = std::ranges::find(functionNames, name, &NamedFunction::name);
  return found != functionNames.end() ? found->function : F::unknown;
}

double Expr::eval(const ChannelValues& channels) const {
  if (nodes_.empty()) return 0;  // moved from
  OperandStack operands;
  for (const Node& node : nodes_) {
    switch (node.kind) {
      case Kind::number:
        operands.push(node.number);
        break;
      case Kind::channel:
        operands.push(valueOf(channels, node.name));
        break;
      case Kind::unary:
        operands.push(-operands.pop());
        break;
      case Kind::binary: {
        const double right = operands.pop();
        operands.push(binary(node.op, operands.pop(), right));
        break;
      }
      case Kind::call:
        operands.push(callWith(node.function, operands.pop(node.arguments)));
        break;
    }
  }
  return operands.pop();
}

}  // namespace veloria
