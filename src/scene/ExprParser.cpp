#include <utility>

#include "ScriptText.h"
#include "scene/Expr.h"
#include "scene/ScriptError.h"

namespace veloria {

namespace {

[[noreturn]] void fail(std::string message) {
  throw ScriptError(0, std::move(message));
}

std::string unexpected(std::string_view character) {
  return "unexpected '" + std::string(character) + "'";
}

bool belongsToNumber(std::string_view character) {
  return character == "." || isNumeric(character);
}

bool startsName(std::string_view character) {
  return character == "_" || isLetter(character);
}

bool belongsToName(std::string_view character) {
  return startsName(character) || isNumeric(character);
}

}  // namespace

/// From lowest to highest precedence: < > | + - | * / % | ^ (to the right) | signs | operands.
/// A sign binds tighter than ^. Throws ScriptError with line 0.
class ExprParser {
 public:
  explicit ExprParser(Characters characters) : characters_(std::move(characters)) {}

  Expr parse();

 private:
  class Level;

  void parseComparison();
  void parseAdditive();
  void parseTerm();
  void parsePower();
  void parseUnary();
  void parsePrimary();

  void parseGroup();
  void parseNumber();
  void parseName();
  void parseCall(std::string name);
  void parseLeftAssociative(std::string_view ops, void (ExprParser::*operand)());

  void skipSpace();
  /// The operator of `ops` that follows after blanks; 0 for none. Does not consume it.
  char peekOp(std::string_view ops);
  bool atEnd() const { return index_ == characters_.size(); }
  /// The current character; empty at the end.
  std::string_view current() const { return atEnd() ? std::string_view() : characters_[index_]; }
  /// Consumes the longest run of characters that `belongs` accepts.
  std::string readWhile(bool (*belongs)(std::string_view));
  void emit(Expr::Node node);
  void emitNamed(Expr::Kind kind, std::string name, std::uint32_t arguments);
  void emitOperator(Expr::Kind kind, char op);

  Characters characters_;
  std::size_t index_ = 0;
  int level_ = 0;
  Expr result_;
};

/// One level deeper while it lives. The parser is recursive, so the limit on levels limits its stack.
class ExprParser::Level {
 public:
  explicit Level(ExprParser& parser) : parser_(parser) {
    if (parser_.level_ == Expr::maxLevels) {
      fail("expression nested deeper than " + std::to_string(Expr::maxLevels) + " levels");
    }
    ++parser_.level_;
  }
  ~Level() { --parser_.level_; }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;

 private:
  ExprParser& parser_;
};

Expr ExprParser::parse() {
  parseComparison();
  skipSpace();
  if (!atEnd()) fail(unexpected(current()) + " in expression");
  return std::move(result_);
}

void ExprParser::parseComparison() {
  parseLeftAssociative("<>", &ExprParser::parseAdditive);
}

void ExprParser::parseAdditive() {
  parseLeftAssociative("+-", &ExprParser::parseTerm);
}

void ExprParser::parseTerm() {
  parseLeftAssociative("*/%", &ExprParser::parsePower);
}

void ExprParser::parseLeftAssociative(std::string_view ops, void (ExprParser::*operand)()) {
  (this->*operand)();
  while (const char op = peekOp(ops)) {
    ++index_;
    (this->*operand)();
    emitOperator(Expr::Kind::binary, op);
  }
}

void ExprParser::parsePower() {
  parseUnary();
  if (peekOp("^") == 0) return;
  ++index_;
  const Level level(*this);
  parsePower();
  emitOperator(Expr::Kind::binary, '^');
}

void ExprParser::parseUnary() {
  const char sign = peekOp("-+");
  if (sign == 0) return parsePrimary();
  ++index_;
  const Level level(*this);
  parseUnary();
  if (sign == '-') emitOperator(Expr::Kind::unary, sign);
}

void ExprParser::parsePrimary() {
  skipSpace();
  if (atEnd()) fail("expression ended early");
  if (current() == "(") return parseGroup();
  if (belongsToNumber(current())) return parseNumber();
  if (startsName(current())) return parseName();
  fail(unexpected(current()));
}

void ExprParser::parseGroup() {
  const Level level(*this);
  ++index_;
  parseComparison();
  skipSpace();
  if (current() != ")") fail("missing ')'");
  ++index_;
}

void ExprParser::parseNumber() {
  const std::string run = readWhile(belongsToNumber);
  const auto number = numberFromText(run);
  if (!number) fail("bad number '" + run + "'");
  Expr::Node node;
  node.number = *number;
  emit(std::move(node));
}

void ExprParser::parseName() {
  std::string name = lowercased(readWhile(belongsToName));
  skipSpace();
  if (current() == "(") return parseCall(std::move(name));
  emitNamed(Expr::Kind::channel, std::move(name), 0);
}

void ExprParser::parseCall(std::string name) {
  const Level level(*this);
  std::uint32_t arguments = 0;
  ++index_;
  skipSpace();
  bool open = current() != ")";
  while (open) {
    parseComparison();
    ++arguments;
    skipSpace();
    if (atEnd()) fail("missing ')' after " + name + "(");
    if (current() != "," && current() != ")") fail(unexpected(current()) + " in " + name + "()");
    open = current() == ",";
    if (open) ++index_;
  }
  ++index_;
  emitNamed(Expr::Kind::call, std::move(name), arguments);
}

void ExprParser::skipSpace() {
  while (current() == " " || current() == "\t") ++index_;
}

char ExprParser::peekOp(std::string_view ops) {
  skipSpace();
  for (const char op : ops) {
    if (current() == std::string_view(&op, 1)) return op;
  }
  return 0;
}

std::string ExprParser::readWhile(bool (*belongs)(std::string_view)) {
  std::string run;
  for (; !atEnd() && belongs(current()); ++index_) run += current();
  return run;
}

void ExprParser::emit(Expr::Node node) {
  if (result_.nodes_.size() == Expr::maxNodes) {
    fail("expression larger than " + std::to_string(Expr::maxNodes) + " nodes");
  }
  result_.nodes_.push_back(std::move(node));
}

void ExprParser::emitNamed(Expr::Kind kind, std::string name, std::uint32_t arguments) {
  Expr::Node node;
  node.kind = kind;
  node.arguments = arguments;
  if (kind == Expr::Kind::call) node.function = functionNamed(name);
  node.name = std::move(name);
  emit(std::move(node));
}

void ExprParser::emitOperator(Expr::Kind kind, char op) {
  Expr::Node node;
  node.kind = kind;
  node.op = op;
  emit(std::move(node));
}

Expr Expr::parse(std::string_view text, CharacterSplitter& splitter) {
  return ExprParser(splitter.split(text)).parse();
}

}  // namespace veloria
