#include "contacts/vcard.h"

#include <algorithm>

#include "base/characters.h"
#include "base/codepage.h"
#include "base/printf.h"
#include "base/text.h"

namespace contacts {

namespace {

constexpr std::size_t kLineOctets = 75;
constexpr std::string_view kRelationship = "X-TALLYBOOK-RELATIONSHIP";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string escapeValue(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '\\' || c == ',' || c == ';') out += '\\';
    if (c == '\n') {
      out += "\\n";
    } else if (c != '\r') {
      out += c;
    }
  }
  return out;
}

// Folds a content line at 75 octets, never inside a letter.
void appendLine(std::string& out, std::string_view line) {
  std::size_t limit = kLineOctets;
  while (line.size() > limit) {
    std::size_t cut = limit;
    while (cut > 1 && !base::startsCharacter(line[cut])) --cut;
    out += line.substr(0, cut);
    out += "\r\n ";
    line.remove_prefix(cut);
    limit = kLineOctets - 1;
  }
  out += line;
  out += "\r\n";
}

void appendProperty(std::string& out, std::string_view name, std::string_view value) {
  if (!value.empty()) appendLine(out, base::format("%s:%s", name, escapeValue(value)));
}

void appendCard(std::string& out, const CONTACTENTRYDESC& contact) {
  appendLine(out, "BEGIN:VCARD");
  appendLine(out, "VERSION:3.0");
  // Given and family names are not told apart here: the whole name is written as the family name.
  appendLine(out, base::format("N:%s;;;;", escapeValue(contact.name)));
  appendLine(out, "FN:" + escapeValue(contact.contact.empty() ? displayName(contact) : contact.contact));
  appendProperty(out, "ORG", contact.organization);
  for (const std::string& number : base::split(contact.telView, ",;/\r\n")) {
    appendProperty(out, "TEL;TYPE=voice", base::trim(number));
  }
  appendProperty(out, "EMAIL", contact.email);
  if (!contact.address.empty()) appendLine(out, base::format("ADR:;;%s;;;;", escapeValue(contact.address)));
  appendProperty(out, "URL", contact.web);
  appendProperty(out, "NOTE", contact.note);
  if (contact.tip != 0) appendLine(out, base::format("%s:%d", kRelationship, contact.tip));
  appendLine(out, "END:VCARD");
}

struct Line {
  std::size_t number = 0;  // of its first physical line, from 1
  std::string text;
};

// The head and the value of a line; the colon between them is the first one outside quotation marks.
std::size_t colonOf(std::string_view line) {
  bool quoted = false;
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (line[at] == '"') quoted = !quoted;
    if (line[at] == ':' && !quoted) return at;
  }
  return std::string_view::npos;
}

bool isQuotedPrintable(std::string_view line) {
  return base::foldAscii(line.substr(0, colonOf(line))).find("quoted-printable") != std::string::npos;
}

// Joins the pieces of folded lines. A line that begins with a blank or tab goes on with the one before it: version 2.1
// folds at a blank of the value, later versions put one in. A quoted-printable value goes on after a "=" at the end.
std::vector<Line> unfold(std::string_view text) {
  std::vector<Line> lines;
  std::size_t number = 0;
  bool keepsBlank = false;
  bool goesOn = false;
  for (const std::string& raw : base::split(text, "\n", true)) {
    ++number;
    std::string_view line = raw;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (goesOn) {
      lines.back().text.pop_back();
      lines.back().text += line;
    } else if (!lines.empty() && !line.empty() && (line.front() == ' ' || line.front() == '\t')) {
      lines.back().text += line.substr(keepsBlank ? 0 : 1);
    } else {
      lines.push_back({number, std::string(line)});
      if (base::foldAscii(line).starts_with("version:")) keepsBlank = line.ends_with("2.1");
    }
    goesOn = line.ends_with('=') && isQuotedPrintable(lines.back().text);
  }
  return lines;
}

// The components of a value, split at unescaped semicolons, escapes taken out.
std::vector<std::string> components(std::string_view value) {
  std::vector<std::string> parts(1);
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] == '\\' && i + 1 < value.size()) {
      const char next = value[++i];
      parts.back() += next == 'n' || next == 'N' ? '\n' : next;
    } else if (value[i] == ';') {
      parts.emplace_back();
    } else {
      parts.back() += value[i];
    }
  }
  return parts;
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string out;
  for (const std::string& part : parts) {
    const std::string_view piece = base::trim(part);
    if (piece.empty()) continue;
    if (!out.empty()) out += separator;
    out += piece;
  }
  return out;
}

// "N" holds family; given; further; prefix; suffix. Shown in the order that people read.
std::string nameOf(std::vector<std::string> parts) {
  parts.resize(5);
  return joined({parts[3], parts[1], parts[2], parts[0], parts[4]}, " ");
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Version 2.1 writes letters outside ASCII as =XX. What separates and escapes stands for itself when it is written so.
std::string decodeQuotedPrintable(std::string_view value) {
  std::string out;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const int high = value[i] == '=' && i + 2 < value.size() ? hexDigit(value[i + 1]) : -1;
    const int low = high >= 0 ? hexDigit(value[i + 2]) : -1;
    if (low < 0) {
      out += value[i];
      continue;
    }
    const char decoded = static_cast<char>(high * 16 + low);
    if (decoded == ';' || decoded == '\\') out += '\\';
    if (decoded != '\r') out += decoded;
    i += 2;
  }
  return out;
}

// Old programs write the code page of their country, and often do not say which.
int codepageOf(std::string_view head) {
  struct Charset {
    std::string_view name;
    int codepage;
  };
  constexpr Charset kCharsets[] = {{"charset=windows-1250", 1250},
                                   {"charset=iso-8859-2", 1250}};  // the letters of Romanian are the same
  for (const Charset& charset : kCharsets) {
    if (head.find(charset.name) != std::string_view::npos) return charset.codepage;
  }
  return 1252;
}

bool isUtf8(std::string_view text) {
  constexpr int kUtf8 = 65001;
  return base::decode(text, kUtf8) == text;
}

struct Property {
  std::string name;  // lower case, without group and parameters
  std::string value;
};

Property parseProperty(const std::string& line) {
  const std::size_t colon = colonOf(line);
  if (colon == std::string::npos) return {};
  const std::string head = base::foldAscii(line.substr(0, colon));
  std::string name = head.substr(0, head.find(';'));
  const std::size_t dot = name.find('.');
  if (dot != std::string::npos) name.erase(0, dot + 1);
  std::string value = line.substr(colon + 1);
  if (isQuotedPrintable(line)) value = decodeQuotedPrintable(value);
  if (!isUtf8(value)) value = base::decode(value, codepageOf(head));
  return {name, value};
}

// The parameters of a "tel:" address, an extension for one, are no part of the number.
void appendNumber(std::string& numbers, std::string_view number) {
  constexpr std::string_view scheme = "tel:";
  number = base::trim(number);
  if (base::equalFoldAscii(number.substr(0, scheme.size()), scheme)) {
    number.remove_prefix(scheme.size());
    number = number.substr(0, number.find(';'));
  }
  if (number.empty()) return;
  if (!numbers.empty()) numbers += ", ";
  numbers += number;
}

void takeProperty(CONTACTENTRYDESC& contact, const Property& property) {
  const auto parts = components(property.value);
  if (property.name == "n") contact.name = nameOf(parts);
  if (property.name == "fn" && contact.contact.empty()) contact.contact = joined(parts, "; ");
  if (property.name == "org") contact.organization = joined(parts, ", ");
  if (property.name == "tel") appendNumber(contact.telView, joined(parts, ";"));
  if (property.name == "email" && contact.email.empty()) contact.email = joined(parts, ";");
  if (property.name == "url" && contact.web.empty()) contact.web = joined(parts, ";");
  if (property.name == "adr" && contact.address.empty()) contact.address = joined(parts, ", ");
  if (property.name == "note") contact.note = parts.size() == 1 ? parts[0] : joined(parts, "; ");
  if (property.name == base::foldAscii(kRelationship)) {
    const std::int32_t tip = base::leadingInteger(property.value);
    if (tip >= 0 && tip <= kLastRelationship) contact.tip = tip;
  }
}

}  // namespace

std::string writeVCards(const std::vector<CONTACTENTRYDESC>& contacts) {
  std::string out;
  for (const CONTACTENTRYDESC& contact : contacts) appendCard(out, contact);
  return out;
}

VCardImport readVCards(std::string_view text) {
  VCardImport result;
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  CONTACTENTRYDESC card;
  std::size_t begunAt = 0;  // line of the open card, 0 when none is open
  for (const Line& line : unfold(text)) {
    const Property property = parseProperty(line.text);
    const std::string value = base::foldAscii(base::trim(property.value));
    if (property.name == "begin" && value == "vcard") {
      card = CONTACTENTRYDESC();
      begunAt = line.number;
    } else if (property.name == "end" && value == "vcard" && begunAt != 0) {
      if (card.name.empty() && card.organization.empty()) card.name = card.contact;
      if (card.contact.empty()) card.contact = displayName(card);
      if (card.contact.empty()) {
        result.problems.push_back(base::format("The card at line %d has neither a name nor an organization.", begunAt));
      } else {
        result.contacts.push_back(card);
      }
      begunAt = 0;
    } else if (begunAt != 0) {
      takeProperty(card, property);
    }
  }
  if (begunAt != 0) {
    result.problems.push_back(base::format("The card at line %d does not end (END:VCARD is missing).", begunAt));
  }
  return result;
}

}  // namespace contacts
