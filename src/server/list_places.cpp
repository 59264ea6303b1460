#include "server/list_places.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string>
#include <thread>

#include "base/printf.h"
#include "filter/condition.h"
#include "folders/catalogue.h"
#include "folders/numbers.h"
#include "jet/database.h"
#include "jet/error.h"
#include "platform/progress.h"

namespace server {

namespace {

// From one list to the next. Where calls are changed all the time, the server looks for the places of a list of
// 10,000,000 calls during a fifth of it.
constexpr std::chrono::seconds kPause{10};

// The orders of the call list that a server has an index for, those asked for most at first.
constexpr int kOrders[] = {-folders::KindTime,         folders::KindTime,       -folders::KindCostReference,
                           folders::KindCostReference, folders::KindNumber,     folders::KindName,
                           folders::KindExtension,     -folders::KindDuration,  -folders::KindNumber,
                           -folders::KindName,         -folders::KindExtension, folders::KindDuration};

// The list of all calls, as a desk without a filter opens it: a desk's own filter makes another list.
std::string listIn(int order) {
  const auto& columns = folders::findFolder(folders::FolderCalls)->columns;
  const auto column = std::ranges::find(columns, std::abs(order), &folders::ColumnDefinition::kind);
  return base::format("SELECT RecordID FROM [Calls] as toptab WHERE %s ORDER BY %s %s",
                      filter::settingsCondition({}, true), column->sort, order > 0 ? "ASC" : "DESC");
}

// Begins to look for the places of a list, unless they are known or it is short.
void lookForPlaces(jet::Database& main, int order) {
  static_cast<void>(main.openWindow(listIn(order))->rowCount());
}

}  // namespace

void makeListPlaces(jet::Database& main, platform::Operator& person, std::chrono::seconds patience) {
  constexpr std::chrono::milliseconds kLook{20};
  const auto begun = std::chrono::steady_clock::now();
  try {
    if (!schema::DatabasePlace::of(main).onServer()) return;
    const platform::Progress progress(person, "Looking for places in long lists", "", std::size(kOrders));
    std::int64_t done = 0;
    for (const int order : kOrders) {
      if (std::chrono::steady_clock::now() - begun > patience) return;
      lookForPlaces(main, order);
      while (main.looksForPlaces()) {
        if (!person.progressStep(done)) return;
        std::this_thread::sleep_for(kLook);
      }
      ++done;
    }
  } catch (const jet::Error&) {
    // What was to be done before is done.
  }
}

void makeListPlaces(const schema::DatabasePlace& place, platform::Operator& person) {
  if (!place.onServer()) return;
  try {
    makeListPlaces(*jet::openDatabase(place.file(schema::Which::Main), jet::OpenMode::ReadWrite), person,
                   std::chrono::hours(24));
  } catch (const jet::Error&) {
    // As above.
  }
}

ListPlaces::ListPlaces(CServerDoc& document) : document_(document) {
  hurry();
}

void ListPlaces::hurry() {
  hurried_ = std::size(kOrders);
  due_ = {};
}

void ListPlaces::step() {
  const auto now = std::chrono::steady_clock::now();
  if (now < due_) return;
  try {
    if (!document_.databases().onServer() || document_.database().looksForPlaces()) return;
    lookForPlaces(document_.database(), kOrders[next_]);
    next_ = (next_ + 1) % std::size(kOrders);
  } catch (const std::exception&) {
    // A lost connection is taken up again by others.
  }
  if (hurried_ > 0) --hurried_;
  if (hurried_ == 0) due_ = now + kPause;
}

}  // namespace server
