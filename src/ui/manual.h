#pragma once

#include <QObject>
#include <QWidget>
#include <string>
#include <string_view>

#include "server/server_app.h"

namespace ui {

// The property of a window that names its page of the manual, where the page depends on what the window shows.
inline constexpr const char* kManualPage = "manualPage";

// The page about a window, by the window's name or kManualPage; of one without a page that of the window it belongs to.
[[nodiscard]] std::string manualPageOf(const QWidget& window);
// The page about a folder of the tree.
[[nodiscard]] std::string manualPageOfFolder(int folder);

// What opening a page opens: what setting "Manual" names, else the page in the language in use, else in English; empty
// when there is no manual.
[[nodiscard]] std::string manualAddress(server::CServerApp& app, std::string_view page);
// False when there is nothing to open, or nothing that opens it.
bool openManual(server::CServerApp& app, std::string_view page);

// As F1 in the window does.
void askForManual(QWidget& window);

// While it lives, F1 in a window that has no such command of its own opens the window's page.
class ManualKeys : public QObject {
 public:
  explicit ManualKeys(server::CServerApp& app);

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  server::CServerApp& app_;
};

}  // namespace ui
