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

namespace keys = foundation::keys;
constexpr const char* kDateFormat = "%m/%d/%Y";

struct Category {
  const foundation::NumberKey& key;  // its name is the object name of the switch
  const char* captionKey;
};
constexpr std::array<Category, 9> kCategories = {{
    {keys::LogFilt_Login, "IDS_LOGKIND_LOGIN"},
    {keys::LogFilt_Security, "IDS_LOGKIND_SECURITY"},
    {keys::LogFilt_Add, "IDS_LOGKIND_ADD"},
    {keys::LogFilt_Edit, "IDS_LOGKIND_EDIT"},
    {keys::LogFilt_Del, "IDS_LOGKIND_DELETE"},
    {keys::LogFilt_Print, "IDS_LOGKIND_PRINT"},
    {keys::LogFilt_Folder, "IDS_LOGKIND_FOLDER"},
    {keys::LogFilt_Tranz, "IDS_LOGKIND_TRANSACTION"},
    {keys::LogFilt_Err, "IDS_LOGKIND_ERROR"},
}};

// The filter of the log folder, kept in the machine store.
class LogFilterDialog : public FormDialog {
 public:
  LogFilterDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent)
      : FormDialog(texts, "IDS_ACTION_LOG_FILTER", "logFilter", parent),
        document_(document),
        config_(document.app().config()) {
    enabled_ = makeSwitch("IDS_FILTER_ON", keys::LogFilt_Enabled);
    body()->addWidget(enabled_);
    body()->addWidget(buildCategories());
    buildUserAndPeriod();
  }

  void accept() override {
    if (intervalOn_->isChecked() && !period_->inOrder()) return warn(this, texts(), texts()("IDS_PERIOD_ORDER"));
    bool written = write(enabled_, keys::LogFilt_Enabled);
    for (std::size_t i = 0; i < kCategories.size(); ++i) written &= write(categories_[i], kCategories[i].key);
    written &= write(userOn_, keys::LogFilt_UserEnabled);
    written &= config_.WriteConfigString(fromQt(user_->currentText().trimmed()), keys::LogFilt_User);
    written &= write(intervalOn_, keys::LogFilt_IntervalEnabled);
    written &= config_.WriteConfigString(period_->start().format(kDateFormat), keys::LogFilt_IntervalStart);
    written &= config_.WriteConfigString(period_->end().format(kDateFormat), keys::LogFilt_IntervalEnd);
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
      categories_[i] = makeSwitch(kCategories[i].captionKey, kCategories[i].key);
      // A chosen category is meant to show.
      connect(categories_[i], &QCheckBox::clicked, enabled_, [this] { enabled_->setChecked(true); });
      grid->addWidget(categories_[i], static_cast<int>(i) / 3, static_cast<int>(i) % 3);
    }
    return group;
  }

  void buildUserAndPeriod() {
    userOn_ = makeSwitch("IDS_USER", keys::LogFilt_UserEnabled);
    user_ = named(new QComboBox, keys::LogFilt_User.key.data());
    user_->setEditable(true);  // the log also knows users that were deleted since
    user_->setAccessibleName(texts()("IDS_USER"));
    for (const auto& user : document_.users().users()) user_->addItem(toQt(user.Name));
    user_->setCurrentText(toQt(config_.ReadConfigString(keys::LogFilt_User)));
    intervalOn_ = makeSwitch("IDS_FILTER_PERIOD", keys::LogFilt_IntervalEnabled);
    period_ = named(new PeriodEdit(PeriodEdit::Times::WholeDays, texts()), "period");
    period_->setPeriod(date(keys::LogFilt_IntervalStart), date(keys::LogFilt_IntervalEnd));
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

  // A switch is named after its setting.
  QCheckBox* makeSwitch(const char* captionKey, const foundation::NumberKey& key) {
    QCheckBox* box = makeCheckBox(captionKey, key.key.data());
    box->setChecked(config_.ReadConfigInt(key) != 0);
    return box;
  }
  [[nodiscard]] base::DateTime date(const foundation::TextKey& key) {
    const base::DateTime today = document_.app().surroundings().clock.now();
    return base::DateTime::fromUsText(config_.ReadConfigString(key)).value_or(today);
  }
  bool write(const QCheckBox* box, const foundation::NumberKey& key) {
    return config_.WriteConfigInt(box->isChecked() ? 1 : 0, key);
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
