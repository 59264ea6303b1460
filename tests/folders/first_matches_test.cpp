#include "folders/first_matches.h"

#include <gtest/gtest.h>

#include "folders/folder_office.h"
#include "folders/quick_search.h"

namespace folders {
namespace {

// Years, days and seconds apart, and many in the same second, so that stretches are empty and full.
void fillOffice(FolderOffice& office) {
  base::DateTime time = *base::DateTime::fromParts(2020, 2, 28, 23, 59, 58);
  const jet::Value area("Zone");
  for (int i = 0; i < 300; ++i) {
    if (i % 100 == 0) time = time.plusDays(400);
    if (i % 20 == 0) time = time.plusDays(1);
    if (i % 7 == 0) time = time.plusSeconds(i);
    office.call({{"DialNumber", jet::Value(std::to_string(1'000 + i * 37 % 101))},
                 {"DateTime", jet::Value(time)},
                 {"Extension", jet::Value(i % 2 == 0 ? "201" : "202")},
                 {"Area", area}});
  }
}

std::vector<std::string> keysOf(const std::vector<FolderView::ShownRow>& rows) {
  std::vector<std::string> keys;
  for (const auto& row : rows) keys.push_back(row.key + " " + row.texts.front());
  return keys;
}

struct Case {
  const char* typed;
  int sortKey;
  std::size_t most;
  const char* within;
};

// The same rows in the same order as the whole search gives, however they are come by.
TEST(FirstMatches, AreTheFirstRowsOfTheWholeSearch) {
  FolderOffice office;
  fillOffice(office);
  const Case cases[] = {{"10", -401, 5, ""},   {"10", 401, 5, ""},   {"zone", -401, 128, ""},
                        {"7", -401, 1000, ""}, {"7", 401, 1000, ""}, {"1050", -401, 1, ""},
                        {"none", -401, 5, ""}, {"none", 401, 5, ""}, {"1 zone", 401, 7, "Extension='202'"}};
  for (const Case& one : cases) {
    FolderView whole = office.view(100, one.sortKey);
    const std::string criteria = quickCriteria(whole, one.typed);
    const std::string within = one.within;
    whole.narrow(Narrowing{within.empty() ? criteria : within + " And " + criteria, {}});

    auto list = std::make_unique<FolderView>(*findFolder(100), office.services, office.formatter, one.sortKey);
    if (!within.empty()) list->narrow(Narrowing{within, {}});
    ASSERT_TRUE(FirstMatches::canFind(*list));
    FirstMatches matches(std::move(list), criteria, one.most);
    while (!matches.done()) matches.lookFor(std::chrono::milliseconds(1));
    EXPECT_EQ(keysOf(matches.rows()), keysOf(whole.shownRows(0, static_cast<std::int64_t>(one.most))))
        << one.typed << ' ' << one.sortKey;
  }
}

TEST(FirstMatches, OfAnEmptyListAreNone) {
  FolderOffice office;
  auto list = std::make_unique<FolderView>(*findFolder(100), office.services, office.formatter, -401);
  const std::string criteria = quickCriteria(*list, "1");
  const FirstMatches matches(std::move(list), criteria, 5);
  EXPECT_TRUE(matches.done());
  EXPECT_TRUE(matches.rows().empty());
}

TEST(FirstMatches, AreLookedForInCallsByTheirTimeAlone) {
  FolderOffice office;
  for (const auto& [folder, sortKey, can] :
       {std::tuple{100, -401, true}, {100, 401, true}, {100, 0, false}, {100, -408, false}, {101, -401, false}}) {
    EXPECT_EQ(FirstMatches::canFind(office.view(folder, sortKey)), can) << folder << ' ' << sortKey;
  }
}

}  // namespace
}  // namespace folders
