#include "ui/filter_view.h"

#include "ui/texts.h"

namespace ui {

CFilterView::CFilterView(QWidget* parent) : QTextEdit(parent) {
  setObjectName("filterPane");
  setReadOnly(true);
  setFrameShape(QFrame::NoFrame);
  setTabChangesFocus(true);
}

void CFilterView::show(const std::vector<filter::DescriptionPiece>& pieces) {
  clear();
  QTextCursor cursor(document());
  QTextCharFormat label;
  QTextCharFormat value;
  value.setFontWeight(QFont::Bold);
  for (const filter::DescriptionPiece& piece : pieces) {
    cursor.insertText(toQt(piece.text), piece.isValue ? value : label);
  }
  moveCursor(QTextCursor::Start);
}

}  // namespace ui
