#include "filter/rtf_builder.h"

#include "base/codepage.h"
#include "base/printf.h"
#include "base/text.h"

namespace filter {

namespace {

// One UTF-8 character, in the page that the piece declares where the page has it, else by its number.
void appendCharacter(std::string& out, std::string_view character) {
  const std::string byte = base::encode(character, 1252);
  if (byte.size() == 1 && byte != "?") {
    out += base::format("\\'%02x", static_cast<unsigned char>(byte[0]));
    return;
  }
  const auto lead = static_cast<unsigned char>(character[0]);
  std::uint32_t code = lead < 0xE0 ? lead & 0x1Fu : lead < 0xF0 ? lead & 0x0Fu : lead & 0x07u;
  for (const char next : character.substr(1)) code = (code << 6) | (static_cast<unsigned char>(next) & 0x3Fu);
  const auto unit = [&](std::uint32_t value) { out += base::format("\\u%d?", static_cast<std::int16_t>(value)); };
  if (code < 0x10000) {
    unit(code);
  } else {
    unit(0xD800 + ((code - 0x10000) >> 10));
    unit(0xDC00 + ((code - 0x10000) & 0x3FF));
  }
}

std::string convert(std::string_view text) {
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (static_cast<unsigned char>(c) >= 0xC0) {
      std::size_t end = at + 1;
      while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) ++end;
      appendCharacter(out, text.substr(at, end - at));
      at = end;
      continue;
    }
    if (c == '\n') {
      out += "\r\n\\par ";
    } else {
      if (c == '\\' || c == '{' || c == '}') out += '\\';
      out += c;
    }
    ++at;
  }
  return out;
}

template <auto Member>
CBoolManip flag(bool on) {
  return {[](CRTFBuilder& builder, bool value) { builder.*Member = value; }, on};
}

template <auto Member>
CIntManip integer(int value) {
  return {[](CRTFBuilder& builder, int number) { builder.*Member = number; }, value};
}

}  // namespace

std::string CRTFBuilder::styleGroup() const {
  return base::format("\\plain%s%s%s%s\\f%d\\fs%d\\cb%d\\cf%d ", bold ? "\\b" : "", underline ? "\\ul" : "",
                      italic ? "\\i" : "", strike ? "\\strike" : "", font, fontSize, background, color);
}

std::string CRTFBuilder::fontTable() const {
  std::string table = "{\\fonttbl";
  for (std::size_t i = 0; i < fonts_.size(); ++i) table += base::format("{\\f%d %s;}", i, fonts_[i]);
  return table + "}";
}

std::string CRTFBuilder::colorTable() const {
  std::string table = "{\\colortbl";
  for (const RtfColor& entry : colors_) {
    table += base::format("\\red%d\\green%d\\blue%d;", entry.red, entry.green, entry.blue);
  }
  return table + "}";
}

void CRTFBuilder::append(std::string_view text) {
  pieces_.push_back("{\\rtf1\\ansi\\ansicpg1252\\deff0\\deftab720" + fontTable() + colorTable() + styleGroup() +
                    convert(text));
}

std::string CRTFBuilder::text() const {
  std::string all;
  for (const std::string& piece : pieces_) all.append(piece).append("}");
  return all;
}

int CRTFBuilder::fontIndex(std::string_view name) {
  for (std::size_t i = 0; i < fonts_.size(); ++i) {
    if (base::equalFoldAscii(fonts_[i], name)) return static_cast<int>(i);
  }
  fonts_.emplace_back(name);
  return static_cast<int>(fonts_.size()) - 1;
}

int CRTFBuilder::colorIndex(RtfColor color) {
  for (std::size_t i = 0; i < colors_.size(); ++i) {
    if (colors_[i].red == color.red && colors_[i].green == color.green && colors_[i].blue == color.blue) {
      return static_cast<int>(i);
    }
  }
  colors_.push_back(color);
  return static_cast<int>(colors_.size()) - 1;
}

CBoolManip bold(bool on) {
  return flag<&CRTFBuilder::bold>(on);
}
CBoolManip underline(bool on) {
  return flag<&CRTFBuilder::underline>(on);
}
CBoolManip italic(bool on) {
  return flag<&CRTFBuilder::italic>(on);
}
CBoolManip strike(bool on) {
  return flag<&CRTFBuilder::strike>(on);
}
CStringManip font(std::string name) {
  return {[](CRTFBuilder& builder, const std::string& value) { builder.font = builder.fontIndex(value); },
          std::move(name)};
}
CIntManip fontSize(int halfPoints) {
  return integer<&CRTFBuilder::fontSize>(halfPoints);
}
CIntManip color(int index) {
  return integer<&CRTFBuilder::color>(index);
}
CIntManip background(int index) {
  return integer<&CRTFBuilder::background>(index);
}

}  // namespace filter
