#include <linux/serial.h>
#include <sys/ioctl.h>

#include <asio/serial_port.hpp>
#include <cerrno>
#include <cstring>

#include "capture/transport/kinds.h"
#include "capture/transport/line_reading.h"
#include "capture/transport/session_transport.h"

namespace capture {

namespace {

constexpr std::size_t kSerialBuffer = 16 * 1024;
constexpr std::chrono::milliseconds kLineEndPatience{500};  // to the end of a line that is being sent when we stop

using Option = asio::serial_port_base;

Option::parity parityOf(char letter) {
  if (letter == 'E') return Option::parity(Option::parity::even);
  if (letter == 'O') return Option::parity(Option::parity::odd);
  return Option::parity(Option::parity::none);
}

Option::flow_control flowOf(SerialFlow flow) {
  switch (flow) {
    case SerialFlow::RtsCts:
      return Option::flow_control(Option::flow_control::hardware);
    case SerialFlow::XonXoff:
      return Option::flow_control(Option::flow_control::software);
    case SerialFlow::None:
      break;
  }
  return Option::flow_control(Option::flow_control::none);
}

class SerialTransport : public SessionTransport {
 public:
  SerialTransport(SerialSettings settings, asio::io_context& context, std::shared_ptr<LineSink> sink)
      : SessionTransport(context, std::move(sink)),
        settings_(std::move(settings)),
        port_(context),
        patience_(context) {}

 protected:
  asio::awaitable<void> session() override {
    open();
    sink().breakCame();
    established(settings_.device.string());
    LineReading reading(sink());
    reading_ = &reading;
    const asio::error_code end = co_await readLines(port_, sink(), reading, kSerialBuffer, StreamEnd::CutsLine);
    reading_ = nullptr;
    countOverruns();
    asio::error_code ignored;
    port_.close(ignored);
    if (!stopping()) {
      throw ConnectionFault(settings_.device.string() + ": the line is gone (" +
                            (end == asio::error::eof ? "the device was taken away" : end.message()) +
                            "); it is tried again");
    }
  }

  void interrupt() override {
    if (reading_ == nullptr || !reading_->hasHalfLine()) {
      cancel();
      return;
    }
    patience_.expires_after(kLineEndPatience);
    patience_.async_wait([self = shared_from_this(), this](const asio::error_code&) { cancel(); });
  }

 private:
  void open() {
    asio::error_code fault;
    port_.open(settings_.device.string(), fault);
    if (fault) throw ConnectionFault(explain(fault));
    set(Option::baud_rate(settings_.baud), "speed");
    set(Option::character_size(settings_.dataBits), "data bits");
    set(parityOf(settings_.parity), "parity");
    set(Option::stop_bits(settings_.stopBits == 2 ? Option::stop_bits::two : Option::stop_bits::one), "stop bits");
    set(flowOf(settings_.flow), "flow control");
    ioctl(port_.native_handle(), TIOCEXCL);  // two programs on a line would each get half of it
    overruns_ = overrunsNow();
  }

  template <typename Setting>
  void set(const Setting& option, const char* what) {
    asio::error_code fault;
    port_.set_option(option, fault);
    if (!fault) return;
    asio::error_code ignored;
    port_.close(ignored);
    throw ConnectionFault(settings_.device.string() + ": the " + what + " of the site file cannot be set (" +
                          fault.message() + ")");
  }

  [[nodiscard]] std::string explain(const asio::error_code& fault) const {
    const std::string device = settings_.device.string();
    if (fault.value() == ENOENT) return device + ": no such device; is the cable or adapter plugged in?";
    if (fault.value() == EACCES) return device + ": no right to open it; add the service's user to the group dialout";
    if (fault.value() == EBUSY) return device + ": another program has it open";
    return device + ": " + fault.message();
  }

  // Characters that the hardware or the driver lost since the device was opened; a line without such a counter has 0.
  [[nodiscard]] std::uint64_t overrunsNow() {
    serial_icounter_struct counters{};
    if (ioctl(port_.native_handle(), TIOCGICOUNT, &counters) != 0) return 0;
    return static_cast<std::uint64_t>(counters.overrun) + static_cast<std::uint64_t>(counters.buf_overrun);
  }

  void countOverruns() {
    const std::uint64_t now = overrunsNow();
    if (now > overruns_) sink().lost(now - overruns_);
    overruns_ = now;
  }

  void cancel() {
    asio::error_code ignored;
    port_.cancel(ignored);
  }

  SerialSettings settings_;
  asio::serial_port port_;
  asio::steady_timer patience_;
  LineReading* reading_ = nullptr;
  std::uint64_t overruns_ = 0;
};

}  // namespace

TransportPointer makeSerial(const SerialSettings& settings, asio::io_context& context, SinkPointer sink) {
  return std::make_shared<SerialTransport>(settings, context, std::move(sink));
}

}  // namespace capture
