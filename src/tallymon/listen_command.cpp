#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <iostream>

#include "capture/service/status_file.h"
#include "capture/transport/transport.h"
#include "capture/watch/times.h"
#include "tallymon/commands.h"
#include "tallymon/journal_follower.h"
#include "tallymon/running_service.h"
#include "tallymon/shown_lines.h"
#include "tallymon/site_option.h"

namespace tallymon {

namespace {

struct ListenOptions {
  std::string source;
  std::size_t last = 0;
  bool records = false;
  bool json = false;
};

constexpr std::chrono::milliseconds kListenPause{200};

// Gives lines to the printer and keeps nothing.
class ListenSink : public capture::LineSink {
 public:
  explicit ListenSink(ShownLines& shown) : shown_(shown) {}

  bool takeNow(const std::vector<capture::TakenLine>& lines, capture::Durability) override {
    for (const capture::TakenLine& line : lines) add(capture::EntryKind::Line, line.text);
    return true;
  }
  asio::awaitable<void> take(std::vector<capture::TakenLine> lines, capture::Durability durability) override {
    takeNow(lines, durability);
    co_return;
  }
  void breakCame() override { add(capture::EntryKind::Break, {}); }
  void connected(bool yes, const std::string& what) override { shown_.connected(yes, what); }
  void lost(std::uint64_t bytes) override { shown_.lost(bytes); }
  [[nodiscard]] std::string lastOrigin() const override { return {}; }
  void forEachOrigin(std::int64_t, const std::function<void(const std::string&, std::int64_t)>&) const override {}
  [[nodiscard]] bool isFileTaken(const std::string& name) const override { return name == taken_; }
  void setFileTaken(const std::string& name) override { taken_ = name; }

 private:
  void add(capture::EntryKind kind, const std::string& text) {
    shown_.show({++position_, capture::nowMilliseconds(), kind, {}, text});
  }

  ShownLines& shown_;
  std::uint64_t position_ = 0;
  std::string taken_;
};

// Looking must change nothing: files stay where they are, and a log of years is not shown from its beginning.
capture::TransportSettings harmless(capture::TransportSettings settings) {
  if (auto* file = std::get_if<capture::FileSettings>(&settings)) file->fromEnd = true;
  if (auto* folder = std::get_if<capture::FolderSettings>(&settings)) folder->after = capture::AfterFile::Keep;
  return settings;
}

// Does something now and then until a signal ends the program.
class Beat {
 public:
  Beat(asio::io_context& context, std::function<void()> work, std::function<void()> end)
      : context_(context), signals_(context, SIGINT, SIGTERM), timer_(context), work_(std::move(work)) {
    signals_.async_wait([this, end = std::move(end)](const asio::error_code&, int) {
      end();
      context_.stop();
    });
    step();
  }

 private:
  void step() {
    work_();
    timer_.expires_after(kListenPause);
    timer_.async_wait([this](const asio::error_code& canceled) {
      if (!canceled) step();
    });
  }

  asio::io_context& context_;
  asio::signal_set signals_;
  asio::steady_timer timer_;
  std::function<void()> work_;
};

void listenToExchange(const capture::SourceSite& source, ShownLines& shown) {
  asio::io_context context;
  const auto transport =
      capture::makeTransport(harmless(source.transport), context, std::make_shared<ListenSink>(shown));
  transport->start();
  const Beat beat(
      context, [&shown] { shown.settle(capture::nowMilliseconds()); }, [&transport] { transport->stop(); });
  context.run();
}

// The service holds the line: what it takes is shown from its journal, and its connection from its status.
void listenToService(const capture::Site& site, const capture::SourceSite& source, std::size_t last,
                     ShownLines& shown) {
  JournalFollower journal(site.dataFolder / "journal" / source.id, last, shown);
  asio::io_context context;
  const auto look = [&] {
    const auto connection = capture::connectionOf(site.folder, source.id);
    if (connection) shown.connected(connection->connected, connection->text);
    journal.showNew();
    if (runningService(site) == 0) throw std::runtime_error("tallymon has ended; listen again to open the line itself");
  };
  const Beat beat(context, look, [] {});
  context.run();
}

int listen(const std::string& file, const ListenOptions& options) {
  const capture::Site site = capture::readSite(file);
  const capture::SourceSite& source = sourceOf(site, options.source);
  ShownLines shown(source, options.json      ? ShownLines::Style::Json
                           : options.records ? ShownLines::Style::LinesAndRecords
                                             : ShownLines::Style::Lines);
  if (runningService(site) != 0) {
    listenToService(site, source, options.last, shown);
  } else {
    listenToExchange(source, shown);
  }
  return 0;
}

}  // namespace

void addListen(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand(
      "listen",
      "Show the raw lines of a source as they come, control characters as \\xHH; nothing is kept or handed over.");
  const auto file = addSiteOption(*command);
  const auto options = std::make_shared<ListenOptions>();
  command->add_option("source", options->source, "Id of the source")->required();
  command->add_flag("--records", options->records, "Show the record that each line gives, or why it has none");
  command->add_flag("--json", options->json, "One JSON object for each line, result and change of the connection");
  command->add_option("--last", options->last, "Begin with so many lines that came before, while the service runs")
      ->type_name("COUNT");
  command->footer(
      "For cabling and line speed. A line or port has one reader: while the service runs, what it takes is shown.\n"
      "Example: tallymon listen main --records");
  command->callback([file, options, &status] { status = listen(*file, *options); });
}

}  // namespace tallymon
