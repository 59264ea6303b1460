// An office at work: two desktops and a service over the same databases. What one changes, the others show after their
// next refresh.

#include <QLineEdit>
#include <thread>

#include "folders/numbers.h"
#include "foundation/definition_change.h"
#include "frame.h"
#include "platform/live_channel.h"
#include "server/service.h"

namespace {

using namespace support;

class Office : public testing::Test {
 protected:
  // A desk with its window.
  struct Desk {
    explicit Desk(const std::string& place)
        : desktop("EN", [&place](const ExchangeFiles&) { return place; }),
          frame(std::make_unique<ui::CMainFrame>(*desktop.document, *desktop.texts, person)) {
      frame->start();
    }
    ~Desk() { frame->close(); }

    // What a refresh shows, of what was committed before it.
    void refresh() {
      hearOfChanges(desktop.document->database());
      frame->refreshFromOtherCopies();
    }
    [[nodiscard]] bool lists(int folder, const QString& text) {
      if (frame->list().folderId() != folder) frame->selectFolder(folder);
      refresh();
      const ui::FolderModel& model = frame->list().model();
      for (int row = 0; row < model.rowCount(); ++row) {
        for (int column = 0; column < model.columnCount(); ++column) {
          if (model.text(row, column) == text) return true;
        }
      }
      return false;
    }

    Desktop desktop;
    ui::QtOperator person;
    std::unique_ptr<ui::CMainFrame> frame;
  };

  void SetUp() override {
    place = office.files.folder.setting();
    // Its machine has the socket; the service takes it from there.
    socket = office.path("service.sock");
    office.app->config().WriteConfigString(socket, "LiveSocket", "general", foundation::StoreMachine);
    service = std::make_unique<server::Service>(
        *office.document, [](base::Priority, const std::string&) {},
        server::ServiceTimes{.import = std::chrono::hours(1), .refresh = std::chrono::milliseconds(50)});
    thread = std::thread([this] { service->run(); });
    first.emplace(place);
    second.emplace(place);
    ASSERT_TRUE(QTest::qWaitFor([this] { return std::filesystem::exists(socket); }, 30'000));
  }
  void TearDown() override {
    second.reset();
    first.reset();
    if (service) service->stop();
    if (thread.joinable()) thread.join();
  }

  [[nodiscard]] bool call(const std::string& number) const {
    platform::LiveChannelClient client(socket);
    const std::string record = exchange::encodeRecord(sampleCall(number), false, 1252);
    return client.send({reinterpret_cast<const unsigned char*>(record.data()), record.size()}) != 0;
  }

  Desktop office;  // the service's workstation
  std::string place;
  std::string socket;
  std::unique_ptr<server::Service> service;
  std::thread thread;
  std::optional<Desk> first;
  std::optional<Desk> second;
};

TEST_F(Office, SeesCallsContactsSettingsAndDefinitionsOfEachOther) {
  for (Desk* desk : {&*first, &*second}) desk->frame->selectFolder(kCalls);
  ASSERT_TRUE(call("3456789"));
  for (Desk* desk : {&*first, &*second}) EXPECT_TRUE(desk->lists(kCalls, "Pop Ion"));

  // A contact of one desk is the other's, and names the service's next call.
  contacts::CONTACTENTRYDESC zoe;
  zoe.name = zoe.contact = "Zoe";
  zoe.telView = "021-3456789";
  zoe.telString = "0040213456789";
  first->desktop.document->app().config().WriteConfigInt(100, "Next RecID", "Contacts", foundation::StoreDatabase);
  first->desktop.document->contactBook().add(zoe);
  EXPECT_TRUE(second->lists(folders::FolderContacts, "Zoe"));
  ASSERT_TRUE(call("3456789"));
  for (Desk* desk : {&*first, &*second}) EXPECT_TRUE(desk->lists(kCalls, "Zoe"));

  // A setting that all share.
  const auto tax = [](Desk& desk) {
    return desk.desktop.app->config().ReadConfigString("OrganizationTAXE", "general", foundation::StoreDatabase,
                                                       "none");
  };
  second->desktop.app->config().WriteConfigString("21", "OrganizationTAXE", "general", foundation::StoreDatabase);
  first->refresh();
  EXPECT_EQ(tax(*first), "21");

  // A definition: the other desk has it, and the service's next call gets it.
  {
    server::CServerDoc& document = *second->desktop.document;
    foundation::DefinitionChange change(document.smdr().parties(), document.database(),
                                        &document.smdr().tariffs()->database());
    change.lists().extensions[0].department = "Research";
    change.save();
  }
  first->refresh();
  EXPECT_EQ(first->desktop.document->smdr().parties().extensions[0].department, "Research");
  ASSERT_TRUE(call("3456789"));
  for (Desk* desk : {&*first, &*second}) EXPECT_TRUE(desk->lists(kCalls, "Research"));
}

}  // namespace
