#include "base/codepage.h"

#include <iconv.h>
#include <utf8proc.h>

#include <algorithm>
#include <memory>
#include <type_traits>

#include "base/text.h"

namespace base {

namespace {

constexpr int kUtf8 = 65001;
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct CloseConverter {
  void operator()(void* converter) const { iconv_close(converter); }
};
using Converter = std::unique_ptr<std::remove_pointer_t<iconv_t>, CloseConverter>;

std::string pageName(int codepage) {
  return codepage == kUtf8 ? "UTF-8" : "CP" + std::to_string(codepage);
}

Converter openConverter(const std::string& to, const std::string& from) {
  const iconv_t converter = iconv_open(to.c_str(), from.c_str());
  if (converter == reinterpret_cast<iconv_t>(-1)) return nullptr;
  return Converter(converter);
}

// Converts one piece; false when it cannot be converted whole.
bool convertPiece(void* converter, std::string_view piece, std::string& out) {
  char buffer[16];
  char* in = const_cast<char*>(piece.data());  // iconv does not write through it
  std::size_t inLeft = piece.size();
  char* next = buffer;
  std::size_t outLeft = sizeof buffer;
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  // A positive count means that a similar letter was put in place of the real one.
  if (iconv(converter, &in, &inLeft, &next, &outLeft) != 0 || inLeft != 0) return false;
  out.append(buffer, sizeof buffer - outLeft);
  return true;
}

// Length of the UTF-8 sequence at the front; 1 for a byte that starts none. `codepoint` is -1 then.
std::size_t frontSequence(std::string_view text, utf8proc_int32_t& codepoint) {
  const auto used = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                     static_cast<utf8proc_ssize_t>(text.size()), &codepoint);
  if (used > 0) return static_cast<std::size_t>(used);
  codepoint = -1;
  return 1;
}

template <typename Missing>
std::string encodeWith(std::string_view text, int codepage, Missing missing) {
  if (isAscii(text) || codepage == kUtf8) return std::string(text);
  const Converter converter = openConverter(pageName(codepageSupported(codepage) ? codepage : 1252), "UTF-8");
  std::string out;
  while (!text.empty()) {
    utf8proc_int32_t codepoint = -1;
    const std::size_t length = frontSequence(text, codepoint);
    const std::string_view piece = text.substr(0, length);
    if (codepoint >= 0 && codepoint < 0x80) {
      out += piece;
    } else if (codepoint < 0 || !convertPiece(converter.get(), piece, out)) {
      missing(out, codepoint);
    }
    text.remove_prefix(length);
  }
  return out;
}

}  // namespace

bool codepageSupported(int codepage) {
  return openConverter("UTF-8", pageName(codepage)) != nullptr;
}

std::string decode(std::string_view bytes, int codepage) {
  if (isAscii(bytes)) return std::string(bytes);
  Converter converter = openConverter("UTF-8", pageName(codepage));
  if (!converter) converter = openConverter("UTF-8", "CP1252");
  std::string out;
  while (!bytes.empty()) {
    utf8proc_int32_t codepoint = -1;
    const std::size_t length = codepage == kUtf8 ? frontSequence(bytes, codepoint) : 1;
    if (!convertPiece(converter.get(), bytes.substr(0, length), out)) out += kReplacement;
    bytes.remove_prefix(length);
  }
  return out;
}

std::string encodeHtml(std::string_view text, int codepage) {
  return encodeWith(text, codepage, [](std::string& out, utf8proc_int32_t codepoint) {
    if (codepoint < 0) {
      out += '?';
    } else {
      out += "&#" + std::to_string(codepoint) + ";";
    }
  });
}

std::string encode(std::string_view text, int codepage) {
  return encodeWith(text, codepage, [](std::string& out, utf8proc_int32_t) { out += '?'; });
}

}  // namespace base
