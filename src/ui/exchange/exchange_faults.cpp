#include "ui/exchange/exchange_faults.h"

#include <QRegularExpression>
#include <algorithm>
#include <span>

#include "foundation/retold_text.h"
#include "ui/exchange/exchange_fields.h"

namespace ui {

namespace {

// What is said of a key, whole; groups are filled into the text.
struct Fault {
  const char* said;
  const char* textKey;
};
constexpr Fault kFaults[] = {
    {"is missing", "IDS_SITE_EMPTY"},
    {"must not be empty", "IDS_SITE_EMPTY"},
    {"must be a whole number from (-?\\d+) to (\\d+)", "IDS_SITE_NUMBER"},
    {"must be letters, digits, - and _, (\\d+) at most", "IDS_SITE_ID"},
    {"is the id of two sources", "IDS_SITE_TWICE"},
    {"must be days and times, as .*", "IDS_SITE_HOURS"},
    {"must be an address of this machine, as .*", "IDS_SITE_ADDRESS"},
    {"is reached from other machines: give \"certificate\" and \"key\".*", "IDS_SITE_NEEDS_CERTIFICATE"},
    {"is reached from other machines: give a \"token\"", "IDS_SITE_NEEDS_TOKEN"},
    {"and \"key\" belong together", "IDS_SITE_CERTIFICATE"},
    {"must be speed, data bits, parity and stop bits, as .*", "IDS_SITE_LINE"},
    {"must have 5 to 8 data bits, parity N, E or O, and 1 or 2 stop bits", "IDS_SITE_LINE"},
    {"must be (\\d+) characters at most, without accents", "IDS_SITE_PASSWORD"},
    {"and secret must be single lines", "IDS_SITE_SINGLE_LINES"},
    {"must begin with a slash", "IDS_SITE_PATH"},
    {"must begin with http:// or https://", "IDS_SITE_URL"},
    {"cannot be read: (.*)", "IDS_SITE_FILE"},
};

const char* captionKeyIn(std::span<const ExchangeField> fields, const QString& key) {
  const auto found = std::ranges::find_if(fields, [&](const ExchangeField& field) { return key == field.key; });
  return found == fields.end() ? nullptr : found->captionKey;
}

// Of a key of the table; null when the page has no field for it.
const char* captionKeyOf(const QString& table, const QString& key) {
  for (const ExchangeTransport& transport : exchangeTransports()) {
    if (table == transport.key) return captionKeyIn(transport.fields, key);
  }
  if (table == "quiet") return captionKeyIn(quietFields(), key);
  return key == "id" ? "IDS_EXCHANGE_ID" : captionKeyIn(readingFields(), key);
}

}  // namespace

QString exchangeFault(const QString& said, const Texts& texts) {
  // "/etc/tallymon/tallymon.toml:7:12: listen: "port" must be ..."
  static const QRegularExpression kSaid(R"rx(^\S.*:\d+:\d+: (\w+): "(\w+)" (.*)$)rx",
                                        QRegularExpression::DotMatchesEverythingOption);
  const QRegularExpressionMatch parts = kSaid.match(said);
  const char* caption = parts.hasMatch() ? captionKeyOf(parts.captured(1), parts.captured(2)) : nullptr;
  if (caption == nullptr) return captureSaid(said, texts);
  for (const Fault& fault : kFaults) {
    const QRegularExpression whole(QRegularExpression::anchoredPattern(fault.said));
    const QRegularExpressionMatch match = whole.match(parts.captured(3));
    if (!match.hasMatch()) continue;
    return texts(caption) + ": " + texts.format(fault.textKey, fromQt(match.captured(1)), fromQt(match.captured(2)));
  }
  return captureSaid(said, texts);
}

QString captureSaid(const QString& said, const Texts& texts) {
  return toQt(foundation::retold(fromQt(said), "IDS_SAID_", texts.language()));
}

}  // namespace ui
