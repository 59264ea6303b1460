// Any bytes as the frames of a process that reads an old file, and as the text of an exported table: rows that fit
// their table, or the error that says so.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "convert/conversion_error.h"
#include "convert/row_stream.h"
#include "convert/table_manifest.h"

namespace {

class CheckingSink : public convert::OldFileSink {
 public:
  void beginTable(const convert::OldTable& table) override {
    columns_ = table.definition.fields.size();
    if (table.oldTypes.size() != columns_) std::abort();
  }
  void row(const convert::OldRow& row) override {
    if (row.size() != columns_) std::abort();
    for (const jet::Value& value : row) static_cast<void>(value.toText());
  }
  void problem(const std::string& what) override { static_cast<void>(what); }
  void endTable() override { columns_ = 0; }

 private:
  std::size_t columns_ = 0;
};

void readStream(std::string_view bytes) {
  CheckingSink sink;
  convert::RowStreamParser parser(sink);
  try {
    parser.feed(bytes.substr(0, bytes.size() / 2));
    parser.feed(bytes.substr(bytes.size() / 2));
  } catch (const convert::StreamError&) {
  }
}

void readRows(convert::TextFormat format, const std::string& text) {
  const std::vector<jet::FieldDef> columns = {{.name = "t", .type = jet::Type::Text},
                                              {.name = "n", .type = jet::Type::Long},
                                              {.name = "x", .type = jet::Type::Double},
                                              {.name = "d", .type = jet::Type::DateTime},
                                              {.name = "b", .type = jet::Type::Boolean}};
  std::istringstream in(text);
  try {
    convert::OldRow row;
    const auto reader = convert::makeReader(format, in, columns);
    while (reader->next(row)) {
      if (row.size() != columns.size()) std::abort();
    }
  } catch (const convert::RowTextError&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  readStream(bytes);
  readRows(convert::TextFormat::Csv, "t,n,x,d,b\n" + bytes);
  readRows(convert::TextFormat::Json, bytes);
  try {
    static_cast<void>(convert::parseManifest(bytes));
  } catch (const convert::ConversionError&) {
  }
  return 0;
}
