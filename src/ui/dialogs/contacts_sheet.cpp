#include "ui/dialogs/contacts_sheet.h"

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <algorithm>

#include "base/text.h"
#include "security/rights.h"
#include "ui/dialogs.h"
#include "ui/dialogs/conflict_dialog.h"
#include "ui/dialogs/messages.h"

namespace ui {

namespace {

using contacts::CONTACTENTRYDESC;
using contacts::SaveResult;

constexpr int kWatchInterval = 1000;  // milliseconds
constexpr int kRelationships = 6;
constexpr int kLongestText = 255;  // of the columns

struct FieldDeclaration {
  const char* key;
  const char* name;
  std::string CONTACTENTRYDESC::*member;
  bool manyLines;
};
constexpr FieldDeclaration kFields[] = {
    {"IDS_NAME", "name", &CONTACTENTRYDESC::name, false},
    {"IDS_ORGANIZATION", "organization", &CONTACTENTRYDESC::organization, false},
    {"IDS_CONTACT", "contact", &CONTACTENTRYDESC::contact, false},
    {"IDS_PHONE_NUMBERS", "phones", &CONTACTENTRYDESC::telView, false},
    {"IDS_EMAIL", "email", &CONTACTENTRYDESC::email, false},
    {"IDS_WEB", "web", &CONTACTENTRYDESC::web, false},
    {"IDS_ADDRESS", "address", &CONTACTENTRYDESC::address, true},
    {"IDS_NOTE", "note", &CONTACTENTRYDESC::note, true},
};

bool mayChange(server::CServerDoc& document) {
  return !document.DatabaseReadOnly() && document.HasRight(security::ObjectCalls, security::RightChange);
}

std::string firstNumber(const std::string& numbers) {
  const auto all = base::split(numbers, ",;/\r\n");
  return all.empty() ? std::string() : std::string(base::trim(all.front()));
}

}  // namespace

std::string ContactsSheet::Field::text() const {
  if (const auto* line = qobject_cast<QLineEdit*>(editor)) return fromQt(line->text().trimmed());
  return fromQt(qobject_cast<QPlainTextEdit*>(editor)->toPlainText().trimmed());
}

void ContactsSheet::Field::setText(const std::string& text) const {
  if (auto* line = qobject_cast<QLineEdit*>(editor)) {
    line->setText(toQt(text));
    line->setCursorPosition(0);
  } else {
    qobject_cast<QPlainTextEdit*>(editor)->setPlainText(toQt(text));
  }
}

ContactsSheet::ContactsSheet(server::CServerDoc& document, const Texts& texts, std::optional<CONTACTENTRYDESC> contact,
                             std::optional<foundation::TableWatch> watch, QWidget* parent)
    : FormDialog(texts, "IDS_CONTACTS", "contactsSheet", parent),
      document_(document),
      original_(std::move(contact)),
      table_(std::move(watch)) {
  okButton()->setText(texts("IDS_SAVE"));
  buildForm();
  if (original_) {
    delete_ = addButton("IDS_DELETE", "delete");
    delete_->setEnabled(mayChange(document));
    connect(delete_, &QPushButton::clicked, this, [this] { removeContact(); });
  }
  show(original_.value_or(CONTACTENTRYDESC()));
  if (!mayChange(document)) allowOnlyLooking();
  if (original_ && table_) {
    connect(&watch_, &QTimer::timeout, this, [this] { lookForChanges(); });
    watch_.setObjectName("watch");
    watch_.start(kWatchInterval);
  }
}

void ContactsSheet::buildForm() {
  auto* form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  const int lineHeight = fontMetrics().lineSpacing();
  for (const FieldDeclaration& declared : kFields) {
    QWidget* editor = nullptr;
    if (declared.manyLines) {
      auto* text = new QPlainTextEdit;
      text->setTabChangesFocus(true);
      text->setMinimumHeight(lineHeight * 3);
      text->setFixedHeight(lineHeight * 5);
      editor = text;
    } else {
      auto* line = new QLineEdit;
      line->setMaxLength(kLongestText);
      line->setMinimumWidth(fontMetrics().averageCharWidth() * 44);
      editor = line;
    }
    if (declared.member == &CONTACTENTRYDESC::contact) {
      qobject_cast<QLineEdit*>(editor)->setPlaceholderText(texts()("IDS_CONTACT_DISPLAY_NAME"));
    }
    if (declared.member == &CONTACTENTRYDESC::telView) {
      qobject_cast<QLineEdit*>(editor)->setPlaceholderText(texts()("IDS_CONTACT_SEVERAL_NUMBERS"));
    }
    form->addRow(texts()(declared.key), named(editor, declared.name));
    fields_.push_back({editor, declared.member, texts()(declared.key)});
    if (declared.member == &CONTACTENTRYDESC::contact) {
      tip_ = named(new QComboBox, "relationship");
      for (int i = 0; i < kRelationships; ++i) tip_->addItem(toQt(document_.valueFormatter().contactTypeName(i)));
      form->addRow(texts()("IDS_RELATIONSHIP"), tip_);
    }
  }
  if (original_) {
    form->addRow(texts()("IDS_RECORDNUMBER"), named(new QLabel(QString::number(original_->recordId)), "recordNumber"));
  }
  body()->addLayout(form);
}

void ContactsSheet::show(const CONTACTENTRYDESC& contact) {
  for (Field& field : fields_) {
    field.setText(contact.*field.member);
    field.shown = field.text();
  }
  // Types of later versions stay as they are unless another is chosen.
  shownTip_ = contact.tip >= 0 && contact.tip < kRelationships ? contact.tip : -1;
  tip_->setCurrentIndex(shownTip_);
}

bool ContactsSheet::modified() const {
  return tip_->currentIndex() != shownTip_ ||
         std::any_of(fields_.begin(), fields_.end(), [](const Field& field) { return field.text() != field.shown; });
}

CONTACTENTRYDESC ContactsSheet::edited() {
  CONTACTENTRYDESC contact = original_.value_or(CONTACTENTRYDESC());
  const std::string numbersBefore = contact.telView;
  for (const Field& field : fields_) {
    if (field.text() != field.shown || !original_) contact.*field.member = field.text();
  }
  if (tip_->currentIndex() != shownTip_) contact.tip = tip_->currentIndex();
  if (contact.telView != numbersBefore) {
    contact.telString = document_.contactBook().searchedNumbers(contact.telView);
    contact.tel = firstNumber(contact.telView);
  }
  // Calls show this name.
  if (contact.contact.empty()) contact.contact = contact.name.empty() ? contact.organization : contact.name;
  return contact;
}

bool ContactsSheet::save() {
  const CONTACTENTRYDESC contact = edited();
  if (contact.contact.empty()) {  // nor a name or organization to take it from
    warn(this, texts(), texts()("IDS_CONTACT_NAMELESS"));
    return false;
  }
  SaveResult result = SaveResult::Failed;
  const bool asked = attempt(this, texts(), [&] {
    if (original_) {
      result = document_.contactBook().save(*original_, contact);
    } else {
      document_.contactBook().add(contact);
      result = SaveResult::Done;
    }
  });
  if (!asked) return false;
  if (result == SaveResult::ChangedByOther) {
    if (const auto stored = document_.contactBook().find(original_->recordId)) takeOver(*stored);
  } else if (result == SaveResult::DeletedByOther && keepDeleted()) {
    return save();
  }
  return result == SaveResult::Done;
}

void ContactsSheet::accept() {
  watch_.stop();
  if (!original_ || modified()) {
    if (!save()) {
      if (original_ && isVisible()) watch_.start();
      return;
    }
    QDialog::accept();
  } else {
    QDialog::reject();
  }
}

void ContactsSheet::reject() {
  watch_.stop();
  if (okButton()->isEnabled() && modified()) {
    switch (ask(this, texts(), texts()("IDS_SAVERECORD"), Choices::YesNoCancel)) {
      case Answer::Yes:
        return accept();
      case Answer::Cancel:
        if (original_) watch_.start();
        return;
      case Answer::No:
        break;
    }
  }
  QDialog::reject();
}

void ContactsSheet::removeContact() {
  watch_.stop();
  if (!confirmLoss(this, texts(), texts().format("IDS_CONTACT_CONFIRM_DELETE", contacts::displayName(*original_)))) {
    watch_.start();
    return;
  }
  attempt(this, texts(), [this] {
    const SaveResult result = document_.contactBook().remove(*original_);
    const std::string message = document_.contactBook().message(result);
    if (!message.empty()) inform(this, texts(), toQt(message));
    done(Accepted);
  });
}

void ContactsSheet::lookForChanges() {
  if (document_.app().surroundings().person.busy()) return;  // the database is at work
  watch_.stop();
  // The connection may be gone for a moment; saving looks again and reports.
  try {
    if (table_->changed()) {
      const auto stored = document_.contactBook().find(original_->recordId);
      if (!stored) {
        keepDeleted();
      } else if (*stored != *original_) {
        takeOver(*stored);
      }
    }
  } catch (const jet::Error&) {
  }
  if (original_ && isVisible()) watch_.start();
}

// A field that only one of the two changed has the changed text; where both did, the operator is asked.
void ContactsSheet::takeOver(const CONTACTENTRYDESC& stored) {
  QString news = texts()("IDS_LAN_RECORD_CHANGED") + "\n";
  std::vector<ConflictDialog::Field> conflicts;
  std::vector<std::pair<const Field*, std::string>> kept;
  std::vector<const Field*> disputed;
  const auto tell = [&](const QString& label, const QString& before, const QString& now) {
    news += "\n" + texts().format("IDS_LAN_FIELD_NEWS", fromQt(label), fromQt(before), fromQt(now));
  };
  for (const Field& field : fields_) {
    const std::string mine = field.text();
    const std::string& theirs = stored.*field.member;
    const bool changedHere = mine != field.shown;
    const bool changedThere = theirs != original_.value().*field.member;
    if (changedHere) kept.emplace_back(&field, mine);
    if (changedHere && changedThere && theirs != mine) {
      conflicts.push_back({field.label, toQt(mine), toQt(theirs)});
      disputed.push_back(&field);
    } else if (changedThere && theirs != mine) {
      tell(field.label, toQt(field.shown), toQt(theirs));
    }
  }
  const int tipBefore = shownTip_;
  const int tipHere = tip_->currentIndex();
  original_ = stored;
  show(stored);
  for (const auto& [field, text] : kept) field->setText(text);
  const bool tipDisputed = tipHere != tipBefore && shownTip_ != tipBefore && shownTip_ != tipHere;
  if (tipDisputed) conflicts.push_back({texts()("IDS_RELATIONSHIP"), relationship(tipHere), relationship(shownTip_)});
  if (tipHere == tipBefore && shownTip_ != tipBefore) {
    tell(texts()("IDS_RELATIONSHIP"), relationship(tipBefore), relationship(shownTip_));
  }
  if (tipHere != tipBefore) tip_->setCurrentIndex(tipHere);
  if (conflicts.empty()) {
    if (!kept.empty() || tipHere != tipBefore) news += "\n\n" + texts()("IDS_CONTACT_EDITS_STAY");
    return inform(this, texts(), news);
  }
  ConflictDialog dialog(texts(), news, conflicts, this);
  dialog.exec();
  for (std::size_t i = 0; i < disputed.size(); ++i) {
    if (dialog.takesTheirs(i)) disputed[i]->setText(stored.*disputed[i]->member);
  }
  if (tipDisputed && dialog.takesTheirs(disputed.size())) tip_->setCurrentIndex(shownTip_);
}

QString ContactsSheet::relationship(int tip) const {
  return toQt(document_.valueFormatter().contactTypeName(tip));
}

bool ContactsSheet::keepDeleted() {
  if (!modified()) {
    inform(this, texts(), texts()("IDS_LAN_RECORD_DELETED_NO"));
    done(Accepted);
    return false;
  }
  if (ask(this, texts(), texts()("IDS_LAN_RECORD_DELETED")) != Answer::Yes) {
    done(Accepted);
    return false;
  }
  original_.reset();
  delete_->setEnabled(false);
  return true;
}

bool editContact(server::CServerDoc& document, const Texts& texts, QWidget* parent, std::int32_t recordId) {
  foundation::TableWatch watch(document.database(), document.tags(), contacts::kContactsTable);
  auto contact = document.contactBook().find(recordId);
  if (!contact) {
    inform(parent, texts, texts("IDS_CANTEDITRECORD"));
    return false;
  }
  return ContactsSheet(document, texts, std::move(contact), watch, parent).exec() == QDialog::Accepted;
}

bool addContact(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  return ContactsSheet(document, texts, std::nullopt, std::nullopt, parent).exec() == QDialog::Accepted;
}

}  // namespace ui
