#pragma once

#include <string>
#include <string_view>

#include "jet/masks.h"
#include "jet/parser/parser.h"

namespace jet::engine {

// A text with its shape, taken apart once, and the masks that it is run under.
struct ShapedText {
  ShapedText() = default;
  explicit ShapedText(std::string_view sql, MasksPtr under = nullptr) : masks(std::move(under)) { assign(sql); }
  void assign(std::string_view sql) {
    text.assign(sql);
    shapeOf(text, shape);
    if (masks) shape.key.insert(0, masks->key());
  }
  std::string text;
  Shape shape;
  MasksPtr masks;
};

}  // namespace jet::engine
