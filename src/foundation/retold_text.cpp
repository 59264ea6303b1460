#include "foundation/retold_text.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <optional>
#include <vector>

#include "base/text.h"

namespace foundation {

namespace {

// What is between the placeholders of a text, one piece more than there are placeholders.
std::vector<std::string> piecesOf(std::string_view text) {
  std::vector<std::string> pieces(1);
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      pieces.back() += text[at];
    } else if (at + 1 < text.size() && text[at + 1] == '%') {
      pieces.back() += text[++at];
    } else {
      at = std::min(text.find_first_of("sd", at), text.size());
      pieces.emplace_back();
    }
  }
  return pieces;
}

std::size_t lettersOf(const std::vector<std::string>& pieces) {
  return std::accumulate(pieces.begin(), pieces.end(), std::size_t{0},
                         [](std::size_t sum, const std::string& piece) { return sum + piece.size(); });
}

// What is between the pieces in `said`; nothing when it has not all of them in their order.
std::optional<std::vector<std::string_view>> filledIn(std::string_view said, const std::vector<std::string>& pieces) {
  std::vector<std::string_view> values;
  if (!said.starts_with(pieces.front())) return std::nullopt;
  said.remove_prefix(pieces.front().size());
  for (std::size_t i = 1; i < pieces.size(); ++i) {
    const bool last = i + 1 == pieces.size();
    if (last && !said.ends_with(pieces[i])) return std::nullopt;
    const std::size_t at = last ? said.size() - pieces[i].size() : said.find(pieces[i]);
    if (at == std::string_view::npos) return std::nullopt;
    values.push_back(said.substr(0, at));
    said.remove_prefix(at + pieces[i].size());
  }
  if (!said.empty()) return std::nullopt;
  return values;
}

}  // namespace

Retelling::Retelling(std::string_view keys, const LanguageFile& texts) : texts_(texts) {
  for (const TRANSLATE_ITEM& item : texts.allTexts()) {
    if (!std::string_view(item.key).starts_with(keys)) continue;
    std::vector<std::string> pieces = piecesOf(item.text);
    if (lettersOf(pieces) > 0) known_.push_back({item.key, std::move(pieces)});  // others would be any text
  }
  std::ranges::stable_sort(known_, std::greater(), [](const Known& known) { return lettersOf(known.pieces); });
}

std::string Retelling::operator()(std::string_view said) const {
  for (const Known& known : known_) {
    const auto values = filledIn(said, known.pieces);
    if (!values) continue;
    const std::vector<std::string> own = piecesOf(texts_.Translate(known.key));
    if (own.size() != known.pieces.size()) continue;
    std::string told = own.front();
    for (std::size_t i = 0; i < values->size(); ++i) told += (*this)((*values)[i]) + own[i + 1];
    return told;
  }
  return std::string(said);
}

std::vector<std::vector<std::string>> Retelling::saidWith(std::string_view word) const {
  std::vector<std::vector<std::string>> found;
  const std::string sought = base::fold(word);
  for (const Known& known : known_) {
    const std::vector<std::string> own = piecesOf(texts_.Translate(known.key));
    const auto holds = [&sought](const std::string& piece) {
      return base::fold(piece).find(sought) != std::string::npos;
    };
    if (own != known.pieces && std::ranges::any_of(own, holds)) found.push_back(known.pieces);
  }
  return found;
}

std::string retold(std::string_view said, std::string_view keys, const LanguageFile& texts) {
  return Retelling(keys, texts)(said);
}

}  // namespace foundation
