#include "foundation/machine_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "foundation/ini_text.h"
#include "support/temporary_folder.h"

namespace foundation {

using namespace support;

namespace {

TEST(MachineStore, KeepsTypesApart) {
  const TemporaryFolder folder;
  MachineStore store(folder / "store.ini");
  ASSERT_TRUE(store.writeString("general", "five", "5"));
  ASSERT_TRUE(store.writeInt("general", "six", 6));
  ASSERT_TRUE(store.writeBinary("general", "seven", {7, 0, 255}));

  EXPECT_EQ(store.readString("general", "five"), "5");
  EXPECT_EQ(store.readInt("general", "five"), std::nullopt);
  EXPECT_EQ(store.readInt("general", "six"), 6);
  EXPECT_EQ(store.readString("general", "six"), std::nullopt);
  EXPECT_EQ(store.readBinary("general", "seven"), (std::vector<unsigned char>{7, 0, 255}));

  ASSERT_TRUE(store.writeInt("general", "five", 55));
  EXPECT_EQ(store.readInt("general", "five"), 55);
  EXPECT_EQ(store.readString("general", "five"), std::nullopt);
}

TEST(MachineStore, NamesCompareWithoutCase) {
  const TemporaryFolder folder;
  MachineStore store(folder / "store.ini");
  store.writeInt("General", "PhonebookSearchMethod", 1);
  store.writeInt("general", "PHONEBOOKSEARCHMETHOD", 2);
  EXPECT_EQ(store.readInt("GENERAL", "phonebooksearchmethod"), 2);
}

TEST(MachineStore, AnyTextComesBack) {
  const TemporaryFolder folder;
  const std::string all = [] {
    std::string bytes;
    for (int c = 0; c < 256; ++c) bytes += static_cast<char>(c);
    return bytes;
  }();
  const std::string texts[] = {"",
                               " ",
                               " both ends ",
                               "C:\\data\\tally\\",
                               "100%",
                               "%41",
                               "a=b",
                               "line\nline",
                               "\r\n\t",
                               "; no comment",
                               "[no]",
                               "int:5",
                               "Ștefan",
                               all,
                               "str:x",
                               "%",
                               "%%20%"};
  for (const std::string& text : texts) {
    MachineStore store(folder / "store.ini");
    ASSERT_TRUE(store.writeString(text, text, text));
    EXPECT_EQ(MachineStore(folder / "store.ini").readString(text, text), text) << text;
  }
}

TEST(MachineStore, ErasesValuesAndSections) {
  const TemporaryFolder folder;
  MachineStore store(folder / "store.ini");
  store.writeInt("a", "one", 1);
  store.writeInt("a", "two", 2);
  store.writeInt("b", "one", 3);
  EXPECT_TRUE(store.erase("A", "ONE"));
  EXPECT_EQ(store.readInt("a", "one"), std::nullopt);
  EXPECT_EQ(store.readInt("a", "two"), 2);
  EXPECT_TRUE(store.eraseSection("a"));
  EXPECT_EQ(store.readInt("a", "two"), std::nullopt);
  EXPECT_EQ(store.readInt("b", "one"), 3);
  EXPECT_TRUE(store.erase("never", "there"));
}

TEST(MachineStore, DamagedLinesAreNoValuesAndStay) {
  const TemporaryFolder folder;
  const std::string content =
      "; mine\n[general]\nbroken "
      "line\nx=int:five\ny=int:7\nz=hex:123\nu=bin:1234\nw=int:99999999999\nv=7\n\n[other]\nk=str:v\r\n";
  writeFile(folder / "store.ini", content);
  MachineStore store(folder / "store.ini");
  EXPECT_EQ(store.readInt("general", "x"), std::nullopt);
  EXPECT_EQ(store.readInt("general", "w"), std::nullopt);
  EXPECT_EQ(store.readString("general", "v"), std::nullopt);
  EXPECT_EQ(store.readBinary("general", "z"), std::nullopt);
  EXPECT_EQ(store.readBinary("general", "u"), std::nullopt);
  EXPECT_EQ(store.readInt("general", "y"), 7);
  EXPECT_EQ(store.readString("other", "k"), "v");

  store.writeInt("general", "y", 8);
  store.writeInt("general", "new", 9);
  EXPECT_EQ(readFile(folder / "store.ini"),
            "; mine\n[general]\nbroken "
            "line\nx=int:five\ny=int:8\nz=hex:123\nu=bin:1234\nw=int:99999999999\nv=7\nnew=int:9\n\n"
            "[other]\nk=str:v\r\n");
}

TEST(MachineStore, OfTwoLinesTheLaterHolds) {
  IniText text("[s]\nk=int:1\nk=int:2\n");
  EXPECT_EQ(std::get<std::int32_t>(*text.find("s", "k")), 2);
  text.set("s", "k", 3);
  EXPECT_EQ(text.text(), "[s]\nk=int:3\n");
}

TEST(MachineStore, SeesWhatOthersWrite) {
  const TemporaryFolder folder;
  MachineStore one(folder / "store.ini");
  MachineStore two(folder / "store.ini");
  for (int i = 0; i < 200; ++i) {
    one.writeInt("general", "n", i % 10);
    ASSERT_EQ(two.readInt("general", "n"), i % 10);
  }
}

TEST(MachineStore, WritersDoNotLoseEachOthersValues) {
  const TemporaryFolder folder;
  const auto write = [&](const char* section) {
    MachineStore store(folder / "store.ini");
    for (int i = 0; i < 40; ++i) EXPECT_TRUE(store.writeInt(section, std::to_string(i), i));
  };
  std::thread other(write, "a");
  write("b");
  other.join();
  const MachineStore store(folder / "store.ini");
  for (int i = 0; i < 40; ++i) {
    EXPECT_EQ(store.readInt("a", std::to_string(i)), i);
    EXPECT_EQ(store.readInt("b", std::to_string(i)), i);
  }
}

TEST(MachineStore, IsPrivateUnlessSharedWithItsGroup) {
  const TemporaryFolder folder;
  const auto mode = [&] {
    struct stat status {};
    stat((folder / "store.ini").c_str(), &status);
    return status.st_mode & 0777U;
  };
  MachineStore store(folder / "store.ini");
  store.writeString("general", "AutoLoginPassword", "secret");
  EXPECT_EQ(mode(), 0600U);
  chmod((folder / "store.ini").c_str(), 0664);
  store.writeString("general", "AutoLoginPassword", "other");
  EXPECT_EQ(mode(), 0660U);
  chmod((folder / "store.ini").c_str(), 0644);
  store.writeString("general", "AutoLoginPassword", "third");
  EXPECT_EQ(mode(), 0600U);
}

// An administrator's change must not lock out the service that owns the file.
TEST(MachineStore, StaysWithItsOwner) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser may give a file away";
  constexpr uid_t kService = 65534;
  const TemporaryFolder folder;
  MachineStore store(folder / "store.ini");
  store.writeString("general", "AutoLoginPassword", "secret");
  ASSERT_EQ(chown((folder / "store.ini").c_str(), kService, kService), 0);
  store.writeString("general", "AutoLoginPassword", "other");
  struct stat status {};
  stat((folder / "store.ini").c_str(), &status);
  EXPECT_EQ(status.st_uid, kService);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST(MachineStore, RefusesWhatItCannotWrite) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "");
  MachineStore store(folder / "file/below/store.ini");
  EXPECT_FALSE(store.writeInt("a", "b", 1));
  EXPECT_EQ(store.readInt("a", "b"), std::nullopt);
}

TEST(MachineStore, MakesTheFolderThatIsMissing) {
  const TemporaryFolder folder;
  MachineStore store(folder / "new/below/store.ini");
  EXPECT_EQ(store.readInt("a", "b"), std::nullopt);
  ASSERT_TRUE(store.writeInt("a", "b", 1));
  EXPECT_EQ(MachineStore(folder / "new/below/store.ini").readInt("a", "b"), 1);
}

TEST(MachineStore, FollowsALinkAndKeepsIt) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "real");
  std::filesystem::create_symlink("real/store.ini", folder / "link.ini");
  MachineStore store(folder / "link.ini");
  ASSERT_TRUE(store.writeInt("a", "b", 1));
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.ini"));
  EXPECT_EQ(MachineStore(folder / "real/store.ini").readInt("a", "b"), 1);
}

TEST(MachineStore, TheEnvironmentNamesTheFile) {
  setenv("TALLYBOOK_MACHINE_STORE", "somewhere/else.ini", 1);
  EXPECT_EQ(MachineStore::defaultFile(), "somewhere/else.ini");
  unsetenv("TALLYBOOK_MACHINE_STORE");
  EXPECT_EQ(MachineStore::defaultFile().filename(), "tallybook.ini");
}

}  // namespace
}  // namespace foundation
