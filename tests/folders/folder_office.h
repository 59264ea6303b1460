#pragma once

#include "filter/call_office.h"
#include "folders/folder_view.h"

// An office whose folders can be opened.
class FolderOffice : public CallOffice {
 public:
  FolderOffice() { databaseSetting("OrganizationTAXE", "19"); }

  [[nodiscard]] folders::FolderView view(int id, int sortKey = 0) {
    return {*folders::findFolder(id), services, formatter, sortKey};
  }

  folders::FolderServices services{*main, config, texts, definitions, currencies, filter, log, user, person, clock};
  folders::ValueFormatter formatter{config, texts, definitions};
};
