#include "ui/settings/exchange_settings.h"

#include "ui/exchange/exchange_page.h"

namespace ui {

SettingsPage exchangePage(foundation::ConfigManager& config, platform::Operator& person, const Texts& texts) {
  auto* widget = new ExchangePage(exchangePlace(config), person, texts);
  SettingsPage page;
  page.caption = texts("IDS_PAGE_EXCHANGE");
  page.widget = widget;
  page.check = [widget] { return widget->problem(); };
  page.save = [widget] { widget->save(); };
  page.changed = [widget] { return widget->changed(); };
  return page;
}

}  // namespace ui
