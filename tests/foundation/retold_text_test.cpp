#include "foundation/retold_text.h"

#include <gtest/gtest.h>

#include "support/scripted_operator.h"

namespace foundation {
namespace {

TEST(RetoldText, IsSaidInTheLanguageInUse) {
  LanguageFile texts;
  ScriptedOperator person;
  ASSERT_TRUE(texts.LoadLanguageFile("Tallybook.lng"));
  const struct {
    const char* keys;
    const char* english;
    const char* romanian;
  } cases[] = {
      {"IDS_ALARM_", "Abroad: all calls is at 12.50 EUR, 75% or more of 16.00 EUR",
       "Abroad: toate apelurile a ajuns la 12.50 EUR, 75% sau mai mult din 16.00 EUR"},
      {"IDS_ALARM_", "a: b: 204 called 0040 (x) for 00:10:00", "a: b: 204 a sunat la 0040 (x): 00:10:00"},
      {"IDS_ALARM_", "Night: 204 called 0040 (25.11.2026 10:00)", "Night: 204 a sunat la 0040 (25.11.2026 10:00)"},
      {"IDS_ALARM_", "Night: over (all calls)", "Night: s-a încheiat (toate apelurile)"},
      {"IDS_ALARM_", "somebody wrote this", "somebody wrote this"},
      {"IDS_SAID_", "the line has 4 values, its heading 7", "rândul are 4 valori, antetul lui 7"},
      {"IDS_SAID_", "the line has 4 values", "rândul are 4 valori"},
      {"IDS_SAID_", "/dev/ttyS9: No such file or directory", "/dev/ttyS9: fișierul sau dosarul nu există"},
      {"IDS_SAID_", "reading failed: Permission denied", "citirea nu a reușit: acces interzis"},
      {"IDS_SAID_", "/etc/a.toml:7:12: the pattern '(ab' is wrong: missing ): (ab",
       "/etc/a.toml:7:12: tiparul „(ab” este greșit: lipsește ): (ab"},
      {"IDS_SAID_", "site.toml:3:1: source: \"port\" must be a whole number from 1 to 65535",
       "site.toml:3:1: source: „port” trebuie să fie un număr întreg de la 1 la 65535"},
      {"IDS_SAID_", "/etc/a.toml:3:5: Error while parsing key-value pair: expected '=', saw '['",
       "/etc/a.toml:3:5: greșeală de scriere la o pereche cheie = valoare: aici trebuie „=”, nu „[”"},
      {"IDS_SAID_", "a.toml:9:1: Error while parsing table header: encountered end-of-file",
       "a.toml:9:1: greșeală de scriere la antetul unui tabel: fișierul se termină prea devreme"},
      {"IDS_SAID_", "", ""},
  };
  for (const auto& one : cases) EXPECT_EQ(retold(one.english, one.keys, texts), one.english);
  texts.CheckCodepage("RO", person);
  for (const auto& one : cases) {
    EXPECT_EQ(retold(one.english, one.keys, texts), one.romanian);
    EXPECT_EQ(retold(one.romanian, one.keys, texts), one.romanian);
  }
  texts.CheckCodepage("EN", person);
  for (const auto& one : cases) EXPECT_EQ(retold(one.romanian, one.keys, texts), one.english);
}

}  // namespace
}  // namespace foundation
