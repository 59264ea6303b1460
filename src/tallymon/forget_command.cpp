#include <iostream>

#include "capture/deliver/state_store.h"
#include "capture/journal/journal_keeping.h"
#include "tallymon/commands.h"
#include "tallymon/site_option.h"

namespace tallymon {

namespace {

int forget(const std::string& file, const std::string& number) {
  const capture::Site site = capture::readSite(file);
  std::size_t lines = 0;
  std::error_code missing;
  for (const auto& folder : std::filesystem::directory_iterator(site.dataFolder / "journal", missing)) {
    if (folder.is_directory()) lines += capture::forgetNumber(folder.path(), number);
  }
  capture::StateStore(site.dataFolder / "state.db").forgetNumber(number);
  std::cout << "Blanked in " << lines << (lines == 1 ? " line.\n" : " lines.\n");
  return 0;
}

}  // namespace

void addForget(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand(
      "forget", "Blank a telephone number in all journals, also of sources that are no longer in the site file.");
  const auto file = addSiteOption(*command);
  const auto number = std::make_shared<std::string>();
  command
      ->add_option("number", *number,
                   "The number; 0755..., +40755... and 0040755... are told apart by no more than "
                   "their zeros, so give it once each way where a country code is in use")
      ->required();
  command->footer(
      "Calls that Tallybook has stored are not touched: see tallyctl hide.\n"
      "Example: tallymon forget 0755550142");
  command->callback([file, number, &status] { status = forget(*file, *number); });
}

}  // namespace tallymon
