#include "ui/filter_menus.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QLineEdit>

#include "filter/periods.h"
#include "filter/saved_filters.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/mnemonics.h"

namespace ui {

namespace {

base::DateTime now(const FilterMenuTarget& target) {
  return target.document.app().surroundings().clock.now();
}

void use(const FilterMenuTarget& target, const filter::FilterSettings& settings) {
  if (!target.document.callFilter().write(settings)) {
    return warn(target.parent, target.texts, target.texts("IDS_FILTER_NOT_WRITTEN"));
  }
  filter::dropStaleNames(target.document.app().config(), {}, settings);
  target.changed();
}

void usePeriod(const FilterMenuTarget& target, const filter::Period& period) {
  filter::FilterSettings settings = target.document.callFilter().settings();
  filter::setPeriod(settings, period);
  if (!target.document.callFilter().write(settings)) {
    return warn(target.parent, target.texts, target.texts("IDS_FILTER_NOT_WRITTEN"));
  }
  target.changed();
}

// The day from which on calls are shown.
class SinceDialog : public FormDialog {
 public:
  SinceDialog(const Texts& texts, base::DateTime first, QWidget* parent)
      : FormDialog(texts, "IDS_PERIOD_SINCE", "since", parent), day_(named(new QDateEdit, "day")) {
    const auto parts = first.parts();
    day_->setDate({parts.year, parts.month, parts.day});
    day_->setDisplayFormat("dd.MM.yyyy");
    day_->setCalendarPopup(true);
    auto* form = new QFormLayout;
    form->addRow(texts("IDS_PERIOD_FIRST_DAY"), day_);
    body()->addLayout(form);
  }
  [[nodiscard]] base::DateTime day() const {
    const QDate date = day_->date();
    return base::DateTime::fromParts(date.year(), date.month(), date.day()).value_or(base::DateTime());
  }

 private:
  QDateEdit* day_;
};

void askSince(const FilterMenuTarget& target) {
  const filter::Period present = filter::periodOf(filter::Preset::ThisMonth, now(target));
  SinceDialog dialog(target.texts, present.start, target.parent);
  if (dialog.exec() != QDialog::Accepted) return;
  // No end: the last second that a date can have.
  usePeriod(target, {dialog.day(), base::DateTime::fromParts(9999, 12, 31, 23, 59, 59).value_or(present.end)});
}

// The name under which the filter is kept, and for whom.
class SaveDialog : public FormDialog {
 public:
  SaveDialog(const Texts& texts, bool mayShare, QWidget* parent)
      : FormDialog(texts, "IDS_FILTER_SAVE_AS", "saveFilter", parent),
        name_(named(new QLineEdit, "filterName")),
        shared_(makeCheckBox("IDS_FILTER_SHARED", "filterShared")) {
    auto* form = new QFormLayout;
    form->addRow(texts("IDS_NAME"), name_);
    body()->addLayout(form);
    body()->addWidget(shared_);
    shared_->setEnabled(mayShare);
    setMinimumWidth(fontMetrics().averageCharWidth() * 55);
  }
  void accept() override {
    if (name().isEmpty()) return warn(this, texts(), texts()("IDS_FILTER_NAME_MISSING"));
    QDialog::accept();
  }
  [[nodiscard]] QString name() const { return name_->text().trimmed(); }
  [[nodiscard]] bool shared() const { return shared_->isChecked(); }

 private:
  QLineEdit* name_;
  QCheckBox* shared_;
};

filter::SavedFilters savedIn(const FilterMenuTarget& target, int store) {
  return {target.document.app().config(), store};
}

void savePresent(const FilterMenuTarget& target) {
  SaveDialog dialog(target.texts, !target.document.DatabaseReadOnly(), target.parent);
  if (dialog.exec() != QDialog::Accepted) return;
  const int store = dialog.shared() ? foundation::StoreDatabase : foundation::StoreMachine;
  attempt(target.parent, target.texts, [&] {
    const bool saved =
        savedIn(target, store).save(fromQt(dialog.name()), target.document.callFilter().settings(), now(target));
    if (!saved) warn(target.parent, target.texts, target.texts("IDS_FILTER_NOT_WRITTEN"));
  });
}

void deleteSaved(const FilterMenuTarget& target, int store, const std::string& name) {
  if (!confirmLoss(target.parent, target.texts, target.texts.format("IDS_CONFIRM_DELETE", name))) return;
  attempt(target.parent, target.texts, [&] {
    if (!savedIn(target, store).remove(name)) warn(target.parent, target.texts, target.texts("IDS_FILTER_NOT_WRITTEN"));
  });
}

void addSaved(QMenu& menu, QMenu& deletions, const FilterMenuTarget& target, int store) {
  for (const std::string& name : savedIn(target, store).names()) {
    QString shown = toQt(name).replace("&", "&&");
    if (store == foundation::StoreDatabase) shown += "  (" + target.texts("IDS_FILTER_SHARED_MARK") + ")";
    menu.addAction(shown, [target, store, name] {
      attempt(target.parent, target.texts, [&] {
        const auto settings = savedIn(target, store).find(name, now(target));
        if (settings) use(target, *settings);
      });
    });
    deletions.addAction(shown, [target, store, name] { deleteSaved(target, store, name); });
  }
}

}  // namespace

void fillPeriodMenu(QMenu& menu, const FilterMenuTarget& target) {
  menu.clear();
  const filter::FilterSettings settings = target.document.callFilter().settings();
  const auto present = settings.onFilter == 1 && settings.onPeriod != 0
                           ? filter::presetOf(filter::periodOf(settings), now(target))
                           : std::nullopt;
  for (const filter::PresetName& preset : filter::kPresets) {
    QAction* action = menu.addAction(target.texts(preset.captionKey), [target, which = preset.preset] {
      usePeriod(target, filter::periodOf(which, now(target)));
    });
    action->setObjectName(preset.captionKey);
    action->setCheckable(true);
    action->setChecked(present == preset.preset);
  }
  menu.addSeparator();
  menu.addAction(target.texts("IDS_PERIOD_SINCE"), [target] { askSince(target); });
  QAction* any = menu.addAction(target.texts("IDS_PERIOD_ANY"), [target] {
    target.document.callFilter().set({{std::string(foundation::keys::filter::OnPeriod.key), "0"}});
    target.changed();
  });
  any->setObjectName("IDS_PERIOD_ANY");
  assignMnemonics(menu.actions());
}

void fillSavedFilterMenu(QMenu& menu, const FilterMenuTarget& target) {
  menu.clear();
  auto* deletions = new QMenu(target.texts("IDS_FILTER_DELETE_SAVED"), &menu);
  attempt(target.parent, target.texts, [&] {
    addSaved(menu, *deletions, target, foundation::StoreMachine);
    addSaved(menu, *deletions, target, foundation::StoreDatabase);
  });
  if (menu.isEmpty()) menu.addAction(target.texts("IDS_FILTER_NONE_SAVED"))->setEnabled(false);
  menu.addSeparator();
  QAction* save = menu.addAction(target.texts("IDS_FILTER_SAVE_AS"), [target] { savePresent(target); });
  save->setObjectName("IDS_FILTER_SAVE_AS");
  save->setEnabled(target.document.callFilter().active());
  QList<QAction*> ownEntries{save};
  if (!deletions->isEmpty()) ownEntries << menu.addMenu(deletions);
  assignMnemonics(ownEntries);
}

}  // namespace ui
