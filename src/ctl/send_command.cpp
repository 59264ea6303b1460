#include <array>
#include <chrono>
#include <fstream>
#include <thread>

#include "base/little_endian.h"
#include "base/path.h"
#include "base/printf.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "exchange/call_record.h"
#include "platform/live_channel.h"

namespace ctl {

namespace send_command {

using Clock = std::chrono::steady_clock;

// The records of a monitor file as bytes, up to its end or the first type word that is none.
class RecordFile {
 public:
  explicit RecordFile(const std::string& name) : in_(name, std::ios::binary) {
    if (!in_) throw Failure(base::format("%s cannot be read.", name));
  }

  // Empty at the end.
  std::span<const unsigned char> next() {
    if (!fill(0, exchange::kNormalRecordSize)) return {};
    const auto type = static_cast<std::int32_t>(base::wordAt(buffer_.data()));
    if (type == exchange::kNormalRecordType) return {buffer_.data(), exchange::kNormalRecordSize};
    if (type != exchange::kExtendedRecordType) return {};
    if (!fill(exchange::kNormalRecordSize, exchange::kExtendedRecordSize)) return {};
    return {buffer_.data(), exchange::kExtendedRecordSize};
  }

 private:
  bool fill(std::size_t from, std::size_t to) {
    const auto size = static_cast<std::streamsize>(to - from);
    in_.read(reinterpret_cast<char*>(buffer_.data() + from), size);
    return in_.gcount() == size;
  }

  std::ifstream in_;
  std::array<unsigned char, exchange::kExtendedRecordSize> buffer_{};
};

// Setting `LiveSocket`, else the default place, which serve uses too.
std::filesystem::path socketOf(const Invocation& call) {
  if (const auto given = call.arguments.find("--socket")) return *given;
  const std::string configured = call.context.machineText(foundation::keys::LiveSocket);
  return configured.empty() ? platform::defaultLiveSocket() : base::systemPath(configured);
}

int send(const Invocation& call) {
  constexpr std::int64_t kFastest = 1'000'000;
  const std::int64_t rate = call.arguments.integer("--rate", 0, 0, kFastest);
  RecordFile file(call.arguments.text("FILE"));
  platform::LiveChannelClient client(socketOf(call));
  InterruptWatch& interrupts = call.context.interrupts();
  interrupts.begin();
  std::int64_t sent = 0;
  std::int64_t recorded = 0;
  const Clock::time_point start = Clock::now();
  const auto report = [&] {
    call.out << base::format("sent %d, recorded %d, refused %d\n", sent, recorded, sent - recorded) << std::flush;
  };
  try {
    for (auto record = file.next(); !record.empty() && !interrupts.requested(); record = file.next()) {
      recorded += client.send(record) != 0 ? 1 : 0;
      ++sent;
      if (rate > 0) std::this_thread::sleep_until(start + std::chrono::microseconds(sent * 1'000'000 / rate));
    }
  } catch (const std::exception&) {
    report();
    throw;
  }
  report();
  return sent == recorded ? 0 : 1;
}

constexpr OptionSpec kOptions[] = {
    {.name = "FILE", .help = "File of monitor records", .required = true, .valueName = "FILE"},
    {.name = "--socket", .help = "Live channel to use (default: setting LiveSocket)", .valueName = "S"},
    {.name = "--rate", .help = "Records a second at most (default: as fast as they are answered)", .valueName = "N"},
};

constexpr Command kCommands[] = {
    {"send",
     "Hand the records of a monitor file to a running copy, one by one, as the monitor does with live calls",
     "tallyctl send calls.data\n"
     "tallyctl send calls.data --rate 50 --socket /run/tallybook/live.sock",
     kOptions,
     {},
     send},
};

}  // namespace send_command

std::span<const Command> sendCommands() {
  return send_command::kCommands;
}

}  // namespace ctl
