#include "ui/dialogs/vcard_exchange.h"

#include <QFile>
#include <QFileDialog>
#include <algorithm>

#include "contacts/vcard.h"
#include "platform/progress.h"
#include "ui/dialogs/file_question.h"
#include "ui/dialogs/messages.h"

namespace ui {

namespace {

constexpr const char* kFileKinds = "vCard (*.vcf)";
constexpr std::size_t kProblemsShown = 10;

std::vector<contacts::CONTACTENTRYDESC> wholeBook(jet::Recordset& rows) {
  std::vector<contacts::CONTACTENTRYDESC> book;
  if (rows.bof() && rows.eof()) return book;
  for (rows.moveFirst(); !rows.eof(); rows.moveNext()) book.push_back(contacts::readContact(rows));
  return book;
}

std::vector<contacts::CONTACTENTRYDESC> contactsOf(contacts::ContactsManager& book,
                                                   const std::vector<std::int32_t>& recordIds) {
  if (recordIds.empty()) return wholeBook(book.recordset());
  std::vector<contacts::CONTACTENTRYDESC> found;
  for (const std::int32_t recordId : recordIds) {
    if (auto contact = book.find(recordId)) found.push_back(std::move(*contact));
  }
  return found;
}

// All cards or, when the operator stops it or a fault comes, none.
std::size_t addAll(server::CServerDoc& document, const Texts& texts, std::vector<contacts::CONTACTENTRYDESC> cards) {
  platform::Operator& person = document.app().surroundings().person;
  const platform::Progress progress(person, fromQt(texts("IDS_CONTACTS")), fromQt(texts("IDS_UPDATING_DATABASE")),
                                    static_cast<std::int64_t>(cards.size()));
  jet::Transaction transaction(document.database());
  std::int64_t done = 0;
  for (contacts::CONTACTENTRYDESC& card : cards) {
    card.telString = document.contactBook().searchedNumbers(card.telView);
    document.contactBook().add(std::move(card));
    if (!person.progressStep(++done)) return 0;
  }
  transaction.commit();
  return cards.size();
}

QString problemText(const Texts& texts, const std::vector<std::string>& problems) {
  QString text = texts.format("IDS_VCARD_PROBLEMS", problems.size());
  for (std::size_t i = 0; i < std::min(problems.size(), kProblemsShown); ++i) text += "\n" + toQt(problems[i]);
  if (problems.size() > kProblemsShown) text += "\n...";
  return text;
}

}  // namespace

std::filesystem::path exportVCards(server::CServerDoc& document, const Texts& texts, QWidget* parent,
                                   const std::vector<std::int32_t>& recordIds) {
  const std::filesystem::path file = askFile(document.app().config(), texts, parent,
                                             {"saveCards", "IDS_VCARD_EXPORT", {kFileKinds}, texts("IDS_CONTACTS")});
  const QString name = toQt(file.string());
  bool written = false;
  if (file.empty()) return {};
  attempt(parent, texts, [&] {
    const std::string cards = [&] {
      const platform::Progress progress(document.app().surroundings().person, fromQt(texts("IDS_CONTACTS")),
                                        texts.language().TranslateFormat("IDS_WRITING_FILE", fromQt(name)));
      return contacts::writeVCards(contactsOf(document.contactBook(), recordIds));
    }();
    written = replaceFile(name, QByteArray::fromStdString(cards));
    if (!written) warn(parent, texts, texts.format("IDS_CANTWRITEFILE", fromQt(name)));
  });
  return written ? file : std::filesystem::path();
}

bool importVCards(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  const QString name = QFileDialog::getOpenFileName(parent, texts("IDS_VCARD_IMPORT"), {}, kFileKinds);
  if (name.isEmpty()) return false;
  QFile file(name);
  if (!file.open(QIODevice::ReadOnly)) {
    warn(parent, texts, texts.format("IDS_CANTREADFILE", fromQt(name)));
    return false;
  }
  contacts::VCardImport cards = contacts::readVCards(file.readAll().toStdString());
  std::size_t added = 0;
  if (!attempt(parent, texts, [&] { added = addAll(document, texts, std::move(cards.contacts)); })) return false;
  QString text = texts.format("IDS_VCARD_ADDED", added);
  if (!cards.problems.empty()) text += "\n\n" + problemText(texts, cards.problems);
  inform(parent, texts, text);
  return added > 0;
}

}  // namespace ui
