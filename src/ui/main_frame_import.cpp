// How calls come in at this desk: asked for by the operator, or by a sender on the live channel.

#include "server/service.h"
#include "ui/main_frame.h"

namespace ui {

void CMainFrame::openLiveChannel() {
  try {
    // Not at once: the sender still waits for its answer.
    live_ = server::openLiveChannel(document_, [this] {
      importAsked_ = true;
      QTimer::singleShot(0, this, &CMainFrame::importWhenAsked);
    });
  } catch (const std::exception& error) {
    say(toQt(error.what()));
  }
  status_->showLive(texts_(live_ ? "IDS_STATUS_LIVE" : "IDS_STATUS_NO_LIVE"));
  if (!live_) return;
  liveNotifier_ = std::make_unique<QSocketNotifier>(live_->descriptor(), QSocketNotifier::Read);
  connect(liveNotifier_.get(), &QSocketNotifier::activated, this, [this] {
    if (!person_.busy()) live_->process();
  });
}

void CMainFrame::importCalls() {
  // What was stopped goes on first: nothing of a file is left behind.
  if (!person_.busy() && reconnection_.ready()) tellImport(document_.smdr().catchUp());
}

// The operator is told as well when there was nothing.
void CMainFrame::importAtOnce() {
  if (person_.busy()) return;
  if (!reconnection_.ready()) return say(texts_("IDS_CONNECTION_LOST"));
  const ingest::ImportResult result = document_.smdr().catchUp();
  tellImport(result);
  const bool stopped = result.outcome == ingest::ImportResult::Outcome::Interrupted;
  if (result.imported > 0 || stopped || !result.message.empty() || !document_.smdr().keptText(result).empty()) return;
  say(texts_.format("IDS_IMPORT_NOTHING_NEW",
                    document_.app().config().ReadConfigString(foundation::keys::PathMonitor)));
}

void CMainFrame::importCallsOf(const std::filesystem::path& file) {
  if (person_.busy()) return;
  const auto result = document_.smdr().importFile(file);
  tellImport(result);
  if (result.outcome == ingest::ImportResult::Outcome::AlreadyComplete) {
    say(texts_.format("IDS_IMPORT_COMPLETE", file.string()));
  } else if (result.imported == 0 && result.message.empty()) {
    say(texts_.format("IDS_IMPORT_NONE", file.string()));
  }
}

void CMainFrame::tellImport(const ingest::ImportResult& result) {
  if (result.imported > 0) reloadFolder();
  if (result.outcome == ingest::ImportResult::Outcome::Interrupted) return say(texts_("IDS_STATUS_IMPORT_STOPPED"));
  if (result.imported > 0) say(texts_.format("IDS_STATUS_IMPORTED", result.imported));
  const std::string kept = document_.smdr().keptText(result);
  if (!kept.empty()) say(toQt(kept));
  // Who answered to go on is still there, and must know where the calls are.
  if (result.refused > 0) return document_.app().surroundings().person.messageBox(kept);
  if (!kept.empty()) return;
  if (!result.phonebookFault.empty()) say(toQt(result.phonebookFault));
  if (!result.message.empty()) say(toQt(result.message));
}

// By a sender on the live channel; while something else runs, the next refresh does it.
void CMainFrame::importWhenAsked() {
  if (!importAsked_ || person_.busy()) return;
  importAsked_ = false;
  importCalls();
}

}  // namespace ui
