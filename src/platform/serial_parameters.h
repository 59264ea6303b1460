#pragma once

#include <optional>
#include <string_view>

namespace platform {

enum class Parity { None, Even, Odd, Mark, Space };
enum class StopBits { One, OneAndHalf, Two };
enum class LineControl { Off, On, Handshake, Toggle };

// The state of a serial line. What the parameter text leaves out keeps the value that the port has; nothing here means
// the same.
struct SerialParameters {
  std::optional<int> baud;
  std::optional<Parity> parity;
  std::optional<int> dataBits;  // 5..8
  std::optional<StopBits> stopBits;
  std::optional<bool> xonXoff;
  std::optional<bool> outputByCts;
  std::optional<LineControl> dtr;
  std::optional<LineControl> rts;
};

// Reads a device-control text: words "name=value" separated by blanks, case ignored. Names: baud parity data stop to
// xon odsr octs dtr rts idsr. Of "to", "odsr" and "idsr" only the form is checked: serial lines here know neither
// infinite time-outs nor flow control by DSR. Nothing for an unknown word, a bad value, a rate that no line has, or 1.5
// stop bits with more than 5 data bits.
std::optional<SerialParameters> parseSerialParameters(std::string_view text);

}  // namespace platform
