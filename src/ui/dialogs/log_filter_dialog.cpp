#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <array>

#include "ui/dialogs.h"
#include "ui/dialogs/form_dialog.h"
#include "ui/dialogs/messages.h"
#include "ui/dialogs/period_edit.h"

namespace ui {

namespace {

constexpr const char* kSection = "general";
constexpr const char* kDateFormat = "%m/%d/%Y";

struct Category {
  const char* key;  // of the setting, and the object name of its switch
  const char* captionKey;
};
constexpr std::array<Category, 9> kCategories = {{
    {"LogFilt_Login", "IDS_LOGKIND_LOGIN"},
    {"LogFilt_Security", "IDS_LOGKIND_SECURITY"},
    {"LogFilt_Add", "IDS_LOGKIND_ADD"},
    {"LogFilt_Edit", "IDS_LOGKIND_EDIT"},
    {"LogFilt_Del", "IDS_LOGKIND_DELETE"},
    {"LogFilt_Print", "IDS_LOGKIND_PRINT"},
    {"LogFilt_Folder", "IDS_LOGKIND_FOLDER"},
    {"LogFilt_Tranz", "IDS_LOGKIND_TRANSACTION"},
    {"LogFilt_Err", "IDS_LOGKIND_ERROR"},
}};

// The filter of the log folder, kept in the machine store.
class LogFilterDialog : public FormDialog {
 public:
  LogFilterDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent)
      : FormDialog(texts, "IDS_ACTION_LOG_FILTER", "logFilter", parent),
        document_(document),
        config_(document.app().config()) {
    enabled_ = makeCheckBox("IDS_FILTER_ON", "LogFilt_Enabled");
    body()->addWidget(enabled_);
    body()->addWidget(buildCategories());
    buildUserAndPeriod();
    enabled_->setChecked(number("LogFilt_Enabled") != 0);
  }

  void accept() override {
    if (intervalOn_->isChecked() && !period_->inOrder()) return warn(this, texts(), texts()("IDS_PERIOD_ORDER"));
    bool written = write(enabled_);
    for (QCheckBox* box : categories_) written &= write(box);
    written &= write(userOn_) && write("LogFilt_User", fromQt(user_->currentText().trimmed()));
    written &= write(intervalOn_) && write("LogFilt_IntervalStart", period_->start().format(kDateFormat)) &&
               write("LogFilt_IntervalEnd", period_->end().format(kDateFormat));
    if (!written) {
      return warn(this, texts(), texts().format("IDS_CANTWRITEFILE", config_.machineStore().file().string()));
    }
    QDialog::accept();
  }

 private:
  QWidget* buildCategories() {
    auto* group = new QGroupBox(texts()("IDS_LOGKINDS"));
    auto* grid = new QGridLayout(group);
    for (std::size_t i = 0; i < kCategories.size(); ++i) {
      categories_[i] = makeCheckBox(kCategories[i].captionKey, kCategories[i].key);
      categories_[i]->setChecked(number(kCategories[i].key) != 0);
      // A chosen category is meant to show.
      connect(categories_[i], &QCheckBox::clicked, enabled_, [this] { enabled_->setChecked(true); });
      grid->addWidget(categories_[i], static_cast<int>(i) / 3, static_cast<int>(i) % 3);
    }
    return group;
  }

  void buildUserAndPeriod() {
    userOn_ = makeCheckBox("IDS_USER", "LogFilt_UserEnabled");
    user_ = named(new QComboBox, "LogFilt_User");
    user_->setEditable(true);  // the log also knows users that were deleted since
    user_->setAccessibleName(texts()("IDS_USER"));
    for (const auto& user : document_.users().users()) user_->addItem(toQt(user.Name));
    user_->setCurrentText(toQt(config_.ReadConfigString("LogFilt_User", kSection, foundation::StoreMachine, "")));
    intervalOn_ = makeCheckBox("IDS_FILTER_PERIOD", "LogFilt_IntervalEnabled");
    period_ = named(new PeriodEdit(PeriodEdit::Times::WholeDays, texts()), "period");
    period_->setPeriod(date("LogFilt_IntervalStart"), date("LogFilt_IntervalEnd"));
    userOn_->setChecked(number("LogFilt_UserEnabled") != 0);
    intervalOn_->setChecked(number("LogFilt_IntervalEnabled") != 0);
    const auto switchOn = [this](QCheckBox* box) {
      enabled_->setChecked(true);
      box->setChecked(true);
    };
    connect(user_->lineEdit(), &QLineEdit::textEdited, this, [this, switchOn] { switchOn(userOn_); });
    connect(user_, &QComboBox::activated, this, [this, switchOn] { switchOn(userOn_); });
    connect(period_, &PeriodEdit::edited, this, [this, switchOn] { switchOn(intervalOn_); });

    auto* grid = new QGridLayout;
    grid->addWidget(userOn_, 0, 0);
    grid->addWidget(user_, 0, 1);
    grid->addWidget(intervalOn_, 1, 0, Qt::AlignTop);
    grid->addWidget(period_, 1, 1);
    grid->setColumnStretch(1, 1);
    body()->addLayout(grid);
  }

  [[nodiscard]] std::int32_t number(const char* key) {
    return config_.ReadConfigInt(key, kSection, foundation::StoreMachine, 0);
  }
  [[nodiscard]] base::DateTime date(const char* key) {
    const base::DateTime today = document_.app().surroundings().clock.now();
    return base::DateTime::fromUsText(config_.ReadConfigString(key, kSection, foundation::StoreMachine, ""))
        .value_or(today);
  }
  // A switch is named after its setting.
  bool write(const QCheckBox* box) {
    return config_.WriteConfigInt(box->isChecked() ? 1 : 0, fromQt(box->objectName()), kSection,
                                  foundation::StoreMachine);
  }
  bool write(const char* key, const std::string& text) {
    return config_.WriteConfigString(text, key, kSection, foundation::StoreMachine);
  }

  server::CServerDoc& document_;
  foundation::ConfigManager& config_;
  QCheckBox* enabled_;
  std::array<QCheckBox*, kCategories.size()> categories_{};
  QCheckBox* userOn_ = nullptr;
  QComboBox* user_ = nullptr;
  QCheckBox* intervalOn_ = nullptr;
  PeriodEdit* period_ = nullptr;
};

}  // namespace

bool editLogFilter(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  return LogFilterDialog(document, texts, parent).exec() == QDialog::Accepted;
}

}  // namespace ui
