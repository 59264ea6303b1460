#include "jet/engine/memory/contains_index.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>

namespace jet::memory {

void ContainsIndex::add(std::int64_t key, std::string_view foldedText) {
  starts_.push_back(static_cast<std::uint32_t>(texts_.size()));
  keys_.push_back(key);
  texts_ += foldedText;
  texts_ += '\0';
}

std::string_view ContainsIndex::text(std::size_t index) const {
  return std::string_view(texts_).substr(starts_[index], starts_[index + 1] - starts_[index] - 1);
}

std::size_t ContainsIndex::bucket(const char* gram) const {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, gram, kGram);
  return static_cast<std::size_t>((bytes * 0x9E3779B97F4A7C15ULL) >> (64 - bucketBits_));
}

void ContainsIndex::finish() {
  starts_.push_back(static_cast<std::uint32_t>(texts_.size()));
  texts_.shrink_to_fit();
  starts_.shrink_to_fit();
  keys_.shrink_to_fit();
  const std::size_t expected = texts_.size() / kStep;
  bucketBits_ = 8;
  while ((std::size_t{1} << bucketBits_) < expected && bucketBits_ < 24) ++bucketBits_;
  bucketStarts_.assign((std::size_t{1} << bucketBits_) + 1, 0);
  const auto forEachGram = [this](const auto& visit) {
    for (std::size_t i = 0; i < keys_.size(); ++i) {
      const std::string_view own = text(i);
      for (std::size_t at = 0; at + kGram <= own.size(); at += kStep) visit(bucket(own.data() + at), i);
    }
  };
  forEachGram([this](std::size_t bucket, std::size_t) { ++bucketStarts_[bucket]; });
  // Each count becomes the end of its bucket, from which the bucket is filled backwards.
  std::partial_sum(bucketStarts_.begin(), bucketStarts_.end(), bucketStarts_.begin());
  entries_.resize(bucketStarts_.back());
  forEachGram([this](std::size_t bucket, std::size_t index) {
    entries_[--bucketStarts_[bucket]] = static_cast<std::uint32_t>(index);
  });
}

void ContainsIndex::find(std::string_view foldedText, std::vector<std::int64_t>& keys) const {
  keys.clear();
  if (foldedText.size() >= kGram + kStep - 1) {
    findByGrams(foldedText, keys);
  } else {
    findByReading(foldedText, keys);
  }
}

void ContainsIndex::findByGrams(std::string_view wanted, std::vector<std::int64_t>& keys) const {
  const auto size = [&](std::size_t place) {
    const std::size_t at = bucket(wanted.data() + place);
    return static_cast<std::size_t>(bucketStarts_[at + 1] - bucketStarts_[at]);
  };
  const auto sizeOf = [&](std::size_t first) {
    std::size_t sum = 0;
    for (std::size_t place = first; place < first + kStep; ++place) sum += size(place);
    return sum;
  };
  // The ends of telephone numbers are what tells them apart.
  std::size_t first = wanted.size() - kGram - kStep + 1;
  std::size_t fewest = sizeOf(first);
  constexpr std::size_t kFew = 8;
  for (std::size_t place = first; place-- > 0 && fewest > kFew;) {
    const std::size_t sum = sizeOf(place);
    if (sum < fewest) {
      fewest = sum;
      first = place;
    }
  }
  std::vector<std::uint32_t> found;
  for (std::size_t place = first; place < first + kStep; ++place) {
    const std::size_t at = bucket(wanted.data() + place);
    for (std::size_t entry = bucketStarts_[at]; entry < bucketStarts_[at + 1]; ++entry) {
      const std::uint32_t index = entries_[entry];
      if (text(index).find(wanted) != std::string_view::npos) found.push_back(index);
    }
  }
  std::sort(found.begin(), found.end());
  found.erase(std::unique(found.begin(), found.end()), found.end());
  for (const std::uint32_t index : found) keys.push_back(keys_[index]);
}

void ContainsIndex::findByReading(std::string_view wanted, std::vector<std::int64_t>& keys) const {
  const char* const begin = texts_.data();
  const char* const end = begin + texts_.size();
  const char* at = begin;
  while (at != end) {
    at = static_cast<const char*>(memmem(at, static_cast<std::size_t>(end - at), wanted.data(), wanted.size()));
    if (at == nullptr) return;
    const auto offset = static_cast<std::uint32_t>(at - begin);
    const auto next = std::upper_bound(starts_.begin(), starts_.end(), offset);
    keys.push_back(keys_[static_cast<std::size_t>(next - starts_.begin()) - 1]);
    at = begin + *next;
  }
}

std::size_t ContainsIndex::bytes() const {
  return texts_.capacity() + starts_.capacity() * sizeof(starts_[0]) + keys_.capacity() * sizeof(keys_[0]) +
         bucketStarts_.capacity() * sizeof(bucketStarts_[0]) + entries_.capacity() * sizeof(entries_[0]);
}

}  // namespace jet::memory
