#pragma once

#include <QTreeWidget>

#include "ui/texts.h"

namespace ui {

// The folder tree.
class CSelectorView : public QTreeWidget {
  Q_OBJECT

 public:
  struct Access {
    bool calls = false;
    bool administration = false;
  };

  explicit CSelectorView(const Texts& texts, QWidget* parent = nullptr);

  // Builds the tree with what the user may see. `logFiltered` chooses the log folder's icon.
  void build(const Access& access, bool logFiltered);
  void select(int id);
  // Marks the entry as the open one and sends no signal.
  void mark(int id);
  [[nodiscard]] int selectedId() const;

 signals:
  void folderSelected(int id);
  // The entry that is open was clicked.
  void folderChosenAgain(int id);

 protected:
  void mousePressEvent(QMouseEvent* event) override;

 private:
  QTreeWidgetItem* addGroup(const QString& caption, const QIcon& icon);
  void addEntry(QTreeWidgetItem* parent, int id, const QString& caption, const QIcon& icon);

  const Texts& texts_;
};

}  // namespace ui
