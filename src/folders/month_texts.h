#pragma once

#include <string>
#include <vector>

#include "folders/bar_chart.h"
#include "folders/month_figures.h"

namespace folders {

// The month's page as texts, the same for the browser and for paper.
class MonthTexts {
 public:
  MonthTexts(const MonthFigures& figures, const FolderServices& services, const ValueFormatter& formatter)
      : figures_(figures), services_(services), formatter_(formatter) {}

  [[nodiscard]] std::string title() const;
  // What the amounts are: the calls' price in the default currency, or their number in a month without prices.
  [[nodiscard]] std::string measure() const;
  // The comparison, headings first: each row a label, this month, and the other two with their change.
  [[nodiscard]] std::vector<std::string> comparisonHeadings() const;
  [[nodiscard]] std::vector<std::vector<std::string>> comparison() const;
  [[nodiscard]] std::vector<Bar> days() const;

  struct Dearest {
    std::string title;
    std::vector<Bar> bars;
  };
  [[nodiscard]] std::vector<Dearest> dearest() const;  // those that have any

  struct Sentence {
    std::string title;
    std::string text;
  };
  [[nodiscard]] std::vector<Sentence> sentences() const;
  [[nodiscard]] std::string heading(std::string_view key) const { return services_.texts.Translate(key); }

 private:
  [[nodiscard]] std::string money(double amount) const;
  void addAlarms(std::vector<Sentence>& sentences) const;
  [[nodiscard]] std::string change(double now, double then) const;

  const MonthFigures& figures_;
  const FolderServices& services_;
  const ValueFormatter& formatter_;
};

}  // namespace folders
