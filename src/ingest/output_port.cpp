#include "ingest/output_port.h"

#include <chrono>
#include <cstdio>
#include <optional>
#include <utility>

#include "base/debug_output.h"
#include "base/path.h"
#include "base/printf.h"
#include "base/text.h"

namespace ingest {

namespace {
// Right after a port name of four characters and its colon; longer names are not supported.
constexpr std::size_t kParametersAt = 5;
// For the last lines at the close. A device that is off must not hold it up for longer.
constexpr std::chrono::seconds kTimeToSend{5};

std::string deviceOf(foundation::ConfigManager& config, std::string_view portName) {
  std::string device = config.ReadConfigString(foundation::keys::DeviceOfPort.of(portName));
  if (!device.empty()) return device;
  const bool isCom = portName.size() > 3 && base::equalFoldAscii(portName.substr(0, 3), "COM");
  const int number = isCom ? base::leadingInteger(portName.substr(3)) : 0;
  return number > 0 ? base::format("/dev/ttyS%d", number - 1) : std::string();
}

}  // namespace

OutputAddress outputAddress(foundation::ConfigManager& config, std::string_view comOut) {
  OutputAddress address;
  address.port = comOut.substr(0, comOut.find(':'));
  address.device = deviceOf(config, address.port);
  if (comOut.size() > kParametersAt) address.parameters = comOut.substr(kParametersAt);
  return address;
}

void OutputPort::Open() {
  Close();
  const std::string comOut = config_.ReadConfigString(foundation::keys::COMOut);
  outFile_ = config_.ReadConfigString(foundation::keys::OutFile);
  if (!comOut.empty()) openPort(comOut);
}

void OutputPort::Close() {
  if (writer_) writer_->drain(kTimeToSend);
  writer_.reset();
  outFile_.clear();
}

void OutputPort::openPort(const std::string& comOut) {
  const OutputAddress address = outputAddress(config_, comOut);
  std::optional<platform::SerialPort> port = platform::SerialPort::open(address.device);
  if (!port) {
    log_.WriteLog(security::LogError, "Can't open ComOut: %s", address.port);
    return;
  }
  const auto parameters = platform::parseSerialParameters(address.parameters);
  if (!parameters || !port->apply(*parameters)) {
    log_.WriteLog(security::LogError, "Invalid DCB: %s", comOut);
    return;
  }
  writer_ = std::make_unique<platform::SerialWriter>(std::move(*port));
}

int OutputPort::SendLine(std::string_view line) {
  if (!outFile_.empty()) appendToFile(line);
  if (!writer_) return 1;
  if (!writer_->queue(line)) return 0;
  base::debugOutput(line);
  return 1;
}

// A program that follows the file may move or delete it between two lines, so it is not held open. One that cannot be
// opened is passed over in silence: a full disk or a lost share must not stop the recording of calls.
void OutputPort::appendToFile(std::string_view line) const {
  std::FILE* file = std::fopen(base::systemPath(outFile_).c_str(), "abe");
  if (file == nullptr) return;
  std::fwrite(line.data(), 1, line.size(), file);
  std::fclose(file);
}

}  // namespace ingest
