#pragma once

#include <functional>
#include <string>

#include "platform/clock.h"
#include "platform/document_handler.h"
#include "platform/operator.h"
#include "security/login.h"

namespace server {

// What the program around the core supplies: terminal, window or service. All of it must outlive the application.
struct Surroundings {
  platform::Operator& person;
  security::LoginPrompt& login;
  const platform::Clock& clock;
  platform::DocumentHandler& documents;
  // Asked when the main database cannot be opened, with the reason. True: the operator chose another folder (setting
  // "PathDatabase"), try again. Empty where no one can choose.
  std::function<bool(const std::string& reason)> chooseOtherDatabase;
};

}  // namespace server
