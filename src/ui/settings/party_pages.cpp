#include "ui/settings/party_pages.h"

#include <set>

#include "ui/settings/table_columns.h"

namespace ui {

namespace {

using Parties = std::shared_ptr<EditedParties>;
using Tariffs = std::shared_ptr<EditedTariffs>;
using Trunk = exchange::tagTRUNKINFO;

template <typename Record>
EditedList<Record> listOf(const Parties& parties, std::vector<Record> EditedParties::Lists::*member) {
  return {[parties, member]() -> std::vector<Record>& { return parties->lists.*member; }, [] {}};
}

// A record without its key cannot be found by any call, and a missing description would be read back as the department.
template <typename Record>
QString checkCodes(const std::vector<Record>& records, std::string Record::*key, const Texts& texts,
                   const QString& list) {
  for (std::size_t i = 0; i < records.size(); ++i) {
    const Record& record = records[i];
    if ((record.*key).empty()) return texts.format("IDS_SETTINGS_EMPTY_KEY", fromQt(list), static_cast<int>(i) + 1);
    if (record.description.empty() && !record.department.empty()) {
      return texts.format("IDS_SETTINGS_NO_DESCRIPTION", fromQt(list), record.*key);
    }
  }
  return {};
}

// Extensions and accounts: a code with its description and department.
template <typename Record>
SettingsPage codesPage(const EditedList<Record>& records, std::string Record::*key, const QString& caption,
                       const QString& keyCaption, const QString& name, const QString& hint, const Texts& texts) {
  auto* model = new RecordTableModel(
      {textColumn(keyCaption, records, key), textColumn(texts("IDS_DESCRIPTION"), records, &Record::description),
       textColumn(texts("IDS_DEPARTMENT"), records, &Record::department)},
      editableRows<Record>(records, [] { return Record(); }));
  SettingsPage page = tablePage(caption, model, name, hint, texts);
  page.check = [records, key, &texts, caption] { return checkCodes(records.list(), key, texts, caption); };
  page.reported = true;
  return page;
}

bool inUse(const Trunk& trunk) {
  return trunk.providerId > 0 || (!trunk.label.empty() && trunk.label != "-");
}

// The first entry with a number is the one that counts, so a number is there once: a free entry gives its number up.
RecordColumn trunkNumberColumn(const EditedList<Trunk>& trunks, const Texts& texts) {
  RecordColumn column = textColumn(texts("IDS_TRUNK"), trunks, &Trunk::trunk);
  column.hint = texts("IDS_HINT_TRUNK_NUMBER");
  column.write = [trunks](int row, const QString& text) {
    const std::string number = fromQt(text.trimmed());
    Trunk& edited = trunks.at(row);
    if (number.empty()) return false;
    for (Trunk& other : trunks.list()) {
      if (&other == &edited || other.trunk != number) continue;
      if (inUse(other)) return false;
      other.trunk = edited.trunk;
    }
    edited.trunk = number;
    return true;
  };
  return column;
}

RecordColumn flagColumn(const QString& caption, const EditedList<Trunk>& trunks, std::int32_t Trunk::*member) {
  RecordColumn column;
  column.caption = caption;
  column.checkbox = true;
  column.read = [trunks, member](int row) { return QString(trunks.at(row).*member != 0 ? "1" : "0"); };
  column.write = [trunks, member](int row, const QString& text) {
    if (text != "0" && text != "1") return false;
    trunks.at(row).*member = text == "1" ? 1 : 0;
    return true;
  };
  return column;
}

RecordColumn trunkProviderColumn(const EditedList<Trunk>& trunks, const Tariffs& tariffs, const Texts& texts) {
  RecordColumn column;
  column.caption = texts("IDS_PROVIDER");
  column.hint = texts("IDS_HINT_PROVIDER");
  column.read = [=](int row) { return tariffs->providerName(trunks.at(row).providerId); };
  column.write = [=](int row, const QString& text) {
    const auto id = tariffs->providerOf(text.trimmed());
    if (!id) return false;
    Trunk& trunk = trunks.at(row);
    if (*id != trunk.providerId) {
      // Profiles belong to their provider; with a single one there is no choice.
      const QStringList profiles = tariffs->profileNames(*id);
      trunk.profile = profiles.size() == 1 ? fromQt(profiles.front()) : std::string();
    }
    trunk.providerId = *id;
    return true;
  };
  column.choices = [tariffs](int) { return QStringList{QString()} + tariffs->providerNames(); };
  return column;
}

RecordColumn trunkProfileColumn(const EditedList<Trunk>& trunks, const Tariffs& tariffs, const Texts& texts) {
  RecordColumn column = textColumn(texts("IDS_PROFILE"), trunks, &Trunk::profile);
  column.hint = texts("IDS_HINT_TRUNK_PROFILE");
  column.choices = [=](int row) {
    QStringList names = tariffs->profileNames(trunks.at(row).providerId);
    if (!names.contains(QString())) names.prepend(QString());
    return names;
  };
  return column;
}

// The entry of an imported trunk: its own, else a free one from the end, where the numbers are the least likely.
int rowForTrunk(const EditedList<Trunk>& trunks, const QString& key, const std::set<int>& taken) {
  const auto& list = trunks.list();
  const std::string number = fromQt(key);
  int free = -1;
  for (int row = 0; row < static_cast<int>(list.size()); ++row) {
    const Trunk& trunk = trunks.at(row);
    if (taken.contains(row)) continue;
    if (trunk.trunk == number) return row;
    if (!inUse(trunk)) free = row;
  }
  return number.empty() ? -1 : free;
}

}  // namespace

SettingsPage extensionsPage(const Parties& parties, const Texts& texts) {
  return codesPage(listOf(parties, &EditedParties::Lists::extensions), &exchange::tagEXTINFO::extension,
                   texts("IDS_EXTENSIONS"), texts("IDS_EXTENSION"), "extensionsTable", texts("IDS_HINT_EXTENSIONS"),
                   texts);
}

SettingsPage accountsPage(const Parties& parties, const Texts& texts) {
  return codesPage(listOf(parties, &EditedParties::Lists::accounts), &exchange::tagCONTINFO::account,
                   texts("IDS_ACCOUNTS"), texts("IDS_ACCOUNT"), "accountsTable", texts("IDS_HINT_ACCOUNTS"), texts);
}

SettingsPage clientsPage(const Parties& parties, const Texts& texts) {
  using Client = exchange::ClientDefinition;
  const auto clients = listOf(parties, &EditedParties::Lists::clients);
  auto* model = new RecordTableModel({textColumn(texts("IDS_CLIENT"), clients, &Client::name),
                                      textColumn(texts("IDS_ACCOUNT"), clients, &Client::account),
                                      textColumn(texts("IDS_FOLDER"), clients, &Client::folder)},
                                     editableRows<Client>(clients, [] { return Client(); }));
  SettingsPage page = tablePage(texts("IDS_CLIENTS"), model, "clientsTable", texts("IDS_HINT_CLIENTS"), texts);
  page.reported = true;
  // Clients are written by statements that an apostrophe breaks.
  page.check = [clients, &texts]() -> QString {
    for (const Client& client : clients.list()) {
      if ((client.name + client.account + client.folder).find('\'') != std::string::npos) {
        return texts.format("IDS_SETTINGS_APOSTROPHE", client.name);
      }
    }
    return {};
  };
  return page;
}

SettingsPage trunksPage(const Parties& parties, const Tariffs& tariffs, const Texts& texts) {
  const auto trunks = listOf(parties, &EditedParties::Lists::trunks);
  RecordTableModel::Rows rows;
  rows.count = [trunks] { return static_cast<int>(trunks.list().size()); };
  rows.keep = keeperOf(trunks);
  rows.rowFor = [trunks](const QString& key, const std::set<int>& taken) { return rowForTrunk(trunks, key, taken); };
  auto* model =
      new RecordTableModel({trunkNumberColumn(trunks, texts), textColumn(texts("IDS_LABEL"), trunks, &Trunk::label),
                            trunkProviderColumn(trunks, tariffs, texts), trunkProfileColumn(trunks, tariffs, texts),
                            flagColumn(texts("IDS_PRICED_BY_PULSES"), trunks, &Trunk::pulses),
                            flagColumn(texts("IDS_IGNORE_ZERO_PULSES"), trunks, &Trunk::ignoreZeroPulses)},
                           rows);
  SettingsPage page = tablePage(texts("IDS_TRUNKS"), model, "trunksTable", texts("IDS_HINT_TRUNKS"), texts);
  page.reported = true;
  std::set<std::int32_t> knownAtFirst;
  for (const auto& provider : tariffs->tables.providers) knownAtFirst.insert(provider.providerId);
  page.check = [=, &texts]() -> QString {
    for (const Trunk& trunk : trunks.list()) {
      if (trunk.providerId <= 0) continue;
      // What an old database brought along stays; what was deleted here is told.
      if (!tariffs->hasProvider(trunk.providerId)) {
        if (knownAtFirst.contains(trunk.providerId)) return texts.format("IDS_SETTINGS_TRUNK_PROVIDER", trunk.trunk);
        continue;
      }
      if (!trunk.profile.empty() && !tariffs->profileNames(trunk.providerId).contains(toQt(trunk.profile))) {
        return texts.format("IDS_SETTINGS_WRONG_PROFILE", trunk.trunk, trunk.profile,
                            fromQt(tariffs->providerName(trunk.providerId)));
      }
    }
    return {};
  };
  return page;
}

}  // namespace ui
