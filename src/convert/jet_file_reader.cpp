#include "convert/jet_file_reader.h"

#include <mdbtools.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>

#include "base/datetime.h"
#include "base/printf.h"
#include "convert/jet_text.h"

namespace convert {

namespace {

constexpr std::size_t kMemoHeaderSize = 12;
// Upper bits of a row's place on its page are flags (deleted, moved).
constexpr int kOffsetMask = 0x1fff;

struct CloseFile {
  void operator()(MdbHandle* handle) const { mdb_close(handle); }
};
struct FreeTable {
  void operator()(MdbTableDef* table) const { mdb_free_tabledef(table); }
};
using FilePtr = std::unique_ptr<MdbHandle, CloseFile>;
using TablePtr = std::unique_ptr<MdbTableDef, FreeTable>;

template <typename Number>
Number numberAt(const unsigned char* bytes) {
  static_assert(std::endian::native == std::endian::little);
  Number value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

struct OldType {
  int type;
  const char* name;
  jet::Type kept;
};

// Types without an equal here are kept as text.
constexpr OldType kOldTypes[] = {
    {MDB_BOOL, "BOOLEAN", jet::Type::Boolean}, {MDB_BYTE, "BYTE", jet::Type::Long},
    {MDB_INT, "INT", jet::Type::Long},         {MDB_LONGINT, "LONG", jet::Type::Long},
    {MDB_MONEY, "MONEY", jet::Type::Double},   {MDB_FLOAT, "FLOAT", jet::Type::Double},
    {MDB_DOUBLE, "DOUBLE", jet::Type::Double}, {MDB_DATETIME, "SHORT_DATE_TIME", jet::Type::DateTime},
    {MDB_TEXT, "TEXT", jet::Type::Text},       {MDB_MEMO, "MEMO", jet::Type::Text},
    {MDB_BINARY, "BINARY", jet::Type::Text},   {MDB_OLE, "OLE", jet::Type::Text},
    {MDB_REPID, "GUID", jet::Type::Text},      {MDB_NUMERIC, "NUMERIC", jet::Type::Text},
};

const OldType& oldType(int type) {
  for (const OldType& known : kOldTypes) {
    if (known.type == type) return known;
  }
  static constexpr OldType unknown{0, "UNKNOWN", jet::Type::Text};
  return unknown;
}

std::string hexOf(const unsigned char* bytes, std::size_t size) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    text += digits[bytes[i] >> 4];
    text += digits[bytes[i] & 15];
  }
  return text;
}

class Reader {
 public:
  Reader(const std::filesystem::path& file, const JetReadOptions& options, OldFileSink& sink)
      : file_(file), options_(options), sink_(sink) {
    handle_.reset(mdb_open(file.c_str(), MDB_NOFLAGS));
    if (!handle_) fail("is not a readable Jet database");
  }

  void readAll() {
    if (mdb_read_catalog(handle_.get(), MDB_TABLE) == nullptr) fail("has no readable catalogue of tables");
    bool skipping = !options_.afterTable.empty();
    for (unsigned int i = 0; i < handle_->num_catalog; ++i) {
      auto* entry = static_cast<MdbCatalogEntry*>(g_ptr_array_index(handle_->catalog, i));
      if (entry->object_type != MDB_TABLE || !mdb_is_user_table(entry)) continue;
      const std::string name = entry->object_name;
      if (skipping) {
        skipping = name != options_.afterTable;
        continue;
      }
      if (options_.onlyTable.empty() || options_.onlyTable == name) readTable(entry);
    }
  }

 private:
  [[noreturn]] void fail(const std::string& what) const { throw std::runtime_error(file_.string() + " " + what + "."); }

  bool wide() const { return handle_->f->jet_version != MDB_VER_JET3; }

  std::string textOf(const unsigned char* bytes, std::size_t size) const {
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    if (wide()) return jet4Text(text);
    return jet3Text(text, options_.codepage, handle_->f->code_page);
  }

  void readTable(MdbCatalogEntry* entry) {
    const TablePtr table(mdb_read_table(entry));
    if (!table || mdb_read_columns(table.get()) == nullptr)
      fail(base::format("has no readable table %s", entry->object_name));
    mdb_rewind_table(table.get());
    sink_.beginTable(describe(*table));
    OldRow row(table->num_cols);
    // A page that a damaged file lists twice would give rows without end: a row needs at least two bytes.
    const auto limit = static_cast<std::int64_t>(std::filesystem::file_size(file_) / 2 + 1);
    std::int64_t count = 0;
    while (mdb_fetch_row(table.get())) {
      if (++count > limit) {
        sink_.problem("lists more rows than the file can hold; the rest is left out");
        break;
      }
      if (readRow(*table, row)) sink_.row(row);
    }
    sink_.endTable();
  }

  static MdbColumn& column(MdbTableDef& table, unsigned int index) {
    return *static_cast<MdbColumn*>(g_ptr_array_index(table.columns, index));
  }

  OldTable describe(MdbTableDef& table) const {
    OldTable described;
    described.definition.name = table.name;
    described.declaredRows = table.num_rows;
    for (unsigned int i = 0; i < table.num_cols; ++i) {
      const MdbColumn& old = column(table, i);
      const OldType& type = oldType(old.col_type);
      jet::FieldDef field{.name = old.name, .type = type.kept};
      field.autoIncrement = old.is_long_auto != 0 && old.col_type == MDB_LONGINT;
      // Widths of old texts are in bytes of their encoding.
      field.size = old.col_type == MDB_TEXT ? (wide() ? old.col_size / 2 : old.col_size) : 0;
      described.definition.fields.push_back(std::move(field));
      described.oldTypes.emplace_back(type.name);
    }
    return described;
  }

  // The row that mdb_fetch_row stopped at, taken apart again: only so are null and empty texts told apart.
  bool readRow(MdbTableDef& table, OldRow& row) {
    int start = 0;
    std::size_t size = 0;
    if (table.cur_row == 0 || mdb_find_row(handle_.get(), static_cast<int>(table.cur_row) - 1, &start, &size) != 0 ||
        size == 0) {
      sink_.problem("has a row whose place on its page is damaged; it is left out");
      return false;
    }
    start &= kOffsetMask;
    MdbField fields[MDB_MAX_COLS];
    const int count = mdb_crack_row(&table, start, size, fields);
    if (count < 0 || static_cast<unsigned int>(count) != table.num_cols) {
      sink_.problem("has a row that cannot be taken apart; it is left out");
      return false;
    }
    for (unsigned int i = 0; i < table.num_cols; ++i) row[i] = valueOf(column(table, i), fields[i]);
    return true;
  }

  jet::Value valueOf(MdbColumn& column, const MdbField& field) {
    if (column.col_type == MDB_BOOL) return field.is_null == 0;
    if (field.is_null != 0) return {};
    const auto* bytes = handle_->pg_buf + field.start;
    if (field.siz < 0 || field.start < 0 || field.start + field.siz > MDB_PGSIZE) {
      return damaged(column, "lies outside its page");
    }
    const auto size = static_cast<std::size_t>(field.siz);
    switch (column.col_type) {
      case MDB_BYTE:
        return size < 1 ? damaged(column, "is cut short") : jet::Value(static_cast<int>(bytes[0]));
      case MDB_INT:
        return size < 2 ? damaged(column, "is cut short") : jet::Value(static_cast<int>(numberAt<std::int16_t>(bytes)));
      case MDB_LONGINT:
        return size < 4 ? damaged(column, "is cut short") : jet::Value(numberAt<std::int32_t>(bytes));
      case MDB_FLOAT:
        return size < 4 ? damaged(column, "is cut short") : realOf(column, numberAt<float>(bytes));
      case MDB_DOUBLE:
        return size < 8 ? damaged(column, "is cut short") : realOf(column, numberAt<double>(bytes));
      case MDB_MONEY:
        // Ten-thousandths in 64 bits.
        return size < 8 ? damaged(column, "is cut short")
                        : jet::Value(static_cast<double>(numberAt<std::int64_t>(bytes)) / 10000.0);
      case MDB_DATETIME:
        return size < 8 ? damaged(column, "is cut short") : dateOf(column, numberAt<double>(bytes));
      case MDB_TEXT:
        return textOf(bytes, size);
      case MDB_MEMO:
        return longValue(column, bytes, size, true);
      case MDB_OLE:
        return longValue(column, bytes, size, false);
      case MDB_NUMERIC:
        return viaLibrary(column, field);
      default:
        return hexOf(bytes, size);
    }
  }

  jet::Value damaged(const MdbColumn& column, const char* how) {
    sink_.problem(base::format("column %s: a value %s and is left empty", column.name, how));
    return {};
  }

  jet::Value realOf(const MdbColumn& column, double value) {
    return std::isfinite(value) ? jet::Value(value) : damaged(column, "is not a number");
  }

  jet::Value dateOf(const MdbColumn& column, double days) {
    const auto date = base::DateTime::fromSerial(days);
    return date ? jet::Value(*date) : damaged(column, "is no date");
  }

  // Memos and objects: the row holds a header of 12 bytes, which may point to further pages.
  jet::Value longValue(MdbColumn& column, const unsigned char* bytes, std::size_t size, bool text) {
    if (size < kMemoHeaderSize) return size == 0 ? jet::Value("") : damaged(column, "has a header that is cut short");
    const std::size_t declared = numberAt<std::uint32_t>(bytes) & 0x3FFFFFFF;
    if (declared == 0) return "";
    // Inline values are after their header; the library's reader would take them from the page it has left since.
    if ((numberAt<std::uint32_t>(bytes) & 0x80000000U) != 0) {
      if (size - kMemoHeaderSize < declared) return damaged(column, "is cut short");
      return longText(bytes + kMemoHeaderSize, declared, text);
    }
    // The library takes the header from the bound buffer and reads each piece, of up to bind_size bytes, into it.
    longValueBuffer_.resize(handle_->bind_size);
    std::memcpy(longValueBuffer_.data(), bytes, kMemoHeaderSize);
    std::size_t length = 0;
    void* const bound = column.bind_ptr;
    column.bind_ptr = longValueBuffer_.data();
    const std::unique_ptr<void, decltype(&std::free)> content(mdb_ole_read_full(handle_.get(), &column, &length),
                                                              &std::free);
    column.bind_ptr = bound;
    if (!content || length < declared) return damaged(column, "has pages that cannot be read");
    return longText(static_cast<const unsigned char*>(content.get()), declared, text);
  }

  jet::Value longText(const unsigned char* bytes, std::size_t size, bool text) const {
    return text ? textOf(bytes, size) : hexOf(bytes, size);
  }

  jet::Value viaLibrary(const MdbColumn& column, const MdbField& field) {
    const std::unique_ptr<char, decltype(&std::free)> text(
        mdb_col_to_string(handle_.get(), handle_->pg_buf, field.start, column.col_type, field.siz), &std::free);
    return text ? jet::Value(text.get()) : damaged(column, "cannot be read");
  }

  std::filesystem::path file_;
  JetReadOptions options_;
  OldFileSink& sink_;
  FilePtr handle_;
  std::vector<unsigned char> longValueBuffer_;
};

}  // namespace

void readJetFile(const std::filesystem::path& file, const JetReadOptions& options, OldFileSink& sink) {
  Reader(file, options, sink).readAll();
}

}  // namespace convert
