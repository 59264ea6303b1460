#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <QTest>

#include "desktop.h"
#include "security/rights.h"
#include "ui/settings/days_text.h"
#include "ui/settings/settings_sheet.h"

namespace {

using namespace support;

class SettingsTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(desktop.started) << testing::PrintToString(desktop.person.messages);
    open();
  }
  void open() { sheet = std::make_unique<ui::SettingsSheet>(*desktop.document, *desktop.texts); }

  QAbstractItemModel& table(const char* name) { return *child<QTableView>(*sheet, name).model(); }
  bool set(const char* name, int row, int column, const char* text) {
    return table(name).setData(table(name).index(row, column), text, Qt::EditRole);
  }
  QString get(const char* name, int row, int column) { return table(name).index(row, column).data().toString(); }
  // Presses a button under a table.
  void press(const char* tableName, const char* button) {
    click(*child<QTableView>(*sheet, tableName).parentWidget(), button);
  }
  // What is stored, as a later start reads it.
  exchange::PartyDefinitions stored() {
    exchange::PartyDefinitions parties(desktop.app->config());
    parties.load(desktop.document->database(), &desktop.document->smdr().tariffs()->database());
    return parties;
  }

  Desktop desktop;
  std::unique_ptr<ui::SettingsSheet> sheet;
};

Script::Step answer(const char* text, const char* button) {
  return [=](QDialog& dialog) {
    EXPECT_TRUE(dialog.property("text").toString().contains(text)) << dialog.property("text").toString().toStdString();
    click(dialog, button);
  };
}
Script::Step choose(const std::string& file) {
  return [file](QDialog& dialog) {
    child<QLineEdit>(dialog, "fileNameEdit").setText(QString::fromStdString(file));
    dialog.accept();
  };
}

// Provider, profile, destination, charge, trunk, price: the way of somebody who sets a tariff up.
TEST_F(SettingsTest, ANewProviderIsPricedAfterApply) {
  const auto added = [this](const char* name) {
    press(name, "add");
    return table(name).rowCount() - 1;
  };
  ASSERT_TRUE(set("providersTable", added("providersTable"), 1, "Nova"));
  const int profile = added("profilesTable");
  ASSERT_TRUE(set("profilesTable", profile, 1, "Office"));
  EXPECT_EQ(get("profilesTable", profile, 2), "Nova");  // the provider that was added last
  const int prefix = added("prefixesTable");
  ASSERT_TRUE(set("prefixesTable", prefix, 0, "0033"));
  ASSERT_TRUE(set("prefixesTable", prefix, 2, "Nova"));
  ASSERT_TRUE(set("prefixesTable", prefix, 3, "77"));
  const int charge = added("chargesTable");
  const QByteArray label = (get("profilesTable", profile, 0) + ": Office, Nova, 01.01.2000").toUtf8();
  const char* cells[] = {"77", label.constData(), "Mon-Sun", "0:00", "23:59", "0,5", "eur", "1.5", "0", "0"};
  int column = 0;
  for (const char* cell : cells) ASSERT_TRUE(set("chargesTable", charge, column++, cell)) << cell;
  EXPECT_EQ(get("chargesTable", charge, 0), "77: 0033");
  ASSERT_TRUE(set("trunksTable", 6, 2, "Nova"));
  EXPECT_EQ(get("trunksTable", 6, 3), "Office");  // its only profile
  click(*sheet, "apply");

  child<QLineEdit>(*sheet, "testerNumber").setText("0033123456");
  child<QComboBox>(*sheet, "testerTrunk").setEditText("7");
  child<QSpinBox>(*sheet, "testerDuration").setValue(6);
  click(*sheet, "testerCalculate");
  const QString steps = child<QPlainTextEdit>(*sheet, "testerSteps").toPlainText();
  EXPECT_TRUE(steps.endsWith("Price: 2.0000 EUR")) << steps.toStdString();  // four units of 1.5 s
  // Nothing is left to lose, and the lists of the main window are to be read again.
  sheet->reject();
  EXPECT_EQ(sheet->result(), QDialog::Accepted);
}

TEST_F(SettingsTest, WhatWasEditedIsNotLostWithoutAQuestion) {
  sheet->show();
  ASSERT_TRUE(set("extensionsTable", 0, 1, "Front desk"));
  {
    const Script script({answer("not saved yet", "no")});
    sheet->reject();
    EXPECT_TRUE(sheet->isVisible());
  }
  const Script script({answer("not saved yet", "yes")});
  sheet->reject();
  EXPECT_FALSE(sheet->isVisible());
  EXPECT_EQ(stored().extensions[0].description, "Desk");
}

// Selected rows go together, and come back together; before the sheet is confirmed there, after it in the main window.
TEST_F(SettingsTest, DeletedRowsComeBackInTheSheet) {
  ASSERT_TRUE(set("extensionsTable", 0, 1, "Front desk"));
  press("extensionsTable", "add");
  const int count = table("extensionsTable").rowCount();
  auto& view = child<QTableView>(*sheet, "extensionsTable");
  view.selectAll();
  press("extensionsTable", "delete");
  EXPECT_EQ(table("extensionsTable").rowCount(), 0);
  EXPECT_TRUE(child<QLabel>(*view.parentWidget(), "problem").text().contains(QString::number(count)));
  press("extensionsTable", "undo");
  EXPECT_EQ(table("extensionsTable").rowCount(), count);
  EXPECT_EQ(get("extensionsTable", 0, 1), "Front desk");
  press("extensionsTable", "undo");  // the new row
  press("extensionsTable", "undo");
  EXPECT_EQ(get("extensionsTable", 0, 1), "Desk");
  EXPECT_FALSE(child<QPushButton>(*view.parentWidget(), "undo").isEnabled());
}

TEST_F(SettingsTest, SavedDefinitionsAndTariffsCanBeBroughtBack) {
  const exchange::PartyDefinitions before = stored();
  const std::string count = "select count(*) as c from prefixe";
  const auto prefixes = [&] {
    return desktop.document->smdr().tariffs()->database().openSnapshot(count).at(0, 0).toLong();
  };
  const std::int64_t prefixesBefore = prefixes();
  ui::UndoStack undo;
  sheet->keepStepsIn(undo);
  ASSERT_TRUE(set("extensionsTable", 0, 1, "Front desk"));
  ASSERT_TRUE(set("trunksTable", 0, 1, "The first line"));
  child<QTableView>(*sheet, "prefixesTable").selectAll();
  press("prefixesTable", "delete");
  ASSERT_TRUE(set("providersTable", 0, 3, "7"));
  sheet->accept();
  ASSERT_EQ(stored().extensions[0].description, "Front desk");
  ASSERT_EQ(prefixes(), 0);
  ASSERT_FALSE(undo.empty());
  undo.undo();
  EXPECT_EQ(stored().extensions, before.extensions);
  EXPECT_EQ(stored().trunks[0], before.trunks[0]);
  EXPECT_EQ(stored().providers, before.providers);
  EXPECT_EQ(prefixes(), prefixesBefore);
  EXPECT_EQ(desktop.document->smdr().parties().extensions, before.extensions);
}

TEST_F(SettingsTest, WhatSomebodyChangedSinceIsNotTakenBack) {
  ui::UndoStack undo;
  sheet->keepStepsIn(undo);
  ASSERT_TRUE(set("extensionsTable", 0, 1, "Front desk"));
  sheet->accept();
  open();
  ASSERT_TRUE(set("extensionsTable", 0, 1, "Reception"));
  sheet->accept();
  undo.undo();
  EXPECT_EQ(stored().extensions[0].description, "Reception");
  EXPECT_EQ(desktop.person.messages.back(), desktop.app->language().Translate("IDS_UNDO_CHANGED"));
}

TEST_F(SettingsTest, ATrunkThatWasMetMeanwhileStays) {
  ASSERT_TRUE(set("trunksTable", 0, 1, "Main line"));
  desktop.document->smdr().parties().trunks[9].label = "met";
  sheet->accept();
  EXPECT_EQ(stored().trunks[0].label, "Main line");
  EXPECT_EQ(stored().trunks[9].label, "met");
}

TEST_F(SettingsTest, AnExtensionOfAnotherCopyStays) {
  const std::string code = stored().extensions.front().extension;
  ASSERT_TRUE(set("extensionsTable", 0, 1, "Front desk"));
  {
    const auto main = jet::openDatabase(desktop.document->database().path(), jet::OpenMode::ReadWrite);
    foundation::ChangeTags tags(desktop.person);
    tags.LoadTouch(*main);
    foundation::ConfigManager config(desktop.app->config().machineStore());
    config.OpenConfig(*main, tags);
    exchange::PartyDefinitions other(config);
    other.load(*main, nullptr);
    other.extensions.push_back({"999", "Porter", ""});
    other.save(*main);
  }
  sheet->accept();
  EXPECT_EQ(stored().descriptionOfExtension("999"), "Porter");
  EXPECT_EQ(stored().descriptionOfExtension(code), "Front desk");
}

TEST_F(SettingsTest, ATrunkNumberStandsOnce) {
  ASSERT_EQ(get("trunksTable", 0, 0), "5");
  // The free entry of that number takes the number that is given up.
  ASSERT_EQ(get("trunksTable", 5, 0), "6");
  ASSERT_TRUE(set("trunksTable", 0, 0, "6"));
  EXPECT_EQ(get("trunksTable", 5, 0), "5");
  ASSERT_TRUE(set("trunksTable", 7, 1, "Second line"));
  EXPECT_FALSE(set("trunksTable", 7, 0, "6"));
}

TEST_F(SettingsTest, RefusedValuesAreExplainedUnderTheTable) {
  sheet->show();
  sheet->showPage("Charges");
  struct Case {
    int column;
    const char* text;
    const char* reason;
  };
  const Case cases[] = {{2, "T", "Mon-Fri"}, {3, "25:00", "08:00"}, {5, "cheap", "0.25"}, {6, "XXX", "Tools"}};
  auto& problem = child<QLabel>(*child<QTableView>(*sheet, "chargesTable").parentWidget(), "problem");
  for (const Case& each : cases) {
    EXPECT_FALSE(set("chargesTable", 0, each.column, each.text)) << each.text;
    EXPECT_TRUE(problem.isVisible());
    EXPECT_TRUE(problem.text().contains(each.text) && problem.text().contains(each.reason))
        << problem.text().toStdString();
  }
  ASSERT_TRUE(set("chargesTable", 0, 5, "0.25"));
  EXPECT_FALSE(problem.isVisible());
}

TEST_F(SettingsTest, WhatCannotBeStoredIsToldOnItsPage) {
  sheet->show();
  ASSERT_TRUE(set("extensionsTable", 0, 1, ""));  // its department would be read back as the description
  sheet->showPage("Interface");
  {
    const Script script({answer("has a department but no description", "ok")});
    sheet->accept();
  }
  EXPECT_TRUE(child<QTableView>(*sheet, "extensionsTable").isVisible());
  ASSERT_TRUE(set("extensionsTable", 0, 1, "Desk"));
  child<QLineEdit>(*sheet, "PathMonitor").setText("/no/such/folder");
  const Script script({answer("does not exist", "ok")});
  sheet->accept();
  EXPECT_TRUE(sheet->isVisible());
}

TEST_F(SettingsTest, OptionsAreStoredInTheirUnits) {
  EXPECT_EQ(child<QSpinBox>(*sheet, "Sterge").text(), "all");
  EXPECT_EQ(child<QSpinBox>(*sheet, "Ignore_short_calls").text(), "none");
  child<QSpinBox>(*sheet, "Sterge").setValue(90);
  child<QDoubleSpinBox>(*sheet, "OrganizationTAXE").setValue(2.5);
  std::filesystem::create_directory(desktop.path("other"));
  child<QLineEdit>(*sheet, "PathMonitor").setText(QString::fromStdString(desktop.path("other")));
  auto& language = child<QComboBox>(*sheet, "Lang");
  language.setCurrentIndex(language.findData("RO"));
  sheet->accept();
  auto& config = desktop.app->config();
  EXPECT_EQ(config.ReadConfigInt("Sterge", "Calls", foundation::StoreDatabase, -1), 90);
  EXPECT_EQ(config.ReadConfigString("OrganizationTAXE", "general", foundation::StoreDatabase, ""), "2.5");
  config.ReadConfigInt("Ignore_short_calls", "Calls", foundation::StoreDatabase, -1);
  EXPECT_FALSE(config.LastFound());  // it was not touched
  EXPECT_EQ(desktop.setting("general", "PathMonitor"), desktop.path("other") + "/");
  EXPECT_EQ(desktop.setting("general", "Lang"), "RO");
  EXPECT_EQ(desktop.person.messages.back(), desktop.app->language().Translate("IDS_RESTART_APPLY_LANGUAGE"));
}

TEST_F(SettingsTest, WithoutTheRightToChangeEverythingIsOnlyLookedAt) {
  desktop.document->user().rights = {{security::ObjectAdministration, security::RightView}};
  open();
  for (const char* button : {"ok", "apply"}) EXPECT_FALSE(child<QAbstractButton>(*sheet, button).isEnabled());
  EXPECT_FALSE(child<QSpinBox>(*sheet, "Sterge").isEnabled());
  auto& extensions = table("extensionsTable");
  EXPECT_FALSE(extensions.flags(extensions.index(0, 1)).testFlag(Qt::ItemIsEditable));
  EXPECT_FALSE(child<QAbstractButton>(*child<QTableView>(*sheet, "extensionsTable").parentWidget(), "add").isEnabled());
}

TEST_F(SettingsTest, TablesComeBackFromTheirOwnFiles) {
  const std::string file = desktop.path("table.csv");
  for (const char* name : {"extensionsTable", "trunksTable", "providersTable", "profilesTable", "prefixesTable",
                           "chargesTable", "areasTable"}) {
    const auto rows = [&] {
      QStringList all;
      for (int row = 0; row < table(name).rowCount(); ++row) {
        for (int column = 0; column < table(name).columnCount(); ++column) all << get(name, row, column);
      }
      return all.join('|');
    };
    const QString before = rows();
    {
      const Script script({choose(file)});
      press(name, "exportCsv");
    }
    EXPECT_TRUE(child<QLabel>(*sheet, "fileLine").text().contains("table.csv"));
    std::vector<Script::Step> steps{choose(file)};
    if (name != std::string("trunksTable")) steps.push_back(answer("replace", "replace"));
    steps.push_back([](QDialog& result) {
      const QString text = result.property("text").toString();
      EXPECT_FALSE(text.contains("not acceptable")) << text.toStdString();
      click(result, "ok");
    });
    const Script script(std::move(steps));
    press(name, "importCsv");
    EXPECT_EQ(rows(), before) << name;
    std::filesystem::remove(file);
  }
}

TEST_F(SettingsTest, AFileOfSpreadsheetsOfTheCountryIsTaken) {
  // Semicolons, letters in a Windows code page, columns in another order and one that is not known.
  std::ofstream(desktop.path("list.csv"), std::ios::binary)
      << "Description;Room;Extension\r\nCaf\xE9;12;301\r\nHall;13;302\r\n";
  const Script script(
      {choose(desktop.path("list.csv")), answer("replace", "addRows"), answer("2 records were taken", "ok")});
  press("extensionsTable", "importCsv");
  ASSERT_EQ(table("extensionsTable").rowCount(), 3);
  EXPECT_EQ(get("extensionsTable", 1, 0), "301");
  EXPECT_EQ(get("extensionsTable", 1, 1), "Caf\u00e9");
}

TEST_F(SettingsTest, AFileWithoutTheColumnsIsRefused) {
  std::ofstream(desktop.path("list.csv")) << "a,b\n1,2\n";
  const Script script({choose(desktop.path("list.csv")), answer("Extension, Description, Department", "ok")});
  press("extensionsTable", "importCsv");
  EXPECT_EQ(table("extensionsTable").rowCount(), 1);
}

TEST_F(SettingsTest, ThePageForTheBrowserHoldsTheTablesByName) {
  click(*sheet, "report");
  ASSERT_EQ(desktop.documents.opened, std::vector<std::string>{desktop.path("setari.html")});
  std::ifstream page(desktop.path("setari.html"));
  const std::string text((std::istreambuf_iterator<char>(page)), std::istreambuf_iterator<char>());
  for (const char* part : {"<td align=left nowrap>201&nbsp;</td>", "<td align=left nowrap>Telco&nbsp;</td>"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part;
  }
  EXPECT_EQ(text.find(">256&nbsp;"), std::string::npos) << "a free trunk entry";
}

TEST(DaysText, IsReadAsItIsWritten) {
  Desktop desktop;
  ASSERT_TRUE(desktop.started);
  struct Case {
    unsigned days;
    const char* text;
  };
  const Case cases[] = {
      {0x7F, "Mon-Sun"}, {0x3E, "Mon-Fri"}, {0x41, "Sat, Sun"}, {0x2A, "Mon, Wed, Fri"}, {0x01, "Sun"}};
  for (const Case& each : cases) {
    EXPECT_EQ(ui::daysText(each.days, *desktop.texts), each.text);
    EXPECT_EQ(ui::daysFromText(each.text, *desktop.texts), each.days) << each.text;
  }
  EXPECT_EQ(ui::daysFromText("saturday-monday", *desktop.texts), 0x43U);
  for (const char* unclear : {"T", "Mon-", "Xyz"}) EXPECT_FALSE(ui::daysFromText(unclear, *desktop.texts)) << unclear;
}

}  // namespace
