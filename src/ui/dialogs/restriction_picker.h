#pragma once

#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <array>

#include "exchange/party_definitions.h"
#include "filter/restriction_choice.h"
#include "ui/texts.h"

namespace ui {

// Whose calls a user sees: departments, extensions, clients and trunks ticked in lists, and the condition that they
// make, which can be written by hand, too. Says at once when it becomes too long to be applied, and what to do.
class RestrictionPicker : public QWidget {
  Q_OBJECT

 public:
  // The definitions must outlive this.
  RestrictionPicker(const exchange::PartyDefinitions& definitions, const QString& condition, const Texts& texts,
                    QWidget* parent = nullptr);

  [[nodiscard]] QString condition() const;

 private:
  void fillLists(const filter::RestrictionChoice& choice);
  [[nodiscard]] filter::RestrictionChoice ticked() const;
  void followLists();
  void followText();
  void useDepartments();
  void tellLimit(const filter::RestrictionChoice& choice);

  static constexpr std::size_t kLists = 4;  // as in RestrictionChoice

  const exchange::PartyDefinitions& definitions_;
  const Texts& texts_;
  std::array<QListWidget*, kLists> lists_;
  QPlainTextEdit* text_;
  QLabel* state_;
  QPushButton* departments_;
};

}  // namespace ui
