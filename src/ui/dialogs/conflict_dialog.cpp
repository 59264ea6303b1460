#include "ui/dialogs/conflict_dialog.h"

#include <QGroupBox>

namespace ui {

namespace {

// Radio buttons take a text as it is: an ampersand is a letter, a long note is cut.
QString shown(const QString& text) {
  constexpr qsizetype kLongest = 120;
  QString line = text.simplified();
  if (line.size() > kLongest) line = line.left(kLongest) + "...";
  return line.isEmpty() ? QString("-") : line.replace("&", "&&");
}

}  // namespace

ConflictDialog::ConflictDialog(const Texts& texts, const QString& news, const std::vector<Field>& fields,
                               QWidget* parent)
    : FormDialog(texts, "IDS_CONTACTS", "conflict", parent) {
  body()->addWidget(named(makeHint(news + "\n\n" + texts("IDS_LAN_BOTH_CHANGED")), "news"));
  for (const Field& field : fields) {
    auto* group = new QGroupBox(field.label);
    auto* mine = named(new QRadioButton(texts.format("IDS_LAN_MINE", fromQt(shown(field.mine)))), "mine");
    auto* theirs = named(new QRadioButton(texts.format("IDS_LAN_THEIRS", fromQt(shown(field.theirs)))), "theirs");
    mine->setChecked(true);
    auto* lines = new QVBoxLayout(group);
    lines->addWidget(mine);
    lines->addWidget(theirs);
    theirs_.push_back(theirs);
    body()->addWidget(group);
  }
  cancelButton()->hide();
  setMinimumWidth(fontMetrics().averageCharWidth() * 60);
}

}  // namespace ui
