#include <QHeaderView>
#include <QTableWidget>

#include "ui/dialogs.h"
#include "ui/dialogs/form_dialog.h"

namespace ui {

namespace {

class KeysDialog : public FormDialog {
 public:
  KeysDialog(const Texts& texts, std::vector<std::pair<QString, QString>> keys, QWidget* parent)
      : FormDialog(texts, "IDS_ACTION_KEYS", "keys", parent) {
    keys.emplace_back(texts("IDS_KEY_OPEN"), "Enter");
    keys.emplace_back(texts("IDS_KEY_TYPE"), texts("IDS_KEY_LETTERS"));
    keys.emplace_back(texts("IDS_KEY_ESCAPE"), "Esc");
    keys.emplace_back(texts("IDS_KEY_ENDS"), "Ctrl+Home, Ctrl+End");
    auto* table = named(new QTableWidget(static_cast<int>(keys.size()), 2), "keyList");
    table->setAccessibleName(windowTitle());
    table->setHorizontalHeaderLabels({texts("IDS_KEY_COMMAND"), texts("IDS_KEY")});
    table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    table->verticalHeader()->hide();
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    for (int row = 0; row < table->rowCount(); ++row) {
      const auto& [text, key] = keys[static_cast<std::size_t>(row)];
      table->setItem(row, 0, new QTableWidgetItem(text));
      table->setItem(row, 1, new QTableWidgetItem(key));
    }
    table->resizeColumnToContents(1);
    body()->addWidget(table);
    cancelButton()->hide();
    resize(fontMetrics().averageCharWidth() * 80, fontMetrics().lineSpacing() * 30);
  }
};

}  // namespace

void showKeys(const Texts& texts, QWidget* parent, const std::vector<std::pair<QString, QString>>& keys) {
  KeysDialog(texts, keys, parent).exec();
}

}  // namespace ui
