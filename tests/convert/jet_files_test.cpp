#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <random>

#include "convert/converter.h"
#include "convert/reader_process.h"
#include "jet/database.h"
#include "old_files.h"
#include "support/temporary_folder.h"

namespace convert {
namespace {

namespace fs = std::filesystem;

// With their content as another reader gave it.
const fs::path kFiles = jetFiles();
const char* const kNames[] = {"text-extension/tallybook.mdb", "long-extension/tallybook.mdb", "tariffs.mdb",
                              "tariffs-plain-days.mdb", "phonebook.mdb"};

nlohmann::json asJson(const jet::Value& value) {
  switch (value.type()) {
    case jet::Type::Null:
      return nullptr;
    case jet::Type::Boolean:
      return value.boolean();
    case jet::Type::Long:
      return value.integer();
    case jet::Type::Double:
      return value.number();
    case jet::Type::Text:
      return value.text();
    case jet::Type::DateTime:
      return value.dateTime().stored();
  }
  return {};
}

class Collector : public OldFileSink {
 public:
  void beginTable(const OldTable& table) override {
    tables[table.definition.name] = nlohmann::json::array();
    open_ = table.definition.name;
  }
  void row(const OldRow& row) override {
    nlohmann::json values = nlohmann::json::array();
    for (const jet::Value& value : row) values.push_back(asJson(value));
    tables[open_].push_back(std::move(values));
    ++rows;
  }
  void problem(const std::string& what) override { problems.push_back(what); }
  void endTable() override {}

  std::map<std::string, nlohmann::json> tables;
  std::vector<std::string> problems;
  std::size_t rows = 0;

 private:
  std::string open_;
};

nlohmann::json expectedTables(const std::string& name) {
  std::ifstream in(kFiles / (name + ".tables.json"));
  return nlohmann::json::parse(in);
}

TEST(OldFiles, EveryRowAndValueAgreesWithAnotherReader) {
  for (const char* name : kNames) {
    Collector found;
    const ReaderResult result = readJetFileApart(kFiles / name, {}, {}, found);
    ASSERT_TRUE(result.complete) << result.fault;
    EXPECT_TRUE(found.problems.empty()) << found.problems.front();
    const auto expected = expectedTables(name);
    ASSERT_EQ(found.tables.size(), expected.size()) << name;
    for (const auto& [table, content] : expected.items())
      EXPECT_EQ(found.tables[table], content["rows"]) << name << table;
  }
}

fs::path oldFolder(const fs::path& scratch, const char* main) {
  makeOldFolder(scratch / "old", main);
  return scratch / "old";
}

void expectSameRows(jet::Database& database, const nlohmann::json& expected) {
  for (const auto& [table, content] : expected.items()) {
    std::string list;
    for (const auto& column : content["columns"]) {
      list += (list.empty() ? "[" : ", [") + column[0].get<std::string>() + "]";
    }
    auto rows = nlohmann::json::array();
    database.forEachRow("SELECT " + list + " FROM [" + table + "]", [&](const std::vector<jet::Value>& row) {
      auto values = nlohmann::json::array();
      for (const jet::Value& value : row) values.push_back(asJson(value));
      rows.push_back(std::move(values));
      return true;
    });
    EXPECT_EQ(rows, content["rows"]) << table;
  }
}

TEST(Conversion, CarriesAWholeInstallationOver) {
  for (const char* main : {"text-extension", "long-extension"}) {
    const support::TemporaryFolder scratch;
    const auto old = oldFolder(scratch / "", main);
    platform::NoOperator nobody;
    const auto report = convertFolder(old, scratch / "new", {}, nobody);
    EXPECT_TRUE(report.whole()) << report.text();
    EXPECT_FALSE(fs::exists(scratch / "new.partial"));
    const auto database = jet::openDatabase(scratch / "new" / "tallybook.mdb", jet::OpenMode::ReadWrite);
    expectSameRows(*database, expectedTables(std::string(main) + "/tallybook.mdb"));
    const auto tariffs = jet::openDatabase(scratch / "new" / "tariffs.mdb", jet::OpenMode::ReadOnly);
    expectSameRows(*tariffs, expectedTables("tariffs.mdb"));

    const bool text = std::string(main) == "text-extension";
    const auto calls = database->tableDef("Calls");
    EXPECT_EQ(calls.find("Extension")->type, text ? jet::Type::Text : jet::Type::Long);
    EXPECT_EQ(calls.find("Folder") != nullptr, text) << "left to the start-up's upgrade";
    // Auto-numbers go on after the highest one.
    const auto rows = database->openRecordset("SELECT * FROM Calls");
    rows->moveLast();
    const std::int64_t last = rows->get("RecordID").toLong();
    rows->addNew();
    rows->update();
    EXPECT_EQ(rows->lastAddedKey(), last + 1);
    EXPECT_THROW(convertFolder(old, scratch / "new", {}, nobody), ConversionError) << "never over something";
  }
}

TEST(Conversion, RefusesWhatItCannotDoWithASentence) {
  const support::TemporaryFolder scratch;
  platform::NoOperator nobody;
  const auto failure = [&](const fs::path& from) -> std::string {
    try {
      convertFolder(from, scratch / "new", {}, nobody);
    } catch (const ConversionError& error) {
      EXPECT_FALSE(fs::exists(scratch / "new"));
      EXPECT_FALSE(fs::exists(scratch / "new.partial"));
      return error.what();
    }
    return "converted";
  };
  EXPECT_NE(failure(scratch / "nowhere").find("nowhere"), std::string::npos);
  EXPECT_NE(failure(scratch / "").find("tallybook.mdb"), std::string::npos);

  const auto old = oldFolder(scratch / "", "text-extension");
  std::ofstream(old / "tallybook.ldb") << "maria";
  EXPECT_NE(failure(old).find("tallybook.ldb"), std::string::npos);
  fs::remove(old / "tallybook.ldb");

  std::ofstream(old / "tariffs.mdb", std::ios::trunc) << "no database";
  EXPECT_NE(failure(old).find("tariffs.mdb"), std::string::npos);
  fs::copy_file(kFiles / "tariffs.mdb", old / "tariffs.mdb", fs::copy_options::overwrite_existing);

  fs::create_directories(scratch / "new.partial");
  std::ofstream(scratch / "new.partial" / "mine.txt") << "not from a conversion";
  try {
    convertFolder(old, scratch / "new", {}, nobody);
    ADD_FAILURE() << "cleared somebody's folder away";
  } catch (const ConversionError&) {
    EXPECT_TRUE(fs::exists(scratch / "new.partial" / "mine.txt"));
  }
}

TEST(Conversion, SalvageKeepsTheOtherTables) {
  const support::TemporaryFolder scratch;
  const auto old = oldFolder(scratch / "", "text-extension");
  const fs::path file = old / "Tallybook.MDB";
  // Cut after its first half: some tables lie beyond.
  fs::resize_file(file, fs::file_size(file) * 6 / 10);
  platform::NoOperator nobody;
  ConversionOptions options;
  options.salvage = true;
  const auto report = convertFolder(old, scratch / "new", options, nobody);
  EXPECT_FALSE(report.whole()) << report.text();
  EXPECT_TRUE(fs::exists(scratch / "new" / "tallybook.mdb"));
  const auto tariffs = jet::openDatabase(scratch / "new" / "tariffs.mdb", jet::OpenMode::ReadOnly);
  expectSameRows(*tariffs, expectedTables("tariffs.mdb"));
}

// Random damage: whatever it does to the reading process, this one gets an end and a sentence.
// TALLYBOOK_DAMAGE_RUNS sets the number of damaged files; a long run takes 2,000.
TEST(OldFiles, DamageEndsWithAMessage) {
  const char* wanted = std::getenv("TALLYBOOK_DAMAGE_RUNS");
  const int runs = wanted != nullptr ? std::atoi(wanted) : 100;
  std::vector<std::string> originals;
  for (const char* name : kNames) {
    std::ifstream in(kFiles / name, std::ios::binary);
    originals.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  const support::TemporaryFolder scratch;
  const auto damagedFile = scratch / "damaged.mdb";
  ReaderLimits limits;
  limits.silence = std::chrono::seconds(5);
  limits.processorTime = std::chrono::seconds(10);
  std::mt19937_64 random(20261124);
  int complete = 0;
  for (int run = 0; run < runs; ++run) {
    std::string bytes = originals[random() % originals.size()];
    if (random() % 5 == 0) bytes.resize(random() % bytes.size());
    const auto changes = 1 + random() % 64;
    for (std::uint64_t i = 0; i < changes && !bytes.empty(); ++i) {
      // Half of the damage goes where the structures are: into the first bytes of pages.
      const std::size_t page = random() % (bytes.size() / 4096 + 1) * 4096;
      const std::size_t at = random() % 2 == 0 ? page + random() % 64 : random() % bytes.size();
      if (at < bytes.size()) bytes[at] = static_cast<char>(random());
    }
    std::ofstream(damagedFile, std::ios::binary | std::ios::trunc) << bytes;
    Collector found;
    const ReaderResult result = readJetFileApart(damagedFile, {}, limits, found);
    EXPECT_NE(result.complete, !result.fault.empty());
    if (result.complete) ++complete;
  }
  RecordProperty("complete", complete);
}

}  // namespace
}  // namespace convert
