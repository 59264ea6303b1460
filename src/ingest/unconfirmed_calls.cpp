#include "ingest/unconfirmed_calls.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <utility>

namespace ingest {

namespace {

// Of senders that never come again.
constexpr std::size_t kMostKept = 200;
// Kinds of places in the file.
constexpr const char* kRow = "row";
constexpr const char* kKept = "kept";

std::string hexadecimal(std::span<const unsigned char> bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const unsigned char byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

}  // namespace

UnconfirmedCalls::UnconfirmedCalls(jet::Database& main, std::filesystem::path file)
    : main_(main), file_(std::move(file)) {
  read();
}

// The first line names the database; a call is a line of its transaction, its place and its bytes.
void UnconfirmedCalls::read() {
  std::ifstream in(file_);
  std::string line;
  if (!std::getline(in, line) || line != main_.path().string()) return;
  while (std::getline(in, line)) {
    Entry entry;
    std::string kind;
    if (!(std::istringstream(line) >> entry.transaction >> kind >> entry.place.number >> entry.record)) continue;
    entry.place.kind = kind == kKept ? Place::Kind::KeptFile : Place::Kind::Row;
    entries_.push_back(std::move(entry));
  }
}

void UnconfirmedCalls::write() const {
  if (file_.empty()) return;
  std::ofstream out(file_, std::ios::trunc);
  if (entries_.empty()) return;
  out << main_.path().string() << '\n';
  for (const auto& [transaction, place, record] : entries_) {
    out << transaction << ' ' << (place.kind == Place::Kind::KeptFile ? kKept : kRow) << ' ' << place.number << ' '
        << record << '\n';
  }
}

void UnconfirmedCalls::add(std::span<const unsigned char> record, Place place) {
  std::string transaction = main_.transactionName();
  if (transaction.empty()) return;
  if (entries_.size() == kMostKept) entries_.erase(entries_.begin());
  entries_.push_back({std::move(transaction), place, hexadecimal(record)});
  write();
}

void UnconfirmedCalls::confirmLast() {
  if (entries_.empty()) return;
  entries_.pop_back();
  write();
}

std::optional<UnconfirmedCalls::Place> UnconfirmedCalls::takeStored(std::span<const unsigned char> record) {
  if (entries_.empty()) return std::nullopt;
  const auto found = std::ranges::find(entries_, hexadecimal(record), &Entry::record);
  if (found == entries_.end()) return std::nullopt;
  std::optional<Place> place;
  if (main_.committed(found->transaction)) place = found->place;
  entries_.erase(found);
  write();
  return place;
}

}  // namespace ingest
