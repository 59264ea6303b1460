#include "mail/address.h"

#include <algorithm>
#include <stdexcept>

#include "base/characters.h"
#include "base/refusal.h"
#include "base/text.h"

namespace mail {

namespace {

constexpr std::size_t kLongestAddress = 254;
constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

bool isPart(std::string_view part, std::string_view marks) {
  const auto usable = [&](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           marks.find(c) != std::string_view::npos;
  };
  return !part.empty() && part.front() != '.' && part.back() != '.' && part.find("..") == std::string_view::npos &&
         std::ranges::all_of(part, usable);
}

std::string base64(std::string_view bytes) {
  std::string out;
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::string_view three = bytes.substr(at, 3);
    unsigned group = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      group = group << 8 | (i < three.size() ? static_cast<unsigned char>(three[i]) : 0U);
    }
    for (std::size_t i = 0; i < 4; ++i) out += i <= three.size() ? kBase64[group >> (18 - 6 * i) & 63U] : '=';
  }
  return out;
}

}  // namespace

bool isAddress(std::string_view text) {
  const std::size_t at = text.find('@');
  if (at == std::string_view::npos || text.size() > kLongestAddress) return false;
  return isPart(text.substr(0, at), ".!#$%&'*+-/=?^_`{|}~") && isPart(text.substr(at + 1), ".-");
}

std::vector<std::string> parseAddresses(std::string_view list) {
  if (const auto control = std::ranges::find_if(list, [](unsigned char c) { return c < ' ' || c == 0x7F; });
      control != list.end()) {
    throw base::Refused<std::invalid_argument>(
        base::Refusal("IDS_MAIL_CONTROL", "A mail address holds a line end or another control character."));
  }
  std::vector<std::string> addresses;
  for (const std::string& one : base::split(list, ",; ")) {
    if (!isAddress(one)) {
      throw base::Refused<std::invalid_argument>(
          base::Refusal("IDS_MAIL_ADDRESS_FORM", "\"%s\" is no mail address such as name@example.com.", one));
    }
    if (std::ranges::find(addresses, one) == addresses.end()) addresses.push_back(one);
  }
  return addresses;
}

std::string headerText(std::string_view text) {
  std::string line(text);
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < ' ' || c == 0x7F) c = ' ';
  }
  if (std::ranges::all_of(line, [](unsigned char c) { return c < 0x80; })) return line;
  constexpr std::size_t kBytesAWord = 42;  // 56 letters of base64: an encoded word is at most 75 long
  std::string words;
  for (std::string_view rest = line; !rest.empty();) {
    std::size_t size = std::min(kBytesAWord, rest.size());
    while (size > 1 && size < rest.size() && !base::startsCharacter(rest[size])) --size;
    words += (words.empty() ? "=?UTF-8?B?" : "\r\n =?UTF-8?B?") + base64(rest.substr(0, size)) + "?=";
    rest.remove_prefix(size);
  }
  return words;
}

}  // namespace mail
