#include "ui/dialogs/search_contacts_dialog.h"

#include <QFormLayout>
#include <QHBoxLayout>

#include "platform/progress.h"
#include "security/rights.h"
#include "ui/dialogs.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/record_list.h"
#include "ui/dialogs/report_place.h"
#include "ui/dialogs/vcard_exchange.h"
#include "ui/file_line.h"

namespace ui {

namespace {

constexpr int kLongestName = 255;

}  // namespace

CSearchContactsDlg::CSearchContactsDlg(server::CServerDoc& document, const Texts& texts, QWidget* parent)
    : FormDialog(texts, "IDS_SEARCHCONTACTS", "searchContacts", parent), document_(document) {
  buildInputs();
  buildList();
  buildButtons();
  resize(720, 520);
}

void CSearchContactsDlg::buildInputs() {
  auto* form = new QFormLayout;
  const auto addInput = [&](const char* key, const char* name) {
    auto* line = named(new QLineEdit, name);
    line->setClearButtonEnabled(true);
    form->addRow(texts()(key), line);
    return line;
  };
  name_ = addInput("IDS_NAME", "name");
  name_->setMaxLength(kLongestName);
  telephone_ = addInput("IDS_PHONE_TEXT", "telephone");
  address_ = addInput("IDS_ADDRESS", "address");
  auto& config = document_.app().config();
  const auto option = [&](const foundation::NumberKey& key) { return config.ReadConfigInt(key) != 0; };
  allPlaces_ = makeCheckBox("IDS_SEARCH_ALL_LOC", "extendedSearch");
  ownArea_ = makeCheckBox("IDS_SEARCH_OWN_AREA", "searchAreaCode");
  connect(allPlaces_, &QCheckBox::toggled, ownArea_, &QCheckBox::setDisabled);
  ownArea_->setChecked(option(foundation::keys::SearchAreaCode));
  allPlaces_->setChecked(option(foundation::keys::ExtendedSearch));
  auto* options = new QHBoxLayout;
  options->addWidget(ownArea_);
  options->addWidget(allPlaces_);
  options->addStretch();
  form->addRow(QString(), options);
  body()->addLayout(form);
}

void CSearchContactsDlg::buildList() {
  list_ = makeRecordList({texts()("IDS_NAME"), texts()("IDS_ADDRESS"), texts()("IDS_PHONE_NUMBERS")},
                         texts()("IDS_SEARCH_RESULTS"), "list");
  connect(list_, &QTableWidget::cellDoubleClicked, this, [this] { openSelected(); });
  count_ = named(new QLabel, "count");
  count_->setWordWrap(true);
  body()->addWidget(list_);
  body()->addWidget(count_);
}

void CSearchContactsDlg::buildButtons() {
  okButton()->setText(texts()("IDS_SEARCH"));
  okButton()->setDefault(true);
  cancelButton()->setText(texts()("IDS_CLOSE"));
  const bool mayChange =
      !document_.DatabaseReadOnly() && document_.HasRight(security::ObjectCalls, security::RightChange);
  auto* fresh = addButton("IDS_ACTION_NEW", "new");
  fresh->setEnabled(mayChange);
  connect(fresh, &QPushButton::clicked, this, [this] {
    if (addContact(document_, texts(), this)) search();
  });
  page_ = addButton("IDS_SETTINGS_REPORT", "page");
  page_->setEnabled(false);
  connect(page_, &QPushButton::clicked, this, [this] { writePage(); });

  auto* import = named(new QPushButton(texts()("IDS_VCARD_IMPORT")), "import");
  import->setEnabled(mayChange);
  auto* exported = named(new QPushButton(texts()("IDS_VCARD_EXPORT")), "export");
  auto* cards = new QHBoxLayout;
  for (QPushButton* button : {import, exported}) {
    cards->addWidget(button);
  }
  cards->addStretch();
  auto* written = new FileLine(document_, texts());
  body()->addLayout(cards);
  body()->addWidget(written);
  connect(import, &QPushButton::clicked, this, [this] {
    if (importVCards(document_, texts(), this)) search();
  });
  connect(exported, &QPushButton::clicked, this, [this, written] {
    std::vector<std::int32_t> found;
    for (const auto& match : result_.matches) found.push_back(match.recordId);
    written->say(exportVCards(document_, texts(), this, found));
  });
}

contacts::SearchInput CSearchContactsDlg::input() const {
  contacts::SearchInput input{fromQt(name_->text().trimmed()), fromQt(telephone_->text().trimmed()),
                              fromQt(address_->text().trimmed())};
  // A local number as the book keeps it; numbers with a prefix of their own are sought as they are.
  const bool local = !input.telephone.empty() && input.telephone.front() != '0';
  if (ownArea_->isChecked() && ownArea_->isEnabled() && local) {
    input.telephone = document_.contactBook().localPrefix() + input.telephone;
  }
  return input;
}

void CSearchContactsDlg::accept() {
  // Enter in the list opens what is selected there.
  if (list_->hasFocus() && list_->currentRow() >= 0) return openSelected();
  search();
}

void CSearchContactsDlg::search() {
  if (!contacts::searchable(input())) return warn(this, texts(), texts()("IDS_SEARCH_UNUSABLE"));
  storeOptions();
  const contacts::SearchInput sought = input();
  if (sought.name.empty() && sought.telephone.empty() && sought.address.empty()) {
    count_->setText(texts()("IDS_SEARCH_NOTHING_GIVEN"));
    name_->setFocus();
    return;
  }
  const bool done = attempt(this, texts(), [&] {
    const platform::Progress progress(document_.app().surroundings().person, fromQt(texts()("IDS_SEARCHCONTACTS")),
                                      fromQt(texts()("IDS_SEARCHING")));
    result_ = contacts::searchContacts(sought, document_.contactBook(), document_.app().config());
  });
  if (done) showResult();
}

void CSearchContactsDlg::storeOptions() {
  auto& config = document_.app().config();
  config.WriteConfigInt(ownArea_->isChecked() ? 1 : 0, foundation::keys::SearchAreaCode);
  config.WriteConfigInt(allPlaces_->isChecked() ? 1 : 0, foundation::keys::ExtendedSearch);
}

void CSearchContactsDlg::showResult() {
  list_->setRowCount(static_cast<int>(result_.matches.size()));
  for (int row = 0; row < list_->rowCount(); ++row) {
    const contacts::SearchMatch& match = result_.matches[static_cast<std::size_t>(row)];
    list_->setItem(row, 0, new QTableWidgetItem(toQt(match.displayName)));
    list_->setItem(row, 1, new QTableWidgetItem(toQt(match.address).replace('\n', ", ")));
    list_->setItem(row, 2, new QTableWidgetItem(toQt(match.telView)));
  }
  QString text = texts().format("IDS_CONTACTSRECORDSFOUND", result_.matches.size());
  if (result_.tooMany) text += ". " + texts()("IDS_TOO_MANY_RESULTS");
  count_->setText(text);
  page_->setEnabled(!result_.matches.empty());
  // Enter opens the first one.
  if (!result_.matches.empty()) {
    list_->setCurrentCell(0, 0);
    list_->setFocus();
  }
}

void CSearchContactsDlg::openSelected() {
  const int row = list_->currentRow();
  if (row < 0 || row >= static_cast<int>(result_.matches.size())) return;
  const std::int32_t recordId = result_.matches[static_cast<std::size_t>(row)].recordId;
  attempt(this, texts(), [&] {
    if (editContact(document_, texts(), this, recordId)) search();
  });
}

void CSearchContactsDlg::writePage() {
  const auto folder = reportFile(document_, "cautare.html").parent_path();
  const auto page = contacts::writeSearchPage(result_, texts().language(), folder);
  if (!page) return warn(this, texts(), texts()("IDS_TARIF_CANTCREATETEMPFILE"));
  handOver(document_, texts(), this, *page, ReportUse::Open);
}

void searchContacts(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  CSearchContactsDlg(document, texts, parent).exec();
}

}  // namespace ui
