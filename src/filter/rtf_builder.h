#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace filter {

class CRTFBuilder;

// Manipulators: each carries one value into the builder, as in `builder << bold(true) << "text"`.
struct CStringManip {
  void (*apply)(CRTFBuilder&, const std::string&);
  std::string value;
};
struct CIntManip {
  void (*apply)(CRTFBuilder&, int);
  int value;
};
struct CBoolManip {
  void (*apply)(CRTFBuilder&, bool);
  bool value;
};

struct RtfColor {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
};

// Assembles Rich Text pieces for a rich-edit pane: every appended text is a piece of its own, with its own tables, so
// that the pane can insert them one after another.
class CRTFBuilder {
 public:
  // Appends one piece in the current style. Text is UTF-8; letters outside ASCII and RTF's own characters are written
  // as escapes.
  void append(std::string_view text);
  CRTFBuilder& operator<<(std::string_view text) {
    append(text);
    return *this;
  }
  CRTFBuilder& operator<<(const CStringManip& manipulator) {
    manipulator.apply(*this, manipulator.value);
    return *this;
  }
  CRTFBuilder& operator<<(const CIntManip& manipulator) {
    manipulator.apply(*this, manipulator.value);
    return *this;
  }
  CRTFBuilder& operator<<(const CBoolManip& manipulator) {
    manipulator.apply(*this, manipulator.value);
    return *this;
  }

  [[nodiscard]] std::string styleGroup() const;
  [[nodiscard]] std::string fontTable() const;
  [[nodiscard]] std::string colorTable() const;

  // The pieces as appended, without their closing braces.
  [[nodiscard]] const std::vector<std::string>& pieces() const { return pieces_; }
  // All pieces, each closed.
  [[nodiscard]] std::string text() const;

  // Index of the font (colour), which is added when the list lacks it.
  int fontIndex(std::string_view name);
  int colorIndex(RtfColor color);

  bool bold = false;
  bool underline = false;
  bool italic = false;
  bool strike = false;
  int font = 0;
  int fontSize = 18;  // half-points
  int background = 0;
  int color = 0;

 private:
  std::vector<std::string> fonts_ = {"Arial"};
  std::vector<RtfColor> colors_ = {{0, 0, 0}, {255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
  std::vector<std::string> pieces_;
};

[[nodiscard]] CBoolManip bold(bool on);
[[nodiscard]] CBoolManip underline(bool on);
[[nodiscard]] CBoolManip italic(bool on);
[[nodiscard]] CBoolManip strike(bool on);
[[nodiscard]] CStringManip font(std::string name);
[[nodiscard]] CIntManip fontSize(int halfPoints);
[[nodiscard]] CIntManip color(int index);
[[nodiscard]] CIntManip background(int index);

}  // namespace filter
