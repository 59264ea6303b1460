#include <algorithm>
#include <unordered_map>

#include "jet/engine/dynaset.h"
#include "jet/error.h"

namespace jet::engine {

bool Dynaset::findOne(Role role, std::initializer_list<std::int64_t> extras) {
  Execution find = engine_.statements().open(role, text_, &criteria_, extras);
  if (!find.step()) return false;
  takeRow(find);
  keyIndex_.reset();
  position_.reset();
  seen_ = std::max<std::int64_t>(seen_, 1);
  return true;
}

void Dynaset::findFirst(std::string_view criteria) {
  leaveEdit();
  engine_.versions().refresh();
  criteria_.assign(criteria);
  matchCriteria_.clear();
  noMatch_ = !findOne(Role::FindFirst, {});
}

void Dynaset::findNext(std::string_view criteria) {
  settle();
  leaveEdit();
  engine_.versions().refresh();
  criteria_.assign(criteria);
  if (place_ != Place::Row) {
    noMatch_ = true;
    return;
  }
  noMatch_ = ordered_ ? !findNextOrdered(criteria) : !findOne(Role::FindNext, {key_});
}

void Dynaset::loadMatches(std::string_view criteria) {
  matches_.clear();
  Execution keys = engine_.statements().open(Role::Matches, text_, &criteria_);
  while (keys.step()) matches_.push_back(keys.key());
  matchCriteria_ = criteria;
}

// Index into matches_ of the first one after the current row in the order of the set.
std::size_t Dynaset::firstMatchBehindCurrent() {
  const auto self = std::find(matches_.begin(), matches_.end(), key_);
  if (self != matches_.end()) return static_cast<std::size_t>(self - matches_.begin()) + 1;
  findIndexOfKey();
  std::unordered_map<std::int64_t, std::size_t> places;
  for (std::size_t i = 0; i < keys_.size(); ++i) places.emplace(keys_[i], i);
  for (std::size_t i = 0; i < matches_.size(); ++i) {
    const auto place = places.find(matches_[i]);
    if (place != places.end() && place->second > *keyIndex_) return i;
  }
  return matches_.size();
}

// A loop of findNext over an ordered set asks for the matches once; each is checked again when its turn comes.
bool Dynaset::findNextOrdered(std::string_view criteria) {
  if (matchCriteria_ != criteria || matchKey_ != key_) {
    loadMatches(criteria);
    matchNext_ = firstMatchBehindCurrent();
  }
  while (matchNext_ < matches_.size()) {
    const std::int64_t key = matches_[matchNext_++];
    if (findOne(Role::ReadMatching, {key})) {
      matchKey_ = key;
      return true;
    }
  }
  matchCriteria_.clear();
  return false;
}

}  // namespace jet::engine
