#include "ui/dialogs/columns_dialog.h"

#include <QHBoxLayout>
#include <algorithm>

#include "ui/dialogs/messages.h"

namespace ui {

namespace {

constexpr int kKindRole = Qt::UserRole;
constexpr int kWidthRole = Qt::UserRole + 1;  // pixels; 0: by itself
constexpr int kWidest = 2000;

}  // namespace

ColumnsDialog::ColumnsDialog(const Texts& texts, const folders::FolderDefinition& folder,
                             const folders::ColumnLayout& shown, folders::ColumnLayout standard, QWidget* parent)
    : FormDialog(texts, "IDS_ACTION_COLUMNS", "columns", parent),
      folder_(folder),
      standard_(std::move(standard)),
      list_(named(new QListWidget, "columnList")),
      width_(named(new QSpinBox, "columnWidth")) {
  list_->setAccessibleName(windowTitle());
  width_->setRange(0, kWidest);
  width_->setSpecialValueText(texts("IDS_COLUMNS_OWN_WIDTH"));
  width_->setSuffix(" px");
  auto* up = named(new QPushButton(texts("IDS_COLUMNS_UP")), "up");
  auto* down = named(new QPushButton(texts("IDS_COLUMNS_DOWN")), "down");
  auto* label = new QLabel(texts("IDS_COLUMNS_WIDTH"));
  label->setBuddy(width_);
  auto* side = new QVBoxLayout;
  side->addWidget(up);
  side->addWidget(down);
  side->addSpacing(fontMetrics().lineSpacing());
  side->addWidget(label);
  side->addWidget(width_);
  side->addStretch();
  auto* row = new QHBoxLayout;
  row->addWidget(list_, 1);
  row->addLayout(side);
  body()->addLayout(row);
  connect(up, &QPushButton::clicked, this, [this] { move(-1); });
  connect(down, &QPushButton::clicked, this, [this] { move(1); });
  connect(addButton("IDS_DEFAULT", "standard"), &QPushButton::clicked, this, [this] { fill(standard_); });
  connect(list_, &QListWidget::currentRowChanged, this, [this] { showWidth(); });
  connect(width_, &QSpinBox::valueChanged, this, [this](int pixels) {
    if (list_->currentItem() != nullptr) list_->currentItem()->setData(kWidthRole, pixels);
  });
  fill(shown);
  resize(fontMetrics().averageCharWidth() * 60, fontMetrics().lineSpacing() * 26);
}

// The shown columns in their order, then the others.
void ColumnsDialog::fill(const folders::ColumnLayout& layout) {
  list_->clear();
  const auto add = [&](const folders::ColumnDefinition& column, bool shown) {
    auto* item = new QListWidgetItem(texts()(column.caption), list_);
    item->setData(kKindRole, column.kind);
    item->setData(kWidthRole, layout.widthOf(column.kind));
    item->setCheckState(shown ? Qt::Checked : Qt::Unchecked);
  };
  for (const int kind : layout.visible) {
    const auto column = std::ranges::find(folder_.columns, kind, &folders::ColumnDefinition::kind);
    if (column != folder_.columns.end()) add(*column, true);
  }
  for (const folders::ColumnDefinition& column : folder_.columns) {
    const bool shown = std::ranges::find(layout.visible, column.kind) != layout.visible.end();
    if (!shown && column.flags != 0 && (column.flags & folders::ColumnKey) == 0) add(column, false);
  }
  list_->setCurrentRow(0);
}

void ColumnsDialog::move(int by) {
  const int row = list_->currentRow();
  if (row < 0 || row + by < 0 || row + by >= list_->count()) return;
  QListWidgetItem* item = list_->takeItem(row);
  list_->insertItem(row + by, item);
  list_->setCurrentRow(row + by);
}

void ColumnsDialog::showWidth() {
  const QListWidgetItem* item = list_->currentItem();
  width_->setEnabled(item != nullptr);
  if (item != nullptr) width_->setValue(item->data(kWidthRole).toInt());
}

folders::ColumnLayout ColumnsDialog::layout() const {
  folders::ColumnLayout layout;
  for (int row = 0; row < list_->count(); ++row) {
    const QListWidgetItem* item = list_->item(row);
    if (item->checkState() != Qt::Checked) continue;
    layout.visible.push_back(item->data(kKindRole).toInt());
    const int width = item->data(kWidthRole).toInt();
    if (width > 0) layout.widths.emplace_back(item->data(kKindRole).toInt(), width);
  }
  return layout;
}

void ColumnsDialog::accept() {
  if (layout().visible.empty()) return warn(this, texts(), texts()("IDS_COLUMNS_NONE"));
  QDialog::accept();
}

}  // namespace ui
