#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace jet::memory {

// Finds the texts of one column that contain a text: the numbers of 100,000 contacts in a microsecond or two.
//
// Of every text the grams (runs of kGram bytes) at every kStep-th place are kept, hashed into buckets. A text that is
// long enough contains, within any kStep places one after the other, one such gram wherever it lies; of all these
// places those with the fewest entries are looked at. What they give is compared with the texts themselves, so that the
// answer is exact. Shorter texts are looked for in all the texts, which lie one after the other.
class ContainsIndex {
 public:
  // Texts are folded by the caller (base::fold), as are those that are looked for.
  void add(std::int64_t key, std::string_view foldedText);
  void finish();  // after the last add; then find() may be called

  // The keys of the texts that contain it, ascending if they were added so.
  void find(std::string_view foldedText, std::vector<std::int64_t>& keys) const;

  [[nodiscard]] std::size_t bytes() const;  // of memory
  [[nodiscard]] std::size_t size() const { return keys_.size(); }

 private:
  static constexpr std::size_t kGram = 6;
  static constexpr std::size_t kStep = 3;

  [[nodiscard]] std::string_view text(std::size_t index) const;
  [[nodiscard]] std::size_t bucket(const char* gram) const;
  void findByGrams(std::string_view wanted, std::vector<std::int64_t>& keys) const;
  void findByReading(std::string_view wanted, std::vector<std::int64_t>& keys) const;

  std::string texts_;                        // each followed by a zero byte
  std::vector<std::uint32_t> starts_;        // of the texts, and their end
  std::vector<std::int64_t> keys_;           // of the texts
  std::vector<std::uint32_t> bucketStarts_;  // into entries_, and their end
  std::vector<std::uint32_t> entries_;       // texts, bucket after bucket
  std::size_t bucketBits_ = 0;
};

}  // namespace jet::memory
