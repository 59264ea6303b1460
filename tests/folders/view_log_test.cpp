#include "folders/view_log.h"

#include <gtest/gtest.h>

#include "folders/bill.h"
#include "folders/exports.h"
#include "folders/folder_office.h"
#include "folders/list_report.h"

namespace folders {
namespace {

class ViewLog : public testing::Test {
 protected:
  std::vector<std::string> entries() {
    std::vector<std::string> texts;
    office.main->forEachRow("select [Desc] from Log where [Level] = 6 order by RecordID",
                            [&](const std::vector<jet::Value>& row) {
                              texts.push_back(row[0].toText());
                              return true;
                            });
    return texts;
  }
  void useCalls() {
    FolderView calls(*findFolder(100), office.services, office.formatter);
    logShown(calls);
    EXPECT_TRUE(writeListReport(calls, office.folder / "calls.html"));
    EXPECT_TRUE(exportCsv(calls, office.folder / "calls.csv"));
    EXPECT_TRUE(writeBill({"201", office.clock.time, office.clock.time}, office.services, office.formatter,
                          office.folder / "bill.html", nullptr));
    FolderView users(*findFolder(97), office.services, office.formatter);
    logShown(users);
  }

  FolderOffice office;
};

TEST_F(ViewLog, IsOffUnlessItIsSet) {
  useCalls();
  EXPECT_TRUE(entries().empty());
}

TEST_F(ViewLog, SaysWhichCallsWereSeenAndWhereTheyWent) {
  office.texts.parse(
      "LANG EN 1252 English\nSET NATIVE EN\nEN IDS_LOG_CALLS_SHOWN Looked at calls: %s\n"
      "EN IDS_LOG_CALLS_WRITTEN Wrote calls to %s: %s\nEN IDS_EXTENSION Extension\n");
  office.databaseSetting("Log_CallViews", 1);
  useCalls();
  const std::vector<std::string> found = entries();
  ASSERT_EQ(found.size(), 4U);
  EXPECT_TRUE(found[0].starts_with("Looked at calls: ")) << found[0];
  EXPECT_NE(found[0].find("(1=1)"), std::string::npos) << found[0];
  EXPECT_TRUE(found[1].starts_with("Wrote calls to calls.html: ")) << found[1];
  EXPECT_TRUE(found[2].starts_with("Wrote calls to calls.csv: ")) << found[2];
  EXPECT_EQ(found[3], "Wrote calls to bill.html: Extension 201");
}

}  // namespace
}  // namespace folders
