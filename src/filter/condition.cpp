#include "filter/condition.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "base/printf.h"
#include "base/text.h"
#include "jet/parser/parser.h"

namespace filter {

namespace {

// A clause whose value may be empty: then the calls without a value are meant too.
void appendText(std::string& condition, std::string_view filled, std::string_view unfilled, const std::string& value) {
  condition += base::format(value.empty() ? unfilled : filled, value);
}

void appendName(std::string& condition, const std::string& name) {
  if (name.starts_with('!')) {
    appendText(condition, " (Name NOT LIKE '%s*' or Name IS NULL) AND", " (1 = 1) AND", name.substr(1));
  } else {
    appendText(condition, " (Name LIKE '%s*') AND", " (Name LIKE '%s*' or Name IS NULL) AND", name);
  }
}

void appendParties(std::string& condition, const FilterSettings& settings, bool extensionIsText) {
  if (settings.onExtension == 1) {
    condition += extensionIsText ? base::format(" (Extension='%s') AND", settings.extension)
                                 : base::format(" (Extension=%d) AND", base::leadingInteger(settings.extension));
  }
  if (settings.onTrunk == 1) condition += base::format(" (Trunk=%d) AND", settings.trunk);
  if (settings.onAccount == 1) {
    appendText(condition, " (AccountCode LIKE '%s*') AND", " (AccountCode LIKE '%s*' Or AccountCode IS NULL) AND",
               settings.account);
  }
  if (settings.onDepartment == 1) {
    appendText(condition, " (Department='%s') AND", " (Department='%s' or Department IS NULL) AND",
               settings.department);
  }
  if (settings.onName == 1) appendName(condition, settings.name);
  if (settings.onClient != 0) {
    appendText(condition, " (owner='%s') AND", " (owner='%s' or owner is null) AND", settings.client);
  }
  if (settings.onFolder != 0) {
    appendText(condition, " (Folder='%s') AND", " (Folder='%s' or Folder is null) AND", settings.folder);
  }
  if (settings.onArea != 0) {
    appendText(condition, " (Area='%s') AND", " (Area='%s' or Area is null) AND", settings.area);
  }
}

std::string periodLimit(std::string_view stored, const foundation::TextKey& key) {
  return parsePeriod(stored, key.fallback).format(kPeriodFormat);
}

void appendCall(std::string& condition, const FilterSettings& settings) {
  if (settings.onPeriod != 0) {
    condition += base::format(" (DateTime >= #%s# and DateTime <= #%s#) AND ",
                              periodLimit(settings.intervalStart, foundation::keys::filter::IntervalStart),
                              periodLimit(settings.intervalEnd, foundation::keys::filter::IntervalEnd));
  }
  if (!settings.numberPrefix.empty()) {
    condition += base::format(" (DialNumber LIKE \"%s*\") AND ", settings.numberPrefix);
  }
  if (!settings.number.empty()) condition += base::format(" (DialNumber = \"%s\") AND ", settings.number);
  if (!settings.country.empty()) condition += base::format(" (Country = \"%s\") AND ", settings.country);
  if (!settings.provider.empty()) condition += base::format(" (Provider = \"%s\") AND ", settings.provider);
  if (settings.onMinDuration != 0) condition += base::format(" (TotalTime>=%d) AND", settings.minDuration);
}

// What the operator knows a key's field by.
std::string_view labelOf(std::string_view key) {
  struct Label {
    std::string_view key;
    std::string_view text;
  };
  namespace keys = foundation::keys::filter;
  constexpr Label kLabels[] = {{keys::ExtensionStr.key, "IDS_FILTER_EXTENSION"},
                               {keys::Cont.key, "IDS_FILTER_ACCOUNT"},
                               {keys::Department.key, "IDS_FILTER_DEPARTMENT"},
                               {keys::Name.key, "IDS_FILTER_NAME"},
                               {keys::Client.key, "IDS_FILTER_CLIENT"},
                               {keys::Folder.key, "IDS_FILTER_FILE"},
                               {keys::Area.key, "IDS_FILTER_AREA"},
                               {keys::NumberPrefix.key, "IDS_FILTER_NUMBER"},
                               {keys::Number.key, "IDS_FILTER_NUMBER_EXACT"},
                               {keys::Country.key, "IDS_COUNTRY"},
                               {keys::Provider.key, "IDS_PROVIDER"}};
  const auto* found = std::ranges::find(kLabels, key, &Label::key);
  return found == std::end(kLabels) ? key : found->text;
}

// A parsed condition together with the values of its literals.
struct Parsed {
  jet::ExpressionPtr tree;
  std::vector<jet::Value> literals;
};

Parsed parse(std::string_view condition) {
  jet::Shape shape;
  jet::shapeOf(condition, shape);
  return {jet::parseCondition(condition), std::move(shape.literals)};
}

bool sameTree(const jet::Expression& left, const std::vector<jet::Value>& leftLiterals, const jet::Expression& right,
              const std::vector<jet::Value>& rightLiterals) {
  if (left.kind != right.kind || left.op != right.op || left.negated != right.negated ||
      left.isNullLiteral != right.isNullLiteral || left.literalType != right.literalType || left.table != right.table ||
      left.name != right.name || left.operands.size() != right.operands.size()) {
    return false;
  }
  if (left.kind == jet::Expression::Kind::Literal && !left.isNullLiteral &&
      leftLiterals.at(left.parameter) != rightLiterals.at(right.parameter)) {
    return false;
  }
  for (std::size_t i = 0; i < left.operands.size(); ++i) {
    if (!sameTree(*left.operands[i], leftLiterals, *right.operands[i], rightLiterals)) return false;
  }
  return true;
}

bool endsInRestriction(const Parsed& condition, const Parsed& restriction) {
  const jet::Expression& top = *condition.tree;
  return top.kind == jet::Expression::Kind::Binary && top.op == jet::Operator::And && top.operands.size() == 2 &&
         sameTree(*top.operands[1], condition.literals, *restriction.tree, restriction.literals);
}

// What all texts that differ only in the values of their literals have in common; nothing for a text that ends within
// a literal.
std::optional<std::string> shapeKey(std::string_view condition) {
  try {
    jet::Shape shape;
    jet::shapeOf(condition, shape);
    return std::move(shape.key);
  } catch (const jet::Error&) {
    return std::nullopt;
  }
}

// A harmless value that asks for the same clause: an empty one and a leading "!" of a name change the clause's text.
std::string plainLike(std::string_view value) {
  if (value.empty() || value == "!") return std::string(value);
  return value.front() == '!' ? "!x" : "x";
}

[[noreturn]] void refuseValue(std::string_view key, const std::string& condition,
                              const foundation::LanguageFile& texts) {
  throw FilterError(3075, texts.TranslateFormat("IDS_FILTER_VALUE_REFUSED", texts.Translate(labelOf(key)), key),
                    condition);
}

}  // namespace

std::string settingsCondition(const FilterSettings& settings, bool extensionIsText) {
  if (settings.onFilter != 1) return "1=1";
  std::string condition;
  if (settings.hidden != 0) condition += " not Hidden AND";
  if (settings.onIncoming != 0) condition += " Incoming=0 AND";
  if (settings.onOutgoing != 0) condition += " Incoming=1 AND";
  appendParties(condition, settings, extensionIsText);
  appendCall(condition, settings);
  if (condition.empty()) return " 1=1";
  // A clause that ended in " AND " leaves one blank at its end.
  condition.resize(condition.size() - 4);
  return condition;
}

void requireReadable(const std::string& condition, const foundation::LanguageFile& texts) {
  try {
    (void)jet::parseCondition(condition);
  } catch (const jet::Error& error) {
    throw FilterError(error.number(), texts.Translate("IDS_FILTER_BREAKS_QUERY"), condition);
  }
}

std::string restrictCondition(std::string condition, std::string_view restriction,
                              const foundation::LanguageFile& texts) {
  if (restriction.empty()) return condition;
  const Parsed expected = parse(restriction);
  condition.append(" AND (").append(restriction).append(" )");
  bool holds = false;
  try {
    holds = endsInRestriction(parse(condition), expected);
  } catch (const jet::Error&) {
    // A value with a quotation mark can break the text apart: refused like one that changes its meaning.
  }
  if (!holds) throw FilterError(3075, texts.Translate("IDS_FILTER_AGAINST_RESTRICTION"), condition);
  return condition;
}

void requireOnlyValues(const FilterSettings& settings, bool extensionIsText, const foundation::LanguageFile& texts) {
  FilterSettings plain = settings;
  for (const FilterKey& key : filterKeys()) {
    if (key.type == KeyType::Text) plain.*key.text = plainLike(settings.*key.text);
  }
  const std::string expected = shapeKey(settingsCondition(plain, extensionIsText)).value();
  for (const FilterKey& key : filterKeys()) {
    if (key.type != KeyType::Text) continue;
    FilterSettings one = plain;
    one.*key.text = settings.*key.text;
    const std::string condition = settingsCondition(one, extensionIsText);
    if (shapeKey(condition) != expected) refuseValue(key.key, condition, texts);
  }
  // Values that are texts by themselves are texts together, as none reaches out of its quotation marks. The whole is
  // what runs, so it is looked at all the same.
  const std::string whole = settingsCondition(settings, extensionIsText);
  if (shapeKey(whole) != expected) throw FilterError(3075, texts.Translate("IDS_FILTER_AGAINST_RESTRICTION"), whole);
}

std::string clauseWithValue(std::string_view clause, std::string_view value, std::string_view restriction,
                            std::string_view key, const foundation::LanguageFile& texts) {
  std::string filled = base::format(clause, value);
  if (!restriction.empty() && shapeKey(filled) != shapeKey(base::format(clause, plainLike(value)))) {
    refuseValue(key, filled, texts);
  }
  return filled;
}

}  // namespace filter
