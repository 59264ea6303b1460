#include "ui/settings/party_pages.h"

#include <QLabel>
#include <QVBoxLayout>
#include <set>

#include "ui/record_table.h"

namespace ui {

namespace {

using Parties = std::shared_ptr<EditedParties>;

// A text column over a member of the records of a list.
template <typename Record>
RecordColumn textColumn(const QString& caption, const Parties& parties, std::vector<Record> EditedParties::*list,
                        std::string Record::*member) {
  RecordColumn column;
  column.caption = caption;
  column.read = [parties, list, member](int row) {
    return toQt((parties.get()->*list)[static_cast<std::size_t>(row)].*member);
  };
  column.write = [parties, list, member](int row, const QString& text) {
    (parties.get()->*list)[static_cast<std::size_t>(row)].*member = fromQt(text.trimmed());
    parties->changed = true;
    return true;
  };
  return column;
}

template <typename Record>
RecordTableModel::Rows editableRows(const Parties& parties, std::vector<Record> EditedParties::*list) {
  return {
      [parties, list] { return static_cast<int>((parties.get()->*list).size()); },
      [parties, list](int at) {
        auto& records = parties.get()->*list;
        records.insert(records.begin() + at, Record());
        parties->changed = true;
      },
      [parties, list](int at) {
        auto& records = parties.get()->*list;
        records.erase(records.begin() + at);
        parties->changed = true;
      },
  };
}

QWidget* withHint(QWidget* table, const QString& hint) {
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  auto* label = new QLabel(hint);
  label->setWordWrap(true);
  layout->addWidget(label);
  layout->addWidget(table);
  return page;
}

// A record without its key cannot be found by any call.
template <typename Record>
QString checkKeys(const std::vector<Record>& records, std::string Record::*key, const Texts& texts,
                  const QString& list) {
  for (std::size_t i = 0; i < records.size(); ++i) {
    if ((records[i].*key).empty()) {
      return texts.format("IDS_SETTINGS_EMPTY_KEY", fromQt(list), static_cast<int>(i) + 1);
    }
  }
  return {};
}

RecordColumn flagColumn(const QString& caption, const Parties& parties, std::int32_t exchange::tagTRUNKINFO::*member) {
  RecordColumn column;
  column.caption = caption;
  column.checkbox = true;
  column.read = [parties, member](int row) {
    return QString(parties->trunks[static_cast<std::size_t>(row)].*member != 0 ? "1" : "0");
  };
  column.write = [parties, member](int row, const QString& text) {
    parties->trunks[static_cast<std::size_t>(row)].*member = text == "1" ? 1 : 0;
    parties->changed = true;
    return true;
  };
  return column;
}

QString providerName(const EditedParties& parties, std::int32_t id) {
  for (const auto& provider : parties.providers) {
    if (provider.id == id) return toQt(provider.name);
  }
  return {};
}

RecordColumn providerColumn(const Parties& parties, const Texts& texts) {
  RecordColumn column;
  column.caption = texts("IDS_PROVIDER");
  column.read = [parties](int row) {
    return providerName(*parties, parties->trunks[static_cast<std::size_t>(row)].providerId);
  };
  column.write = [parties](int row, const QString& text) {
    auto& trunk = parties->trunks[static_cast<std::size_t>(row)];
    std::int32_t id = -1;
    for (const auto& provider : parties->providers) {
      if (toQt(provider.name) == text) id = provider.id;
    }
    if (id < 0 && !text.isEmpty()) return false;
    // Profiles belong to their provider.
    if (id != trunk.providerId) trunk.profile.clear();
    trunk.providerId = id;
    parties->changed = true;
    return true;
  };
  column.choices = [parties] {
    QStringList names{QString()};
    for (const auto& provider : parties->providers) names << toQt(provider.name);
    return names;
  };
  return column;
}

}  // namespace

EditedParties::EditedParties(const exchange::PartyDefinitions& definitions)
    : extensions(definitions.extensions),
      accounts(definitions.accounts),
      trunks(definitions.trunks),
      clients(definitions.clients),
      providers(definitions.providers) {}

void EditedParties::putInto(exchange::PartyDefinitions& definitions) const {
  definitions.extensions = extensions;
  definitions.accounts = accounts;
  definitions.trunks = trunks;
  definitions.clients = clients;
  for (auto& provider : definitions.providers) {
    for (const auto& edited : providers) {
      if (edited.id != provider.id) continue;
      provider.localPrefixes = edited.localPrefixes;
      provider.freeSeconds = edited.freeSeconds;
    }
  }
  definitions.reindex();
}

SettingsPage extensionsPage(std::shared_ptr<EditedParties> parties, const Texts& texts) {
  using Extension = exchange::tagEXTINFO;
  auto* model = new RecordTableModel(
      {
          textColumn(texts("IDS_EXTENSION"), parties, &EditedParties::extensions, &Extension::extension),
          textColumn(texts("IDS_DESCRIPTION"), parties, &EditedParties::extensions, &Extension::description),
          textColumn(texts("IDS_DEPARTMENT"), parties, &EditedParties::extensions, &Extension::department),
      },
      editableRows(parties, &EditedParties::extensions));
  const QString caption = texts("IDS_EXTENSIONS");
  return {caption, withHint(new RecordTable(model, "extensionsTable", texts), texts("IDS_HINT_EXTENSIONS")),
          [parties, &texts, caption] { return checkKeys(parties->extensions, &Extension::extension, texts, caption); },
          nullptr};
}

SettingsPage accountsPage(std::shared_ptr<EditedParties> parties, const Texts& texts) {
  using Account = exchange::tagCONTINFO;
  auto* model = new RecordTableModel(
      {
          textColumn(texts("IDS_ACCOUNT"), parties, &EditedParties::accounts, &Account::account),
          textColumn(texts("IDS_DESCRIPTION"), parties, &EditedParties::accounts, &Account::description),
          textColumn(texts("IDS_DEPARTMENT"), parties, &EditedParties::accounts, &Account::department),
      },
      editableRows(parties, &EditedParties::accounts));
  const QString caption = texts("IDS_ACCOUNTS");
  return {caption, withHint(new RecordTable(model, "accountsTable", texts), texts("IDS_HINT_ACCOUNTS")),
          [parties, &texts, caption] { return checkKeys(parties->accounts, &Account::account, texts, caption); },
          nullptr};
}

SettingsPage clientsPage(std::shared_ptr<EditedParties> parties, const Texts& texts) {
  using Client = exchange::ClientDefinition;
  auto* model = new RecordTableModel(
      {
          textColumn(texts("IDS_CLIENT"), parties, &EditedParties::clients, &Client::name),
          textColumn(texts("IDS_ACCOUNT"), parties, &EditedParties::clients, &Client::account),
          textColumn(texts("IDS_FOLDER"), parties, &EditedParties::clients, &Client::folder),
      },
      editableRows(parties, &EditedParties::clients));
  // Clients are written by statements that an apostrophe breaks.
  const auto check = [parties, &texts]() -> QString {
    for (const Client& client : parties->clients) {
      if ((client.name + client.account + client.folder).find('\'') != std::string::npos) {
        return texts.format("IDS_SETTINGS_APOSTROPHE", client.name);
      }
    }
    return {};
  };
  return {texts("IDS_CLIENTS"), withHint(new RecordTable(model, "clientsTable", texts), texts("IDS_HINT_CLIENTS")),
          check, nullptr};
}

SettingsPage trunksPage(std::shared_ptr<EditedParties> parties,
                        std::function<QStringList(std::int32_t providerId)> profilesOf, const Texts& texts) {
  using Trunk = exchange::tagTRUNKINFO;
  RecordColumn profile = textColumn(texts("IDS_PROFILE"), parties, &EditedParties::trunks, &Trunk::profile);
  profile.choices = [parties, profilesOf] {
    // Every provider's profiles: the row that is edited is not known here, and the check names a wrong pair.
    QStringList names{QString()};
    for (const auto& provider : parties->providers) {
      for (const QString& name : profilesOf(provider.id)) {
        if (!names.contains(name)) names << name;
      }
    }
    return names;
  };
  auto* model = new RecordTableModel(
      {
          textColumn(texts("IDS_TRUNK"), parties, &EditedParties::trunks, &Trunk::trunk),
          textColumn(texts("IDS_LABEL"), parties, &EditedParties::trunks, &Trunk::label),
          providerColumn(parties, texts),
          profile,
          flagColumn(texts("IDS_PRICED_BY_PULSES"), parties, &Trunk::pulses),
          flagColumn(texts("IDS_IGNORE_ZERO_PULSES"), parties, &Trunk::ignoreZeroPulses),
      },
      {[parties] { return static_cast<int>(parties->trunks.size()); }, nullptr, nullptr});
  const auto check = [parties, profilesOf, &texts]() -> QString {
    for (const Trunk& trunk : parties->trunks) {
      if (trunk.providerId <= 0 || trunk.profile.empty()) continue;
      if (!profilesOf(trunk.providerId).contains(toQt(trunk.profile))) {
        return texts.format("IDS_SETTINGS_WRONG_PROFILE", trunk.trunk, trunk.profile,
                            fromQt(providerName(*parties, trunk.providerId)));
      }
    }
    return {};
  };
  return {texts("IDS_TRUNKS"), withHint(new RecordTable(model, "trunksTable", texts), texts("IDS_HINT_TRUNKS")), check,
          nullptr};
}

}  // namespace ui
