#include "alarms/mail_text.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace alarms {

namespace {

std::string oneLine(std::string_view text) {
  std::string line(text);
  std::ranges::replace_if(
      line, [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
  return line;
}

std::string base64(std::string_view bytes) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::array<std::uint32_t, 3> three{};
    for (std::size_t k = 0; k < 3 && i + k < bytes.size(); ++k) three[k] = static_cast<unsigned char>(bytes[i + k]);
    const std::uint32_t word = three[0] << 16 | three[1] << 8 | three[2];
    for (int shift = 18; shift >= 0; shift -= 6) text += kDigits[word >> shift & 63U];
    if (i + 2 >= bytes.size())
      text.replace(text.size() - (i + 3 - bytes.size()), i + 3 - bytes.size(), i + 3 - bytes.size(), '=');
  }
  return text;
}

// Letters beyond ASCII in encoded words of at most 75 characters, cut between letters.
std::string encodedSubject(const std::string& subject) {
  constexpr std::size_t kBytesAWord = 42;
  if (std::ranges::all_of(subject, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) return subject;
  std::string result;
  for (std::size_t from = 0; from < subject.size();) {
    std::size_t to = std::min(from + kBytesAWord, subject.size());
    while (to < subject.size() && to > from + 1 && (static_cast<unsigned char>(subject[to]) & 0xC0U) == 0x80U) --to;
    result += (result.empty() ? "=?UTF-8?B?" : "\n =?UTF-8?B?") +
              base64(std::string_view(subject).substr(from, to - from)) + "?=";
    from = to;
  }
  return result;
}

}  // namespace

std::string mailText(std::string_view from, std::string_view to, std::string_view subject, std::string_view text) {
  std::string mail;
  if (!from.empty()) mail += "From: " + oneLine(from) + "\n";
  mail += "To: " + oneLine(to) + "\nSubject: " + encodedSubject(oneLine(subject)) + "\n";
  mail += "MIME-Version: 1.0\nContent-Type: text/plain; charset=utf-8\nContent-Transfer-Encoding: 8bit\n\n";
  return mail + std::string(text);
}

}  // namespace alarms
