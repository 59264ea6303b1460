#pragma once

#include <QDialog>
#include <QTimer>
#include <functional>
#include <string>
#include <vector>

namespace pictures {

// Saves windows as PNG files of one folder, each under its title.
class Album {
 public:
  // Files are named PREFIX-NAME.png.
  Album(std::string folder, std::string prefix) : folder_(std::move(folder)), prefix_(std::move(prefix)) {}

  // The window as it is; shown when it is not yet.
  void take(QWidget& window, const std::string& name);

  using Step = std::function<void(QDialog& dialog)>;
  // Runs `open`, which shows a modal window; prepares and takes it, then closes it without saving.
  void takeModal(const std::string& name, const std::function<void()>& open, const Step& prepare = {});
  // For windows that open others: each step meets the modal window that is open then, and closes it itself.
  void meetModals(const std::function<void()>& open, std::vector<Step> steps);

  [[nodiscard]] int taken() const { return taken_; }

 private:
  std::string folder_;
  std::string prefix_;
  int taken_ = 0;
};

}  // namespace pictures
