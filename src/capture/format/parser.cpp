#include "capture/format/parser.h"

#include "capture/format/format.h"

namespace capture {

class Format {};

class Parser::Reader {};

Parser::Parser(std::shared_ptr<const Format> /*format*/, const SourceSettings& /*settings*/) {}
Parser::~Parser() = default;
Parser::Parser(Parser&&) noexcept = default;
Parser& Parser::operator=(Parser&&) noexcept = default;

int Parser::codepage() const {
  return 1252;
}

std::vector<LineResult> Parser::line(std::uint64_t position, std::string_view /*text*/,
                                     std::chrono::sys_seconds /*arrived*/) {
  return {{.position = position, .outcome = Outcome::Unknown, .records = {}, .reason = {}}};
}

std::optional<std::chrono::sys_seconds> Parser::due() const {
  return std::nullopt;
}

std::vector<LineResult> Parser::tick(std::chrono::sys_seconds /*now*/) {
  return {};
}

std::vector<LineResult> Parser::finish() {
  return {};
}

FormatLibrary FormatLibrary::standard() {
  return FormatLibrary({"/etc/tallymon/formats"});
}

std::shared_ptr<const Format> FormatLibrary::load(std::string_view /*name*/) const {
  return std::make_shared<const Format>();
}

}  // namespace capture
