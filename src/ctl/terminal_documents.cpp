#include "ctl/terminal_documents.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace ctl {

namespace {

namespace fs = std::filesystem;

// Runs a program without a shell, so that no character of the words means anything. True when it ended well.
bool run(std::vector<std::string> words, bool silent = false) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (silent) {
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  }
  pid_t child = 0;
  const bool started = posix_spawnp(&child, argv.front(), &actions, nullptr, argv.data(), environ) == 0;
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  return started && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// A private folder, gone with the object.
class WorkFolder {
 public:
  WorkFolder() {
    std::string name = (fs::temp_directory_path() / "tallybook-print-XXXXXX").string();
    if (::mkdtemp(name.data()) != nullptr) path_ = name;
  }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
  ~WorkFolder() {
    std::error_code ignored;  // the system empties its folder of temporary files
    if (!path_.empty()) fs::remove_all(path_, ignored);
  }
  [[nodiscard]] bool made() const { return !path_.empty(); }
  [[nodiscard]] const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

// For pages that do not say what their sheets are like: lists, too wide for upright paper. Texts may take two lines,
// numbers do not; the headings are on every sheet.
constexpr std::string_view kSheetStyle =
    "<style>@page{size:A4 landscape;margin:10mm}table[cellspacing] td[align=left],table[cellspacing] "
    "th{white-space:normal}table[cellspacing] tbody{display:contents}table[cellspacing] "
    "tr:first-child{display:table-header-group}tr{break-inside:avoid}td{vertical-align:top}</style>";

bool writeSheets(const fs::path& document, const fs::path& copy) {
  std::ifstream in(document, std::ios::binary);
  std::string page((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const std::size_t head = page.find("<head>");
  if (head != std::string::npos && page.find("@page") == std::string::npos) page.insert(head + 6, kSheetStyle);
  std::ofstream out(copy, std::ios::binary);
  out << page;
  out.close();
  return in.is_open() && out.good();
}

// The page as a browser lays it out on paper; nothing without a browser.
std::optional<fs::path> makePdf(const fs::path& document, const fs::path& folder) {
  if (document.extension() != ".html") return std::nullopt;
  const fs::path copy = folder / "page.html";
  const fs::path pdf = folder / "page.pdf";
  if (!writeSheets(document, copy)) return std::nullopt;
  for (const char* browser : {"chromium", "google-chrome", "chromium-browser", "google-chrome-stable"}) {
    std::vector<std::string> words = {browser,
                                      "--headless",
                                      "--disable-gpu",
                                      "--no-first-run",
                                      "--disable-background-networking",
                                      "--no-pdf-header-footer",
                                      "--user-data-dir=" + (folder / "browser").string(),
                                      "--print-to-pdf=" + pdf.string()};
    if (::geteuid() == 0) words.emplace_back("--no-sandbox");  // the browser has none for root
    words.push_back("file://" + copy.string());
    if (run(words, true) && fs::exists(pdf)) return pdf;
  }
  return std::nullopt;
}

}  // namespace

bool TerminalDocuments::open(const std::string& pathOrUrl) {
  return run({"xdg-open", pathOrUrl});
}

// Print queues take a page for plain text and print its mark-up, so it is handed to them as sheets where it can be.
platform::Printed TerminalDocuments::print(const fs::path& document) {
  const WorkFolder folder;
  const auto sheets = folder.made() ? makePdf(document, folder.path()) : std::nullopt;
  const fs::path printed = sheets.value_or(fs::absolute(document));
  const bool taken = run({"lp", "-t", document.filename().string(), printed.string()});
  return taken ? platform::Printed::Done : platform::Printed::Refused;
}

}  // namespace ctl
