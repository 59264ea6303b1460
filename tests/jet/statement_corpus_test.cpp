// The statements of cases/*.txt, on every path.

#include <gtest/gtest.h>

#include <algorithm>

#include "fake_driver.h"
#include "jet/engine/engine.h"
#include "jet/postgres/postgres_driver.h"
#include "jet/sqlite/sqlite_driver.h"
#include "statement_corpus.h"
#include "support/test_place.h"

namespace jet::test {

namespace {

struct Answer {
  std::vector<std::string> rows;   // as the cases show them
  std::vector<std::string> types;  // of the cells, a letter each
  int error = 0;
  bool operator==(const Answer&) const = default;
};

void add(Answer& answer, const std::vector<Value>& cells) {
  std::string row;
  std::string types;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    row += (i == 0 ? "" : "|") + (cells[i].isNull() ? std::string("NULL") : cells[i].toText());
    types += static_cast<char>('0' + static_cast<int>(cells[i].type()));
  }
  answer.rows.push_back(std::move(row));
  answer.types.push_back(std::move(types));
}

void add(Answer& answer, const Snapshot& snapshot) {
  for (std::size_t row = 0; row < snapshot.rowCount(); ++row) {
    std::vector<Value> cells;
    for (std::size_t i = 0; i < snapshot.columns().size(); ++i) cells.push_back(snapshot.at(row, i));
    add(answer, cells);
  }
}

template <typename Fill>
Answer answered(Fill fill) {
  Answer answer;
  try {
    fill(answer);
  } catch (const Error& error) {
    answer = {};
    answer.error = error.number();
  }
  return answer;
}

// On one driver.
class CorpusTest : public ::testing::TestWithParam<std::string> {
 protected:
  CorpusTest(std::unique_ptr<engine::Driver> driver, const std::filesystem::path& place)
      : engine_(std::move(driver), place) {}

  void runFile(const std::string& name) {
    for (const CorpusStep& step : readCorpus(std::string(TALLYBOOK_SOURCE_DIR "/tests/jet/cases/") + name)) {
      SCOPED_TRACE(name + ":" + std::to_string(step.line));
      run(step);
    }
  }

  // By the driver alone.
  Answer byDriver(const std::string& sql) {
    return answered([&](Answer& answer) {
      const engine::ShapedText text(sql);
      engine::Execution execution = engine_.statements().open(engine::Role::Run, text);
      std::vector<Value> cells(execution.width());
      while (execution.step()) {
        for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = execution.value(i);
        add(answer, cells);
      }
    });
  }

  Answer bySnapshot(const std::string& sql) {
    return answered([&](Answer& answer) { add(answer, engine_.openSnapshot(sql)); });
  }

  // In pages of two, the last one first.
  Answer byWindow(const std::string& sql) {
    return answered([&](Answer& answer) {
      const auto window = engine_.openWindow(sql);
      std::vector<Answer> pages;
      for (std::int64_t first = (window->rowCount() + 1) / 2 * 2 - 2; first >= 0; first -= 2) {
        pages.emplace_back();
        add(pages.back(), window->rows(first, 2));
      }
      for (auto page = pages.rbegin(); page != pages.rend(); ++page) {
        answer.rows.insert(answer.rows.end(), page->rows.begin(), page->rows.end());
        answer.types.insert(answer.types.end(), page->types.begin(), page->types.end());
      }
    });
  }

  // By hashing rows that the driver reads, and from columns when they have been asked for often enough; nothing when
  // the select is no statistic.
  std::optional<Answer> byColumns(const std::string& sql) {
    bool statistic = false;
    Answer answer = answered([&](Answer& filled) {
      for (int i = 0; i < 5; ++i) {
        const auto rows = engine_.statistic(engine::ShapedText(sql));
        if (!rows) continue;
        statistic = true;
        Answer again;
        for (std::size_t row = 0; row < rows->count(); ++row) {
          std::vector<Value> cells;
          rows->append(row, cells);
          add(again, cells);
        }
        EXPECT_TRUE(i == 0 || filled == Answer{} || again == filled) << sql;
        filled = std::move(again);
      }
    });
    if (!statistic) return std::nullopt;
    ++statistics_;
    return answer;
  }

  void run(const CorpusStep& step) {
    if (step.kind == CorpusStep::Kind::Table) return engine_.createTable(step.table);
    if (step.kind == CorpusStep::Kind::Change) {
      const Answer answer = answered([&](Answer&) { engine_.execute(step.statement); });
      EXPECT_EQ(answer.error, step.error) << step.statement;
      return;
    }
    const Answer driver = byDriver(step.statement);
    if (driver.error != kNotDone) {
      ++done_;
      EXPECT_EQ(driver.error, step.error) << step.statement;
      EXPECT_EQ(driver.rows, step.rows) << step.statement;
      EXPECT_EQ(bySnapshot(step.statement), driver) << step.statement << " from memory";
      EXPECT_EQ(byWindow(step.statement), driver) << step.statement << " as a window";
    }
    if (const auto columns = byColumns(step.statement)) {
      EXPECT_EQ(columns->rows, step.rows) << step.statement << " from columns";
      EXPECT_TRUE(driver.error == kNotDone || *columns == driver) << step.statement << " from columns";
    }
    ++selects_;
  }

  engine::Engine engine_;
  int selects_ = 0;
  int done_ = 0;  // selects that the driver took
  int statistics_ = 0;
};

struct EmptyFile {
  EmptyFile() { createDatabase(file); }
  support::TestPlace place{support::TestPlace::Where::InAFolder};
  std::filesystem::path file = place.database("test.mdb");
};

class OnSqlite : private EmptyFile, public CorpusTest {
 protected:
  OnSqlite() : CorpusTest(std::make_unique<sqlite::SqliteDriver>(file, OpenMode::ReadWrite, false), file) {}
};

TEST_P(OnSqlite, EveryPathGivesTheRows) {
  runFile(GetParam());
  EXPECT_EQ(done_, selects_);
  if (GetParam() == "groups.txt") {
    EXPECT_GE(statistics_, 5) << "columns answer statistics";
  }
}

struct EmptySchema {
  EmptySchema() {
    if (place.onServer()) createDatabase(address);
  }
  std::unique_ptr<engine::Driver> driver() const {
    if (!place.onServer()) return std::make_unique<FakeDriver>();
    return std::make_unique<postgres::PostgresDriver>(postgres::Address(address.native()), OpenMode::ReadWrite, false);
  }
  support::TestPlace place;
  std::filesystem::path address = place.database("test.mdb");
};

// When the environment names a server.
class OnPostgres : private EmptySchema, public CorpusTest {
 protected:
  OnPostgres() : CorpusTest(driver(), address) {}
  [[nodiscard]] bool hasServer() const { return place.onServer(); }
};

TEST_P(OnPostgres, EveryPathGivesTheRows) {
  if (!hasServer()) GTEST_SKIP() << "TALLYBOOK_TEST_POSTGRES names no server";
  runFile(GetParam());
  EXPECT_EQ(done_, selects_);
}

class OnTablesInMemory : public CorpusTest {
 protected:
  OnTablesInMemory() : CorpusTest(std::make_unique<FakeDriver>(), "nowhere") {}
};

// That driver leaves joins out, and of the groups what columns do not answer.
TEST_P(OnTablesInMemory, EveryPathGivesTheRows) {
  runFile(GetParam());
  const bool leavesMostOut = GetParam() == "joins.txt" || GetParam() == "groups.txt";
  EXPECT_TRUE(leavesMostOut || done_ * 3 >= selects_ * 2) << done_ << " of " << selects_;
}

std::vector<std::string> caseFiles() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(TALLYBOOK_SOURCE_DIR "/tests/jet/cases")) {
    if (entry.path().extension() == ".txt") names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string caseName(const ::testing::TestParamInfo<std::string>& info) {
  return info.param.substr(0, info.param.find('.'));
}

INSTANTIATE_TEST_SUITE_P(Cases, OnSqlite, ::testing::ValuesIn(caseFiles()), caseName);
INSTANTIATE_TEST_SUITE_P(Cases, OnPostgres, ::testing::ValuesIn(caseFiles()), caseName);
INSTANTIATE_TEST_SUITE_P(Cases, OnTablesInMemory, ::testing::ValuesIn(caseFiles()), caseName);

}  // namespace

}  // namespace jet::test
