#include <iostream>

#include "capture/deliver/state_store.h"
#include "tallymon/commands.h"
#include "tallymon/site_option.h"

namespace tallymon {

namespace {

int trunks(const std::string& file, const std::string& id) {
  const capture::Site site = capture::readSite(file);
  const capture::SourceSite& source = sourceOf(site, id);
  const capture::StateStore state(site.dataFolder / "state.db");
  std::cout << "number\tkind\tname\n";
  for (const auto& [name, number] : source.rules.trunkNumbers) {
    std::cout << number << "\ttrunk, by the site file\t" << name << '\n';
  }
  for (const capture::NumberRow& row : state.numbers(capture::NumberKind::Trunk, id)) {
    if (!source.rules.trunkNumbers.contains(row.name)) std::cout << row.number << "\ttrunk\t" << row.name << '\n';
  }
  for (const capture::NumberRow& row : state.numbers(capture::NumberKind::Extension, id)) {
    std::cout << row.number << "\textension\t" << row.name << '\n';
  }
  return 0;
}

}  // namespace

void addTrunks(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand(
      "trunks", "Show which number a trunk or extension that has only a name was given. Numbers never change.");
  const auto file = addSiteOption(*command);
  const auto id = std::make_shared<std::string>();
  command->add_option("source", *id, "Id of the source")->required();
  command->footer(
      "These are the trunk numbers for Tallybook's settings (provider and tariff of each).\n"
      "To choose one yourself, write it under [source.trunks] before the first call comes.\n"
      "Example: tallymon trunks main");
  command->callback([file, id, &status] { status = trunks(*file, *id); });
}

}  // namespace tallymon
