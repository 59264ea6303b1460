#pragma once

#include <QScrollArea>

namespace ui {

// A page that scrolls where it is larger than its window. Unlike a plain scroll area it leaves room for sentences that
// wrap, which are taller the narrower the page is, and makes a page narrow (narrow_page.h) before it scrolls sideways.
class ScrollPage : public QScrollArea {
 public:
  // Takes the page over; it has a layout.
  explicit ScrollPage(QWidget* page, QWidget* parent = nullptr);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void fitWidth();
  void fitHeight();

  bool narrow_ = false;
};

}  // namespace ui
