#include <QFormLayout>
#include <QHBoxLayout>
#include <QSpinBox>

#include "privacy/anonymise.h"
#include "privacy/person_data.h"
#include "security/audit_log.h"
#include "security/restriction.h"
#include "server/phonebook_file.h"
#include "ui/results/result_dialog.h"
#include "ui/results/result_table.h"
#include "ui/results/results.h"

namespace ui {

namespace {

struct StoredPlaceText {
  std::string_view place;
  const char* key;
};
constexpr StoredPlaceText kStoredPlaces[] = {{"calls", "IDS_CALLS"},
                                             {"contacts", "IDS_CONTACTS"},
                                             {"log", "IDS_FOLDER_LOG"},
                                             {"alarms", "IDS_PAGE_ALARMS"},
                                             {"hidden numbers", "IDS_PERSON_HIDDEN"},
                                             {"phonebook", "IDS_PERSON_PHONEBOOK"}};

std::string placeName(const std::string& place, const foundation::LanguageFile& texts) {
  const auto* const found = std::ranges::find(kStoredPlaces, place, &StoredPlaceText::place);
  return found == std::end(kStoredPlaces) ? place : texts.Translate(found->key);
}

// What is stored about one number or name; to be given to the person, and erased.
class PersonDialog : public ResultDialog {
 public:
  PersonDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent)
      : ResultDialog(document, texts, "IDS_ACTION_PERSON", "personData", parent),
        person_(named(new QLineEdit, "person")),
        summary_(makeHint({})),
        list_(new ResultTable(document, texts, "personList")),
        erase_(list_->addButton("IDS_PERSON_ERASE", "erase")) {
    summary_->setObjectName("summary");
    person_->setPlaceholderText(texts("IDS_PERSON_EXAMPLE"));
    auto* find = named(new QPushButton(texts("IDS_PERSON_FIND")), "find");
    auto* label = new QLabel(texts("IDS_PERSON_WHO"));
    label->setBuddy(person_);
    auto* line = new QHBoxLayout;
    line->addWidget(label);
    line->addWidget(person_, 1);
    line->addWidget(find);
    body()->addWidget(makeHint(texts("IDS_PERSON_HINT")));
    body()->addLayout(line);
    body()->addWidget(summary_);
    body()->addWidget(list_, 1);
    showItems({});
    summary_->clear();
    connect(find, &QPushButton::clicked, this, [this] { search(); });
    connect(person_, &QLineEdit::returnPressed, this, [this] { search(); });
    connect(erase_, &QPushButton::clicked, this, [this] { erase(); });
  }

  [[nodiscard]] bool erased() const { return erased_; }

 private:
  // Runs work on the data of the person that was searched.
  template <typename Work>
  bool onPerson(Work&& use) {
    return work([&] {
      server::CServerDoc& data = document();
      security::requireAllCalls(data.user(), texts().language());
      const analysis::SubscriberNumbers numbers(data.smdr().parties().countryCode, data.smdr().parties().areaCode);
      const auto phonebook = server::openPhonebookFile(data.databases());
      privacy::PersonData person(data.database(), phonebook.get(), numbers, searched_);
      use(person);
    });
  }

  void search() {
    searched_ = fromQt(person_->text().trimmed());
    if (searched_.empty()) return inform(this, texts(), texts()("IDS_PERSON_NOBODY"));
    std::vector<privacy::StoredItem> items;
    if (!onPerson([&](privacy::PersonData& person) { items = person.find(); })) return;
    showItems(items);
    // Whose data they are is not written down.
    document().log().WriteLog(security::LogPrint, texts().language().Translate("IDS_LOG_PERSON_PRINTED"), items.size());
  }

  void showItems(const std::vector<privacy::StoredItem>& items) {
    const foundation::LanguageFile& language = texts().language();
    folders::PlainTable table{
        .title = language.Translate("IDS_PERSON_TITLE") + (searched_.empty() ? "" : ": " + searched_),
        .columns = {{language.Translate("IDS_PERSON_PLACE")},
                    {language.Translate("IDS_DATE_HOUR"), folders::CellKind::DateTime},
                    {language.Translate("IDS_PERSON_STORED")}},
        .rows = {},
        .remarks = {},
        .overCalls = false};
    for (const privacy::StoredItem& item : items) {
      table.rows.push_back({{placeName(item.place, language),
                             item.at ? folders::PlainCell(*item.at) : folders::PlainCell(), item.text}});
    }
    found_ = items.size();
    summary_->setText(texts().format("IDS_PERSON_FOUND", found_));
    erase_->setEnabled(found_ > 0 && !document().DatabaseReadOnly());
    list_->setTable(std::move(table));
  }

  void erase() {
    if (!confirmLoss(this, texts(), texts().format("IDS_PERSON_CONFIRM", found_, searched_))) return;
    std::int64_t count = 0;
    if (!onPerson([&](privacy::PersonData& person) { count = person.erase(); })) return;
    erased_ = true;
    document().tags().TouchCalls();
    document().tags().Touch("Contacts");
    document().log().WriteLog(security::LogDelete, texts().language().Translate("IDS_LOG_PERSON_ERASED"), count);
    onPerson([&](privacy::PersonData& person) { showItems(person.find()); });
    inform(this, texts(), texts().format("IDS_PERSON_ERASED", count));
  }

  QLineEdit* person_;
  QLabel* summary_;
  ResultTable* list_;
  QPushButton* erase_;
  std::string searched_;
  std::size_t found_ = 0;
  bool erased_ = false;
};

// Numbers and names of old calls go, first in a way that can be taken back.
class AnonymiseDialog : public ResultDialog {
 public:
  AnonymiseDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent)
      : ResultDialog(document, texts, "IDS_ACTION_ANONYMISE", "anonymise", parent),
        age_(named(new QSpinBox, "olderThan")),
        state_(makeHint({})),
        apply_(named(new QPushButton(texts("IDS_ANONYMISE_APPLY")), "apply")),
        undo_(named(new QPushButton(texts("IDS_ANONYMISE_UNDO")), "undo")),
        confirm_(named(new QPushButton(texts("IDS_ANONYMISE_CONFIRM")), "confirm")) {
    constexpr int kMostDays = 36'500;
    constexpr int kUsualDays = 365;
    state_->setObjectName("state");
    age_->setRange(1, kMostDays);
    age_->setValue(kUsualDays);
    age_->setSuffix(' ' + texts("IDS_DAYS_TEXT"));
    auto* form = new QFormLayout;
    form->addRow(texts("IDS_ANONYMISE_OLDER"), age_);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* button : {apply_, undo_, confirm_}) buttons->addWidget(button);
    buttons->addStretch();
    body()->addWidget(makeHint(texts("IDS_ANONYMISE_HINT")));
    body()->addLayout(form);
    body()->addWidget(state_);
    body()->addLayout(buttons);
    body()->addStretch();
    resize(fontMetrics().averageCharWidth() * 80, fontMetrics().lineSpacing() * 14);
    age_->setKeyboardTracking(false);
    connect(age_, &QSpinBox::valueChanged, this, [this] { showState(); });
    connect(apply_, &QPushButton::clicked, this, [this] { apply(); });
    connect(undo_, &QPushButton::clicked, this, [this] {
      change("IDS_LOG_ANONYMISED_UNDONE", [](privacy::Anonymisation& calls) { return calls.undo(); });
    });
    connect(confirm_, &QPushButton::clicked, this, [this] {
      if (!sure("IDS_ANONYMISE_CONFIRM_SURE", waiting_)) return;
      change("IDS_LOG_ANONYMISED_CONFIRMED", [](privacy::Anonymisation& calls) { return calls.confirm(); });
    });
  }

  [[nodiscard]] bool changed() const { return changed_; }

  bool showState() {
    return work([this] {
      security::requireAllCalls(document().user(), texts().language());
      privacy::Anonymisation calls(document().database(), document().app().config());
      lastBackup_ = toQt(document().lastBackupText());
      waiting_ = calls.waiting();
      would_ = calls.wouldChange(before());
      QString text = texts().format("IDS_ANONYMISE_WOULD", would_);
      if (waiting_ > 0) text += '\n' + texts().format("IDS_ANONYMISE_WAITING", waiting_);
      state_->setText(text);
      const bool may = !document().DatabaseReadOnly();
      apply_->setEnabled(may && would_ > 0);
      undo_->setEnabled(may && waiting_ > 0);
      confirm_->setEnabled(may && waiting_ > 0);
    });
  }

 private:
  [[nodiscard]] base::DateTime before() {
    return document().app().surroundings().clock.now().midnight().plusDays(-age_->value());
  }

  bool sure(const char* questionKey, std::int64_t calls) {
    return confirmLoss(this, texts(), lastBackup_ + '\n' + texts().format(questionKey, calls));
  }

  void apply() {
    if (!showState() || would_ == 0) return;
    if (!sure("IDS_ANONYMISE_SURE", would_)) return;
    change("IDS_LOG_ANONYMISED", [this](privacy::Anonymisation& calls) { return calls.apply(before()); });
  }

  template <typename Work>
  void change(const char* entryKey, Work&& step) {
    const bool done = work([&] {
      privacy::Anonymisation calls(document().database(), document().app().config());
      const std::int64_t count = step(calls);
      changed_ = true;
      document().tags().TouchCalls();
      document().log().WriteLog(security::LogEdit, texts().language().Translate(entryKey), count);
    });
    if (done) showState();
  }

  QSpinBox* age_;
  QLabel* state_;
  QPushButton* apply_;
  QPushButton* undo_;
  QPushButton* confirm_;
  QString lastBackup_;
  std::int64_t waiting_ = 0;
  std::int64_t would_ = 0;
  bool changed_ = false;
};

}  // namespace

bool showPersonData(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  PersonDialog dialog(document, texts, parent);
  dialog.exec();
  return dialog.erased();
}

bool anonymiseCalls(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  AnonymiseDialog dialog(document, texts, parent);
  if (dialog.showState()) dialog.exec();
  return dialog.changed();
}

}  // namespace ui
