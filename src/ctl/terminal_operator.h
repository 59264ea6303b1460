#pragma once

#include <chrono>
#include <string>

#include "ctl/interrupt_watch.h"
#include "platform/operator.h"

namespace ctl {

// The operator at a terminal. Messages go to standard error; questions are asked when both standard input and standard
// error are a terminal, else they get their unattended answer, which is shown.
class TerminalOperator : public platform::Operator {
 public:
  explicit TerminalOperator(InterruptWatch& interrupts);

  // From now on no one is there, even at a terminal: no question waits, no bar is drawn.
  void leave();
  // From now on every question is answered with Yes.
  void answerYes() { answersYes_ = true; }

  void messageBox(std::string_view text) override;
  bool askYesNo(std::string_view text, Unattended unattended) override;
  void beep(int frequency, int duration) override;
  void beep(Sound sound) override;
  void progressBegin(std::string_view title, std::string_view text, std::int64_t range) override;
  bool progressStep(std::int64_t position) override;
  void progressEnd() override;

 private:
  void drawBar(std::int64_t position);

  InterruptWatch& interrupts_;
  bool interactive_;  // questions can be asked
  bool answersYes_ = false;
  bool showsBar_;
  std::string barText_;
  std::int64_t barRange_ = 0;
  std::chrono::steady_clock::time_point lastDrawn_;
};

}  // namespace ctl
