#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

// The person in front of the program, or the absence of one. One implementation a program (terminal, window, service,
// scripted in tests). Texts arrive translated.
class Operator {
 public:
  virtual ~Operator() = default;

  virtual void messageBox(std::string_view text) = 0;

  // What an unattended program answers: the choice that loses nothing. Continuing an import: Yes. Deletions: No.
  enum class Unattended { Yes, No };
  virtual bool askYesNo(std::string_view text, Unattended unattended) = 0;

  // A tone; Hz and milliseconds.
  virtual void beep(int frequency, int duration) = 0;
  enum class Sound { Hand, Asterisk };
  virtual void beep(Sound sound) = 0;

  // Progress of long work over [0, range]; begin/end are paired, and they do not nest. Returns false from progressStep
  // when the operator asked to stop and the work can be stopped.
  virtual void progressBegin(std::string_view title, std::string_view text, std::int64_t range) = 0;
  virtual bool progressStep(std::int64_t position) = 0;
  virtual void progressEnd() = 0;
  // Between the steps of work that says nothing by itself, such as a long query: keeps a window alive. Returns as
  // progressStep. Without progress too a program with windows may give the operator a way out when it lasts.
  virtual bool progressPulse() { return true; }
  // What a pulse let the operator give up has ended: the next pulse is of something else.
  virtual void waitIsOver() {}
  // True while progress is shown or a pulse hears events: no other work may begin, nor may what is in use be used.
  [[nodiscard]] virtual bool busy() const { return false; }
};

// No one is there: messages and questions go nowhere, every question gets its unattended answer.
class NoOperator : public Operator {
 public:
  void messageBox(std::string_view) override {}
  bool askYesNo(std::string_view, Unattended unattended) override { return unattended == Unattended::Yes; }
  void beep(int, int) override {}
  void beep(Sound) override {}
  void progressBegin(std::string_view, std::string_view, std::int64_t) override {}
  bool progressStep(std::int64_t) override { return true; }
  void progressEnd() override {}
};

}  // namespace platform
