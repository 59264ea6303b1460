#pragma once

#include <QTimer>
#include <chrono>
#include <cstdint>
#include <string>

#include "jet/database.h"
#include "platform/operator.h"

namespace ui {

// Reads what a search in the shown list needs, in steps too short to be felt, while the program waits for the operator:
// so the first letter is answered as quickly as those after it. What cannot be read is left to the search to tell.
class ReadAhead : public QObject {
 public:
  // Both must outlive this; the database until end().
  ReadAhead(jet::Database& database, const platform::Operator& person, QObject* parent);

  // Now: the operator is about to type. Soon: a list was opened. Later: its rows changed, and may change again; the
  // more often they did since the operator last did something, the later. Of a very long table nothing is read before
  // Now.
  enum class When { Now, Soon, Later };
  void begin(std::string select, When when);
  void end() { timer_.stop(); }
  [[nodiscard]] bool reading() const { return timer_.isActive(); }
  // Reads a little at once. True while there is more to read.
  bool goOn() {
    step();
    return reading();
  }

 private:
  void step();

  jet::Database& database_;
  const platform::Operator& person_;
  QTimer timer_;
  std::string select_;
  bool asked_ = false;
  std::chrono::milliseconds later_;
};

}  // namespace ui
