#include "ui/dialogs/restriction_picker.h"

#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>

#include "base/characters.h"
#include "security/session.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/party_choices.h"

namespace ui {

namespace {

constexpr int kValueRole = Qt::UserRole;

struct ListOf {
  const char* captionKey;
  const char* name;
  std::vector<std::string> filter::RestrictionChoice::*names;
};
constexpr ListOf kListsOf[] = {
    {"IDS_RESTRICT_DEPARTMENTS", "restrictDepartments", &filter::RestrictionChoice::departments},
    {"IDS_EXTENSIONS", "restrictExtensions", &filter::RestrictionChoice::extensions},
    {"IDS_CLIENTS", "restrictClients", &filter::RestrictionChoice::clients},
    {"IDS_TRUNKS", "restrictTrunks", &filter::RestrictionChoice::trunks},
};

std::vector<ChoiceBox::Choice> clientChoices(const exchange::PartyDefinitions& definitions) {
  std::vector<std::string> names;
  for (const exchange::ClientDefinition& client : definitions.clients) {
    if (!client.name.empty() && std::ranges::find(names, client.name) == names.end()) names.push_back(client.name);
  }
  return plainChoices(names);
}

}  // namespace

RestrictionPicker::RestrictionPicker(const exchange::PartyDefinitions& definitions, const QString& condition,
                                     const Texts& texts, QWidget* parent)
    : QWidget(parent),
      definitions_(definitions),
      texts_(texts),
      lists_{},
      text_(named(new QPlainTextEdit(condition), "restriction")),
      state_(named(new QLabel, "restrictionState")),
      departments_(named(new QPushButton(texts("IDS_RESTRICT_USE_DEPARTMENTS")), "useDepartments")) {
  auto* tabs = named(new QTabWidget, "restrictionTabs");
  const std::array<std::vector<ChoiceBox::Choice>, kLists> choices = {
      departmentChoices(definitions), extensionChoices(definitions), clientChoices(definitions),
      trunkChoices(definitions)};
  for (std::size_t i = 0; i < kLists; ++i) {
    lists_[i] = named(new QListWidget, kListsOf[i].name);
    lists_[i]->setAccessibleName(texts(kListsOf[i].captionKey));
    for (const ChoiceBox::Choice& choice : choices[i]) {
      if (choice.value.isEmpty()) continue;
      auto* item = new QListWidgetItem(choice.shown, lists_[i]);
      item->setData(kValueRole, choice.value);
      item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
      item->setCheckState(Qt::Unchecked);
    }
    tabs->addTab(lists_[i], texts(kListsOf[i].captionKey));
    connect(lists_[i], &QListWidget::itemChanged, this, &RestrictionPicker::followLists);
  }
  text_->setPlaceholderText("Extension = '201'");
  text_->setAccessibleName(texts("IDS_RESTRICT_CONDITION"));
  text_->setTabChangesFocus(true);
  text_->setFixedHeight(fontMetrics().lineSpacing() * 4);
  state_->setWordWrap(true);
  auto* hint = new QLabel(texts("IDS_RESTRICT_HINT"));
  hint->setWordWrap(true);
  auto* label = new QLabel(texts("IDS_RESTRICT_CONDITION"));
  label->setBuddy(text_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* caption = new QLabel(texts("IDS_USER_RESTRICTION"));
  caption->setBuddy(tabs);
  layout->addWidget(caption);
  layout->addWidget(tabs, 1);
  layout->addWidget(hint);
  layout->addWidget(label);
  layout->addWidget(text_);
  layout->addWidget(state_);
  layout->addWidget(departments_, 0, Qt::AlignLeft);
  connect(text_, &QPlainTextEdit::textChanged, this, &RestrictionPicker::followText);
  connect(departments_, &QPushButton::clicked, this, &RestrictionPicker::useDepartments);
  followText();
}

QString RestrictionPicker::condition() const {
  return text_->toPlainText().simplified();
}

void RestrictionPicker::fillLists(const filter::RestrictionChoice& choice) {
  for (std::size_t i = 0; i < kLists; ++i) {
    const QSignalBlocker quiet(lists_[i]);
    QStringList names;
    for (const std::string& name : choice.*kListsOf[i].names) names << toQt(name);
    for (int row = 0; row < lists_[i]->count(); ++row) {
      QListWidgetItem* item = lists_[i]->item(row);
      const QString value = item->data(kValueRole).toString();
      item->setCheckState(names.contains(value) ? Qt::Checked : Qt::Unchecked);
      names.removeAll(value);
    }
    // What is not defined any more can still be taken out.
    for (const QString& name : names) {
      auto* item = new QListWidgetItem(name, lists_[i]);
      item->setData(kValueRole, name);
      item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
      item->setCheckState(Qt::Checked);
    }
  }
}

filter::RestrictionChoice RestrictionPicker::ticked() const {
  filter::RestrictionChoice choice;
  for (std::size_t i = 0; i < kLists; ++i) {
    for (int row = 0; row < lists_[i]->count(); ++row) {
      const QListWidgetItem* item = lists_[i]->item(row);
      if (item->checkState() != Qt::Checked) continue;
      (choice.*kListsOf[i].names).push_back(fromQt(item->data(kValueRole).toString()));
    }
  }
  return choice;
}

void RestrictionPicker::followLists() {
  const filter::RestrictionChoice choice = ticked();
  const QSignalBlocker quiet(text_);
  text_->setPlainText(toQt(filter::restrictionFor(choice, definitions_.extensionIsText)));
  tellLimit(choice);
}

// A condition that the lists cannot say leaves them alone.
void RestrictionPicker::followText() {
  const auto choice = filter::choiceOf(fromQt(condition()));
  for (QListWidget* list : lists_) list->setEnabled(choice.has_value());
  if (choice) {
    fillLists(*choice);
    return tellLimit(*choice);
  }
  departments_->hide();
  const bool tooLong = base::characterCount(fromQt(condition())) >= security::kRestrictionLimit;
  state_->setText(tooLong ? texts_.format("IDS_RESTRICTION_SHORTEN", security::kRestrictionLimit - 1)
                          : texts_("IDS_RESTRICT_BY_HAND"));
  state_->show();
}

void RestrictionPicker::tellLimit(const filter::RestrictionChoice& choice) {
  const QString text = toQt(filter::limitText(choice, definitions_, texts_.language()));
  state_->setText(text);
  state_->setVisible(!text.isEmpty());
  departments_->setVisible(filter::withDepartments(choice, definitions_.extensions) != choice);
}

void RestrictionPicker::useDepartments() {
  fillLists(filter::withDepartments(ticked(), definitions_.extensions));
  followLists();
}

}  // namespace ui
