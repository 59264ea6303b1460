#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/parser/lexer.h"
#include "jet/parser/parser.h"

namespace jet {

// Shapes of texts met before. Statements are formatted from a few patterns, so most texts are one of these with other
// literals: that is seen by comparing what lies between the literals, without cutting the text into tokens.
class ShapeMemory {
 public:
  // As shapeOf(); gives a number that stays that of the shape until this memory is full (then all begin again, and
  // generation() moves).
  std::size_t shapeOf(std::string_view sql, Shape& out);
  [[nodiscard]] std::size_t generation() const { return generation_; }

 private:
  struct Literal {
    std::size_t end;  // end of the part before it, in `parts`
    TokenKind kind;
  };
  struct Pattern {
    std::string key;
    std::string parts;  // the text without its literals
    std::vector<Literal> literals;
  };

  [[nodiscard]] bool matches(const Pattern& pattern, std::string_view sql, std::vector<Value>& literals) const;
  std::size_t add(std::string_view sql, Shape& out);

  std::vector<Pattern> patterns_;
  std::vector<std::size_t> recent_;  // numbers, the one met last first
  std::size_t generation_ = 0;
};

}  // namespace jet
