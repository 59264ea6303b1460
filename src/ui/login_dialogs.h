#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "foundation/config_manager.h"
#include "security/login.h"
#include "ui/texts.h"

namespace ui {

// The login and the password dialog.
class QtLoginPrompt : public security::LoginPrompt {
 public:
  // The texts are asked for when a dialog opens: the prompt exists before they are loaded.
  using Language = std::function<const foundation::LanguageFile&()>;
  QtLoginPrompt(foundation::ConfigManager& config, Language language)
      : config_(config), language_(std::move(language)) {}

  void setParent(QWidget* parent) { parent_ = parent; }
  // The next login is this one; nothing is asked.
  void answerOnce(security::Credentials known) { known_ = std::move(known); }
  std::optional<security::Credentials> askLogin(const std::string& proposedName) override;
  std::optional<security::PasswordChange> askPasswordChange(const std::string& userName, bool forced) override;

 private:
  foundation::ConfigManager& config_;
  Language language_;
  QPointer<QWidget> parent_;
  std::optional<security::Credentials> known_;
};

}  // namespace ui
