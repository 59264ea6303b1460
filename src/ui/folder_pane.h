#pragma once

#include <QScrollBar>
#include <QWidget>

#include "ui/folder_view.h"

namespace ui {

// The record list with the scroll bar of the whole folder beside it, which takes the place of the list's own one when
// the folder is longer than the window of rows that the list holds.
class FolderPane : public QWidget {
  Q_OBJECT

 public:
  // Takes the list over.
  explicit FolderPane(CFolderView* list, QWidget* parent = nullptr);

 private:
  [[nodiscard]] bool windowed() const { return list_->model().totalRows() > list_->model().rowCount(); }
  void chooseBar();
  void follow();                // the list was scrolled
  void scrollTo(int position);  // the bar was moved
  void moveWindowAround(std::int64_t position);

  CFolderView* list_;
  QScrollBar* whole_;
  bool following_ = false;
};

}  // namespace ui
