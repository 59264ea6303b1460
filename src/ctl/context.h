#pragma once

#include <optional>
#include <string>

#include "ctl/command.h"
#include "ctl/interrupt_watch.h"
#include "ctl/terminal_documents.h"
#include "ctl/terminal_operator.h"
#include "ctl/terminal_prompt.h"
#include "platform/clock.h"
#include "server/server_app.h"
#include "server/server_doc.h"

namespace ctl {

// What the commands work with: the machine store from the start, the document once open() was called. Opening logs the
// user in.
class Context {
 public:
  explicit Context(const GlobalOptions& options);
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  [[nodiscard]] foundation::ConfigManager& config() { return app_.config(); }
  [[nodiscard]] foundation::MachineStore& machineStore() { return app_.config().machineStore(); }
  [[nodiscard]] server::CServerApp& app() { return app_; }
  [[nodiscard]] TerminalOperator& person() { return person_; }
  [[nodiscard]] TerminalPrompt& prompt() { return prompt_; }
  [[nodiscard]] const platform::Clock& clock() const { return clock_; }
  [[nodiscard]] InterruptWatch& interrupts() { return interrupts_; }

  // Opens the document for what the command does, unless it is open. Throws Failure.
  void open(Duty duty);
  // Opens, and throws Failure when the user lacks the right.
  void require(const Access& access);
  // Throws Failure, with the reason, while the main database can only be read.
  void requireWritable();

  // Folder of a setting of section "general" in the machine store, with its separator; empty when it is not set.
  [[nodiscard]] std::string machineText(const foundation::TextKey& key);

  // Only after open().
  [[nodiscard]] server::CServerDoc& document() { return *document_; }
  [[nodiscard]] jet::Database& main() { return document_->database(); }
  [[nodiscard]] exchange::PartyDefinitions& parties() { return document_->smdr().parties(); }
  [[nodiscard]] tariff::Currencies& currencies() { return document_->currencies(); }
  [[nodiscard]] security::AuditLog& log() { return document_->log(); }
  [[nodiscard]] const foundation::LanguageFile& language() { return app_.language(); }

 private:
  [[noreturn]] void failToStart();

  GlobalOptions options_;
  InterruptWatch interrupts_;
  TerminalOperator person_;
  TerminalPrompt prompt_;
  TerminalDocuments documents_;
  platform::SystemClock clock_;
  server::CServerApp app_;
  std::optional<server::CServerDoc> document_;
};

}  // namespace ctl
