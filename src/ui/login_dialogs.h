#pragma once

#include <QPointer>
#include <QWidget>
#include <memory>

#include "foundation/config_manager.h"
#include "security/login.h"
#include "ui/texts.h"

namespace ui {

// The login and the password dialog.
class QtLoginPrompt : public security::LoginPrompt {
 public:
  explicit QtLoginPrompt(foundation::ConfigManager& config, const foundation::LanguageFile& language)
      : config_(config), language_(language) {}

  void setParent(QWidget* parent) { parent_ = parent; }
  std::optional<security::Credentials> askLogin(const std::string& proposedName) override;
  std::optional<security::PasswordChange> askPasswordChange(const std::string& userName, bool forced) override;

 private:
  foundation::ConfigManager& config_;
  const foundation::LanguageFile& language_;
  QPointer<QWidget> parent_;
};

}  // namespace ui
