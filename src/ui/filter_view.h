#pragma once

#include <QTextEdit>

#include "filter/description.h"

namespace ui {

// The pane that says in words which calls are shown.
class CFilterView : public QTextEdit {
  Q_OBJECT

 public:
  explicit CFilterView(QWidget* parent = nullptr);
  // Labels plain, values bold: the same pieces as the Rich Text ones.
  void show(const std::vector<filter::DescriptionPiece>& pieces);
};

}  // namespace ui
