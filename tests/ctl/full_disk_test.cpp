// A command that writes a file says that it cannot be written, leaves the one before as it was and nothing half done.

#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "support/tallyctl.h"

namespace {

using namespace support;

class FullDisk : public ::testing::Test, protected TallyctlRun {
 protected:
  // Names of files and folders, the data folder's left out.
  std::set<std::string> entries() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path(""))) {
      const std::string name = std::filesystem::relative(entry.path(), path("")).string();
      if (!name.starts_with("data/")) names.insert(name);
    }
    return names;
  }
};

TEST_F(FullDisk, EveryWriterOfFilesSaysSoAndLeavesNothingBehind) {
  SKIP_ON_SERVER(*this);
  constexpr int kRoom = 300 * 1024;  // less than each file needs; enough for an entry in the audit log
  makeSample(8000);
  std::ofstream(path("data/template.html"), std::ios::app) << "<!--" << std::string(kRoom, 'x') << "-->";
  std::ofstream cards(path("many.vcf"));
  for (int i = 0; i < 5000; ++i) {
    cards << "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Person " << i << "\r\nTEL:07" << 10'000'000 + i << "\r\nEND:VCARD\r\n";
  }
  cards.close();
  succeed("contact import many.vcf");
  std::filesystem::create_directory(path("backups"));
  struct Case {
    const char* command;
    const char* file;  // that is there before; empty: the command makes a new one
  };
  for (const Case& c : {Case{"report 100 --out r.html", "r.html"}, Case{"report 100 --out r.csv", "r.csv"},
                        Case{"report 100 --out r.xlsx", "r.xlsx"}, Case{"report 100 --out r.pdf", "r.pdf"},
                        Case{"bill 201 --from 2020-01-01 --to 2030-01-01 --out bill.html", "bill.html"},
                        Case{"contact export cards.vcf", "cards.vcf"}, Case{"sample-calls 9000 --out calls", "calls"},
                        Case{"export-tables tables", ""}, Case{"backup backups", ""},
                        Case{"folder show 100 --format csv", ""}, Case{"folder show 100 --format json", ""}}) {
    if (*c.file != '\0') std::ofstream(path(c.file)) << "before";
    const auto before = entries();
    const Result result = runOnFullDisk(c.command, kRoom);
    EXPECT_EQ(result.status, 1) << c.command;
    EXPECT_NE(result.err.find("tallyctl: "), std::string::npos) << c.command << ": " << result.err;
    EXPECT_EQ(entries(), before) << c.command;
    if (*c.file != '\0') {
      EXPECT_EQ(readFile(path(c.file)), "before") << c.command;
    }
  }
  EXPECT_EQ(stored("SELECT count(*) FROM Calls")[0][0], "8000");
}

TEST_F(FullDisk, TheMachineStoreStaysAsItWas) {
  succeed("setting set OutFile /srv/" + std::string(1200, 'x') + " --where machine");
  const std::string before = readFile(path("machine.ini"));
  const Result result = runOnFullDisk("setting set Lang RO --where machine", 1024);
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("machine.ini cannot be written"), std::string::npos) << result.err;
  EXPECT_EQ(readFile(path("machine.ini")), before);
  succeed("setting set Lang RO --where machine");
}

}  // namespace
