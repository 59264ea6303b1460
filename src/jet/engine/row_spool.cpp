#include "jet/engine/row_spool.h"

#include <algorithm>
#include <string>

#include "jet/error.h"

namespace jet::engine {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 20U;

[[noreturn]] void fail() {
  throw Error(3183, "The disk that holds temporary files is full or cannot be written. Free some space and try again.");
}

}  // namespace

void RowSpool::add(const std::vector<Value>& row) {
  tail_.add(row);
  ++count_;
  if (tail_.bytes() >= kBlockBytes) write();
}

void RowSpool::finish() {
  tail_.finish();
  if (file_ && std::fflush(file_.get()) != 0) fail();
}

void RowSpool::write() {
  if (!file_) file_.reset(std::tmpfile());
  if (!file_) fail();
  Block block{tailFirst_, tail_.count(), 0, tail_.content().size()};
  if (!blocks_.empty()) {
    const Block& last = blocks_.back();
    block.offset = last.offset + static_cast<std::int64_t>(last.bytes + last.rows * sizeof(std::uint32_t));
  }
  if (std::fwrite(tail_.content().data(), 1, block.bytes, file_.get()) != block.bytes ||
      std::fwrite(tail_.starts().data(), sizeof(std::uint32_t), block.rows, file_.get()) != block.rows) {
    fail();
  }
  blocks_.push_back(block);
  tail_ = memory::PackedRows();
  tailFirst_ = count_;
}

const memory::PackedRows& RowSpool::load(std::size_t place) {
  if (loaded_ == place) return held_;
  const Block& block = blocks_[place];
  std::string content(block.bytes, '\0');
  std::vector<std::uint32_t> starts(block.rows);
  if (std::fseek(file_.get(), static_cast<long>(block.offset), SEEK_SET) != 0 ||
      std::fread(content.data(), 1, block.bytes, file_.get()) != block.bytes ||
      std::fread(starts.data(), sizeof(std::uint32_t), block.rows, file_.get()) != block.rows) {
    throw Error(3000, "A temporary file cannot be read.");
  }
  held_ = memory::PackedRows(std::move(content), std::move(starts));
  loaded_ = place;
  return held_;
}

void RowSpool::read(std::size_t row, std::vector<Value>& cells) {
  if (row >= tailFirst_) return tail_.unpack(row - tailFirst_, cells);
  const auto behind = std::upper_bound(blocks_.begin(), blocks_.end(), row,
                                       [](std::size_t wanted, const Block& block) { return wanted < block.firstRow; });
  const auto place = static_cast<std::size_t>(behind - blocks_.begin()) - 1;
  load(place).unpack(row - blocks_[place].firstRow, cells);
}

}  // namespace jet::engine
