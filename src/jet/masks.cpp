#include "jet/masks.h"

#include <algorithm>
#include <stdexcept>

#include "base/text.h"
#include "jet/functions_detail.h"

namespace jet {

namespace {

constexpr char kMasked = 'X';
constexpr std::string_view kMaskedName = "***";
// Shorter runs of digits within a text are dates, amounts, durations.
constexpr std::size_t kLeastDigitsInText = 6;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

void maskEnd(std::string& text, std::size_t from, std::size_t to, std::int64_t digits) {
  while (to > from && digits > 0) {
    --to;
    if (!isDigit(text[to])) continue;
    text[to] = kMasked;
    --digits;
  }
}

bool isInNumber(char) {
  return true;
}
bool isInListedNumber(char c) {
  return std::string_view(",;/\r\n").find(c) == std::string_view::npos;
}
bool isInForm(char c) {
  return c != ' ';
}
bool isInWrittenNumber(char c) {
  return isDigit(c) || std::string_view(" -.()+").find(c) != std::string_view::npos;
}

// Masks each run of characters that belong to one number and have enough digits.
template <bool (*BelongsTo)(char), std::size_t LeastDigits>
Value maskRuns(const detail::Arguments& arguments) {
  std::string text = arguments[0].toText();
  const std::int64_t digits = arguments[1].toLong();
  for (std::size_t from = 0; from < text.size();) {
    if (!BelongsTo(text[from])) {
      ++from;
      continue;
    }
    std::size_t to = from;
    while (to < text.size() && BelongsTo(text[to])) ++to;
    const auto begin = text.begin() + static_cast<std::ptrdiff_t>(from);
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(to);
    if (std::count_if(begin, end, isDigit) >= static_cast<std::ptrdiff_t>(LeastDigits)) {
      maskEnd(text, from, to, digits);
    }
    from = to;
  }
  return text;
}

// Not strict: a call whose mark was never set is no hidden one.
Value maskName(const detail::Arguments& arguments) {
  if (arguments[0].isNull() || arguments[1].isNull() || !arguments[1].toBool()) return arguments[0];
  return arguments[0].toText().empty() ? arguments[0] : Value(std::string(kMaskedName));
}

}  // namespace

Masks::Masks(std::vector<ColumnMask> masks) : masks_(std::move(masks)) {
  // Begins with a character that no statement holds.
  for (const ColumnMask& mask : masks_) {
    key_ += '\x02' + mask.table + '.' + mask.column + ' ' + std::string(mask.function->name) + ' ' + mask.secondColumn +
            std::to_string(mask.second);
  }
  key_ += '\x02';
}

const ColumnMask* Masks::find(std::string_view table, std::string_view column) const {
  const auto found = std::ranges::find_if(masks_, [&](const ColumnMask& mask) {
    return base::equalFoldAscii(mask.table, table) && base::equalFoldAscii(mask.column, column);
  });
  return found == masks_.end() ? nullptr : &*found;
}

const std::vector<Function>& maskFunctions() {
  using detail::strict;
  static const std::vector<Function> all = {
      {"mask_number", 2, 2, &strict<maskRuns<isInNumber, 0>>, true},
      {"mask_numbers", 2, 2, &strict<maskRuns<isInListedNumber, 0>>, true},
      {"mask_forms", 2, 2, &strict<maskRuns<isInForm, 0>>, true},
      {"mask_text", 2, 2, &strict<maskRuns<isInWrittenNumber, kLeastDigitsInText>>, true},
      {"mask_name", 2, 2, &maskName, true},
  };
  return all;
}

const Function& maskFunction(std::string_view name) {
  const auto& all = maskFunctions();
  const auto found = std::ranges::find(all, name, &Function::name);
  if (found == all.end()) throw std::invalid_argument("no mask function " + std::string(name));
  return *found;
}

}  // namespace jet
