#include "ui/dialogs/mnemonics.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTabBar>
#include <QToolButton>
#include <algorithm>
#include <optional>

namespace ui {

namespace {

// A letter that every keyboard of these languages has without a detour.
bool typeable(QChar letter) {
  return letter.unicode() < 0x80 && letter.isLetterOrNumber();
}

std::optional<QChar> mnemonicOf(const QString& text) {
  for (qsizetype i = 0; i + 1 < text.size(); ++i) {
    if (text[i] != '&') continue;
    if (text[i + 1] != '&') return text[i + 1].toLower();
    ++i;  // a shown "&"
  }
  return std::nullopt;
}

// Where the mark goes: the first letter of a word if one is free, else any free letter; -1 when all are taken.
qsizetype placeFor(const QString& text, const QSet<QChar>& taken) {
  const auto free = [&](qsizetype i) { return typeable(text[i]) && !taken.contains(text[i].toLower()); };
  for (qsizetype i = 0; i < text.size(); ++i) {
    if ((i == 0 || text[i - 1].isSpace()) && free(i)) return i;
  }
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (free(i)) return i;
  }
  return -1;
}

qsizetype letterCount(const QString& text) {
  QSet<QChar> letters;
  for (const QChar letter : text) {
    if (typeable(letter)) letters.insert(letter.toLower());
  }
  return letters.size();
}

class Assignment {
 public:
  explicit Assignment(QSet<QChar> taken) : taken_(std::move(taken)) {}

  void keep(const QString& text) {
    if (const auto letter = mnemonicOf(text)) taken_.insert(*letter);
  }
  [[nodiscard]] QString marked(QString text) {
    if (text.contains('&')) return text;
    const qsizetype place = placeFor(text, taken_);
    if (place < 0) return text;
    taken_.insert(text[place].toLower());
    return text.insert(place, '&');
  }
  [[nodiscard]] const QSet<QChar>& taken() const { return taken_; }

 private:
  QSet<QChar> taken_;
};

// A text is drawn in parts around its marked letter, which takes a little more room than the whole that the label
// asks for.
void mark(QLabel& label, Assignment& assignment) {
  constexpr int kBetweenParts = 2;
  label.setText(assignment.marked(label.text()));
  if (!label.wordWrap())
    label.setMinimumWidth(std::max(label.minimumWidth(), label.sizeHint().width() + kBetweenParts));
}

bool hasOwnKey(const QAbstractButton& button) {
  return button.objectName() == "ok" || button.objectName() == "cancel" || qobject_cast<const QToolButton*>(&button);
}

}  // namespace

QSet<QChar> assignMnemonics(QWidget& window, QSet<QChar> taken) {
  Assignment assignment(std::move(taken));
  const auto tabBars = window.findChildren<QTabBar*>();
  const auto labels = window.findChildren<QLabel*>();
  const auto buttons = window.findChildren<QAbstractButton*>();
  // Those that were given by hand come first.
  for (const QLabel* label : labels) {
    if (label->buddy() != nullptr) assignment.keep(label->text());
  }
  for (const QAbstractButton* button : buttons) assignment.keep(button->text());
  for (QTabBar* bar : tabBars) {
    for (int i = 0; i < bar->count(); ++i) bar->setTabText(i, assignment.marked(bar->tabText(i)));
  }
  for (QWidget* widget : window.findChildren<QWidget*>()) {
    auto* label = qobject_cast<QLabel*>(widget);
    if (label != nullptr && label->buddy() != nullptr) mark(*label, assignment);
    auto* button = qobject_cast<QAbstractButton*>(widget);
    if (button != nullptr && !hasOwnKey(*button)) button->setText(assignment.marked(button->text()));
  }
  return assignment.taken();
}

void assignMnemonics(const QList<QAction*>& entries) {
  Assignment assignment({});
  for (const QAction* action : entries) assignment.keep(action->text());
  // Those of few letters come first: what they could have would be taken.
  QList<QAction*> byLetters = entries;
  std::ranges::stable_sort(byLetters, {}, [](const QAction* action) { return letterCount(action->text()); });
  for (QAction* action : byLetters) {
    if (!action->isSeparator()) action->setText(assignment.marked(action->text()));
  }
}

}  // namespace ui
