#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace base {

// How much a line of a service matters; the levels of the system's journal.
enum class Priority { Error = 3, Warning = 4, Notice = 5, Information = 6 };

// Takes a line of a service.
using Say = std::function<void(Priority priority, const std::string& text)>;

// Whether what is written to `descriptor` goes to systemd's journal: a program that a service starts inherits the
// journal's mark in its environment, but may write elsewhere.
[[nodiscard]] bool isJournal(int descriptor);

// The text as one line without its end. For the journal the priority is put before it in the form that the journal
// takes off again.
[[nodiscard]] std::string journalLine(Priority priority, std::string_view text, bool forJournal);

}  // namespace base
