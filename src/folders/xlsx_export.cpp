#include <sys/stat.h>
#include <unistd.h>
#include <xlsxwriter.h>

#include <algorithm>
#include <map>
#include <memory>
#include <system_error>

#include "base/characters.h"
#include "folders/exports.h"
#include "folders/report_file.h"
#include "folders/view_log.h"

namespace folders {

namespace {

constexpr double kSecondsOfDay = 86400.0;
constexpr lxw_row_t kRowsPerSheet = LXW_ROW_MAX;  // 1048576, heading included
constexpr std::size_t kLongestText = 32767;       // bytes are never fewer than the characters the limit means

class Workbook {
 public:
  Workbook(FolderView& view, const std::filesystem::path& file) : view_(view) {
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    book_ = workbook_new_opt(file.c_str(), &options);
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

  void writeRow(std::span<const CellValue> row) {
    if (sheet_ == nullptr || nextRow_ == kRowsPerSheet) addSheet();
    for (std::size_t column = 0; column < row.size(); ++column) {
      if (!row[column].first->isNull()) writeCell(column, row[column]);
    }
    ++nextRow_;
  }

  // Throws when the file cannot be written.
  void close() {
    if (sheet_ == nullptr) addSheet();
    const lxw_error error = workbook_close(book_);
    book_ = nullptr;
    if (error != LXW_NO_ERROR) {
      throw std::system_error(std::make_error_code(std::errc::io_error), lxw_strerror(error));
    }
  }

 private:
  lxw_format* numberFormat(const std::string& pattern) {
    lxw_format* format = workbook_add_format(book_);
    format_set_num_format(format, pattern.c_str());
    return format;
  }

  lxw_format* currencyFormat(std::string currency) {
    std::erase(currency, '"');
    if (currency.empty()) return money_;
    auto& format = currencies_[currency];
    if (format == nullptr) format = numberFormat("#,##0.00 \"" + currency + "\"");
    return format;
  }

  void addSheet() {
    sheet_ = workbook_add_worksheet(book_, nullptr);
    nextRow_ = 1;
    const auto& columns = view_.columns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
      constexpr double kWidth = 18;  // characters
      worksheet_set_column(sheet_, columnNumber(i), columnNumber(i), kWidth, nullptr);
      worksheet_write_string(sheet_, 0, columnNumber(i), columns[i].caption.c_str(), heading_);
    }
    worksheet_freeze_panes(sheet_, 1, 0);
  }

  static lxw_col_t columnNumber(std::size_t column) { return static_cast<lxw_col_t>(column); }

  void writeNumber(std::size_t column, double number, lxw_format* format) {
    worksheet_write_number(sheet_, nextRow_, columnNumber(column), number, format);
  }

  void writeText(std::size_t column, std::string text) {
    if (text.empty()) return;
    if (text.size() > kLongestText) {
      text.resize(kLongestText);
      while (!base::startsCharacter(text.back())) text.pop_back();
      text.pop_back();
    }
    worksheet_write_string(sheet_, nextRow_, columnNumber(column), text.c_str(), nullptr);
  }

  void writeCell(std::size_t column, const CellValue& cell) {
    const jet::Value& value = *cell.first;
    const Format format = formatOfKind(view_.columns()[column].definition->kind).format;
    switch (format) {
      case Format::Money:
        return writeNumber(column, value.toDouble(), money_);
      case Format::MoneyCurrency:
        return writeNumber(column, value.toDouble(), currencyFormat(cell.second->toText()));
      case Format::Duration:
      case Format::Minutes:
        return writeNumber(column, value.toDouble() / kSecondsOfDay, duration_);
      case Format::Digits:
        if (const auto number = value.asNumber()) return writeNumber(column, *number, nullptr);
        break;
      case Format::DateTime:
      case Format::Date:
        if (const auto moment = value.toDateTime()) {
          return writeNumber(column, moment->serial(), format == Format::Date ? date_ : dateTime_);
        }
        break;
      default:
        break;
    }
    writeText(column, view_.text(column, cell));
  }

  FolderView& view_;
  lxw_workbook* book_ = nullptr;
  lxw_worksheet* sheet_ = nullptr;
  lxw_row_t nextRow_ = 0;
  lxw_format* heading_ = nullptr;
  lxw_format* money_ = nullptr;
  lxw_format* duration_ = nullptr;
  lxw_format* dateTime_ = nullptr;
  lxw_format* date_ = nullptr;
  std::map<std::string, lxw_format*> currencies_;
};

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

bool exportXlsx(FolderView& view, const std::filesystem::path& path) {
  std::unique_ptr<TemporaryFile> file;
  try {
    file = std::make_unique<TemporaryFile>(path);
  } catch (const std::system_error&) {
    view.services().person.messageBox("Can't open");
    return false;
  }
  Workbook book(view, file->path());
  view.forEachRow([&](std::span<const CellValue> row) {
    book.writeRow(row);
    return true;
  });
  book.close();
  file->moveTo(path);
  logWritten(view, path);
  return true;
}

}  // namespace folders
