#include "security/masks.h"

#include <algorithm>

#include "base/printf.h"
#include "security/restriction.h"

namespace security {

namespace {

constexpr const char* kTable = "Masks";
constexpr int kNoSuchTable = 3078;

const char* nameOf(MaskOwner owner) {
  return owner == MaskOwner::User ? "user" : "group";
}

void hideDigits(std::int64_t digits, std::vector<jet::ColumnMask>& masks) {
  struct Numbers {
    const char* table;
    const char* column;
    const char* function;
  };
  constexpr Numbers kNumbers[] = {
      {"Calls", "DialNumber", "mask_number"},
      {"FilteredNumbers", "number", "mask_number"},
      {"Contacts", "Tel", "mask_number"},
      {"Contacts", "Tel_View", "mask_numbers"},
      {"Contacts", "Tel_String", "mask_forms"},
      {"Contacts", "Note", "mask_text"},
      {"Log", "Desc", "mask_text"},
  };
  for (const Numbers& each : kNumbers) {
    masks.push_back(
        {.table = each.table, .column = each.column, .function = &jet::maskFunction(each.function), .second = digits});
  }
}

}  // namespace

std::map<std::int32_t, Mask> masksOf(jet::Database& main, MaskOwner owner) {
  std::map<std::int32_t, Mask> masks;
  try {
    main.forEachRow(
        base::format("select OwnerID, Digits, PrivateNames from %s where Owner = '%s'", kTable, nameOf(owner)),
        [&](const std::vector<jet::Value>& row) {
          masks[static_cast<std::int32_t>(row[0].toLong())] = {.digits = static_cast<std::int32_t>(row[1].toLong()),
                                                               .privateNames = row[2].toBool()};
          return true;
        });
  } catch (const jet::Error& error) {
    if (error.number() != kNoSuchTable) throw;
  }
  return masks;
}

void saveMask(jet::Database& main, MaskOwner owner, std::int32_t id, const Mask& mask) {
  const auto stored = masksOf(main, owner);
  const auto found = stored.find(id);
  if ((found == stored.end() ? Mask{} : found->second) == mask) return;
  jet::Transaction transaction(main);
  main.execute(base::format("delete from %s where Owner = '%s' and OwnerID = %d", kTable, nameOf(owner), id));
  if (mask.any()) {
    main.execute(base::format("insert into %s (Owner, OwnerID, Digits, PrivateNames) values ('%s', %d, %d, %s)", kTable,
                              nameOf(owner), id, mask.digits, mask.privateNames ? "True" : "False"));
  }
  transaction.commit();
}

Mask stricter(const Mask& one, const Mask& other) {
  return {.digits = std::max(one.digits, other.digits), .privateNames = one.privateNames || other.privateNames};
}

jet::MasksPtr databaseMasks(const Mask& mask) {
  if (!mask.any()) return nullptr;
  std::vector<jet::ColumnMask> masks;
  if (mask.digits > 0) hideDigits(mask.digits, masks);
  if (mask.privateNames) {
    masks.push_back(
        {.table = "Calls", .column = "Name", .function = &jet::maskFunction("mask_name"), .secondColumn = "Hidden"});
  }
  return std::make_shared<const jet::Masks>(std::move(masks));
}

void requireUnmasked(const CurrentUser& user, const foundation::LanguageFile& texts) {
  if (user.mask.any()) throw RestrictedUserError(texts.TranslateFormat("IDS_MASKED_USER", user.CurrentUserName));
}

}  // namespace security
