#include "ctl/terminal_operator.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "base/journal_line.h"
#include "base/printf.h"

namespace ctl {

TerminalOperator::TerminalOperator(InterruptWatch& interrupts)
    : interrupts_(interrupts),
      interactive_(isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0),
      showsBar_(isatty(STDERR_FILENO) != 0) {}

void TerminalOperator::leave() {
  interactive_ = false;
  showsBar_ = false;
}

void TerminalOperator::messageBox(std::string_view text) {
  const bool toJournal = base::isJournal(STDERR_FILENO);
  std::cerr << (toJournal ? base::journalLine(base::Priority::Warning, text, true) : std::string(text)) << '\n';
}

bool TerminalOperator::askYesNo(std::string_view text, Unattended unattended) {
  if (answersYes_) return true;
  if (!interactive_) {
    const bool yes = unattended == Unattended::Yes;
    std::cerr << text << (yes ? " Yes\n" : " No\n");
    return yes;
  }
  std::string answer;
  while (true) {
    std::cerr << text << " [y/n] " << std::flush;
    if (!std::getline(std::cin, answer)) return false;
    if (answer == "y" || answer == "Y" || answer == "yes") return true;
    if (answer == "n" || answer == "N" || answer == "no") return false;
  }
}

// A terminal has one tone; what it means was said in a message.
void TerminalOperator::beep(int /*frequency*/, int /*duration*/) {
  if (showsBar_) std::cerr << '\a' << std::flush;
}

void TerminalOperator::beep(Sound /*sound*/) {
  if (showsBar_) std::cerr << '\a' << std::flush;
}

void TerminalOperator::progressBegin(std::string_view title, std::string_view text, std::int64_t range) {
  barText_ = title.empty() ? text : title;
  barRange_ = std::max<std::int64_t>(range, 1);
  lastDrawn_ = {};
}

bool TerminalOperator::progressStep(std::int64_t position) {
  constexpr std::chrono::milliseconds kBetweenDrawings{100};
  const auto now = std::chrono::steady_clock::now();
  if (showsBar_ && now - lastDrawn_ >= kBetweenDrawings) {
    lastDrawn_ = now;
    drawBar(position);
  }
  return !interrupts_.requested();
}

void TerminalOperator::drawBar(std::int64_t position) {
  constexpr std::size_t kCells = 30;
  // The range of an import is an estimate that the position may pass.
  const std::int64_t reached = std::clamp<std::int64_t>(position, 0, barRange_);
  const auto filled = static_cast<std::size_t>(reached * static_cast<std::int64_t>(kCells) / barRange_);
  std::cerr << base::format("\r%s [%s%s] %3d %%", barText_, std::string(filled, '#'), std::string(kCells - filled, '.'),
                            reached * 100 / barRange_)
            << std::flush;
}

void TerminalOperator::progressEnd() {
  if (showsBar_) std::cerr << "\r\033[K" << std::flush;
}

}  // namespace ctl
