#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "server/server_app.h"
#include "server/server_doc.h"
#include "support/exchange.h"

namespace server {

// Answers the login with a name and an empty password, as often as it is asked.
class ScriptedLogin : public security::LoginPrompt {
 public:
  std::optional<security::Credentials> askLogin(const std::string&) override {
    return security::Credentials{"ana", password};
  }
  std::optional<security::PasswordChange> askPasswordChange(const std::string&, bool) override { return std::nullopt; }

  std::string password;
};

class NoDocuments : public platform::DocumentHandler {
 public:
  bool open(const std::string&) override { return false; }
  platform::Printed print(const std::filesystem::path&) override { return platform::Printed::Refused; }
};

// A workstation with the small exchange's files, and the user "ana" with all rights. The language file knows no text
// but one: messages show as their keys.
class Installation {
 public:
  Installation() {
    std::ofstream(programFolder() / "Tallybook.lng") << "LANG en 1252 English\nSET NATIVE en\nen IDS_OK OK\n";
    foundation::MachineStore machine(machineStore());
    machine.writeString("general", "PathDatabase", files.folder.setting());
    machine.writeString("general", "LiveSocket", (files.folder / "live.sock").string());
    addUser(*openMain());
  }

  // Makes the main database again, with the table of calls lacking a column, as if by a version that did not know it.
  void remakeMainWithout(const std::string& column) const {
    files.folder.removeDatabase(schema::kMainFile);
    const auto main = jet::createDatabase(mainFile());
    for (jet::TableDef table : schema::mainTables()) {
      if (table.name == "Calls") {
        std::erase_if(table.fields, [&](const auto& field) { return field.name == column; });
        table.indexes.clear();
      }
      main->createTable(table);
    }
    for (const char* tag : {"Config", "Contacts", "Calls", "Users", "Groups", "Log"}) {
      main->execute(base::format("insert into Touch (Tag, [Value]) values ('%s', 0)", tag));
    }
    addUser(*main);
  }

  [[nodiscard]] std::filesystem::path programFolder() const { return files.folder / ""; }
  [[nodiscard]] std::filesystem::path machineStore() const { return files.folder / "machine.ini"; }
  [[nodiscard]] std::filesystem::path mainFile() const { return files.folder / schema::kMainFile; }
  [[nodiscard]] std::unique_ptr<jet::Database> openMain() const {
    return jet::openDatabase(mainFile(), jet::OpenMode::ReadWrite);
  }
  void execute(const std::string& sql) const { openMain()->execute(sql); }
  // One value: the first column of the first row.
  [[nodiscard]] std::string value(const std::string& sql) const {
    const jet::Snapshot rows = openMain()->openSnapshot(sql);
    return rows.empty() ? "no row" : rows.at(0, 0).toText();
  }

  support::ExchangeFiles files;

 private:
  static void addUser(jet::Database& main) {
    main.execute(
        "insert into Groups (RecordID, Name, PasswordExpire, ObjectAccess) values (1, 'All', 0, '6;1;6;2;9;1;9;2')");
    main.execute("insert into Users (RecordID, Name, [Password], Flags, Groups) values (1, 'ana', 0, 0, ';1;')");
  }
};

// One copy of the program on a workstation.
class Copy {
 public:
  explicit Copy(const Installation& place)
      : app(place.machineStore(), place.programFolder(), {person, login, clock, documents, {}}), document(app) {}

  // The whole start; false when it ended.
  bool start(const StartDuties& duties = {}) {
    return app.InitInstance("", CServerApp::OneCopy::Enforced) == CServerApp::Start::Ready &&
           document.OnNewDocument(duties);
  }

  support::ScriptedOperator person;
  ScriptedLogin login;
  support::StoppedClock clock;
  NoDocuments documents;
  CServerApp app;
  CServerDoc document;
};

using Messages = std::vector<std::string>;

}  // namespace server
