#pragma once

#include <QListWidget>
#include <QSpinBox>

#include "folders/column_layout.h"
#include "ui/dialogs/form_dialog.h"

namespace ui {

// Which columns a list shows, in which order and how wide.
class ColumnsDialog : public FormDialog {
 public:
  // `shown` is the present layout, `standard` the one that the button for it brings back.
  ColumnsDialog(const Texts& texts, const folders::FolderDefinition& folder, const folders::ColumnLayout& shown,
                folders::ColumnLayout standard, QWidget* parent);

  void accept() override;  // a list needs a column
  [[nodiscard]] folders::ColumnLayout layout() const;

 private:
  void fill(const folders::ColumnLayout& layout);
  void move(int by);
  void showWidth();

  const folders::FolderDefinition& folder_;
  folders::ColumnLayout standard_;
  QListWidget* list_;
  QSpinBox* width_;
};

}  // namespace ui
