#pragma once

#include <QComboBox>
#include <QFormLayout>
#include <QTimer>
#include <optional>
#include <vector>

#include "contacts/contact.h"
#include "foundation/table_watch.h"
#include "server/server_doc.h"
#include "ui/dialogs/form_dialog.h"

namespace ui {

// The sheet of one contact. While it is open it watches for other copies' changes of the row: fields that were not
// edited here take the new values; where both edited a field, the operator chooses.
class ContactsSheet : public FormDialog {
 public:
  // Without a contact a new one is made. `watch` was started before the contact was read.
  ContactsSheet(server::CServerDoc& document, const Texts& texts, std::optional<contacts::CONTACTENTRYDESC> contact,
                std::optional<foundation::TableWatch> watch, QWidget* parent);

  void accept() override;
  // Asks whether changes are to be saved.
  void reject() override;

 private:
  using CONTACTENTRYDESC = contacts::CONTACTENTRYDESC;

  // An editor and the field that it edits; one of the two widgets.
  struct Field {
    QWidget* editor = nullptr;
    std::string CONTACTENTRYDESC::*member = nullptr;
    QString label = {};
    std::string shown = {};  // its text before any edit

    [[nodiscard]] std::string text() const;
    void setText(const std::string& text) const;
  };

  void buildForm();
  void show(const CONTACTENTRYDESC& contact);
  [[nodiscard]] CONTACTENTRYDESC edited();
  [[nodiscard]] bool modified() const;
  [[nodiscard]] bool save();
  void removeContact();
  void lookForChanges();
  void takeOver(const CONTACTENTRYDESC& stored);
  [[nodiscard]] QString relationship(int tip) const;
  // The row is gone: true when the operator wants to keep it as a new one, else the sheet closes.
  bool keepDeleted();

  server::CServerDoc& document_;
  std::optional<CONTACTENTRYDESC> original_;  // as it was read; nothing for a new one
  std::vector<Field> fields_;
  QComboBox* tip_ = nullptr;
  QPushButton* delete_ = nullptr;  // null for a new contact
  int shownTip_ = 0;
  std::optional<foundation::TableWatch> table_;
  QTimer watch_{this};
};

}  // namespace ui
