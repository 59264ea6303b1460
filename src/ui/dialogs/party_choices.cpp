#include "ui/dialogs/party_choices.h"

#include <set>

namespace ui {

namespace {

using ChoiceList = std::vector<ChoiceBox::Choice>;

// Values in the order of their insertion or sorted, each once.
class DistinctChoices {
 public:
  void add(const std::string& value, const std::string& description) {
    if (value.empty() || !seen_.insert(value).second) return;
    const QString shown = description.empty() ? toQt(value) : QString("%1 (%2)").arg(toQt(value), toQt(description));
    choices_.push_back({shown, toQt(value)});
  }
  [[nodiscard]] ChoiceList take() { return std::move(choices_); }

 private:
  ChoiceList choices_;
  std::set<std::string> seen_;
};

ChoiceList sorted(const std::set<std::string>& values) {
  ChoiceList choices;
  for (const std::string& value : values) {
    if (!value.empty()) choices.push_back({toQt(value), toQt(value)});
  }
  return choices;
}

}  // namespace

ChoiceList extensionChoices(const exchange::PartyDefinitions& parties) {
  DistinctChoices choices;
  for (const auto& extension : parties.extensions) choices.add(extension.extension, extension.description);
  return choices.take();
}

ChoiceList accountChoices(const exchange::PartyDefinitions& parties) {
  DistinctChoices choices;
  for (const auto& account : parties.accounts) choices.add(account.account, account.description);
  return choices.take();
}

ChoiceList departmentChoices(const exchange::PartyDefinitions& parties) {
  std::set<std::string> values;
  for (const auto& extension : parties.extensions) values.insert(extension.department);
  for (const auto& account : parties.accounts) values.insert(account.department);
  return sorted(values);
}

ChoiceList trunkChoices(const exchange::PartyDefinitions& parties) {
  DistinctChoices choices;
  for (const auto& trunk : parties.trunks) {
    if (trunk.providerId > 0) choices.add(trunk.trunk, trunk.label == "-" ? std::string() : trunk.label);
  }
  return choices.take();
}

ChoiceList countryChoices(const exchange::PartyDefinitions& parties) {
  std::set<std::string> values;
  for (const auto& prefix : parties.prefixes) values.insert(prefix.country);
  return sorted(values);
}

ChoiceList providerChoices(const exchange::PartyDefinitions& parties) {
  DistinctChoices choices;
  for (const auto& provider : parties.providers) choices.add(provider.name, "");
  return choices.take();
}

ChoiceList plainChoices(const std::vector<std::string>& values) {
  ChoiceList choices;
  for (const std::string& value : values) choices.push_back({toQt(value), toQt(value)});
  return choices;
}

}  // namespace ui
