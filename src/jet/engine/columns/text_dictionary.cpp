#include "jet/engine/columns/text_dictionary.h"

#include <cstring>

#include "jet/letters.h"

namespace jet::columns {

namespace {

// More different texts than this would take the memory that the database's own way to group does without.
constexpr std::size_t kMostTexts = std::size_t{1} << 20U;
constexpr std::size_t kMostBytes = std::size_t{64} << 20U;

// Equal for texts of ASCII that are equal under A-Z folding: bit 5 of every byte counts as set. `bits` gathers the bits
// of all bytes.
std::uint32_t plainHash(std::string_view text, std::uint64_t& bits) {
  constexpr std::uint64_t kFold = 0x2020202020202020ULL;
  constexpr std::uint64_t kMix = 0x9FB21C651E98DF25ULL;
  std::uint64_t state = text.size() * kMix;
  while (!text.empty()) {
    std::uint64_t word = 0;
    const std::size_t bytes = text.size() < sizeof word ? text.size() : sizeof word;
    std::memcpy(&word, text.data(), bytes);
    bits |= word;
    state = (state ^ (word | kFold)) * kMix;
    state ^= state >> 32U;
    text.remove_prefix(bytes);
  }
  return static_cast<std::uint32_t>(state);
}

// Equal for texts that are equal by their letters.
std::uint32_t foldedHash(std::string_view text) {
  constexpr std::uint64_t kBeyondAscii = 0x8080808080808080ULL;
  std::uint64_t bits = 0;
  const std::uint32_t hash = plainHash(text, bits);
  return (bits & kBeyondAscii) == 0 ? hash : plainHash(foldedText(text), bits);
}

}  // namespace

std::uint32_t TextDictionary::codeOf(std::string_view text) {
  const std::uint32_t hash = foldedHash(text);
  const std::size_t mask = slots_.size() - 1;
  std::uint32_t group = 0;
  std::size_t place = hash & mask;
  for (; slots_[place].code != 0; place = (place + 1) & mask) {
    const Slot& slot = slots_[place];
    if (slot.hash != hash) continue;
    const std::string_view known = this->text(slot.code);
    if (known == text) return slot.code;
    if (group == 0 && equalLetters(known, text)) group = groupOf(slot.code);
  }
  return add(text, hash, group, place);
}

std::uint32_t TextDictionary::add(std::string_view text, std::uint32_t hash, std::uint32_t group, std::size_t slot) {
  if (size() >= kMostTexts || texts_.size() + text.size() > kMostBytes) return 0;
  const auto code = static_cast<std::uint32_t>(size() + 1);
  texts_ += text;
  starts_.push_back(static_cast<std::uint32_t>(texts_.size()));
  groups_.push_back(group == 0 ? code : group);
  slots_[slot] = {hash, code};
  if (size() * 2 > slots_.size()) grow();
  return code;
}

void TextDictionary::grow() {
  std::vector<Slot> larger(slots_.size() * 4);
  const std::size_t mask = larger.size() - 1;
  for (const Slot& slot : slots_) {
    if (slot.code == 0) continue;
    std::size_t place = slot.hash & mask;
    while (larger[place].code != 0) place = (place + 1) & mask;
    larger[place] = slot;
  }
  slots_ = std::move(larger);
}

}  // namespace jet::columns
