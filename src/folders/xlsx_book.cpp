#include "folders/xlsx_book.h"

#include <sys/stat.h>
#include <unistd.h>
#include <xlsxwriter.h>

#include <map>
#include <system_error>

#include "base/characters.h"
#include "folders/report_file.h"

namespace folders {

namespace {

constexpr double kSecondsOfDay = 86400.0;
constexpr lxw_row_t kRowsPerSheet = LXW_ROW_MAX;  // 1048576, heading included
constexpr std::size_t kLongestText = 32767;       // bytes are never fewer than the characters the limit means

lxw_col_t columnNumber(std::size_t column) {
  return static_cast<lxw_col_t>(column);
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
    if (book_ == nullptr) throw std::system_error(std::make_error_code(std::errc::not_enough_memory));
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
    const lxw_error error = workbook_close(book_);
    book_ = nullptr;
    if (error != LXW_NO_ERROR) {
      throw std::system_error(std::make_error_code(std::errc::io_error), lxw_strerror(error));
    }
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
