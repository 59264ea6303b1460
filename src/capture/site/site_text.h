#pragma once

#include <toml++/toml.h>

#include <filesystem>
#include <string>

namespace capture {

// The text of a site file that is changed by a program: what is not changed stays as somebody wrote it, with its order
// and its comments. Where a change within a source is too much for that, the comments between its keys are lost.
class SiteText {
 public:
  // Throws SiteError naming `file`, line and column when the text is no TOML.
  SiteText(std::string text, std::string file);

  [[nodiscard]] const std::string& text() const { return text_; }
  [[nodiscard]] const toml::table& tables() const { return tables_; }

  // Each makes a table what `wanted` says: keys that it does not name go. Throws SiteError when the file is written in
  // a way that this cannot be done in.
  void setTable(const std::string& name, const toml::table& wanted);
  // The source of the id that `wanted` has; added at the end when there is none.
  void setSource(const toml::table& wanted);
  // False when there is no such source.
  bool removeSource(const std::string& id);

 private:
  struct Edit;
  class Editor;

  [[nodiscard]] const toml::table* source(const std::string& id) const;
  void replace(const toml::table& old, const toml::table& wanted, const std::string& header,
               const toml::table& expected);
  void become(std::string text, const toml::table& expected);

  std::string text_;
  std::string file_;
  toml::table tables_;
};

// Checks the text as readSite() does, then puts it in the place of the file in one step, on the disk when it returns;
// owner and permissions stay. A new file can be read by the group of its folder. Throws SiteError; the old file is
// there then.
void writeSite(const std::filesystem::path& file, const std::string& text);

}  // namespace capture
