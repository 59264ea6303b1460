#include "ui/details_view.h"

#include <algorithm>

#include "ui/readable_palette.h"

namespace ui {

namespace {

// Width that a caption and its text need, in letters.
constexpr int kFieldLetters = 42;
constexpr int kMostInARow = 3;

// How far captions step back; they stay readable.
constexpr double kFaint = 1.0 / 3;

}  // namespace

DetailsView::DetailsView(QWidget* parent) : QTextEdit(parent) {
  setObjectName("details");
  setReadOnly(true);
  setFrameShape(QFrame::NoFrame);
  setTabChangesFocus(true);
}

void DetailsView::show(const Fields& fields) {
  fields_.clear();
  std::ranges::copy_if(fields, std::back_inserter(fields_), [](const auto& field) { return !field.second.isEmpty(); });
  fill();
}

int DetailsView::fieldsInARow() const {
  return std::clamp(viewport()->width() / (fontMetrics().averageCharWidth() * kFieldLetters), 1, kMostInARow);
}

// Column after column, as a form is read.
void DetailsView::fill() {
  shownInARow_ = fieldsInARow();
  if (fields_.empty()) return clear();
  const auto perColumn =
      (fields_.size() + static_cast<std::size_t>(shownInARow_) - 1) / static_cast<std::size_t>(shownInARow_);
  const QString dim = mixed(palette().color(QPalette::Text), palette().color(QPalette::Base), kFaint).name();
  QString page = "<table cellpadding=2>";
  for (std::size_t row = 0; row < perColumn; ++row) {
    page += "<tr>";
    for (std::size_t i = row; i < fields_.size(); i += perColumn) {
      const QString text = fields_[i].second.toHtmlEscaped().replace('\n', "<br>");
      page += QString("<td style='color:%1'>%2</td><td style='padding-right:24px'>%3</td>")
                  .arg(dim, fields_[i].first.toHtmlEscaped(), text);
    }
    page += "</tr>";
  }
  setHtml(page + "</table>");
}

void DetailsView::resizeEvent(QResizeEvent* event) {
  QTextEdit::resizeEvent(event);
  if (fieldsInARow() != shownInARow_) fill();
}

}  // namespace ui
