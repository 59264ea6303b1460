#include "analysis/trunk_verdict.h"

#include "base/printf.h"
#include "base/text.h"

namespace analysis {

namespace {

std::string peakSentence(const TrunkLoad& load, const foundation::LanguageFile& texts) {
  const auto lines = static_cast<int>(load.trunks.size());
  const std::string when = load.peakAt->format("%d.%m.%Y %H:%M:%S");
  if (!load.singleLines()) return base::format(texts.Translate("IDS_TRUNKS_BUNDLES"), load.peak, when);
  if (load.peak < lines) {
    return base::format(texts.Translate("IDS_TRUNKS_UNUSED"), lines - load.peak, lines, load.peak, when);
  }
  const std::int64_t busy = load.allBusySeconds;
  return base::format(texts.Translate("IDS_TRUNKS_ALL_BUSY"), lines,
                      base::format("%.2d:%.2d:%.2d", busy / 3600, busy / 60 % 60, busy % 60));
}

// "1,16", as the language writes it.
std::string decimalText(double number, const foundation::LanguageFile& texts) {
  const std::string separator = texts.Translate("IDS_DECIMAL_SEPARATOR");
  return base::replaceAll(base::format("%.2f", number), ".", separator.size() == 1 ? separator : ".");
}

}  // namespace

std::string trunkVerdict(const TrunkLoad& load, const foundation::LanguageFile& texts) {
  if (load.peak == 0) return texts.Translate("IDS_TRUNKS_NO_CALLS");
  return peakSentence(load, texts) + " " +
         base::format(texts.Translate("IDS_TRUNKS_NEEDED"), decimalText(load.erlangMax, texts), load.linesFor1Percent,
                      load.linesForTenthPercent);
}

}  // namespace analysis
