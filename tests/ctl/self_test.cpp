// What the program tells about itself to man and to the shells.

#include <gtest/gtest.h>

#include <fstream>

#include "support/tallyctl.h"

namespace {

using support::TallyctlRun;

// What a shell proposes for the words typed so far, one a line.
std::string proposed(TallyctlRun& place, const std::string& words, int at) {
  std::ofstream(place.path("completion.bash")) << place.succeed("completion bash");
  std::ofstream(place.path("ask")) << "cd \"$(dirname \"$0\")\"\n. ./completion.bash\nCOMP_WORDS=(" << words
                                   << ")\nCOMP_CWORD=" << at << "\n_tallyctl\nprintf '%s\\n' \"${COMPREPLY[@]}\"\n";
  const std::string command = "bash '" + place.path("ask").string() + "' > '" + place.path("proposals").string() + "'";
  EXPECT_EQ(std::system(command.c_str()), 0);
  return support::readFile(place.path("proposals"));
}

TEST(SelfTest, TheShellProposesCommandsAndOptions) {
  TallyctlRun place;
  struct Case {
    const char* words;
    int at;
    const char* proposals;
  };
  for (const Case& c : {Case{"tallyctl fol", 1, "folder\n"}, Case{"tallyctl folder s", 2, "show\nsql\n"},
                        Case{"tallyctl log filter c", 3, "clear\ncondition\n"},
                        // Options of the whole program may come before, and do not hide the command.
                        Case{"tallyctl --store a.ini folder show --tot", 5, "--totals\n"},
                        Case{"tallyctl folder show 100 --sto", 4, "--store\n"}, Case{"tallyctl import x", 2, "\n"}}) {
    EXPECT_EQ(proposed(place, c.words, c.at), c.proposals) << c.words;
  }
  const std::string zsh = place.succeed("completion zsh");
  EXPECT_TRUE(zsh.starts_with("#compdef tallyctl\n"));
  EXPECT_NE(zsh.find("condition"), std::string::npos);
}

TEST(SelfTest, ThePageHasEveryCommandAndCanBeCopiedFrom) {
  TallyctlRun place;
  const std::string page = place.succeed("man-page");
  for (const char* line : {".TH TALLYCTL 1", ".SS folder show\n", ".B \\-\\-limit N\n", ".SH EXIT STATUS\n",
                           "  tallyctl folder show 100 \\-\\-sort=\\-401 \\-\\-limit 20\n"}) {
    EXPECT_NE(page.find(line), std::string::npos) << line;
  }
}

TEST(SelfTest, TheVersionNamesWhatTheFilesDependOn) {
  TallyctlRun place;
  const std::string version = place.succeed("--version");
  for (const char* line : {"Tallybook ", "\nSQLite 3.", "\nlibmdb "}) {
    EXPECT_NE(version.find(line), std::string::npos) << version;
  }
}

TEST(SelfTest, AServiceMakesItsDataFolderOnce) {
  TallyctlRun place;
  place.succeed("init data --if-missing");
  place.succeed("setting set CountryCode 40 --where machine");
  EXPECT_EQ(place.succeed("init data --if-missing"), "");
  EXPECT_EQ(place.succeed("setting get CountryCode"), "40\n");
  EXPECT_NE(place.run("setting get LiveSocket").status, 0) << "only a unit has a folder for it";
  place.succeed("init data --if-missing", "RUNTIME_DIRECTORY=/run/tallybook");
  EXPECT_EQ(place.succeed("setting get LiveSocket"), "/run/tallybook/live.sock\n") << "also of a folder of before";
}

}  // namespace
