#pragma once

#include <QString>
#include <functional>
#include <utility>
#include <vector>

namespace ui {

// What was deleted and can be brought back, until the program closes. The latest comes first.
class UndoStack {
 public:
  // `bringBack` may throw jet::Error; the step is gone then, too.
  void push(QString what, std::function<void()> bringBack) {
    steps_.emplace_back(std::move(what), std::move(bringBack));
  }
  [[nodiscard]] bool empty() const { return steps_.empty(); }
  // Of the step that is undone next; empty when there is none.
  [[nodiscard]] QString what() const { return steps_.empty() ? QString() : steps_.back().first; }
  void undo() {
    const auto bringBack = std::move(steps_.back().second);
    steps_.pop_back();
    bringBack();
  }

 private:
  std::vector<std::pair<QString, std::function<void()>>> steps_;
};

}  // namespace ui
