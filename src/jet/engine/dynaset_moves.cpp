#include <algorithm>

#include "jet/engine/dynaset.h"
#include "jet/error.h"

namespace jet::engine {

namespace {

// Keys fetched at a time. The read that fetches them is short, so writers never wait for a loop over the recordset.
constexpr std::int64_t kKeyBatch = 400;

constexpr std::int64_t kBeforeAllKeys = INT64_MIN;

}  // namespace

void Dynaset::settle() {
  if (place_ == Place::Unset) moveFirst();
}

void Dynaset::become(Place place) {
  place_ = place;
  readable_ = false;
  keyIndex_.reset();
  position_.reset();
}

void Dynaset::takeRow(const Execution& execution) {
  if (execution.width() != names_.size()) setFields();
  key_ = execution.key();
  for (std::size_t i = 0; i < row_.size(); ++i) row_[i] = execution.value(i);
  place_ = Place::Row;
  readable_ = true;
}

// Makes the row of that key current; false, and the row unreadable, when it is deleted.
bool Dynaset::goTo(std::int64_t key) {
  Execution read = engine_.statements().open(Role::Read, text_, nullptr, {key});
  if (read.step()) {
    takeRow(read);
    return true;
  }
  key_ = key;
  place_ = Place::Row;
  readable_ = false;
  return false;
}

bool Dynaset::fetchAhead(std::int64_t after) {
  ahead_.clear();
  aheadNext_ = 0;
  Execution keys = engine_.statements().open(Role::NextKeys, text_, nullptr, {after, kKeyBatch});
  while (keys.step()) ahead_.push_back(keys.key());
  return !ahead_.empty();
}

std::optional<std::int64_t> Dynaset::keyBefore(std::int64_t key) {
  Execution keys = engine_.statements().open(Role::PreviousKeys, text_, nullptr, {key, 1});
  if (!keys.step()) return std::nullopt;
  return keys.key();
}

void Dynaset::loadKeys() {
  if (keysLoaded_) return;
  keys_.clear();
  Execution keys = engine_.statements().open(Role::OrderedKeys, text_);
  while (keys.step()) keys_.push_back(keys.key());
  keysLoaded_ = true;
  seen_ = static_cast<std::int64_t>(keys_.size());
}

void Dynaset::orderedTo(std::size_t index) {
  keyIndex_ = index;
  goTo(keys_[index]);
}

// After a find the place among the keys is not known yet.
void Dynaset::findIndexOfKey() {
  if (keyIndex_) return;
  loadKeys();
  const auto found = std::find(keys_.begin(), keys_.end(), key_);
  if (found != keys_.end()) {
    keyIndex_ = static_cast<std::size_t>(found - keys_.begin());
    return;
  }
  // A row that came into the set after its keys were fetched comes after them.
  keys_.push_back(key_);
  keyIndex_ = keys_.size() - 1;
  seen_ = static_cast<std::int64_t>(keys_.size());
}

bool Dynaset::bof() {
  settle();
  return place_ == Place::Bof || (place_ == Place::Eof && seen_ == 0);
}

bool Dynaset::eof() {
  settle();
  return place_ == Place::Eof || (place_ == Place::Bof && seen_ == 0);
}

void Dynaset::moveFirst() {
  leaveEdit();
  if (ordered_) {
    keysLoaded_ = false;
    loadKeys();
    if (keys_.empty()) return become(Place::Eof);
    return orderedTo(0);
  }
  if (!fetchAhead(kBeforeAllKeys)) {
    seen_ = 0;
    return become(Place::Eof);
  }
  goTo(ahead_[aheadNext_++]);
  position_ = 0;
  seen_ = std::max<std::int64_t>(seen_, 1);
}

void Dynaset::moveLast() {
  leaveEdit();
  if (ordered_) {
    loadKeys();
    if (keys_.empty()) return become(Place::Eof);
    return orderedTo(keys_.size() - 1);
  }
  const auto last = keyBefore(INT64_MAX);
  if (!last) {
    seen_ = 0;
    return become(Place::Eof);
  }
  ahead_.clear();
  aheadNext_ = 0;
  goTo(*last);
  Execution count = engine_.statements().open(Role::Count, text_);
  count.step();
  seen_ = count.key();
  position_ = seen_ - 1;
}

void Dynaset::moveNext() {
  settle();
  leaveEdit();
  if (place_ == Place::Eof) failNoRow();
  if (place_ == Place::Bof) return moveFirst();
  if (ordered_) {
    findIndexOfKey();
    if (*keyIndex_ + 1 >= keys_.size()) return become(Place::Eof);
    return orderedTo(*keyIndex_ + 1);
  }
  const bool known = aheadNext_ < ahead_.size() && ahead_[aheadNext_] > key_;
  if (!known && !fetchAhead(key_)) return become(Place::Eof);
  goTo(ahead_[aheadNext_++]);
  if (position_) seen_ = std::max(seen_, ++*position_ + 1);
}

void Dynaset::movePrevious() {
  settle();
  leaveEdit();
  if (place_ == Place::Bof || (place_ == Place::Eof && seen_ == 0)) failNoRow();
  if (place_ == Place::Eof) return moveLast();
  if (ordered_) {
    findIndexOfKey();
    if (*keyIndex_ == 0) return become(Place::Bof);
    return orderedTo(*keyIndex_ - 1);
  }
  ahead_.clear();
  aheadNext_ = 0;
  const auto before = keyBefore(key_);
  if (!before) return become(Place::Bof);
  goTo(*before);
  if (position_) --*position_;
}

std::int64_t Dynaset::recordCount() {
  settle();
  return seen_;
}

std::int64_t Dynaset::absolutePosition() {
  settle();
  if (place_ != Place::Row) return -1;
  if (ordered_) {
    findIndexOfKey();
    return static_cast<std::int64_t>(*keyIndex_);
  }
  if (!position_) {
    Execution count = engine_.statements().open(Role::CountBefore, text_, nullptr, {key_});
    count.step();
    position_ = count.key();
    seen_ = std::max(seen_, *position_ + 1);
  }
  return *position_;
}

}  // namespace jet::engine
