#pragma once

#include "server/server_doc.h"
#include "ui/actions.h"
#include "ui/folder_view.h"
#include "ui/texts.h"

namespace ui {

class CMainFrame;

// What a command works on.
struct CommandTarget {
  server::CServerDoc& document;
  const Texts& texts;
  CMainFrame& frame;
  CFolderView& list;
};

// Enables the commands that have something to work on in the open folder.
void offerCommands(const Actions& actions, const CFolderView& list, server::CServerDoc& document);

// Does what the operator chose. Throws jet::Error.
void handleCommand(Command command, const CommandTarget& target);

}  // namespace ui
