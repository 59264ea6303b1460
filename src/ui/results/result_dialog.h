#pragma once

#include <QTimer>
#include <functional>
#include <optional>

#include "folders/folder_view.h"
#include "platform/progress.h"
#include "server/server_doc.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"

namespace ui {

// A window that shows results and is only closed. A row of them may lead to calls: it closes then, too.
class ResultDialog : public FormDialog {
 public:
  ResultDialog(server::CServerDoc& document, const Texts& texts, const char* captionKey, const char* name,
               QWidget* parent)
      : FormDialog(texts, captionKey, name, parent), document_(document) {
    okButton()->hide();
    cancelButton()->setText(texts("IDS_CLOSE"));
    resize(fontMetrics().averageCharWidth() * 170, fontMetrics().lineSpacing() * 42);
  }

  // Shows the window at once and has it read what it shows then; a window that could not, or was stopped, is closed.
  // Its property `kStillReading` is true meanwhile.
  int execReading(const std::function<bool()>& read) {
    setProperty(kStillReading, true);
    QTimer::singleShot(0, this, [this, read] {
      const bool done = read();
      setProperty(kStillReading, false);
      if (!done) reject();
    });
    return exec();
  }

  // What the accepted window leads to.
  [[nodiscard]] const std::optional<folders::Narrowing>& calls() const { return calls_; }

 protected:
  [[nodiscard]] server::CServerDoc& document() { return document_; }
  // A button at the other end of the row. Buttons that are added bring the hidden one back.
  QPushButton* addSideButton(const char* key, const char* name) {
    QPushButton* button = addButton(key, name);
    okButton()->hide();
    return button;
  }
  // Runs work that may last under the progress window; false after a fault, which was told, or a stop.
  template <typename Work>
  bool work(Work&& work) {
    return attempt(this, texts(), [&] {
      const platform::Progress progress(document_.app().surroundings().person, fromQt(windowTitle()),
                                        texts().language().Translate("IDS_READING_CALLS"));
      work();
    });
  }
  void leadTo(folders::Narrowing calls) {
    calls_ = std::move(calls);
    accept();
  }

 private:
  server::CServerDoc& document_;
  std::optional<folders::Narrowing> calls_;
};

}  // namespace ui
