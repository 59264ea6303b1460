#include "platform/serial_parameters.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>

#include "base/text.h"

namespace platform {

namespace {

template <typename Result>
struct Choice {
  std::string_view text;
  Result value;
};

template <typename Result, std::size_t N>
std::optional<Result> choose(const Choice<Result> (&choices)[N], std::string_view text) {
  const auto found = std::find_if(std::begin(choices), std::end(choices),
                                  [&](const Choice<Result>& choice) { return choice.text == text; });
  if (found == std::end(choices)) return std::nullopt;
  return found->value;
}

constexpr Choice<Parity> kParities[] = {
    {"n", Parity::None}, {"e", Parity::Even}, {"o", Parity::Odd}, {"m", Parity::Mark}, {"s", Parity::Space}};
constexpr Choice<StopBits> kStopBits[] = {{"1", StopBits::One}, {"1.5", StopBits::OneAndHalf}, {"2", StopBits::Two}};
constexpr Choice<int> kDataBits[] = {{"5", 5}, {"6", 6}, {"7", 7}, {"8", 8}};
constexpr Choice<bool> kSwitch[] = {{"on", true}, {"off", false}};
constexpr Choice<LineControl> kDtr[] = {
    {"on", LineControl::On}, {"off", LineControl::Off}, {"hs", LineControl::Handshake}};
constexpr Choice<LineControl> kRts[] = {
    {"on", LineControl::On}, {"off", LineControl::Off}, {"hs", LineControl::Handshake}, {"tg", LineControl::Toggle}};
constexpr std::array kRates = {110,   300,   600,   1200,   1800,   2400,   4800,  9600,
                               19200, 38400, 57600, 115200, 230400, 460800, 921600};
// The device-control text knows the first two digits of the old rates.
constexpr Choice<int> kShortRates[] = {{"11", 110},  {"30", 300},  {"60", 600},  {"12", 1200},
                                       {"24", 2400}, {"48", 4800}, {"96", 9600}, {"19", 19200}};

std::optional<int> baudRate(std::string_view text) {
  if (const auto rate = choose(kShortRates, text)) return rate;
  int rate = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rate);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (std::find(kRates.begin(), kRates.end(), rate) == kRates.end()) return std::nullopt;
  return rate;
}

// Keeps a value that was understood; false for one that was not.
template <typename Value>
bool keep(std::optional<Value>& target, std::optional<Value> value) {
  if (value) target = value;
  return value.has_value();
}

bool readWord(std::string_view name, std::string_view value, SerialParameters& parameters) {
  if (name == "baud") return keep(parameters.baud, baudRate(value));
  if (name == "parity") return keep(parameters.parity, choose(kParities, value));
  if (name == "data") return keep(parameters.dataBits, choose(kDataBits, value));
  if (name == "stop") return keep(parameters.stopBits, choose(kStopBits, value));
  if (name == "xon") return keep(parameters.xonXoff, choose(kSwitch, value));
  if (name == "octs") return keep(parameters.outputByCts, choose(kSwitch, value));
  if (name == "dtr") return keep(parameters.dtr, choose(kDtr, value));
  if (name == "rts") return keep(parameters.rts, choose(kRts, value));
  if (name == "to" || name == "odsr" || name == "idsr") return choose(kSwitch, value).has_value();
  return false;
}

}  // namespace

std::optional<SerialParameters> parseSerialParameters(std::string_view text) {
  SerialParameters parameters;
  for (const std::string& word : base::split(base::foldAscii(text), " \t")) {
    const std::size_t equals = word.find('=');
    if (equals == std::string::npos) return std::nullopt;
    const std::string_view view = word;
    if (!readWord(view.substr(0, equals), view.substr(equals + 1), parameters)) return std::nullopt;
  }
  const bool fiveBits = parameters.dataBits == 5;
  if (parameters.stopBits == StopBits::OneAndHalf && !fiveBits) return std::nullopt;
  return parameters;
}

}  // namespace platform
