#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "scene/NimbraScript.h"

/// Random expressions are written out with no parenthesis too many, parsed, and compared with what a tree of the
/// obvious kind says they are worth.
namespace veloria {
namespace {

const ChannelValues channels{{"bass", 0.75}, {"t", 123.5}, {"a0", -2}, {"zero", 0}};

enum Precedence { comparison = 1, additive, term, power, sign, operand };

struct Tree {
  virtual ~Tree() = default;
  virtual double value() const = 0;
  virtual std::string text() const = 0;
  virtual Precedence precedence() const { return operand; }
};

using TreePtr = std::unique_ptr<Tree>;

std::string written(const Tree& tree, Precedence atLeast) {
  return tree.precedence() >= atLeast ? tree.text() : "(" + tree.text() + ")";
}

struct Number : Tree {
  explicit Number(int n) : hundredths(n) {}
  double value() const override { return std::stod(text()); }
  std::string text() const override {
    const std::string fraction = std::to_string(hundredths % 100);
    return std::to_string(hundredths / 100) + (fraction.size() < 2 ? ".0" : ".") + fraction;
  }
  int hundredths;
};

struct Channel : Tree {
  explicit Channel(std::string n) : name(std::move(n)) {}
  double value() const override { return channels.contains(name) ? channels.at(name) : 0; }
  std::string text() const override { return name; }
  std::string name;
};

struct Minus : Tree {
  explicit Minus(TreePtr of) : inner(std::move(of)) {}
  double value() const override { return -inner->value(); }
  std::string text() const override { return "-" + written(*inner, sign); }
  Precedence precedence() const override { return sign; }
  TreePtr inner;
};

struct Binary : Tree {
  Binary(char o, TreePtr l, TreePtr r) : op(o), left(std::move(l)), right(std::move(r)) {}

  double value() const override {
    const double l = left->value();
    const double r = right->value();
    if (op == '+') return l + r;
    if (op == '-') return l - r;
    if (op == '*') return l * r;
    if (op == '/') return r == 0 ? 0 : l / r;
    if (op == '%') return r == 0 ? 0 : std::fmod(l, r);
    if (op == '^') return std::pow(l, r);
    return (op == '<' ? l < r : l > r) ? 1 : 0;
  }

  std::string text() const override {
    const Precedence own = precedence();
    const Precedence leftSide = own == power ? sign : own;
    const Precedence rightSide = own == power ? power : static_cast<Precedence>(own + 1);
    return written(*left, leftSide) + " " + op + "\t" + written(*right, rightSide);
  }

  Precedence precedence() const override {
    if (op == '<' || op == '>') return comparison;
    if (op == '+' || op == '-') return additive;
    return op == '^' ? power : term;
  }

  char op;
  TreePtr left, right;
};

struct Call : Tree {
  Call(std::string n, std::vector<TreePtr> a) : name(std::move(n)), arguments(std::move(a)) {}

  double value() const override {
    std::array<double, 3> a{};
    for (std::size_t i = 0; i < std::min(a.size(), arguments.size()); ++i) a[i] = arguments[i]->value();
    if (name == "sin") return std::sin(a[0]);
    if (name == "Floor") return std::floor(a[0]);
    if (name == "sqrt") return a[0] <= 0 ? 0 : std::sqrt(a[0]);
    if (name == "MIN") return a[1] < a[0] ? a[1] : a[0];
    if (name == "max") return a[0] <= a[1] ? a[1] : a[0];
    if (name == "lerp") return a[0] + a[2] * (a[1] - a[0]);
    return 0;
  }

  std::string text() const override {
    std::string list;
    for (const auto& argument : arguments) list += (list.empty() ? "" : " , ") + argument->text();
    return name + "(" + list + ")";
  }

  std::string name;
  std::vector<TreePtr> arguments;
};

class Gardener {
 public:
  explicit Gardener(unsigned seed) : random_(seed) {}

  TreePtr grow(int height) {
    if (height == 0 || below(6) == 0) return leaf();
    switch (below(6)) {
      case 0:
        return std::make_unique<Minus>(grow(height - 1));
      case 1:
        return call(height);
      default: {
        const char op = "+-*/%^<>"[below(8)];
        TreePtr left = grow(height - 1);
        return std::make_unique<Binary>(op, std::move(left), grow(height - 1));
      }
    }
  }

 private:
  TreePtr leaf() {
    static const std::array<std::string, 5> names{"bass", "t", "a0", "zero", "missing"};
    if (below(2) == 0) return std::make_unique<Channel>(names[below(names.size())]);
    return std::make_unique<Number>(static_cast<int>(below(1000)));
  }

  TreePtr call(int height) {
    static const std::array<std::string, 7> names{"sin", "Floor", "sqrt", "MIN", "max", "lerp", "unheard_of"};
    std::vector<TreePtr> arguments(below(5));
    for (auto& argument : arguments) argument = grow(height - 1);
    return std::make_unique<Call>(names[below(names.size())], std::move(arguments));
  }

  std::size_t below(std::size_t limit) { return random_() % limit; }

  std::mt19937 random_;
};

TEST(ExpressionProperty, ParsedMeansWhatWasWritten) {
  for (unsigned seed = 0; seed < 4000; ++seed) {
    const TreePtr tree = Gardener(seed).grow(static_cast<int>(1 + seed % 6));
    const NimbraScript script = NimbraScript::parse("bind glow = " + tree->text());
    const double value = script.bindings.at(0).second.eval(channels);
    const double expected = tree->value();
    if (std::isnan(expected)) {
      EXPECT_TRUE(std::isnan(value)) << tree->text();
    } else {
      EXPECT_EQ(value, expected) << tree->text();
    }
  }
}

}  // namespace
}  // namespace veloria
