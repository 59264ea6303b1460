#include "filter/restriction_choice.h"

#include <algorithm>
#include <map>

#include "base/characters.h"
#include "base/printf.h"
#include "base/text.h"
#include "jet/error.h"
#include "jet/parser/parser.h"
#include "security/session.h"

namespace filter {

namespace {

// One list of a choice and the column that holds its names.
struct ChoiceColumn {
  std::string_view column;
  std::vector<std::string> RestrictionChoice::*names;
  bool followsExtension;  // in type
};
constexpr ChoiceColumn kChoiceColumns[] = {
    {"Department", &RestrictionChoice::departments, false},
    {"Extension", &RestrictionChoice::extensions, true},
    {"Owner", &RestrictionChoice::clients, false},
    {"Trunk", &RestrictionChoice::trunks, true},
};

std::string literalOf(const std::string& name, bool isText) {
  if (isText) return "'" + base::replaceAll(name, "'", "''") + "'";
  return std::to_string(base::leadingInteger(name));
}

std::string listCondition(const ChoiceColumn& list, const std::vector<std::string>& names, bool isText) {
  std::string literals;
  for (const std::string& name : names) literals += (literals.empty() ? "" : ",") + literalOf(name, isText);
  return base::format(names.size() == 1 ? "%s=%s" : "%s In(%s)", list.column, literals);
}

// Reads a condition back, part by part.
class ChoiceReader {
 public:
  explicit ChoiceReader(std::string_view restriction) { jet::shapeOf(restriction, shape_); }

  bool read(const jet::Expression& part) {
    using Kind = jet::Expression::Kind;
    if (part.kind == Kind::Binary && part.op == jet::Operator::Or) {
      return read(*part.operands[0]) && read(*part.operands[1]);
    }
    const bool names =
        (part.kind == Kind::Binary && part.op == jet::Operator::Equal) || (part.kind == Kind::In && !part.negated);
    return names && readNames(part);
  }
  RestrictionChoice take() { return std::move(choice_); }

 private:
  bool readNames(const jet::Expression& part) {
    const jet::Expression& column = *part.operands[0];
    if (column.kind != jet::Expression::Kind::Column || !column.table.empty()) return false;
    const auto* list = std::ranges::find_if(
        kChoiceColumns, [&](const ChoiceColumn& each) { return base::equalFoldAscii(each.column, column.name); });
    if (list == std::end(kChoiceColumns)) return false;
    for (std::size_t i = 1; i < part.operands.size(); ++i) {
      const jet::Expression& name = *part.operands[i];
      const bool fits =
          name.literalType == jet::Type::Text || (name.literalType == jet::Type::Long && list->followsExtension);
      if (!name.isParameter() || !fits) return false;
      (choice_.*list->names).push_back(shape_.literals.at(name.parameter).toText());
    }
    return true;
  }

  jet::Shape shape_;
  RestrictionChoice choice_;
};

bool holds(const std::vector<std::string>& names, const std::string& name) {
  return std::ranges::find(names, name) != names.end();
}

bool tooLong(const std::string& restriction) {
  return base::characterCount(restriction) >= security::kRestrictionLimit;
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

// What to choose in place of a choice that is too long.
std::string adviceFor(const RestrictionChoice& choice, const exchange::PartyDefinitions& definitions,
                      const foundation::LanguageFile& texts) {
  const RestrictionChoice shorter = withDepartments(choice, definitions.extensions);
  if (shorter != choice && !tooLong(restrictionFor(shorter, definitions.extensionIsText))) {
    std::vector<std::string> added = shorter.departments;
    std::erase_if(added, [&](const std::string& name) { return holds(choice.departments, name); });
    if (!added.empty()) return texts.TranslateFormat("IDS_RESTRICTION_TAKE_DEPARTMENT", joined(added));
    return texts.Translate("IDS_RESTRICTION_DEPARTMENT_HAS_THEM");
  }
  return texts.Translate(choice.extensions.size() > 1 ? "IDS_RESTRICTION_MAKE_DEPARTMENT"
                                                      : "IDS_RESTRICTION_CHOOSE_LESS");
}

}  // namespace

std::string restrictionFor(const RestrictionChoice& choice, bool extensionIsText) {
  std::string condition;
  for (const ChoiceColumn& list : kChoiceColumns) {
    const std::vector<std::string>& names = choice.*list.names;
    if (names.empty()) continue;
    if (!condition.empty()) condition += " Or ";
    condition += listCondition(list, names, extensionIsText || !list.followsExtension);
  }
  return condition;
}

std::optional<RestrictionChoice> choiceOf(std::string_view restriction) {
  if (base::trim(restriction).empty()) return RestrictionChoice{};
  try {
    ChoiceReader reader(restriction);
    if (!reader.read(*jet::parseCondition(restriction))) return std::nullopt;
    return reader.take();
  } catch (const jet::Error&) {
    return std::nullopt;
  }
}

RestrictionChoice withDepartments(RestrictionChoice choice, std::span<const exchange::tagEXTINFO> extensions) {
  std::map<std::string, std::vector<std::string>> members;
  for (const exchange::tagEXTINFO& extension : extensions) {
    if (!extension.department.empty()) members[extension.department].push_back(extension.extension);
  }
  for (const auto& [department, numbers] : members) {
    const std::vector<std::string>& those = numbers;  // clang 14 takes no part of a pair into a lambda
    const bool whole =
        std::ranges::all_of(those, [&](const std::string& number) { return holds(choice.extensions, number); });
    if (those.size() < 2 || !whole) continue;
    std::erase_if(choice.extensions, [&](const std::string& number) { return holds(those, number); });
    if (!holds(choice.departments, department)) choice.departments.push_back(department);
  }
  return choice;
}

std::string limitText(const RestrictionChoice& choice, const exchange::PartyDefinitions& definitions,
                      const foundation::LanguageFile& texts) {
  const std::string restriction = restrictionFor(choice, definitions.extensionIsText);
  if (!tooLong(restriction)) return {};
  return texts.TranslateFormat("IDS_RESTRICTION_LIMIT", base::characterCount(restriction),
                               security::kRestrictionLimit - 1) +
         " " + adviceFor(choice, definitions, texts);
}

}  // namespace filter
