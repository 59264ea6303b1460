#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace print {

enum class Align { Left, Right, Center };

struct Color {
  double red, green, blue;  // 0..1
};
inline constexpr Color kInk = {0.106, 0.122, 0.141};
inline constexpr Color kFaint = {0.349, 0.388, 0.431};
inline constexpr Color kRule = {0.835, 0.855, 0.878};
inline constexpr Color kAccent = {0.184, 0.435, 0.690};

struct TextStyle {
  double size = 8;  // points
  bool bold = false;
  Color color = kInk;
  int lines = 1;  // a text that needs more is cut with an ellipsis; 0: as many as it takes
};

// A sheet of paper and the margins that are kept free, in points.
struct Sheet {
  double width;
  double height;
  double left;
  double top;
  double right;
  double bottom;
};

// A PDF document, of A4 sheets unless others are asked for, that is drawn from top to bottom. Lengths are points (1/72
// inch); `y` counts from the top of the sheet. Every sheet gets a foot with its number. Memory holds one sheet at a
// time, not the document.
class PdfSheets {
 public:
  struct Setup {
    std::string title;                // of the document, shown by readers in place of the file's name
    std::string footText;             // left at the foot of each sheet
    bool landscape = false;           // of A4
    std::optional<Sheet> sheet = {};  // in place of A4
  };
  // `sink` takes the file's bytes in order; what it throws is thrown on by finish(). Throws std::runtime_error when
  // drawing fails.
  PdfSheets(std::function<void(std::string_view)> sink, const Setup& setup);
  PdfSheets(const PdfSheets&) = delete;
  PdfSheets& operator=(const PdfSheets&) = delete;
  ~PdfSheets();

  [[nodiscard]] double left() const;
  [[nodiscard]] double width() const;  // of what can be printed on
  [[nodiscard]] double y() const;
  void moveDown(double points);
  // Starts a new sheet when less than `height` is left on this one; true then.
  bool need(double height);

  // The width of the text in one line.
  [[nodiscard]] double textWidth(std::string_view text, const TextStyle& style);
  // The height that `text` takes within `width`.
  [[nodiscard]] double textHeight(std::string_view text, double width, const TextStyle& style);
  // Draws within [x, x + width] from `top` on, without moving down.
  void text(double x, double top, double width, std::string_view text, const TextStyle& style,
            Align align = Align::Left);
  // Draws over the whole width and moves down below it, on a new sheet when it does not fit here.
  void paragraph(std::string_view text, const TextStyle& style, Align align = Align::Left);
  void rule(double x, double top, double width, double thickness, const Color& color);
  void box(double x, double top, double width, double height, const Color& color);

  // Completes the file. To be called once, at the end.
  void finish();

 private:
  class Drawing;
  std::unique_ptr<Drawing> drawing_;
};

}  // namespace print
