#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "capture/call.h"
#include "capture/format/format.h"
#include "capture/format/layout.h"
#include "capture/format/rules.h"
#include "capture/format/time_form.h"

namespace capture {

// A field and the forms that its time may have.
struct ClockField {
  FieldIndex field = 0;
  std::vector<TimeForm> forms;
};

struct DurationField {
  FieldIndex field = 0;
  std::vector<DurationForm> forms;  // the first that fits
  std::vector<std::string> blanks;  // texts that mean no duration
};

// The times of a call.
struct TimeRules {
  enum class Is { Start, End };
  enum class Year { Nearest, Heading };

  Is is = Is::Start;          // what `begin` (or `date` and `time`) is
  bool utc = false;           // times that name no zone are UTC
  Year year = Year::Nearest;  // where a year comes from when the line has none
  std::optional<ClockField> date;
  std::optional<ClockField> time;
  std::optional<ClockField> begin;   // date and time in one field
  std::optional<ClockField> answer;  // when talk began
  std::optional<ClockField> end;
  std::optional<ClockField> stamp;  // local end of the call, used when a time above is missing or its clock not set
  Condition lastDate;               // lines that have no date and take the last one that was seen
  std::optional<DurationField> duration;  // talk time
  std::optional<DurationField> ring;
  std::optional<DurationField> total;  // ring and talk together
};

// What a line becomes before it is read as a call.
struct RowRule {
  Outcome outcome = Outcome::Skipped;
  Condition when;
  std::string why;
  bool timed = false;  // only when the times of the line can be read, else it is unknown
};

struct DirectionRule {
  enum class Is { Outgoing, Incoming, Internal, Both, AsBefore };
  Is is = Is::Outgoing;
  Condition when;
};

// Who and where, in each direction.
struct PartyRules {
  Value extension;
  Value trunk;
  Value number;
};

struct Marks {
  Condition unanswered;      // whatever the duration says
  Condition ringIsDuration;  // unanswered ones whose duration is the ring time
  Condition busy;
  Condition failed;
  Condition voicemail;
  Condition conference;
  Condition forwarded;
  Condition transferred;
  bool redirects = true;  // forwarded and transferred calls are redirected ones
};

// A heading that gives the date to the lines after it.
struct HeadingRule {
  Pattern pattern;  // its group `date` is read
  std::vector<TimeForm> forms;
};

// The exchange numbers its lines.
struct SequenceRule {
  Pattern pattern;        // its group is the number
  std::int64_t last = 0;  // the number that 0 follows
};

struct LineRules {
  std::vector<Pattern> skip;
  std::vector<Pattern> part;
  std::vector<std::pair<Pattern, std::string>> alarm;  // with the text for the operator
  std::vector<HeadingRule> headings;
  std::optional<SequenceRule> sequence;
};

// Lines of one call.
struct GroupRules {
  std::optional<FieldIndex> key;
  std::chrono::seconds window{600};
};

// Later lines of one call are transferred parts. `chain`: they carry the time of the whole call, so each begins where
// the one before ended, `pauses` (seconds on hold ...) included.
struct PartRules {
  std::vector<FieldIndex> key;
  bool chain = false;
  std::vector<FieldIndex> pauses;
};

// A line that stands for a piece of a call that has not ended: its seconds go to the next line with the same fields.
struct PieceRules {
  Condition when;
  std::int64_t seconds = 0;
  std::vector<FieldIndex> same;
};

// Calls told in two lines, the answer and the end.
struct PairRules {
  Condition answer;
  Condition end;
  FieldIndex key = 0;
  std::vector<FieldIndex> ends;  // both sides' tags, in either order
  FieldIndex time = 0;           // epoch seconds of both lines
};

struct FormatTest {
  struct Expected {
    Outcome outcome = Outcome::Unknown;
    std::vector<Call> records;
  };
  std::vector<std::string> lines;
  std::string arrived;  // local, "YYYY-MM-DD HH:MM:SS"
  std::vector<std::pair<std::string, std::string>> settings;
  std::vector<Expected> gives;  // one a line
  std::string place;            // file and line of the test
};

class Format {
 public:
  std::string name;
  std::string title;
  std::string encoding = "cp1252";
  std::vector<std::string> fieldNames;  // the layout's, then the derived ones
  Layout layout;
  LineRules lines;
  std::vector<std::pair<FieldIndex, Value>> derived;
  std::vector<RowRule> rows;
  Condition required;  // what a line must fulfil to be a call
  std::vector<DirectionRule> directions;
  std::optional<FieldIndex> before;  // AsBefore: the part before with the same text in this field
  TimeRules times;
  PartyRules outgoing;
  PartyRules incoming;
  PartyRules internal;
  Value account;
  Value cd;
  Value pulses;
  Value forwarder;  // extension of a call with a trunk on both sides
  Marks marks;
  std::vector<FieldIndex> repeatId;  // filled: an exact repeat of the line is dropped
  std::optional<FieldIndex> onceId;  // a further line with the same text here is dropped
  GroupRules group;
  PartRules parts;
  std::optional<PieceRules> pieces;
  std::optional<PairRules> pair;
  std::vector<FormatTest> tests;

  // True when day and month may be in either order.
  [[nodiscard]] bool hasDateOrder() const;
  // True when the setting `trunks` (or `extensions`) decides about directions.
  [[nodiscard]] bool asksTrunks() const;
  [[nodiscard]] bool asksExtensions() const;
};

}  // namespace capture
