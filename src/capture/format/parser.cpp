#include "capture/format/parser.h"

#include <re2/re2.h>

#include <algorithm>
#include <utility>

#include "base/codepage.h"
#include "base/text.h"
#include "capture/format/call_reader.h"
#include "capture/format/clean.h"
#include "capture/format/definition.h"
#include "capture/framing/line_framer.h"
#include "capture/merge/call_group.h"
#include "capture/merge/dialogs.h"
#include "capture/merge/merged_calls.h"

namespace capture {

namespace {

using Results = std::vector<LineResult>;

int codepageOf(const Format& format, const SourceSettings& settings) {
  const std::string& name = settings.encoding.empty() ? format.encoding : settings.encoding;
  const auto codepage = codepageByName(name);
  if (!codepage) throw SettingError("'" + name + "' is no code page; they are named like cp1252");
  return *codepage;
}

RuleSettings rulesOf(const SourceSettings& settings) {
  RuleSettings rules;
  rules.trunks = settings.trunks;
  if (!settings.extensions.empty()) {
    try {
      rules.extensions = makePattern(settings.extensions);
    } catch (const std::invalid_argument& fault) {
      throw SettingError(std::string("extensions: ") + fault.what());
    }
  }
  return rules;
}

void order(std::optional<ClockField>& field, const std::string& dateOrder) {
  if (!field) return;
  for (TimeForm& form : field->forms) form = form.ordered(dateOrder);
}

CallClock clockOf(const Format& format, const SourceSettings& settings) {
  TimeRules rules = format.times;
  if (!settings.time.empty()) rules.is = settings.time == "end" ? TimeRules::Is::End : TimeRules::Is::Start;
  if (!settings.utc.empty()) rules.utc = settings.utc == "true";
  for (auto* field : {&rules.date, &rules.begin, &rules.answer, &rules.end}) order(*field, settings.dateOrder);
  return {std::move(rules), Zone(settings.zone), settings.clock == "12"};
}

LineRules linesOf(const Format& format, const SourceSettings& settings) {
  LineRules rules = format.lines;
  for (HeadingRule& heading : rules.headings) {
    for (TimeForm& form : heading.forms) form = form.ordered(settings.dateOrder);
  }
  return rules;
}

}  // namespace

class Parser::Reader {
 public:
  Reader(std::shared_ptr<const Format> format, const SourceSettings& settings)
      : format_(std::move(format)),
        codepage_(codepageOf(*format_, settings)),
        rules_(rulesOf(settings)),
        lines_(linesOf(*format_, settings)),
        calls_(format_, rules_, clockOf(*format_, settings), settings.stripAccess, codepage_),
        window_(settings.window.empty() ? format_->group.window : parseWindow(settings.window)),
        groups_(window_),
        merged_(window_),
        merges_(settings.mode == "merge"),
        blank_(format_->fieldNames.size()) {}

  [[nodiscard]] int codepage() const { return codepage_; }

  void line(std::uint64_t position, std::string_view bytes, std::chrono::sys_seconds arrived, Results& out) {
    tick(arrived, out);
    arrived_ = arrived;
    calls_.clock().arrive(arrived);
    LineResult result;
    result.position = position;
    if (bytes.size() >= kLongestLine) {
      end(std::move(result), Outcome::Unknown, "the line is too long", out);
      return;
    }
    const std::string text = isUtf8(bytes) ? std::string(bytes) : base::decode(bytes, codepage_);
    result.missing = missingBefore(text);
    if (const auto* block = std::get_if<BlockLayout>(&format_->layout)) {
      blockLine(*block, text, std::move(result), out);
    } else {
      singleLine(text, std::move(result), out);
    }
  }

  [[nodiscard]] std::optional<std::chrono::sys_seconds> due() const {
    const auto group = groups_.due();
    const auto merged = merged_.due();
    if (!group || !merged) return group ? group : merged;
    return std::min(*group, *merged);
  }
  void tick(std::chrono::sys_seconds now, Results& out) {
    groups_.settle(now, out);
    merged_.settle(now, out);
  }
  void finish(Results& out) {
    groups_.settleAll(out);
    merged_.settleAll(out);
  }

 private:
  static void end(LineResult result, Outcome outcome, std::string why, Results& out) {
    result.outcome = outcome;
    result.reason = std::move(why);
    out.push_back(std::move(result));
  }

  void singleLine(const std::string& text, LineResult result, Results& out) {
    if (base::trim(text).empty()) {
      end(std::move(result), Outcome::Skipped, "the line is blank", out);
    } else if (!byPattern(text, result, out)) {
      Fields fields = blank_;
      std::string fault = layoutFields(text, fields, result);
      if (result.outcome == Outcome::Heading) {
        end(std::move(result), Outcome::Heading, "names of the columns", out);
      } else if (!fault.empty()) {
        end(std::move(result), Outcome::Unknown, std::move(fault), out);
      } else {
        call(text, fields, std::move(result), out);
      }
    }
  }

  // How many numbers lie between the line's and that of the last numbered line.
  int missingBefore(const std::string& text) {
    if (!lines_.sequence) return 0;
    std::int64_t number = 0;
    if (!re2::RE2::PartialMatch(text, *lines_.sequence->pattern, &number) || number > lines_.sequence->last) return 0;
    const std::int64_t count = lines_.sequence->last + 1;
    const std::int64_t missing = sequence_ < 0 ? 0 : (number - sequence_ - 1 + count) % count;
    sequence_ = number;
    return static_cast<int>(missing);
  }

  // Headings, alarms and lines without a call; true when the line is one.
  bool byPattern(const std::string& text, LineResult& result, Results& out) {
    for (const HeadingRule& heading : lines_.headings) {
      re2::StringPiece date;
      if (!re2::RE2::PartialMatch(text, *heading.pattern, &date)) continue;
      const bool read = calls_.clock().takeHeading(heading, std::string_view(date.data(), date.size()));
      end(std::move(result), read ? Outcome::Heading : Outcome::Unknown, read ? "date" : "the date does not exist",
          out);
      return true;
    }
    for (const auto& [pattern, why] : lines_.alarm) {
      if (!fitsSomewhere(*pattern, text)) continue;
      end(std::move(result), Outcome::Alarm, why, out);
      return true;
    }
    for (const Pattern& pattern : lines_.skip) {
      if (!fitsSomewhere(*pattern, text)) continue;
      end(std::move(result), Outcome::Skipped, "no call", out);
      return true;
    }
    for (const Pattern& pattern : lines_.part) {
      if (!fitsSomewhere(*pattern, text)) continue;
      end(std::move(result), Outcome::Part, "belongs to another line", out);
      return true;
    }
    return false;
  }

  // The line's fields, or why it has none. A line that names the columns makes `result` a heading.
  std::string layoutFields(const std::string& text, Fields& fields, LineResult& result) {
    if (const auto* columns = std::get_if<ColumnsLayout>(&format_->layout)) return readLine(*columns, text, fields);
    if (const auto* csv = std::get_if<CsvLayout>(&format_->layout)) return readLine(*csv, text, fields);
    if (const auto* pattern = std::get_if<PatternLayout>(&format_->layout)) return readLine(*pattern, text, fields);
    if (const auto* json = std::get_if<JsonLayout>(&format_->layout)) return readLine(*json, text, fields);
    return headedFields(std::get<HeaderLayout>(format_->layout), text, fields, result);
  }

  std::string headedFields(const HeaderLayout& layout, const std::string& text, Fields& fields, LineResult& result) {
    const auto values = splitCsv(text, layout.separator);
    if (!values) return "a quote is not closed";
    if (values->front() == layout.first) {
      heading_ = *values;
      result.outcome = Outcome::Heading;
      return {};
    }
    if (heading_.empty()) return "no line with the names of the columns came before";
    if (values->size() != heading_.size()) {
      return "the line has " + std::to_string(values->size()) + " values, its heading " +
             std::to_string(heading_.size());
    }
    for (std::size_t i = 0; i < heading_.size(); ++i) {
      for (const auto& [name, field] : layout.fields) {
        if (name == heading_[i]) fields[field] = (*values)[i];
      }
    }
    return {};
  }

  // Lines of a block are parts of it; the blank line after them has the block's outcome.
  void blockLine(const BlockLayout& layout, const std::string& text, LineResult result, Results& out) {
    if (!base::trim(text).empty()) {
      if (!inBlock_) {
        block_ = blank_;
        blockText_ = 0;
        blockFault_.clear();
      }
      std::string fault = readLine(layout, text, !inBlock_, block_);
      if (blockFault_.empty()) blockFault_ = std::move(fault);
      blockText_ = blockText_ * 31 + std::hash<std::string>{}(text);
      inBlock_ = true;
      end(std::move(result), Outcome::Part, "line of a block", out);
    } else if (!std::exchange(inBlock_, false)) {
      end(std::move(result), Outcome::Skipped, "the line is blank", out);
    } else {
      call(std::to_string(blockText_), block_, std::move(result), out);
    }
  }

  // A line, or block, whose fields are known. `text` tells it from others.
  void call(const std::string& text, Fields& fields, LineResult result, Results& out) {
    for (const auto& [field, value] : format_->derived) fields[field] = value.of(fields, rules_);
    for (const RowRule& row : format_->rows) {
      if (!row.when.holds(fields, rules_)) continue;
      const std::string fault = row.timed ? calls_.timesFault(fields) : std::string();
      const bool sound = fault.empty();
      end(std::move(result), sound ? row.outcome : Outcome::Unknown, sound ? row.why : fault, out);
      return;
    }
    if (!blockFault_.empty()) {
      end(std::move(result), Outcome::Unknown, std::exchange(blockFault_, {}), out);
      return;
    }
    if (!format_->required.alternatives.empty() && !format_->required.holds(fields, rules_)) {
      end(std::move(result), Outcome::Unknown, "a field is missing", out);
      return;
    }
    if (isRepeat(text, fields)) {
      end(std::move(result), Outcome::Skipped, "repeats an earlier line", out);
      return;
    }
    if (format_->pieces && format_->pieces->when.holds(fields, rules_)) {
      piece(fields, std::move(result), out);
    } else if (format_->pair) {
      paired(fields, std::move(result), out);
    } else {
      plain(fields, std::move(result), out);
    }
  }

  bool isRepeat(const std::string& text, const Fields& fields) {
    if (format_->onceId && !fields[*format_->onceId].empty() && !seen_.add("1" + fields[*format_->onceId])) return true;
    for (const FieldIndex field : format_->repeatId) {
      if (!fields[field].empty()) return !seen_.add("2" + text);
    }
    return false;
  }

  // A piece of a long call: its own fields must be readable too.
  void piece(const Fields& fields, LineResult result, Results& out) {
    std::string fault = calls_.timesFault(fields);
    if (!fault.empty()) {
      end(std::move(result), Outcome::Unknown, std::move(fault), out);
      return;
    }
    calls_.addPiece(fields);
    end(std::move(result), Outcome::Part, "the call goes on", out);
  }

  void paired(Fields& fields, LineResult result, Results& out) {
    const PairRules& pair = *format_->pair;
    std::vector<std::string> ends;
    for (const FieldIndex field : pair.ends) ends.push_back(fields[field]);
    const std::string key = Dialogs::key(fields[pair.key], std::move(ends));
    if (pair.answer.holds(fields, rules_)) {
      if (!calls_.clock().instant(fields[pair.time])) {
        end(std::move(result), Outcome::Unknown, "the time of the call's answer cannot be read", out);
        return;
      }
      dialogs_.answered(key, fields);
      end(std::move(result), Outcome::Part, "the call's end gives its record", out);
    } else if (!pair.end.holds(fields, rules_)) {
      plain(fields, std::move(result), out);
    } else if (Dialogs::Dialog* dialog = dialogs_.find(key); dialog == nullptr) {
      end(std::move(result), Outcome::Unknown, "the answer of this call did not come before", out);
    } else if (std::exchange(dialog->ended, true)) {
      end(std::move(result), Outcome::Skipped, "the call has ended before", out);
    } else {
      finishPair(*dialog, fields, std::move(result), out);
    }
  }

  // The call of the answer, as long as until this end.
  void finishPair(const Dialogs::Dialog& dialog, const Fields& fields, LineResult result, Results& out) {
    Fields whole = dialog.fields;
    const FieldIndex time = format_->pair->time;
    const auto began = calls_.clock().instant(whole[time]);
    const auto ended = calls_.clock().instant(fields[time]);
    if (!began || !ended || *ended < *began) {
      end(std::move(result), Outcome::Unknown, "the time of the call's answer or end cannot be read", out);
      return;
    }
    CallTimes times;
    times.start = calls_.clock().zone().toLocal(*began);
    times.durationSeconds = (*ended - *began).count();
    deliver(calls_.read(whole, times, false), {}, std::move(result), out);
  }

  // What the parts of one call have in common; empty when the line does not tell it.
  [[nodiscard]] std::string partsKey(const Fields& fields) const {
    std::string key;
    bool told = false;
    for (const FieldIndex field : format_->parts.key) {
      key += fields[field] + '\n';
      told = told || !fields[field].empty();
    }
    return told ? key : std::string();
  }

  void plain(const Fields& fields, LineResult result, Results& out) {
    const std::string group = format_->group.key ? fields[*format_->group.key] : std::string();
    const std::string call = partsKey(fields);
    const bool later = group.empty() ? !call.empty() && parts_.find(call) != nullptr : groups_.answeredBefore(group);
    const bool merged = merges_ && !(group.empty() && call.empty());
    auto calls = calls_.read(fields, later && !merged);
    if (calls.value && !call.empty()) parts_[call] = true;
    if (merged && calls.value) {
      result.outcome = Outcome::Record;
      result.records = std::move(*calls.value);
      merged_.add(group.empty() ? call : group, std::move(result), arrived_, out);
    } else {
      deliver(std::move(calls), group, std::move(result), out);
    }
  }

  void deliver(Result<std::vector<Call>> calls, const std::string& group, LineResult result, Results& out) {
    if (!calls.value) {
      end(std::move(result), Outcome::Unknown, std::move(calls.fault), out);
      return;
    }
    result.outcome = Outcome::Record;
    result.records = std::move(*calls.value);
    if (group.empty()) {
      out.push_back(std::move(result));
    } else {
      groups_.add(group, std::move(result), arrived_, out);
    }
  }

  std::shared_ptr<const Format> format_;
  int codepage_;
  RuleSettings rules_;
  LineRules lines_;
  CallReader calls_;
  std::chrono::seconds window_;
  CallGroups groups_;
  MergedCalls merged_;
  bool merges_;
  Dialogs dialogs_;
  SeenTexts seen_;
  Memory<bool> parts_;
  Fields blank_;
  std::chrono::sys_seconds arrived_{};
  std::vector<std::string> heading_;
  bool inBlock_ = false;
  std::int64_t sequence_ = -1;  // number of the last numbered line
  Fields block_;
  std::size_t blockText_ = 0;
  std::string blockFault_;
};

Parser::Parser(std::shared_ptr<const Format> format, const SourceSettings& settings)
    : reader_(std::make_unique<Reader>(std::move(format), settings)) {}
Parser::~Parser() = default;
Parser::Parser(Parser&&) noexcept = default;
Parser& Parser::operator=(Parser&&) noexcept = default;

int Parser::codepage() const {
  return reader_->codepage();
}

std::vector<LineResult> Parser::line(std::uint64_t position, std::string_view text, std::chrono::sys_seconds arrived) {
  Results out;
  reader_->line(position, text, arrived, out);
  return out;
}

std::optional<std::chrono::sys_seconds> Parser::due() const {
  return reader_->due();
}

std::vector<LineResult> Parser::tick(std::chrono::sys_seconds now) {
  Results out;
  reader_->tick(now, out);
  return out;
}

std::vector<LineResult> Parser::finish() {
  Results out;
  reader_->finish(out);
  return out;
}

}  // namespace capture
