#include "ui/dialogs/record_list.h"

#include <QHeaderView>

namespace ui {

namespace {

constexpr int kRowMargin = 8;  // between the texts of two rows, in pixels

}  // namespace

QTableWidget* makeRecordList(const QStringList& captions, const QString& accessibleName, const char* name) {
  auto* list = new QTableWidget(0, static_cast<int>(captions.size()));
  list->setObjectName(name);
  list->setAccessibleName(accessibleName);
  list->setHorizontalHeaderLabels(captions);
  list->setSelectionBehavior(QAbstractItemView::SelectRows);
  list->setSelectionMode(QAbstractItemView::SingleSelection);
  list->setEditTriggers(QAbstractItemView::NoEditTriggers);
  list->setTabKeyNavigation(false);
  list->setShowGrid(false);
  list->setAlternatingRowColors(true);
  list->setWordWrap(false);
  list->verticalHeader()->hide();
  list->verticalHeader()->setDefaultSectionSize(list->fontMetrics().height() + kRowMargin);
  list->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  list->horizontalHeader()->setHighlightSections(false);
  list->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  return list;
}

}  // namespace ui
