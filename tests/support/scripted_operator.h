#pragma once

#include <string>
#include <vector>

#include "platform/operator.h"

// Keeps what it was told and answers every question alike.
class ScriptedOperator : public platform::NoOperator {
 public:
  void messageBox(std::string_view text) override { messages.emplace_back(text); }
  bool askYesNo(std::string_view text, Unattended) override {
    questions.emplace_back(text);
    return answer;
  }

  std::vector<std::string> messages;
  std::vector<std::string> questions;
  bool answer = true;
};
