#pragma once

#include <string>
#include <string_view>

#include "jet/parser/parser.h"

namespace jet::engine {

// A text with its shape, taken apart once.
struct ShapedText {
  ShapedText() = default;
  explicit ShapedText(std::string_view sql) { assign(sql); }
  void assign(std::string_view sql) {
    text.assign(sql);
    shapeOf(text, shape);
  }
  std::string text;
  Shape shape;
};

}  // namespace jet::engine
