#pragma once

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "base/printf.h"

namespace base {

// Why something that a person asked for was not done, in every language: the text's key in the language file, its
// English, and what is filled in. Made where no language is at hand; foundation/refusal_text.h gives the text.
class Refusal {
 public:
  template <typename... Arguments>
  Refusal(std::string_view key, std::string_view english, const Arguments&... arguments)
      : key_(key), arguments_{own(arguments)...}, english_(in(english)) {}
  virtual ~Refusal() = default;
  Refusal(const Refusal&) = default;
  Refusal& operator=(const Refusal&) = default;

  [[nodiscard]] const std::string& key() const { return key_; }
  [[nodiscard]] const std::string& english() const { return english_; }
  // The text by a pattern of another language.
  [[nodiscard]] std::string in(std::string_view pattern) const {
    std::vector<FormatArgument> lent;
    for (const Argument& argument : arguments_) {
      lent.push_back(std::visit([](const auto& value) { return detail::toArgument(value); }, argument));
    }
    return formatArguments(pattern, lent.data(), lent.size());
  }

 private:
  using Argument = std::variant<std::int64_t, double, std::string>;
  template <typename Value>
  static Argument own(const Value& value) {
    if constexpr (std::is_floating_point_v<Value>) {
      return static_cast<double>(value);
    } else if constexpr (std::is_integral_v<Value>) {
      return static_cast<std::int64_t>(value);
    } else {
      return std::string(std::string_view(value));
    }
  }

  std::string key_;
  std::vector<Argument> arguments_;
  std::string english_;
};

// An exception that is a refusal; its what() is the English.
template <typename Exception>
class Refused : public Exception, public Refusal {
 public:
  explicit Refused(Refusal refusal) : Exception(refusal.english()), Refusal(std::move(refusal)) {}
};

}  // namespace base
