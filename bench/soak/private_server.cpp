#include "private_server.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <utility>

#include "base/printf.h"
#include "support/test_place.h"

namespace soak {

namespace fs = std::filesystem;

namespace {

// The last line that a command writes; throws when it fails.
std::string lineOf(const std::string& command) {
  FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
  std::string line;
  std::array<char, 512> buffer{};
  while (std::fgets(buffer.data(), buffer.size(), pipe) != nullptr) line = buffer.data();
  if (!line.empty() && line.back() == '\n') line.pop_back();
  if (pclose(pipe) != 0) throw std::runtime_error(line);
  return line;
}

std::string ask(const char* what, const fs::path& folder) {
  return lineOf(base::format("'%s/tools/private-postgres' %s '%s'", TALLYBOOK_SOURCE_DIR, what, folder.string()));
}

}  // namespace

bool PrivateServer::isInstalled() {
  return std::system("ls /usr/lib/postgresql/*/bin/initdb >/dev/null 2>&1 || command -v initdb >/dev/null 2>&1") == 0;
}

PrivateServer::PrivateServer(fs::path folder) : folder_(std::move(folder)), address_(ask("start", folder_)) {}

PrivateServer::~PrivateServer() {
  try {
    crash();
  } catch (const std::exception&) {
    // Its folder goes, and it with it.
  }
}

fs::path PrivateServer::socket() const {
  return support::socketFolder(address_) + "/.s.PGSQL.5432";
}

void PrivateServer::start() const {
  ask("start", folder_);
}

void PrivateServer::stop() const {
  ask("stop", folder_);
}

void PrivateServer::crash() const {
  ask("crash", folder_);
}

bool PrivateServer::killBackend() const {
  support::OtherProgram program(address_.substr(0, address_.size() - 1));
  const std::string process =
      program.run("SELECT pid FROM pg_stat_activity WHERE application_name = 'tallybook' ORDER BY random() LIMIT 1");
  return !process.empty() && kill(static_cast<pid_t>(std::stol(process)), SIGKILL) == 0;
}

std::optional<SmallDisk> SmallDisk::make(const fs::path& folder, int megabytes) {
  fs::create_directory(folder);
  if (geteuid() != 0) return std::nullopt;
  const std::string command =
      base::format("mount -t tmpfs -o size=%dm,mode=755 tmpfs '%s' 2>/dev/null", megabytes, folder.string());
  if (std::system(command.c_str()) != 0) return std::nullopt;
  return SmallDisk(folder);
}

SmallDisk::SmallDisk(SmallDisk&& other) noexcept : folder_(std::exchange(other.folder_, {})) {}

SmallDisk::~SmallDisk() {
  if (folder_.empty()) return;
  const int status = std::system(base::format("umount -l '%s'", folder_.string()).c_str());
  if (status != 0) std::fprintf(stderr, "%s is still mounted\n", folder_.c_str());
}

void SmallDisk::fill(int leaveMegabytes) const {
  constexpr std::uintmax_t kMegabyte = 1 << 20;
  const std::uintmax_t left = fs::space(folder_).available / kMegabyte;
  const std::string block(kMegabyte, 'x');
  std::ofstream file(ballast(), std::ios::binary | std::ios::app);
  for (std::uintmax_t i = static_cast<std::uintmax_t>(leaveMegabytes); i < left; ++i) file << block;
}

void SmallDisk::makeRoom() const {
  fs::remove(ballast());
}

}  // namespace soak
