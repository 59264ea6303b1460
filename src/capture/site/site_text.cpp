#include "capture/site/site_text.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <vector>

#include "capture/site/section.h"
#include "capture/site/site.h"
#include "capture/site/site_json.h"
#include "platform/durable_files.h"

namespace capture {

namespace {

namespace fs = std::filesystem;

using Line = toml::source_index;

constexpr const char* kSource = "source";
constexpr mode_t kNewFile = 0640;  // it may hold passwords

// False too for what is no table.
bool isSource(const toml::node& element, const std::string& id) {
  const toml::table* table = element.as_table();
  return table != nullptr && (*table)["id"].value_or(std::string()) == id;
}

std::string keyLine(std::string_view key, const toml::node& value) {
  return tomlKey(key) + " = " + tomlText(value);
}

// The keys that tell a source first, then the others in their order.
std::string blockText(const std::string& header, const toml::table& table) {
  std::string text = header + '\n';
  for (const char* first : {"id", "format"}) {
    if (const toml::node* value = table.get(first)) text += keyLine(first, *value) + '\n';
  }
  for (const auto& [key, value] : table) {
    if (key.str() != "id" && key.str() != "format") text += keyLine(key.str(), value) + '\n';
  }
  return text;
}

// The last line that a table, or a table in it, has a key on.
Line lastLine(const toml::table& table) {
  Line last = table.source().end.line;
  for (const auto& [key, value] : table) {
    last = std::max(last, value.source().end.line);
    if (const toml::table* inner = value.as_table()) last = std::max(last, lastLine(*inner));
  }
  return last;
}

bool hasHeader(const toml::node& value) {
  return value.is_table() && !value.as_table()->is_inline();
}

}  // namespace

struct SiteText::Edit {
  std::size_t begin;
  std::size_t end;
  std::string text;
};

// Collects what is to be replaced in a text.
class SiteText::Editor {
 public:
  explicit Editor(const std::string& text) : text_(text), lines_{0, 0} {
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) {
      lines_.push_back(at + 1);
    }
  }

  void change(const toml::table& old, const toml::table& wanted) {
    Line last = old.source().begin.line;
    for (const auto& [key, value] : old) {
      if (!hasHeader(value)) last = std::max(last, value.source().end.line);
      const toml::node* now = wanted.get(key.str());
      if (now == nullptr) {
        remove(key, value);
      } else if (hasHeader(value) && now->is_table()) {
        change(*value.as_table(), *now->as_table());
      } else if (tomlText(value) != tomlText(*now)) {
        edits_.push_back({offset(key.source().begin), offset(value.source().end), keyLine(key.str(), *now)});
      }
    }
    std::string added;
    for (const auto& [key, value] : wanted) {
      if (!old.contains(key.str())) added += keyLine(key.str(), value) + '\n';
    }
    if (!added.empty()) insertAfter(last, added);
  }

  void replaceLines(Line first, Line last, std::string text) {
    edits_.push_back({lineBegin(first), lineBegin(last + 1), std::move(text)});
  }

  // Nothing when two changes concern the same place.
  [[nodiscard]] std::optional<std::string> result() {
    std::stable_sort(edits_.begin(), edits_.end(),
                     [](const Edit& left, const Edit& right) { return left.begin < right.begin; });
    std::string text;
    std::size_t at = 0;
    for (const Edit& edit : edits_) {
      if (edit.begin < at || edit.end < edit.begin) return std::nullopt;
      text += text_.substr(at, edit.begin - at) + edit.text;
      at = edit.end;
    }
    return text + text_.substr(at);
  }

 private:
  void remove(const toml::key& key, const toml::node& value) {
    replaceLines(hasHeader(value) ? value.source().begin.line : key.source().begin.line, value.source().end.line, {});
    if (!hasHeader(value)) return;
    for (const auto& [innerKey, inner] : *value.as_table()) remove(innerKey, inner);
  }

  void insertAfter(Line line, std::string text) {
    const std::size_t at = lineBegin(line + 1);
    const bool open = at > 0 && text_[at - 1] != '\n';  // the last line has no end
    edits_.push_back({at, at, (open ? "\n" : "") + std::move(text)});
  }

  [[nodiscard]] std::size_t lineBegin(Line line) const { return line < lines_.size() ? lines_[line] : text_.size(); }

  // Columns count characters.
  [[nodiscard]] std::size_t offset(const toml::source_position& place) const {
    std::size_t at = lineBegin(place.line);
    for (Line column = 1; column < place.column && at < text_.size(); ++column) {
      do ++at;
      while (at < text_.size() && (static_cast<unsigned char>(text_[at]) & 0xC0) == 0x80);
    }
    return at;
  }

  const std::string& text_;
  std::vector<std::size_t> lines_;  // begin of each line, counted from 1
  std::vector<Edit> edits_;
};

SiteText::SiteText(std::string text, std::string file) : text_(std::move(text)), file_(std::move(file)) {
  tables_ = parseSite(text_, file_);
}

const toml::table* SiteText::source(const std::string& id) const {
  const toml::array* sources = tables_[kSource].as_array();
  if (sources == nullptr) return nullptr;
  for (const toml::node& element : *sources) {
    if (isSource(element, id)) return element.as_table();
  }
  return nullptr;
}

void SiteText::become(std::string text, const toml::table& expected) {
  toml::table now = parseSite(text, file_);
  if (tomlText(now) != tomlText(expected)) {
    throw SiteError(file_ + ": this file is written in a way that only a person can change; edit it by hand");
  }
  text_ = std::move(text);
  tables_ = std::move(now);
}

namespace {

std::string appended(std::string text, const std::string& block) {
  if (!text.empty() && text.back() != '\n') text += '\n';
  if (!text.empty()) text += '\n';
  return text + block;
}

}  // namespace

// Key by key where that gives what is wanted, else the whole block is rewritten.
void SiteText::replace(const toml::table& old, const toml::table& wanted, const std::string& header,
                       const toml::table& expected) {
  try {
    Editor editor(text_);
    editor.change(old, wanted);
    become(editor.result().value_or(std::string()), expected);
  } catch (const SiteError&) {
    Editor editor(text_);
    editor.replaceLines(old.source().begin.line, lastLine(old), blockText(header, wanted));
    become(editor.result().value_or(std::string()), expected);
  }
}

void SiteText::setTable(const std::string& name, const toml::table& wanted) {
  const std::string header = "[" + name + "]";
  toml::table expected = tables_;
  expected.insert_or_assign(name, wanted);
  if (const toml::table* old = tables_[name].as_table()) return replace(*old, wanted, header, expected);
  become(appended(text_, blockText(header, wanted)), expected);
}

void SiteText::setSource(const toml::table& wanted) {
  const std::string header = "[[source]]";
  const std::string id = wanted["id"].value_or(std::string());
  toml::table expected = tables_;
  if (expected.get(kSource) == nullptr) expected.insert(kSource, toml::array());
  toml::array* sources = expected[kSource].as_array();
  if (sources == nullptr) throw SiteError(file_ + ": \"source\" is no list of tables; write [[source]] for each");
  const toml::table* old = source(id);
  if (old == nullptr) {
    sources->push_back(wanted);
    return become(appended(text_, blockText(header, wanted)), expected);
  }
  for (toml::node& element : *sources) {
    if (isSource(element, id)) *element.as_table() = wanted;
  }
  replace(*old, wanted, header, expected);
}

bool SiteText::removeSource(const std::string& id) {
  const toml::table* old = source(id);
  if (old == nullptr) return false;
  toml::table expected = tables_;
  toml::array& sources = *expected[kSource].as_array();
  for (auto element = sources.begin(); element != sources.end(); ++element) {
    if (!isSource(*element, id)) continue;
    sources.erase(element);
    break;
  }
  if (sources.empty()) expected.erase(kSource);
  Editor editor(text_);
  editor.replaceLines(old->source().begin.line, lastLine(*old), {});
  become(editor.result().value_or(std::string()), expected);
  return true;
}

namespace {

[[noreturn]] void failWith(const fs::path& file, int reason) {
  throw SiteError(file.string() + ": " + std::strerror(reason) +
                  (reason == EACCES || reason == EPERM || reason == EROFS
                       ? ". Only who may change this file and its folder can do this, as a rule the administrator."
                       : std::string()));
}

// The new file belongs to whom the old one belonged to; the first one to the group of its folder, which the service is
// in.
void takeOverRights(const fs::path& file, int descriptor) {
  struct stat old {};
  const bool had = ::stat(file.c_str(), &old) == 0;
  if (!had && ::stat(file.parent_path().c_str(), &old) != 0) return;
  const bool given = ::fchown(descriptor, had ? old.st_uid : static_cast<uid_t>(-1), old.st_gid) == 0;
  // Who may not give a file away has made it with a group of their own, and that group must not be let in by mistake.
  ::fchmod(descriptor, had ? old.st_mode & 07777 : given ? kNewFile : 0600);
}

}  // namespace

void writeSite(const fs::path& file, const std::string& text) {
  static_cast<void>(readSiteText(text, file.string()));
  std::error_code fault;
  const fs::path target = fs::exists(file, fault) ? fs::canonical(file, fault) : fs::absolute(file, fault);
  if (fault) failWith(file, fault.value());
  fs::create_directories(target.parent_path(), fault);
  const auto giveRights = [&target](int descriptor) { takeOverRights(target, descriptor); };
  fault =
      platform::replaceDurably(target, {reinterpret_cast<const unsigned char*>(text.data()), text.size()}, giveRights);
  if (fault) failWith(file, fault.value());
}

}  // namespace capture
