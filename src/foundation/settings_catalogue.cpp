#include "foundation/settings_catalogue.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "base/path.h"
#include "base/printf.h"
#include "base/text.h"
#include "jet/error.h"
#include "jet/stored_database.h"

namespace foundation {

namespace {

// In the order in which they are listed. Names match in this order too: the entries with an open section are last.
constexpr const Setting* kSettings[] = {
    &keys::PathDatabase,
    &keys::PathDatabaseOfProfile.pattern,
    &keys::Path,
    &keys::PathOfProfile.pattern,
    &keys::PathMonitor,
    &keys::PathMonitorOfProfile.pattern,
    &keys::MonitorSite,
    &keys::Lang,
    &keys::Language,
    &keys::LastUser,
    &keys::PageSetup,
    &keys::LastExportFolder,
    &keys::AutoLoginUser,
    &keys::AutoLoginPassword,
    &keys::CountryCode,
    &keys::AreaCode,
    &keys::COMOut,
    &keys::OutFile,
    &keys::DeviceOfPort.pattern,
    &keys::LiveSocket,
    &keys::MailProgram,
    &keys::mail::Server,
    &keys::mail::Port,
    &keys::mail::Encryption,
    &keys::mail::Authorities,
    &keys::mail::User,
    &keys::mail::Password,
    &keys::mail::From,
    &keys::iface_Toolbar,
    &keys::iface_Statusbar,
    &keys::iface_Grid,
    &keys::iface_Hover,
    &keys::iface_Autoselect,
    &keys::iface_searchmaxresults,
    &keys::PreviewMode,
    &keys::UpperPane,
    &keys::WindowPlacement,
    &keys::SelFolder_Type,
    &keys::SelFolder_ID,
    &keys::Manual,
    &keys::UrlSupport,
    &keys::UrlCheckUpdates,
    &keys::UrlCurrency,
    &keys::SearchAreaCode,
    &keys::ExtendedSearch,
    &keys::PhonebookSearchMethod,
    &keys::LogFilt_Enabled,
    &keys::LogFilt_Login,
    &keys::LogFilt_Security,
    &keys::LogFilt_Add,
    &keys::LogFilt_Edit,
    &keys::LogFilt_Del,
    &keys::LogFilt_Print,
    &keys::LogFilt_Folder,
    &keys::LogFilt_Tranz,
    &keys::LogFilt_Err,
    &keys::LogFilt_UserEnabled,
    &keys::LogFilt_User,
    &keys::LogFilt_IntervalEnabled,
    &keys::LogFilt_IntervalStart,
    &keys::LogFilt_IntervalEnd,
    &keys::Log_Login,
    &keys::Log_Security,
    &keys::Log_Add,
    &keys::Log_Edit,
    &keys::Log_Del,
    &keys::Log_Print,
    &keys::Log_Folder,
    &keys::Log_Tranz,
    &keys::Log_Err,
    &keys::Log_DeleteEnabled,
    &keys::Log_DeleteAfter,
    &keys::Log_CallViews,
    &keys::Alarm_DeleteAfter,
    &keys::DbVersion,
    &keys::OrganizationTVA,
    &keys::OrganizationTAXE,
    &keys::OrganizationAddress,
    &keys::OrganizationOras,
    &keys::OrganizationTel,
    &keys::OrganizationFax,
    &keys::OrganizationEmail,
    &keys::OrganizationWeb,
    &keys::OrganizationCF,
    &keys::OrganizationCont,
    &keys::OrganizationBanca,
    &keys::OrganizationPrefix,
    &keys::DisplayDecimals,
    &keys::DisplayDecimalsDefault,
    &keys::DisplayDecimalsValue,
    &keys::LastCurrencyID,
    &keys::TemplateHotel,
    &keys::ResellerName,
    &keys::ExternalPhonebook,
    &keys::LastBackup,
    &keys::contacts::NextRecID,
    &keys::calls::Sterge,
    &keys::calls::Sursa_departament,
    &keys::calls::Ignore_short_calls,
    &keys::calls::Seconds_not_charged,
    &keys::calls::ExternalPhonebook,
    &keys::calls::AnonymisedBefore,
    &keys::calls::AnonymisedConfirmed,
    &keys::calls::WorkingHours,
    &keys::calls::ExtCount,
    &keys::calls::ConturiCount,
    &keys::calls::LiniiCount,
    &keys::calls::ExtDef.pattern,
    &keys::calls::ConturiDef.pattern,
    &keys::calls::LiniiDef.pattern,
    &keys::providers::PrefixeLocale.pattern,
    &keys::providers::SecNetax.pattern,
    &keys::filter::Number_Filter_Enabled,
    &keys::filter::OnFilter,
    &keys::filter::Hidden,
    &keys::filter::OnIncoming,
    &keys::filter::OnOutgoing,
    &keys::filter::OnExtension,
    &keys::filter::Extension,
    &keys::filter::ExtensionStr,
    &keys::filter::OnTrunk,
    &keys::filter::Trunk,
    &keys::filter::OnAccount,
    &keys::filter::Cont,
    &keys::filter::ContName,
    &keys::filter::OnDepartment,
    &keys::filter::Department,
    &keys::filter::OnName,
    &keys::filter::Name,
    &keys::filter::OnClient,
    &keys::filter::Client,
    &keys::filter::OnFolder,
    &keys::filter::Folder,
    &keys::filter::OnArea,
    &keys::filter::Area,
    &keys::filter::OnPeriod,
    &keys::filter::IntervalStart,
    &keys::filter::IntervalEnd,
    &keys::filter::NumberPrefix,
    &keys::filter::Number,
    &keys::filter::Country,
    &keys::filter::Provider,
    &keys::filter::OnMinDuration,
    &keys::filter::MinDuration,
    &keys::names::Interior,
    &keys::names::Client,
    &keys::names::Folder,
    &keys::names::Depart,
    &keys::captions::Interior,
    &keys::captions::Depart,
    &keys::captions::Client,
    &keys::captions::Folder,
    &keys::columns::VisibleColumns.pattern,
    &keys::columns::ColumnWidths.pattern,
};

bool isDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// A placeholder at the end of a known name stands for a number (%d) or any text (%s), at least one character long.
bool matches(std::string_view known, std::string_view name) {
  const bool number = known.ends_with("%d");
  if (!number && !known.ends_with("%s")) return base::equalFoldAscii(known, name);
  known.remove_suffix(2);
  return name.size() > known.size() && base::equalFoldAscii(known, name.substr(0, known.size())) &&
         (!number || isDigits(name.substr(known.size())));
}

}  // namespace

std::span<const Setting* const> knownSettings() {
  return kSettings;
}

const Setting* findSetting(std::string_view section, std::string_view key) {
  const auto found = std::find_if(std::begin(kSettings), std::end(kSettings), [&](const Setting* setting) {
    return matches(setting->section, section) && matches(setting->key, key);
  });
  return found == std::end(kSettings) ? nullptr : *found;
}

std::string defaultText(const Setting& setting) {
  return setting.type == SettingType::Integer ? std::to_string(setting.number) : std::string(setting.fallback);
}

std::optional<std::int32_t> wholeNumber(std::string_view text) {
  std::int32_t number = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (fault != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

bool isDecimal(std::string_view text) {
  text = base::trim(text);
  if (text.empty()) return true;
  if (text.front() == '-') text.remove_prefix(1);
  const std::size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  if (whole.empty() || !isDigits(whole)) return false;
  if (point == std::string_view::npos) return true;
  const std::string_view fraction = text.substr(point + 1);
  return !fraction.empty() && isDigits(fraction);
}

// Of the databases.
static std::string storableAddress(std::string_view typed) {
  try {
    return jet::storableAddress(typed);
  } catch (const jet::Error& error) {
    const std::string reason = error.description();
    throw std::invalid_argument(reason.ends_with('.') ? reason.substr(0, reason.size() - 1) : reason);
  }
}

std::string storableValue(const Setting& setting, std::string_view typed) {
  const std::string_view value = base::trim(typed);
  if (setting.type == SettingType::Binary) {
    throw std::invalid_argument(base::format("%s is kept by the program and cannot be typed", setting.key));
  }
  if (setting.type == SettingType::Integer) {
    const auto number = wholeNumber(value);
    if (!number || *number < setting.least || *number > setting.most) {
      throw std::invalid_argument(base::format("%s takes a whole number from %d to %d, not \"%s\"", setting.key,
                                               setting.least, setting.most, typed));
    }
    return std::to_string(*number);
  }
  if (setting.form == SettingForm::Decimal && !isDecimal(value)) {
    throw std::invalid_argument(
        base::format("%s takes a number such as 7.5, with a point, not \"%s\"", setting.key, typed));
  }
  if (setting.form == SettingForm::Folder && jet::isServerAddress(value)) return storableAddress(value);
  if (setting.form == SettingForm::Folder && value != "---") return base::withSeparator(value);
  const bool asTyped = setting.form == SettingForm::Any || setting.form == SettingForm::Secret;
  return std::string(asTyped ? typed : value);
}

std::optional<Store> storeOf(std::string_view section, std::string_view key) {
  const Setting* setting = findSetting(section, key);
  return setting == nullptr ? std::nullopt : std::optional(setting->store);
}

}  // namespace foundation
