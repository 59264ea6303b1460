#pragma once

#include "jet/database.h"

namespace foundation {

// A change of lists that are held in memory and written whole: definitions, currencies. It reads, is checked and writes
// within one transaction (jet::Transaction, exclusive among writers): from its construction on the lists are what is
// stored now, so that nothing is overwritten that another copy wrote meanwhile. No question to the operator belongs
// inside, for it would keep every other writer waiting.
//
// Left without save(), nothing is stored, and the lists are loaded anew when they are next looked at for changes.
template <typename Lists>
class DefinitionChange {
 public:
  // `more` is what the lists' reloadIfChanged() takes after the database. Throws jet::Error.
  DefinitionChange(Lists& lists, jet::Database& main, auto*... more)
      : lists_(lists), main_(main), transaction_(main), reloaded_(lists.reloadIfChanged(main, more...)) {}
  DefinitionChange(const DefinitionChange&) = delete;
  DefinitionChange& operator=(const DefinitionChange&) = delete;
  ~DefinitionChange() {
    if (!saved_) lists_.forget();
  }

  // Whether the lists held something else before.
  [[nodiscard]] bool reloaded() const { return reloaded_; }
  Lists& lists() { return lists_; }
  // Writes the lists as they are. Throws jet::Error.
  void save() {
    lists_.save(main_);
    transaction_.commit();
    saved_ = true;
  }

 private:
  Lists& lists_;
  jet::Database& main_;
  jet::Transaction transaction_;
  bool reloaded_;
  bool saved_ = false;
};

}  // namespace foundation
