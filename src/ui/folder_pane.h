#pragma once

#include <QFrame>
#include <QLabel>
#include <QScrollBar>
#include <QWidget>

#include "ui/empty_guide.h"
#include "ui/filter_bar.h"
#include "ui/folder_view.h"

namespace ui {

// The record list with the scroll bar of the whole folder beside it, which takes the place of the list's own one when
// the folder is longer than the window of rows that the list holds.
class FolderPane : public QWidget {
  Q_OBJECT

 public:
  // Takes the list over.
  FolderPane(CFolderView* list, const Texts& texts, QWidget* parent = nullptr);

  [[nodiscard]] EmptyGuide& guide() const { return *guide_; }
  [[nodiscard]] FilterBar& filterBar() const { return *filter_; }
  // Says above the list that only the calls of a row of a statistic are shown; an empty text takes that away.
  void showNarrowing(const QString& text);

 signals:
  void backWanted();      // to the statistic
  void allCallsWanted();  // in the list

 private:
  [[nodiscard]] bool windowed() const { return list_->model().totalRows() > list_->model().rowCount(); }
  void chooseBar();
  void follow();                // the list was scrolled
  void scrollTo(int position);  // the bar was moved
  void moveWindowAround(std::int64_t position);

  void buildBar(const Texts& texts);

  CFolderView* list_;
  FilterBar* filter_;
  QFrame* bar_ = nullptr;
  QLabel* narrowing_ = nullptr;
  QScrollBar* whole_;
  EmptyGuide* guide_;
  bool following_ = false;
};

}  // namespace ui
