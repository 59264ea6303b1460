#pragma once

#include <QLayout>
#include <QList>

namespace ui {

// Widgets side by side, in as many lines as the width asks for. Where one line is enough, a stretch between them takes
// what is left of it.
class FlowLayout : public QLayout {
 public:
  explicit FlowLayout(QWidget* parent = nullptr);
  ~FlowLayout() override;

  void addStretch() { addItem(new QSpacerItem(0, 0, QSizePolicy::Expanding)); }
  void addItem(QLayoutItem* item) override { items_.append(item); }
  [[nodiscard]] int count() const override { return static_cast<int>(items_.size()); }
  [[nodiscard]] QLayoutItem* itemAt(int index) const override { return items_.value(index); }
  QLayoutItem* takeAt(int index) override;
  [[nodiscard]] Qt::Orientations expandingDirections() const override { return {}; }
  [[nodiscard]] bool hasHeightForWidth() const override { return true; }
  [[nodiscard]] int heightForWidth(int width) const override { return arrange(QRect(0, 0, width, 0), false); }
  [[nodiscard]] QSize minimumSize() const override;
  [[nodiscard]] QSize sizeHint() const override { return minimumSize(); }
  void setGeometry(const QRect& area) override;

 private:
  // Height of all lines; places the widgets when `place`.
  int arrange(const QRect& area, bool place) const;
  // Of all in one line.
  [[nodiscard]] int lineWidth() const;

  QList<QLayoutItem*> items_;
};

}  // namespace ui
