#include "ui/chart_bars.h"

#include <algorithm>
#include <map>

#include "folders/numbers.h"
#include "ui/texts.h"

namespace ui {

namespace {

using Bar = ChartView::Bar;
using Bars = std::vector<Bar>;

// The values that an axis has a place for, both ends included.
struct Axis {
  int folder;
  int first;
  int last;
};
constexpr Axis kAxes[] = {{folders::FolderWeekdays, 1, 7},
                          {folders::FolderDays, 1, 31},
                          {folders::FolderMonths, 1, 12},
                          {folders::FolderHours, 0, 23}};

const Axis* axisOf(int folder) {
  const auto* found = std::ranges::find(kAxes, folder, &Axis::folder);
  return found != std::end(kAxes) ? found : nullptr;
}

// Reads rows of a folder as bars.
class BarReader {
 public:
  BarReader(folders::FolderView& folder, std::size_t value, platform::Operator& person)
      : folder_(folder), value_(value), person_(person), grouped_(folder.folder().definition().columns[1]) {
    const auto& columns = folder.columns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (columns[i].definition->kind == grouped_.kind) caption_ = i;
    }
  }

  Bars onAxis(const Axis& axis) {
    Bars bars;
    const jet::Value none;
    const folders::CellValue empty{&none, &none};
    for (int place = axis.first; place <= axis.last; ++place) {
      const jet::Value at = static_cast<std::int32_t>(place);
      bars.push_back(
          {toQt(folder_.formatter().formatCell(grouped_.kind, at)), toQt(folder_.text(value_, empty)), 0, -1});
    }
    read(folder_.rowCount(), [&](auto row, std::int64_t position) {
      const std::int64_t place = row[caption_].first->toLong() - axis.first;
      if (place >= 0 && place < static_cast<std::int64_t>(bars.size())) {
        bars[static_cast<std::size_t>(place)] = barOf(row, position);
      }
    });
    return stopped_ ? Bars() : bars;
  }

  // Groups are told by what is shown of them. False when it was stopped.
  bool before(Bars& bars) {
    const jet::Value none;
    const QString nothing = toQt(folder_.text(value_, {&none, &none}));
    std::map<QString, Bar*> byCaption;
    for (Bar& bar : bars) {
      bar.before = 0;
      bar.beforeText = nothing;
      byCaption[bar.caption] = &bar;
    }
    read(folder_.rowCount(), [&](auto row, std::int64_t) {
      const auto found = byCaption.find(captionOf(row));
      if (found == byCaption.end()) return;
      found->second->before = row[value_].first->toDouble();
      found->second->beforeText = toQt(folder_.text(value_, row[value_]));
    });
    if (!stopped_) return true;
    for (Bar& bar : bars) bar.before.reset();
    return false;
  }

  Bars first(std::size_t most) {
    Bars bars;
    read(static_cast<std::int64_t>(most),
         [&](auto row, std::int64_t position) { bars.push_back(barOf(row, position)); });
    return stopped_ ? Bars() : bars;
  }

  Bars largest(std::size_t most) {
    const auto larger = [](const Bar& left, const Bar& right) { return left.value > right.value; };
    Bars bars;
    read(folder_.rowCount(), [&](auto row, std::int64_t position) {
      if (bars.size() == most) {  // a heap whose front is the smallest
        if (row[value_].first->toDouble() <= bars.front().value) return;
        std::ranges::pop_heap(bars, larger);
        bars.pop_back();
      }
      bars.push_back(barOf(row, position));
      std::ranges::push_heap(bars, larger);
    });
    std::ranges::sort(bars, larger);
    return stopped_ ? Bars() : bars;
  }

 private:
  template <typename Take>
  void read(std::int64_t rows, Take&& take) {
    std::int64_t position = 0;
    folder_.readRows(0, rows, [&](auto row) {
      take(row, position);
      stopped_ = !person_.progressStep(++position);
      return !stopped_;
    });
  }

  [[nodiscard]] QString captionOf(std::span<const folders::CellValue> row) const {
    const QString caption = toQt(folder_.text(caption_, row[caption_]));
    return caption.isEmpty() ? QString("-") : caption;
  }

  [[nodiscard]] Bar barOf(std::span<const folders::CellValue> row, std::int64_t position) const {
    return {captionOf(row), toQt(folder_.text(value_, row[value_])), row[value_].first->toDouble(), position};
  }

  folders::FolderView& folder_;
  std::size_t value_;
  platform::Operator& person_;
  const folders::ColumnDefinition& grouped_;
  std::size_t caption_ = 0;  // the first shown column when the grouped one is hidden
  bool stopped_ = false;
};

}  // namespace

bool hasAxis(const folders::FolderDefinition& folder) {
  return axisOf(folder.id) != nullptr;
}

bool readBefore(std::vector<ChartView::Bar>& bars, folders::FolderView& before, std::size_t value,
                platform::Operator& person) {
  return BarReader(before, value, person).before(bars);
}

std::vector<std::pair<int, QString>> measuresOf(const folders::FolderView& folder) {
  using folders::Format;
  std::vector<std::pair<int, QString>> measures;
  for (const folders::ViewColumn& column : folder.columns()) {
    const int kind = column.definition->kind;
    if (kind == folder.folder().definition().columns[1].kind) continue;
    const Format format = folders::formatOfKind(kind).format;
    const bool figure =
        format == Format::Digits || format == Format::Duration || format == Format::Minutes || format == Format::Money;
    if (figure) measures.emplace_back(kind, toQt(column.caption));
  }
  return measures;
}

std::vector<ChartView::Bar> readBars(folders::FolderView& folder, std::size_t value, std::size_t most,
                                     platform::Operator& person) {
  BarReader reader(folder, value, person);
  const auto shown = [&] {
    return std::ranges::any_of(folder.columns(), [&](const auto& column) {
      return column.definition->kind == folder.folder().definition().columns[1].kind;
    });
  };
  const Axis* axis = axisOf(folder.folder().id());
  if (axis != nullptr && shown()) return reader.onAxis(*axis);
  return axis != nullptr || folder.sortKey() != 0 ? reader.first(most) : reader.largest(most);
}

}  // namespace ui
