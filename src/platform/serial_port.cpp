#include "platform/serial_port.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace platform {

namespace {

constexpr std::pair<int, speed_t> kSpeeds[] = {
    {110, B110},     {300, B300},       {600, B600},       {1200, B1200},     {1800, B1800},
    {2400, B2400},   {4800, B4800},     {9600, B9600},     {19200, B19200},   {38400, B38400},
    {57600, B57600}, {115200, B115200}, {230400, B230400}, {460800, B460800}, {921600, B921600}};

std::optional<speed_t> speedOf(int baud) {
  for (const auto& [rate, speed] : kSpeeds) {
    if (rate == baud) return speed;
  }
  return std::nullopt;
}

// 0 when the line has a rate of another kind.
int baudOf(speed_t wanted) {
  for (const auto& [rate, speed] : kSpeeds) {
    if (speed == wanted) return rate;
  }
  return 0;
}

void setFlag(tcflag_t& flags, tcflag_t flag, bool on) {
  flags = on ? flags | flag : flags & ~flag;
}

void setParity(termios& state, Parity parity) {
  setFlag(state.c_cflag, PARENB, parity != Parity::None);
  setFlag(state.c_cflag, PARODD, parity == Parity::Odd || parity == Parity::Mark);
  setFlag(state.c_cflag, CMSPAR, parity == Parity::Mark || parity == Parity::Space);
}

void setDataBits(termios& state, int bits) {
  constexpr tcflag_t kSizes[] = {CS5, CS6, CS7, CS8};
  state.c_cflag = (state.c_cflag & ~static_cast<tcflag_t>(CSIZE)) | kSizes[bits - 5];
}

void setFlowControl(termios& state, const SerialParameters& parameters) {
  if (parameters.xonXoff) {
    setFlag(state.c_iflag, IXON, *parameters.xonXoff);
    setFlag(state.c_iflag, IXOFF, *parameters.xonXoff);
  }
  // One switch governs both directions of CTS and RTS here.
  if (parameters.outputByCts) setFlag(state.c_cflag, CRTSCTS, *parameters.outputByCts);
  if (parameters.rts == LineControl::Handshake) setFlag(state.c_cflag, CRTSCTS, true);
}

// Lines without these wires (pseudo-terminals, some adapters) refuse the request; they do not need it either.
void setWire(int descriptor, int wire, const std::optional<LineControl>& control) {
  if (control == LineControl::On) ::ioctl(descriptor, TIOCMBIS, &wire);
  if (control == LineControl::Off) ::ioctl(descriptor, TIOCMBIC, &wire);
}

}  // namespace

std::optional<SerialPort> SerialPort::open(const std::filesystem::path& device) {
  const int descriptor = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return std::nullopt;
  SerialPort port(descriptor);
  if (::isatty(descriptor) == 0 || ::ioctl(descriptor, TIOCEXCL) != 0) return std::nullopt;
  return port;
}

SerialPort::SerialPort(SerialPort&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), writeTotalMultiplier_(other.writeTotalMultiplier_) {}

SerialPort& SerialPort::operator=(SerialPort&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  std::swap(writeTotalMultiplier_, other.writeTotalMultiplier_);
  return *this;
}

SerialPort::~SerialPort() {
  if (descriptor_ < 0) return;
  // Closing waits for the line to take what it holds, half a minute where the device is off: it has had its time.
  if (isSending()) ::tcflush(descriptor_, TCOFLUSH);
  ::close(descriptor_);
}

bool SerialPort::apply(const SerialParameters& parameters) {
  termios state{};
  if (::tcgetattr(descriptor_, &state) != 0) return false;
  const tcflag_t kept = state.c_cflag & (CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS);
  ::cfmakeraw(&state);
  state.c_cflag = (state.c_cflag & ~static_cast<tcflag_t>(CSIZE | PARENB)) | kept | CLOCAL | CREAD;

  if (parameters.baud) {
    const auto speed = speedOf(*parameters.baud);
    if (!speed || ::cfsetispeed(&state, *speed) != 0 || ::cfsetospeed(&state, *speed) != 0) return false;
  }
  if (parameters.parity) setParity(state, *parameters.parity);
  if (parameters.dataBits) setDataBits(state, *parameters.dataBits);
  if (parameters.stopBits) setFlag(state.c_cflag, CSTOPB, *parameters.stopBits != StopBits::One);
  setFlowControl(state, parameters);
  if (::tcsetattr(descriptor_, TCSANOW, &state) != 0) return false;

  setWire(descriptor_, TIOCM_DTR, parameters.dtr);
  setWire(descriptor_, TIOCM_RTS, parameters.rts);
  const int baud = baudOf(::cfgetospeed(&state));
  writeTotalMultiplier_ = baud > 0 ? 19200 / baud : 0;
  return true;
}

std::size_t SerialPort::write(std::string_view bytes, std::chrono::milliseconds limit) {
  const auto allowed = static_cast<std::int64_t>(bytes.size()) * writeTotalMultiplier_;
  const auto wait = std::min<std::int64_t>(allowed, limit.count());
  pollfd ready{descriptor_, POLLOUT, 0};
  if (::poll(&ready, 1, static_cast<int>(wait)) <= 0) return 0;
  const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
  return written > 0 ? static_cast<std::size_t>(written) : 0;
}

bool SerialPort::isSending() const {
  int waiting = 0;
  if (::ioctl(descriptor_, TIOCOUTQ, &waiting) == 0 && waiting > 0) return true;
  // The transmitter's own few bytes, where the device tells of them.
  unsigned int state = 0;
  return ::ioctl(descriptor_, TIOCSERGETLSR, &state) == 0 && (state & TIOCSER_TEMT) == 0;
}

}  // namespace platform
