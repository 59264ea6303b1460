#include <asio/signal_set.hpp>
#include <iostream>

#include "capture/journal/journal_entry.h"
#include "capture/transport/transport.h"
#include "tallymon/commands.h"
#include "tallymon/site_option.h"

namespace tallymon {

namespace {

// Shows lines and keeps nothing.
class ShownLines : public capture::LineSink {
 public:
  bool takeNow(const std::vector<capture::TakenLine>& lines, capture::Durability) override {
    for (const capture::TakenLine& line : lines) std::cout << capture::escapeBytes(line.text) << '\n';
    std::cout.flush();
    return true;
  }
  asio::awaitable<void> take(std::vector<capture::TakenLine> lines, capture::Durability durability) override {
    takeNow(lines, durability);
    co_return;
  }
  void breakCame() override {}
  void connected(bool yes, const std::string& what) override {
    if (!what.empty()) std::cerr << (yes ? "-- " : "-- not connected: ") << what << std::endl;
  }
  void lost(std::uint64_t bytes) override { std::cerr << "-- " << bytes << " bytes lost" << std::endl; }
  [[nodiscard]] std::string lastOrigin() const override { return {}; }
  void forEachOrigin(std::int64_t, const std::function<void(const std::string&, std::int64_t)>&) const override {}
  [[nodiscard]] bool isFileTaken(const std::string& name) const override { return name == taken_; }
  void setFileTaken(const std::string& name) override { taken_ = name; }

 private:
  std::string taken_;
};

// Looking must change nothing: files stay where they are, and a log of years is not shown from its beginning.
capture::TransportSettings harmless(capture::TransportSettings settings) {
  if (auto* file = std::get_if<capture::FileSettings>(&settings)) file->fromEnd = true;
  if (auto* folder = std::get_if<capture::FolderSettings>(&settings)) folder->after = capture::AfterFile::Keep;
  return settings;
}

int listen(const std::string& file, const std::string& id) {
  const capture::Site site = capture::readSite(file);
  asio::io_context context;
  const auto sink = std::make_shared<ShownLines>();
  const auto transport = capture::makeTransport(harmless(sourceOf(site, id).transport), context, sink);
  transport->start();
  asio::signal_set signals(context, SIGINT, SIGTERM);
  signals.async_wait([&](const asio::error_code&, int) {
    transport->stop();
    context.stop();
  });
  context.run();
  return 0;
}

}  // namespace

void addListen(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand(
      "listen",
      "Show the raw lines of a source as they come, control characters as \\xHH; nothing is kept or handed over.");
  const auto file = addSiteOption(*command);
  const auto id = std::make_shared<std::string>();
  command->add_option("source", *id, "Id of the source")->required();
  command->footer(
      "For cabling and line speed. Stop the service first: a line or port has one reader.\n"
      "Example: tallymon listen main");
  command->callback([file, id, &status] { status = listen(*file, *id); });
}

}  // namespace tallymon
