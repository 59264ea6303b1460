// Pages as a person sees them: opened in a browser, whose document is read back.

#include <algorithm>

#include "support/tallyctl.h"

namespace {

using namespace support;

// The document that the browser made of a page; tags in lower case, attributes in quotes, text as UTF-8.
class Document {
 public:
  explicit Document(std::string text) : text_(std::move(text)) {}

  [[nodiscard]] bool shows(const std::string& part) const { return text_.find(part) != std::string::npos; }
  [[nodiscard]] std::size_t count(const std::string& part) const {
    std::size_t found = 0;
    for (std::size_t at = text_.find(part); at != std::string::npos; at = text_.find(part, at + 1)) ++found;
    return found;
  }
  // The table rows from "<tr" to their end.
  [[nodiscard]] std::vector<std::string> rows() const {
    std::vector<std::string> rows;
    for (std::size_t at = text_.find("<tr"); at != std::string::npos; at = text_.find("<tr", at + 1)) {
      rows.push_back(text_.substr(at, text_.find("</tr>", at) - at));
    }
    return rows;
  }
  // Bytes read in a wrong code page show as these.
  [[nodiscard]] bool lettersAreWhole() const {
    return !shows("\uFFFD") && !shows("Ã") && !shows("Å") && !shows("È") && !shows("&amp;#");
  }
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  std::string text_;
};

bool hasCells(const std::string& row, const std::string& tag) {
  return row.find("<" + tag) != std::string::npos;
}

class Browser : public ::testing::Test, protected TallyctlRun {
 protected:
  void SetUp() override {
    SKIP_ON_SERVER(*this);
    if (std::system("command -v chromium >/dev/null") != 0) GTEST_SKIP() << "chromium is not installed";
  }

  Document open(const char* page) {
    const std::string profile = path("browser").string();
    const std::string command =
        "chromium --headless --no-sandbox --disable-gpu --no-first-run --disable-background-networking "
        "--disable-component-update --disable-sync --user-data-dir='" +
        profile + "' --dump-dom 'file://" + path(page).string() + "' >'" + path("dom").string() + "' 2>/dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return Document(readFile(path("dom")));
  }
};

TEST_F(Browser, ShowsPagesAsTheyAreMeant) {
  makeSample(1001);
  const auto sums = stored(
      "select printf('%02d:%02d:%02d', sum(TotalTime)/3600, sum(TotalTime)/60%60, sum(TotalTime)%60), "
      "(select Name from Calls where Name like '%ț%' or Name like '%ș%') from Calls");
  const std::string& duration = sums[0][0];
  const std::string& romanian = sums[0][1];

  succeed("report 100 --out list.html");
  const Document list = open("list.html");
  EXPECT_TRUE(list.shows("<b>Call report</b>"));
  EXPECT_TRUE(list.lettersAreWhole());
  EXPECT_TRUE(list.shows(romanian)) << romanian;
  EXPECT_EQ(list.count("<table"), 6U);  // two of the header, the filter's, two of calls, the footer's
  const std::vector<std::string> rows = list.rows();
  // Headings of both tables, and the totals.
  EXPECT_EQ(std::count_if(rows.begin(), rows.end(), [](const auto& row) { return hasCells(row, "th"); }), 3);
  const auto isCall = [](const std::string& row) { return row.find("<td align=\"left\" nowrap=\"\">\n") < 10; };
  EXPECT_EQ(std::count_if(rows.begin(), rows.end(), isCall), 1001);
  EXPECT_TRUE(list.shows(duration)) << duration;

  succeed("bill 211 --from 2026-10-01 --to 2026-11-30 --out bill.html");
  const auto calls = stored("select count(*) from Calls where Extension = '211'");
  const Document bill = open("bill.html");
  EXPECT_TRUE(bill.lettersAreWhole());
  EXPECT_EQ(bill.count("<table"), 2U);
  EXPECT_EQ(std::to_string(bill.count("<td align=\"left\" nowrap=\"\">") / 3), calls[0][0]);  // date, number, area

  succeed("report 106 --summary --out summary.html");
  const Document summary = open("summary.html");
  EXPECT_TRUE(summary.lettersAreWhole());
  EXPECT_TRUE(summary.shows("<h1>Department</h1>"));
  EXPECT_EQ(summary.count("<svg"), 1U);
  const auto departments = stored("select count(distinct coalesce(Department, '')) from Calls");
  // Captions, a row a department, totals.
  EXPECT_EQ(std::to_string(summary.rows().size() - 2), departments[0][0]) << summary.text();
  EXPECT_TRUE(summary.shows("Vânzări") && summary.shows(duration));

  succeed("month --month 2026-11 --out month.html");
  const auto month = stored("select count(*) from Calls where DateTime >= '2026-11-01' and DateTime < '2026-12-01'");
  const Document page = open("month.html");
  EXPECT_TRUE(page.lettersAreWhole());
  EXPECT_EQ(page.count("<svg"), 4U);  // days, and what was dearest: extensions, departments, destinations
  EXPECT_EQ(page.count("src=") + page.count("href="), 0U);  // it can be mailed as it is
  const auto figures = page.rows();
  EXPECT_TRUE(std::ranges::any_of(figures, [&](const std::string& row) {
    return row.find("Number of calls") != std::string::npos && row.find(">" + month[0][0] + "<") != std::string::npos;
  })) << page.text();
}

// Queues print the mark-up of a page that they are given, so they must be given something else.
TEST_F(Browser, PagesReachThePrinterAsSheets) {
  makeSample(200);
  const auto script = [this](const char* name, const std::string& lines) {
    writeFile(path(name), "#!/bin/sh\n" + lines);
    std::filesystem::permissions(path(name), std::filesystem::perms::owner_all);
  };
  script("lp", "echo \"$1 $2\" >printed\nfor sheets in \"$@\"; do :; done\ncp \"$sheets\" printed.pdf\n");
  const std::string places = ::getenv("PATH");
  ::setenv("PATH", (path("").string() + ":" + places).c_str(), 1);
  succeed("report 100 --columns=401,400,404 --out calls.html --print");
  EXPECT_EQ(readFile(path("printed")), "-t calls.pdf\n");
  EXPECT_TRUE(readFile(path("printed.pdf")).starts_with("%PDF-"));
  succeed("bill 211 --from 2026-11-01 --to 2026-11-30 --out bill.html --print");  // a browser follows its template
  EXPECT_EQ(readFile(path("printed")), "-t bill.html\n");
  EXPECT_TRUE(readFile(path("printed.pdf")).starts_with("%PDF-"));
  script("chromium", "exit 1\n");
  script("google-chrome", "exit 1\n");
  succeed("bill 211 --from 2026-11-01 --to 2026-11-30 --out bill.html --print");
  EXPECT_EQ(readFile(path("printed.pdf")), readFile(path("bill.html")));
  succeed("report 101 --out calls.html --print");
  EXPECT_TRUE(readFile(path("printed.pdf")).starts_with("%PDF-"));

  // A page that says what its sheets are like is left as it is; one of an old template is laid across them.
  script("chromium", "for page in \"$@\"; do :; done\ncp \"${page#file://}\" sheets.html\nexit 1\n");
  for (const std::size_t across : {0U, 1U}) {
    succeed("bill 211 --from 2026-11-01 --to 2026-11-30 --out bill.html --print");
    const Document laidOut(readFile(path("sheets.html")));
    EXPECT_EQ(laidOut.count("size:A4 landscape"), across);
    EXPECT_EQ(laidOut.count("@page"), 1U);
    std::string page = readFile(path("data/template.html"));
    const std::size_t own = page.find("@page");
    if (own != std::string::npos) page.replace(own, 5, "@media none");
    writeFile(path("data/template.html"), page);
  }
  ::setenv("PATH", places.c_str(), 1);
}

}  // namespace
