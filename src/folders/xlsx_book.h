#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "base/datetime.h"
#include "platform/operator.h"

namespace folders {

// A spreadsheet of rows under headings that is written from top to bottom, in constant memory, beside its place, and
// put there when it is complete. A further sheet is begun where one is full. Columns count from 0.
class XlsxBook {
 public:
  // Throws std::system_error when the folder cannot be written.
  XlsxBook(const std::filesystem::path& target, std::vector<std::string> headings);
  XlsxBook(const XlsxBook&) = delete;
  XlsxBook& operator=(const XlsxBook&) = delete;
  ~XlsxBook();  // without close: nothing is left behind

  // The next row; the calls below fill it.
  void beginRow();
  void text(std::size_t column, std::string text);
  void number(std::size_t column, double number);
  void money(std::size_t column, double amount, std::string currency = {});
  void duration(std::size_t column, double seconds);
  void dateTime(std::size_t column, base::DateTime moment);
  void date(std::size_t column, base::DateTime day);

  // Throws std::system_error when the file cannot be written; the target is as it was then.
  void close();

 private:
  class Workbook;
  std::unique_ptr<Workbook> book_;
};

// Null, after the message "Can't open", when the file cannot be made.
[[nodiscard]] std::unique_ptr<XlsxBook> openXlsx(const std::filesystem::path& target, std::vector<std::string> headings,
                                                 platform::Operator& person);

}  // namespace folders
