#include "print/pdf_sheets.h"

#include <cairo-pdf.h>
#include <pango/pangocairo.h>

#include <exception>
#include <stdexcept>
#include <utility>

namespace print {

namespace {

constexpr double kShortSide = 595.28;  // A4
constexpr double kLongSide = 841.89;
constexpr double kMargin = 34;
constexpr Sheet kUpright = {kShortSide, kLongSide, kMargin, kMargin, kMargin, kMargin};
constexpr Sheet kLandscape = {kLongSide, kShortSide, kMargin, kMargin, kMargin, kMargin};
constexpr double kFoot = 22;  // above the lower margin
constexpr TextStyle kFootStyle = {.size = 7, .color = kFaint};
// The pages' own font, its free twin, and whatever has the letters that both lack.
constexpr const char* kFonts = "Verdana,DejaVu Sans,sans-serif";

struct Unref {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_t* context) const { cairo_destroy(context); }
  void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
  void operator()(PangoLayout* layout) const { g_object_unref(layout); }
};
template <typename T>
using Owned = std::unique_ptr<T, Unref>;

PangoAlignment pangoAlign(Align align) {
  switch (align) {
    case Align::Right:
      return PANGO_ALIGN_RIGHT;
    case Align::Center:
      return PANGO_ALIGN_CENTER;
    case Align::Left:
      break;
  }
  return PANGO_ALIGN_LEFT;
}

}  // namespace

class PdfSheets::Drawing {
 public:
  Drawing(std::function<void(std::string_view)> sink, const Setup& setup)
      : sink_(std::move(sink)),
        sheet_(setup.sheet.value_or(setup.landscape ? kLandscape : kUpright)),
        footText_(setup.footText) {
    surface_.reset(cairo_pdf_surface_create_for_stream(&Drawing::take, this, sheet_.width, sheet_.height));
    cairo_pdf_surface_set_metadata(surface_.get(), CAIRO_PDF_METADATA_TITLE, valid(setup.title).c_str());
    context_.reset(cairo_create(surface_.get()));
    check();
    layout_.reset(pango_cairo_create_layout(context_.get()));
    placeLettersExactly();
    pango_layout_set_wrap(layout_.get(), PANGO_WRAP_WORD_CHAR);
    font_.reset(pango_font_description_from_string(kFonts));
  }

  [[nodiscard]] double left() const { return sheet_.left; }
  [[nodiscard]] double width() const { return sheet_.width - sheet_.left - sheet_.right; }
  [[nodiscard]] double y() const { return y_; }
  void moveDown(double points) { y_ += points; }

  bool need(double height) {
    if (y_ + height <= sheet_.height - sheet_.bottom - kFoot || y_ <= sheet_.top) return false;
    endSheet();
    y_ = sheet_.top;
    return true;
  }

  double textWidth(std::string_view text, const TextStyle& style) {
    lay(text, -1, style, Align::Left);
    return measured().first;
  }

  double textHeight(std::string_view text, double width, const TextStyle& style) {
    lay(text, width, style, Align::Left);
    return measured().second;
  }

  double draw(double x, double top, double width, std::string_view text, const TextStyle& style, Align align) {
    lay(text, width, style, align);
    setColor(style.color);
    cairo_move_to(context_.get(), x, top);
    pango_cairo_show_layout(context_.get(), layout_.get());
    return measured().second;
  }

  void box(double x, double top, double width, double height, const Color& color) {
    setColor(color);
    cairo_rectangle(context_.get(), x, top, width, height);
    cairo_fill(context_.get());
  }

  void finish() {
    endSheet();
    cairo_surface_finish(surface_.get());
    check();
  }

 private:
  // No exception may pass through the library, so it is kept until the drawing is asked for its state.
  static cairo_status_t take(void* self, const unsigned char* bytes, unsigned int count) {
    auto* drawing = static_cast<Drawing*>(self);
    if (drawing->fault_) return CAIRO_STATUS_WRITE_ERROR;
    try {
      drawing->sink_(std::string_view(reinterpret_cast<const char*>(bytes), count));
      return CAIRO_STATUS_SUCCESS;
    } catch (...) {
      drawing->fault_ = std::current_exception();
      return CAIRO_STATUS_WRITE_ERROR;
    }
  }

  void check() {
    if (fault_) std::rethrow_exception(fault_);
    cairo_status_t status = cairo_surface_status(surface_.get());
    if (status == CAIRO_STATUS_SUCCESS && context_) status = cairo_status(context_.get());
    if (status != CAIRO_STATUS_SUCCESS) {
      throw std::runtime_error(std::string("The PDF could not be drawn: ") + cairo_status_to_string(status));
    }
  }

  // Paper has no pixels that letters would have to fit: without this they are placed at whole points, which makes small
  // ones uneven and wider than their size says.
  void placeLettersExactly() {
    PangoContext* context = pango_layout_get_context(layout_.get());
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context, options);
    cairo_font_options_destroy(options);
    pango_context_set_round_glyph_positions(context, FALSE);
  }

  void endSheet() {
    const double top = sheet_.height - sheet_.bottom - 9;
    box(left(), top - 5, width(), 0.5, kRule);
    draw(left(), top, width(), footText_, kFootStyle, Align::Left);
    draw(left(), top, width(), std::to_string(++sheets_), kFootStyle, Align::Right);
    cairo_show_page(context_.get());
    check();
  }

  static std::string valid(std::string_view text) {
    char* whole = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    std::string copy(whole);
    g_free(whole);
    return copy;
  }

  void lay(std::string_view text, double width, const TextStyle& style, Align align) {
    pango_font_description_set_absolute_size(font_.get(), style.size * PANGO_SCALE);
    pango_font_description_set_weight(font_.get(), style.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    PangoLayout* layout = layout_.get();
    pango_layout_set_font_description(layout, font_.get());
    pango_layout_set_single_paragraph_mode(layout, style.lines == 1);
    pango_layout_set_width(layout, width < 0 ? -1 : static_cast<int>(width * PANGO_SCALE));
    pango_layout_set_height(layout, style.lines == 0 ? -1 : -style.lines);
    pango_layout_set_ellipsize(layout, style.lines == 0 || width < 0 ? PANGO_ELLIPSIZE_NONE : PANGO_ELLIPSIZE_END);
    pango_layout_set_alignment(layout, pangoAlign(align));
    const std::string whole = valid(text);
    pango_layout_set_text(layout, whole.data(), static_cast<int>(whole.size()));
  }

  [[nodiscard]] std::pair<double, double> measured() const {
    int width = 0;
    int height = 0;
    pango_layout_get_size(layout_.get(), &width, &height);
    return {static_cast<double>(width) / PANGO_SCALE, static_cast<double>(height) / PANGO_SCALE};
  }

  void setColor(const Color& color) { cairo_set_source_rgb(context_.get(), color.red, color.green, color.blue); }

  std::function<void(std::string_view)> sink_;
  std::exception_ptr fault_;
  Sheet sheet_;
  std::string footText_;
  Owned<cairo_surface_t> surface_;
  Owned<cairo_t> context_;
  Owned<PangoFontDescription> font_;
  Owned<PangoLayout> layout_;
  double y_ = sheet_.top;
  int sheets_ = 0;
};

PdfSheets::PdfSheets(std::function<void(std::string_view)> sink, const Setup& setup)
    : drawing_(std::make_unique<Drawing>(std::move(sink), setup)) {}

PdfSheets::~PdfSheets() = default;

double PdfSheets::left() const {
  return drawing_->left();
}

double PdfSheets::width() const {
  return drawing_->width();
}

double PdfSheets::y() const {
  return drawing_->y();
}

void PdfSheets::moveDown(double points) {
  drawing_->moveDown(points);
}

bool PdfSheets::need(double height) {
  return drawing_->need(height);
}

double PdfSheets::textWidth(std::string_view text, const TextStyle& style) {
  return drawing_->textWidth(text, style);
}

double PdfSheets::textHeight(std::string_view text, double width, const TextStyle& style) {
  return drawing_->textHeight(text, width, style);
}

void PdfSheets::text(double x, double top, double width, std::string_view text, const TextStyle& style, Align align) {
  drawing_->draw(x, top, width, text, style, align);
}

void PdfSheets::paragraph(std::string_view text, const TextStyle& style, Align align) {
  TextStyle flowing = style;
  flowing.lines = 0;
  need(textHeight(text, width(), flowing));
  moveDown(drawing_->draw(left(), y(), width(), text, flowing, align));
}

void PdfSheets::rule(double x, double top, double width, double thickness, const Color& color) {
  drawing_->box(x, top, width, thickness, color);
}

void PdfSheets::box(double x, double top, double width, double height, const Color& color) {
  drawing_->box(x, top, width, height, color);
}

void PdfSheets::finish() {
  drawing_->finish();
}

}  // namespace print
