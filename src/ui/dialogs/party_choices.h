#pragma once

#include <string>
#include <vector>

#include "exchange/party_definitions.h"
#include "ui/dialogs/choice_box.h"

namespace ui {

// Lists of the defined parties to choose from, each value once: "201 (Desk)" for an extension with a description.
std::vector<ChoiceBox::Choice> extensionChoices(const exchange::PartyDefinitions& parties);
std::vector<ChoiceBox::Choice> accountChoices(const exchange::PartyDefinitions& parties);
std::vector<ChoiceBox::Choice> departmentChoices(const exchange::PartyDefinitions& parties);
std::vector<ChoiceBox::Choice> trunkChoices(const exchange::PartyDefinitions& parties);
std::vector<ChoiceBox::Choice> countryChoices(const exchange::PartyDefinitions& parties);
std::vector<ChoiceBox::Choice> providerChoices(const exchange::PartyDefinitions& parties);
// Values that are shown as they are.
std::vector<ChoiceBox::Choice> plainChoices(const std::vector<std::string>& values);

}  // namespace ui
