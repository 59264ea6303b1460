#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/operator.h"
#include "security/session.h"

namespace security {

enum ObjectNumber : int { ObjectAdministration = 6, ObjectCalls = 9 };
enum RightNumber : int { RightView = 1, RightChange = 2 };

struct SecurableObject {
  int number;
  std::string_view captionKey;  // translated in the rights tree of the group dialog
};
inline constexpr SecurableObject kSecurableObjects[] = {
    {ObjectAdministration, "IDS_ADMINISTRATION"},  // users, groups, settings
    {ObjectCalls, "IDS_CALLS"},
};

// The rights within every securable object.
struct RightCaption {
  int number;
  std::string_view captionKey;
};
inline constexpr RightCaption kRights[] = {
    {RightView, "IDS_RIGHT_VIEW"},
    {RightChange, "IDS_RIGHT_CHANGE"},
};

// True if the session has the right. An object that is not in kSecurableObjects is reported as
// "Non-fatal: unknown securable object" and gives false.
bool HasRight(const CurrentUser& user, int object, int right, platform::Operator& person);

// `ObjectAccess`: numbers joined by ";", taken two by two as object and right. With an odd count the last number is
// left out and `wellFormed` is false.
struct ObjectAccess {
  std::vector<AccessRight> rights;
  bool wellFormed = true;
};
ObjectAccess parseObjectAccess(std::string_view text);
std::string formatObjectAccess(const std::vector<AccessRight>& rights);  // "%d;%d" a pair, joined by ";"

// The membership text of a user: ";id;" for each group.
std::string AddToGroupList(std::string_view groups, std::int32_t id);
// Takes ";id" out and leaves its closing ";": ";1;;2;;3;" less 2 is ";1;;;3;". Every other id keeps a ";" on both
// sides, which the search for ";id;" relies on.
std::string RemoveFromGroupList(std::string_view groups, std::int32_t id);
std::vector<std::int32_t> groupIds(std::string_view groups);  // empty pieces skipped

}  // namespace security
