#include <QCheckBox>
#include <QLineEdit>
#include <QPlainTextEdit>

#include "desktop.h"
#include "ui/dialogs.h"

namespace {

using namespace support;

class ConvertDialogTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(desktop.started); }
  static std::filesystem::path oldFolder() {
    return std::filesystem::path(TALLYBOOK_SOURCE_DIR) / "tests/data/jet-files/long-extension";
  }
  void enterFolders(QDialog& dialog) const {
    child<QLineEdit>(dialog, "oldFolder").setText(ui::toQt(oldFolder().string()));
    child<QLineEdit>(dialog, "newFolder").setText(ui::toQt(desktop.path("converted/")));
  }
  bool convert() { return ui::convertOldDatabase(*desktop.document, *desktop.texts, nullptr); }

  Desktop desktop;
};

TEST_F(ConvertDialogTest, AnOldDatabaseIsConvertedBesideTheOpenOneAndUsedFromTheNextStart) {
  const std::string monitor = desktop.setting("general", "PathMonitor");
  const Script script({[this](QDialog& dialog) {
                         click(dialog, "ok");  // the folders are missing
                         enterFolders(dialog);
                         child<QCheckBox>(dialog, "use").setChecked(true);
                         click(dialog, "ok");
                       },
                       acknowledge("Enter a folder"),
                       [](QDialog& report) {
                         EXPECT_TRUE(child<QPlainTextEdit>(report, "report").toPlainText().contains("Calls"));
                         click(report, "ok");
                       },
                       acknowledge("next start")});
  EXPECT_TRUE(convert());
  EXPECT_EQ(desktop.setting("general", "PathDatabase"), desktop.path("converted") + "/");
  EXPECT_EQ(desktop.setting("general", "PathMonitor"), monitor);
  const auto main = jet::openDatabase(desktop.path("converted") + "/tallybook.mdb", jet::OpenMode::ReadOnly);
  EXPECT_FALSE(main->openSnapshot("select * from Users").empty());
}

TEST_F(ConvertDialogTest, AFolderWithoutAnOldDatabaseIsToldAndNothingIsMade) {
  const Script script({[this](QDialog& dialog) {
                         enterFolders(dialog);
                         child<QLineEdit>(dialog, "oldFolder").setText(ui::toQt(desktop.path("monitor")));
                         click(dialog, "ok");
                         click(dialog, "cancel");
                       },
                       [](QDialog& question) { click(question, "no"); }});
  EXPECT_FALSE(convert());
  EXPECT_FALSE(std::filesystem::exists(desktop.path("converted")));
}

TEST_F(ConvertDialogTest, AFolderThatIsInUseIsRefused) {
  const Script script({[this](QDialog& dialog) {
                         enterFolders(dialog);
                         child<QLineEdit>(dialog, "newFolder").setText(ui::toQt(desktop.files.folder.setting()));
                         click(dialog, "ok");
                         click(dialog, "cancel");
                       },
                       [](QDialog& question) { click(question, "no"); }});
  EXPECT_FALSE(convert());
  EXPECT_EQ(desktop.setting("general", "PathDatabase"), desktop.files.folder.setting());
}

}  // namespace
