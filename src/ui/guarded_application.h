#pragma once

#include <QApplication>
#include <functional>
#include <string>

namespace ui {

// An exception that leaves a window's handler would end the program, with what is typed elsewhere: it is told, and the
// program goes on. What is expected to fail is caught where it happens; this is for what was not thought of.
class GuardedApplication : public QApplication {
 public:
  using QApplication::QApplication;

  // What tells the text of the exception; called outside of the handler that threw.
  void setReport(std::function<void(const std::string& fault)> report) { report_ = std::move(report); }

  bool notify(QObject* receiver, QEvent* event) override;

 private:
  void tell(const std::string& fault);

  std::function<void(const std::string&)> report_;
  bool telling_ = false;
};

}  // namespace ui
