#include "ui/dialogs/directory_messages.h"

#include "security/rights.h"
#include "ui/dialogs/messages.h"

namespace ui {

bool mayChangeAdministration(server::CServerDoc& document) {
  return !document.DatabaseReadOnly() && document.HasRight(security::ObjectAdministration, security::RightChange);
}

bool explainRefusal(security::SaveResult result, const std::string& name, const Texts& texts, QWidget* parent) {
  switch (result) {
    case security::SaveResult::Saved:
      return false;
    case security::SaveResult::NameUnusable:
      warn(parent, texts, texts("IDS_NAME_UNUSABLE"));
      break;
    case security::SaveResult::NameTaken:
      warn(parent, texts, texts.format("IDS_NAME_TAKEN", name));
      break;
    case security::SaveResult::LastAdministrator:
      warn(parent, texts, texts("IDS_LAST_ADMINISTRATOR"));
      break;
    case security::SaveResult::Missing:
    case security::SaveResult::RestrictionRejected:
      break;
  }
  return true;
}

}  // namespace ui
