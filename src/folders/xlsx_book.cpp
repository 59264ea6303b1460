#include "folders/xlsx_book.h"

#include <sys/stat.h>
#include <unistd.h>
#include <xlsxwriter.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <map>
#include <string_view>
#include <system_error>

#include "base/characters.h"
#include "base/little_endian.h"
#include "folders/report_file.h"

namespace folders {

namespace {

constexpr double kSecondsOfDay = 86400.0;
constexpr lxw_row_t kRowsPerSheet = LXW_ROW_MAX;  // 1048576, heading included
constexpr std::size_t kLongestText = 32767;       // bytes are never fewer than the characters the limit means

lxw_col_t columnNumber(std::size_t column) {
  return static_cast<lxw_col_t>(column);
}

// The directory of an archive without a comment; empty when there is none.
std::string archiveDirectory(const std::filesystem::path& file) {
  constexpr std::streamoff kEndSize = 22;
  std::array<unsigned char, kEndSize> end{};
  std::ifstream in(file, std::ios::binary);
  in.seekg(-kEndSize, std::ios::end);
  in.read(reinterpret_cast<char*>(end.data()), kEndSize);
  std::string directory(in ? base::wordAt(end.data() + 12) : 0, '\0');
  in.seekg(base::wordAt(end.data() + 16));
  in.read(directory.data(), static_cast<std::streamsize>(directory.size()));
  return in ? directory : std::string();
}

// Bytes of the sheets in a finished book before they were compressed.
std::uint64_t sheetsSize(const std::filesystem::path& file) {
  constexpr std::size_t kEntrySize = 46;  // name, extra and comment follow
  const std::string directory = archiveDirectory(file);
  std::uint64_t size = 0;
  for (std::size_t at = 0; at + kEntrySize <= directory.size();) {
    const auto word = [&directory, at](std::size_t place) {
      return base::wordAt(reinterpret_cast<const unsigned char*>(directory.data() + at + place));
    };
    const std::size_t nameSize = word(28) & 0xFFFF;
    const std::size_t extraSize = word(28) >> 16;
    const std::size_t commentSize = word(32) & 0xFFFF;
    const auto name = std::string_view(directory).substr(at + kEntrySize, nameSize);
    if (name.starts_with("xl/worksheets/sheet")) size += word(24);
    at += kEntrySize + nameSize + extraSize + commentSize;
  }
  return size;
}

// Deletes the unfinished file unless it was moved into place.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::filesystem::path& target) : path_(makeTemporaryBeside(target)) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (!path_.empty()) ::unlink(path_.c_str());
  }
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  void moveTo(const std::filesystem::path& target) {
    publishTemporary(path_, target);
    path_.clear();
  }

 private:
  std::filesystem::path path_;
};

}  // namespace

class XlsxBook::Workbook {
 public:
  Workbook(const std::filesystem::path& target, std::vector<std::string> headings)
      : target_(target), headings_(std::move(headings)), file_(target) {
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    book_ = workbook_new_opt(file_.path().c_str(), &options);
    if (book_ == nullptr) fail(std::errc::not_enough_memory);
    heading_ = workbook_add_format(book_);
    format_set_bold(heading_);
    money_ = numberFormat("#,##0.00");
    duration_ = numberFormat("[hh]:mm:ss");
    dateTime_ = numberFormat("dd.mm.yyyy hh:mm:ss");
    date_ = numberFormat("dd.mm.yyyy");
  }
  Workbook(const Workbook&) = delete;
  Workbook& operator=(const Workbook&) = delete;
  ~Workbook() {
    if (book_ != nullptr) lxw_workbook_free(book_);
  }

  void beginRow() {
    if (sheet_ == nullptr || row_ + 1 == kRowsPerSheet) {
      addSheet();
    } else {
      ++row_;
    }
  }

  void writeNumber(std::size_t column, double number, lxw_format* format) {
    worksheet_write_number(sheet_, row_, columnNumber(column), number, format);
  }

  void writeText(std::size_t column, std::string text) {
    if (text.empty()) return;
    if (text.size() > kLongestText) {
      text.resize(kLongestText);
      while (!base::startsCharacter(text.back())) text.pop_back();
      text.pop_back();
    }
    worksheet_write_string(sheet_, row_, columnNumber(column), text.c_str(), nullptr);
  }

  void close() {
    if (sheet_ == nullptr) addSheet();
    const std::uint64_t rows = rowsSize();
    const lxw_error error = workbook_close(book_);
    book_ = nullptr;
    if (error != LXW_NO_ERROR) {
      throw std::system_error(std::make_error_code(std::errc::io_error), target_.string() + ": " + lxw_strerror(error));
    }
    if (sheetsSize(file_.path()) < rows) fail(std::errc::no_space_on_device);
    file_.moveTo(target_);
  }

  lxw_format* currencyFormat(std::string currency) {
    std::erase(currency, '"');
    if (currency.empty()) return money_;
    auto& format = currencies_[currency];
    if (format == nullptr) format = numberFormat("#,##0.00 \"" + currency + "\"");
    return format;
  }
  [[nodiscard]] lxw_format* durationFormat() const { return duration_; }
  [[nodiscard]] lxw_format* dateTimeFormat() const { return dateTime_; }
  [[nodiscard]] lxw_format* dateFormat() const { return date_; }

 private:
  [[noreturn]] void fail(std::errc why) const { throw std::system_error(std::make_error_code(why), target_.string()); }

  // The library writes the rows to temporary files of its own and does not notice when these find no room. Bytes of all
  // sheets' rows, once they are written.
  [[nodiscard]] std::uint64_t rowsSize() const {
    std::uint64_t size = 0;
    lxw_worksheet* sheet = nullptr;
    LXW_FOREACH_WORKSHEET(sheet, book_) {
      std::FILE* file = sheet->optimize_tmpfile;
      if (std::fflush(file) != 0 || std::ferror(file) != 0) fail(std::errc::no_space_on_device);
      size += static_cast<std::uint64_t>(std::ftell(file));
    }
    return size;
  }

  lxw_format* numberFormat(const std::string& pattern) {
    lxw_format* format = workbook_add_format(book_);
    format_set_num_format(format, pattern.c_str());
    return format;
  }

  void addSheet() {
    sheet_ = workbook_add_worksheet(book_, nullptr);
    row_ = 1;
    for (std::size_t i = 0; i < headings_.size(); ++i) {
      constexpr double kWidth = 18;  // characters
      worksheet_set_column(sheet_, columnNumber(i), columnNumber(i), kWidth, nullptr);
      worksheet_write_string(sheet_, 0, columnNumber(i), headings_[i].c_str(), heading_);
    }
    worksheet_freeze_panes(sheet_, 1, 0);
  }

  std::filesystem::path target_;
  std::vector<std::string> headings_;
  TemporaryFile file_;
  lxw_workbook* book_ = nullptr;
  lxw_worksheet* sheet_ = nullptr;
  lxw_row_t row_ = 0;  // that is being filled; 0 are the headings
  lxw_format* heading_ = nullptr;
  lxw_format* money_ = nullptr;
  lxw_format* duration_ = nullptr;
  lxw_format* dateTime_ = nullptr;
  lxw_format* date_ = nullptr;
  std::map<std::string, lxw_format*> currencies_;
};

XlsxBook::XlsxBook(const std::filesystem::path& target, std::vector<std::string> headings)
    : book_(std::make_unique<Workbook>(target, std::move(headings))) {}

XlsxBook::~XlsxBook() = default;

void XlsxBook::beginRow() {
  book_->beginRow();
}

void XlsxBook::text(std::size_t column, std::string text) {
  book_->writeText(column, std::move(text));
}

void XlsxBook::number(std::size_t column, double number) {
  book_->writeNumber(column, number, nullptr);
}

void XlsxBook::money(std::size_t column, double amount, std::string currency) {
  book_->writeNumber(column, amount, book_->currencyFormat(std::move(currency)));
}

void XlsxBook::duration(std::size_t column, double seconds) {
  book_->writeNumber(column, seconds / kSecondsOfDay, book_->durationFormat());
}

void XlsxBook::dateTime(std::size_t column, base::DateTime moment) {
  book_->writeNumber(column, moment.serial(), book_->dateTimeFormat());
}

void XlsxBook::date(std::size_t column, base::DateTime day) {
  book_->writeNumber(column, day.serial(), book_->dateFormat());
}

void XlsxBook::close() {
  book_->close();
}

std::unique_ptr<XlsxBook> openXlsx(const std::filesystem::path& target, std::vector<std::string> headings,
                                   platform::Operator& person) {
  try {
    return std::make_unique<XlsxBook>(target, std::move(headings));
  } catch (const std::system_error&) {
    person.messageBox("Can't open");
    return nullptr;
  }
}

}  // namespace folders
