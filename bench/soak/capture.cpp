#include "capture.h"

#include <arpa/inet.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <ctime>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "base/printf.h"

namespace soak {

namespace {

namespace fs = std::filesystem;

// A port that is free now.
std::uint16_t freePort() {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  const bool had = bind(socket, reinterpret_cast<const sockaddr*>(&address), size) == 0 &&
                   getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0;
  ::close(socket);
  if (!had) throw std::runtime_error("no port is free");
  return ntohs(address.sin_port);
}

}  // namespace

std::string hicomLine(std::int32_t number) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char time[32];
  std::strftime(time, sizeof time, "%d.%m.%y%H:%M:%S", &local);
  return std::string(time) +
         base::format("%3d%6d%5s%8s%-25s%11d%2d\r\n", 1, 214, "", "00:02:31", "0755550142", number, 2);
}

CaptureProgram::CaptureProgram(const Exchange& exchange, const std::vector<std::string>& formats)
    : exchange_(exchange) {
  std::ofstream site(exchange_.folder() / "tallymon.toml");
  site << "[deliver]\nfolder = \"" << exchange_.monitor().string() << "\"\npoke = \"" << exchange_.socket().string()
       << "\"\n[data]\nfolder = \"" << (exchange_.folder() / "capture").string() << "\"\n"
       << "[[source]]\nid = \"file\"\nformat = \"hicom\"\nfile = { path = \"" << file().string() << "\" }\n";
  for (const std::string& format : formats) {
    ports_.push_back(freePort());
    site << "[[source]]\nid = \"wire" << ports_.size() << "\"\nformat = \"" << format
         << "\"\nlisten = { port = " << ports_.back() << ", address = \"127.0.0.1\" }\n";
  }
}

CaptureProgram::~CaptureProgram() {
  if (process_ > 0) kill();
}

void CaptureProgram::start() {
  process_ = startProgram("tallymon", {"run", "--config", (exchange_.folder() / "tallymon.toml").string()},
                          exchange_.folder() / "tallymon.out");
}

void CaptureProgram::kill() {
  ::kill(process_, SIGKILL);
  const int status = waitFor(process_);
  process_ = -1;
  if (status != 128 + SIGKILL) throw std::runtime_error(base::format("tallymon ended by itself with %d", status));
}

int CaptureProgram::stop() {
  ::kill(process_, SIGTERM);
  const int status = waitFor(process_);
  process_ = -1;
  return status;
}

long CaptureProgram::memory() const {
  std::ifstream status("/proc/" + std::to_string(process_) + "/status");
  std::string word;
  long size = 0;
  while (status >> word) {
    if (word == "VmRSS:") status >> size;
  }
  return size;
}

bool CaptureProgram::waitForFileLines(std::int64_t count, std::chrono::seconds patience) const {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (std::chrono::steady_clock::now() < end) {
    std::ifstream in(exchange_.monitor() / ".tallymon/status.json");
    const auto status = nlohmann::json::parse(in, nullptr, false);
    if (status.is_object()) {
      for (const auto& source : status["sources"]) {
        if (source.value("id", "") == "file" && source.value("lines", std::int64_t{0}) >= count) return true;
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  return false;
}

bool CaptureProgram::waitUntilEmpty(std::chrono::seconds patience) const {
  const auto end = std::chrono::steady_clock::now() + patience;
  int quiet = 0;
  while (quiet < 20) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    bool empty = exchange_.allImported();
    for (const fs::directory_entry& entry : fs::directory_iterator(exchange_.monitor() / ".tallymon")) {
      empty = empty && !entry.path().filename().string().starts_with("ready-");
    }
    quiet = empty ? quiet + 1 : 0;
  }
  return true;
}

LineSender::~LineSender() {
  if (socket_ >= 0) ::close(socket_);
}

bool LineSender::send(const std::string& line) {
  if (socket_ < 0) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port_);
    socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      ::close(socket_);
      socket_ = -1;
      return false;
    }
  }
  if (::send(socket_, line.data(), line.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(line.size())) return true;
  ::close(socket_);
  socket_ = -1;
  return false;
}

}  // namespace soak
