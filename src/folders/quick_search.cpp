#include "folders/quick_search.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "base/printf.h"
#include "base/text.h"

namespace folders {

namespace {

constexpr const char* kNever = "1=0";

// In a pattern of the SQL dialect: its wildcards are matched as the characters that they are.
std::string inPattern(std::string_view word) {
  std::string pattern;
  for (const char c : word) {
    if (c == '*' || c == '?' || c == '#' || c == '[') {
      pattern.append("[").append(1, c).append("]");
    } else {
      pattern.append(c == '\'' ? 2 : 1, c);
    }
  }
  return pattern;
}

// The word anywhere in a text.
std::string anyPart(std::string_view word) {
  return "'*" + inPattern(word) + "*'";
}

std::string textLiteral(std::string_view text) {
  return "'" + base::replaceAll(std::string(text), "'", "''") + "'";
}

bool isPart(std::string_view word, std::string_view text) {
  return base::fold(text).find(base::fold(word)) != std::string::npos;
}

// "25.11.2026" or "11.2026": the first second and the one after the last.
struct Days {
  base::DateTime first;
  base::DateTime end;
};
std::optional<Days> daysOf(std::string_view word) {
  const std::vector<std::string> parts = base::split(word, ".");
  if (parts.size() < 2 || parts.size() > 3 || parts.back().size() != 4) return std::nullopt;
  for (const std::string& part : parts) {
    if (part.find_first_not_of("0123456789") != std::string::npos || part.size() > 4) return std::nullopt;
  }
  const int year = base::leadingInteger(parts.back());
  const int month = base::leadingInteger(parts[parts.size() - 2]);
  const auto first = base::DateTime::fromParts(year, month, parts.size() == 3 ? base::leadingInteger(parts[0]) : 1);
  if (!first) return std::nullopt;
  return Days{*first, first->plusDays(parts.size() == 3 ? 1 : base::daysInMonth(year, month))};
}

// Values of a small range that are shown by names.
struct Named {
  Format format;
  int first;
  int last;
};
constexpr Named kNamed[] = {
    {Format::ContactType, 0, 5}, {Format::Weekday, 1, 7}, {Format::Month, 1, 12}, {Format::Hour, 0, 23}};

class Search {
 public:
  explicit Search(const FolderView& list)
      : folder_(list.folder().definition()), services_(list.services()), formatter_(list.formatter()) {
    for (const ViewColumn& column : list.columns()) kinds_.push_back(column.definition->kind);
  }

  // The columns in which the word may occur, joined by Or.
  [[nodiscard]] std::string conditionOf(std::string_view word) const {
    std::string any;
    for (const ColumnDefinition& column : folder_.columns) {
      if ((column.flags & ColumnKey) != 0 || !std::ranges::count(kinds_, column.kind)) continue;
      if (isStatistic(folder_) && &column != &folder_.columns[1]) continue;
      const std::string test = testOf(column, word);
      if (!test.empty()) any += (any.empty() ? "" : " Or ") + test;
    }
    return any.empty() ? kNever : any;
  }

 private:
  // Empty when the column cannot hold the word.
  [[nodiscard]] std::string testOf(const ColumnDefinition& column, std::string_view word) const {
    // Some fields are named like words of the SQL dialect.
    const std::string field =
        isStatistic(folder_) ? std::string(folder_.grouping) : "[" + std::string(column.selects[0]) + "]";
    switch (const Format format = formatOfKind(column.kind).format) {
      case Format::LogText:
        return logTest(field, word);
      case Format::Text:
      case Format::Nothing:
      case Format::Digits:
        return field + " LIKE " + anyPart(word);
      case Format::Extension:
        return extensionTest(field, word);
      case Format::DateTime:
      case Format::Date:
        return dayTest(field, word);
      default:
        return nameTest(format, column.kind, field, word);
    }
  }

  [[nodiscard]] std::string extensionTest(const std::string& field, std::string_view word) const {
    std::string test = field + " LIKE " + anyPart(word);
    for (const auto& extension : services_.definitions.extensions) {
      if (!isPart(word, extension.description)) continue;
      test += " Or " + field + " = ";
      test += services_.definitions.extensionIsText ? textLiteral(extension.extension)
                                                    : std::to_string(base::leadingInteger(extension.extension));
    }
    return test;
  }

  // Entries are stored in the language of the copy that wrote them, and found by what is shown.
  [[nodiscard]] std::string logTest(const std::string& field, std::string_view word) const {
    std::string test = field + " LIKE " + anyPart(word);
    for (const std::vector<std::string>& pieces : formatter_.log().saidWith(word)) {
      test += " Or " + field + " LIKE '*";
      for (const std::string& piece : pieces) test += inPattern(piece) + (piece.empty() ? "" : "*");
      test += "'";
    }
    return test;
  }

  [[nodiscard]] static std::string dayTest(const std::string& field, std::string_view word) {
    const auto days = daysOf(word);
    if (!days) return {};
    constexpr std::string_view kFormat = "%m/%d/%Y %H:%M:%S";
    return base::format("(%s >= #%s# And %s < #%s#)", field, days->first.format(kFormat), field,
                        days->end.format(kFormat));
  }

  [[nodiscard]] std::string nameTest(Format format, int kind, const std::string& field, std::string_view word) const {
    std::string test;
    for (const Named& named : kNamed) {
      if (named.format != format) continue;
      for (int value = named.first; value <= named.last; ++value) {
        if (!isPart(word, formatter_.formatCell(kind, jet::Value(static_cast<std::int32_t>(value))))) continue;
        test += (test.empty() ? "" : " Or ") + field + " = " + std::to_string(value);
      }
    }
    return test;
  }

  const FolderDefinition& folder_;
  const FolderServices& services_;
  const ValueFormatter& formatter_;
  std::vector<int> kinds_;  // of the shown columns
};

}  // namespace

std::string quickCriteria(const FolderView& list, std::string_view typed) {
  const Search search(list);
  std::string all;
  for (const std::string& word : base::split(typed, " \t\r\n")) {
    all += (all.empty() ? "(" : " AND (") + search.conditionOf(word) + ")";
  }
  return all;
}

std::string quickSelect(const FolderView& list) {
  constexpr std::string_view kLetterDigitAndMonth = "a 1 1.2000";
  CDbFolder folder(list.folder().definition(), list.services());
  folder.setSortKey(list.sortKey());
  folder.narrow(quickCriteria(list, kLetterDigitAndMonth));
  return folder.BuildQuery();
}

}  // namespace folders
