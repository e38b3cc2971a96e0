#pragma once

#include <string>
#include <string_view>

#include "Characters.h"
#include "scene/Expr.h"

namespace veloria {

/// Parses one expression. From lowest to highest precedence: < > | + - | * / % | ^ (to the right) | signs | operands.
/// A sign binds tighter than ^. Throws ScriptError with line 0.
class ExprParser {
 public:
  static Expr parse(std::string_view text, CharacterSplitter& splitter);

 private:
  class Level;

  explicit ExprParser(Characters characters) : characters_(std::move(characters)) {}

  void parseExpression();
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
  /// The operator of `ops` that comes next after blanks, not consumed; 0 for none.
  char peekOp(std::string_view ops);
  bool atEnd() const { return index_ == characters_.size(); }
  /// The current character; empty at the end.
  std::string_view current() const { return atEnd() ? std::string_view() : characters_[index_]; }
  /// The longest run from here of characters that `belongs` accepts, consumed.
  std::string takeWhile(bool (*belongs)(std::string_view));
  void emit(Expr::Node node);
  void emitNamed(Expr::Kind kind, std::string name, std::uint32_t arguments);
  void emitOperator(Expr::Kind kind, char op);

  Characters characters_;
  std::size_t index_ = 0;
  int level_ = 0;
  Expr result_;
};

}  // namespace veloria
