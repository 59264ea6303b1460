#pragma once

#include <QComboBox>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <QWidget>
#include <optional>
#include <vector>

#include "ui/exchange/capture_program.h"
#include "ui/exchange/exchange_fields.h"
#include "ui/exchange/exchange_lines.h"
#include "ui/exchange/exchange_place.h"
#include "ui/texts.h"

namespace ui {

// The exchanges that send calls: kind, way, parameters; their lines as they come; start and stop of the service. Edits
// the site file through `tallymon`, and reads it when the page is first shown: the property `kStillReading` of its
// window is true meanwhile.
class ExchangePage : public QWidget {
  Q_OBJECT

 public:
  // `person` and `texts` must outlive it.
  ExchangePage(ExchangePlace place, platform::Operator& person, const Texts& texts);

  [[nodiscard]] bool changed() const;
  // A sentence that says what is missing; empty: it can be saved.
  [[nodiscard]] QString problem() const;
  // Checks the site and writes it; a running service uses it from then on. Throws std::runtime_error.
  void save();

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  [[nodiscard]] QLayout* buildChoice();
  [[nodiscard]] QWidget* buildConnection();
  [[nodiscard]] QWidget* buildReading();
  [[nodiscard]] QWidget* buildLines();
  [[nodiscard]] QLayout* buildService();

  void ask();
  void setAsking(bool asking);
  void useAnswers();
  void showFormats(const QJsonArray& formats);
  void showSite(const QJsonObject& found);
  void showSource(int index);
  void keepShown();
  void addSource();
  void removeSource();
  void useFormat();
  void useTransport();
  void toggleListening();
  void guessFormat();
  void control(QString (CaptureService::*action)() const);
  void refreshService();
  void lookAtService();
  void showService(const QJsonObject& found);
  void say(const QString& text);

  [[nodiscard]] QJsonObject sourceOnPage(QJsonObject over) const;
  [[nodiscard]] QJsonObject siteWith(const QJsonArray& sources) const;
  [[nodiscard]] QJsonArray editedSources() const;
  [[nodiscard]] QJsonObject currentSource() const;
  [[nodiscard]] FieldForm* parameters() const;

  const Texts& texts_;
  ExchangePlace place_;
  CaptureProgram program_;
  CaptureService service_{program_};
  struct Source {
    QJsonObject unchanged;  // as the page shows what is in the file; empty: a new one
    QJsonObject now;
  };

  bool asking_ = false;
  bool loaded_ = false;
  std::optional<CaptureProgram::Result> formatsAnswer_;
  std::optional<CaptureProgram::Result> siteAnswer_;
  QJsonObject site_;  // as it is in the file
  std::vector<Source> sources_;
  QJsonArray removed_;  // ids
  int shown_ = -1;
  int looks_ = 0;  // at the service; a later one counts

  QComboBox* source_;
  QPushButton* remove_;
  QTabWidget* tabs_;
  QLineEdit* id_;
  QComboBox* format_;
  QComboBox* transport_;
  std::vector<FieldForm*> parameters_;  // of each transport, in their order
  FieldForm* reading_;
  FieldForm* quiet_;
  ExchangeLines* lines_;
  QPushButton* listen_;
  QPushButton* guess_;
  QLabel* message_;
  QLabel* state_;
  QPushButton* start_;
  QPushButton* stop_;
  QTimer timer_;
};

}  // namespace ui
