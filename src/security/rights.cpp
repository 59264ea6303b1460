#include "security/rights.h"

#include <algorithm>

#include "base/printf.h"
#include "base/text.h"

namespace security {

bool HasRight(const CurrentUser& user, int object, int right, platform::Operator& person) {
  const bool known = std::any_of(std::begin(kSecurableObjects), std::end(kSecurableObjects),
                                 [object](const SecurableObject& each) { return each.number == object; });
  if (!known) {
    person.messageBox("Non-fatal: unknown securable object");
    return false;
  }
  return std::find(user.rights.begin(), user.rights.end(), AccessRight{object, right}) != user.rights.end();
}

ObjectAccess parseObjectAccess(std::string_view text) {
  ObjectAccess access;
  const auto numbers = base::split(text, ";");
  for (std::size_t i = 0; i + 1 < numbers.size(); i += 2) {
    access.rights.push_back({base::leadingInteger(numbers[i]), base::leadingInteger(numbers[i + 1])});
  }
  access.wellFormed = numbers.size() % 2 == 0;
  return access;
}

std::string formatObjectAccess(const std::vector<AccessRight>& rights) {
  std::string text;
  for (const AccessRight& each : rights) {
    if (!text.empty()) text += ';';
    text += base::format("%d;%d", each.object, each.right);
  }
  return text;
}

std::string AddToGroupList(std::string_view groups, std::int32_t id) {
  const std::string member = base::format(";%d;", id);
  std::string text(groups);
  if (text.find(member) == std::string::npos) text += member;
  return text;
}

std::string RemoveFromGroupList(std::string_view groups, std::int32_t id) {
  const std::string member = base::format(";%d;", id);
  std::string text(groups);
  const std::size_t at = text.find(member);
  if (at != std::string::npos) text.erase(at, member.size() - 1);
  return text;
}

std::vector<std::int32_t> groupIds(std::string_view groups) {
  std::vector<std::int32_t> ids;
  for (const std::string& piece : base::split(groups, ";")) ids.push_back(base::leadingInteger(piece));
  return ids;
}

}  // namespace security
