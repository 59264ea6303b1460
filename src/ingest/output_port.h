#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "foundation/config_manager.h"
#include "ingest/call_output.h"
#include "platform/serial_writer.h"
#include "security/audit_log.h"

namespace ingest {

// What setting COMOut means: "COM1:baud=9600 parity=n".
struct OutputAddress {
  std::string port;        // "COM1"
  std::string device;      // of setting Device_COM1, or /dev/ttyS0; empty when the port is none
  std::string parameters;  // as parseSerialParameters() reads them
};
[[nodiscard]] OutputAddress outputAddress(foundation::ConfigManager& config, std::string_view comOut);

// Sends each line to the serial port of setting "COMOut", to the file of "OutFile", or to both.
class OutputPort : public CallOutput {
 public:
  OutputPort(foundation::ConfigManager& config, security::AuditLog& log) : config_(config), log_(log) {}

  // Reads both settings and opens the port. A port that cannot be opened or set is written to the audit log, and lines
  // go to the file alone then. The device of port COMn is the machine setting "Device_COMn" (section "general"), else
  // "/dev/ttyS" and n - 1.
  void Open();
  // Gives the device 5 seconds to send what is queued, then ends the writer thread; what is left is dropped.
  void Close();

  [[nodiscard]] bool isOpen() const override { return !outFile_.empty() || writer_ != nullptr; }
  int SendLine(std::string_view line) override;

 private:
  void openPort(const std::string& comOut);
  void appendToFile(std::string_view line) const;

  foundation::ConfigManager& config_;
  security::AuditLog& log_;
  std::string outFile_;
  std::unique_ptr<platform::SerialWriter> writer_;
};

}  // namespace ingest
