#include "ui/folder_view.h"

#include <chrono>
#include <utility>

#include "folders/quick_search.h"

namespace ui {

namespace {

// For how long the first rows with typed words are looked for at a time: before the list is shown, and after that.
constexpr std::chrono::milliseconds kFirstLook(40);
constexpr std::chrono::milliseconds kFurtherLook(8);

}  // namespace

// What is typed over the list: the rows that hold every word of it.

void CFolderView::expectWords() {
  if (model_->folder() != nullptr) readAhead_->begin(folders::quickSelect(*model_->folder()), ReadAhead::When::Now);
}

// Both at once, as one condition of the list itself.
void CFolderView::narrow(folders::FolderView& view, const Narrowed& by) const {
  const std::string words = folders::quickCriteria(view, fromQt(by.words));
  if (words.empty() && !by.narrowing) return;
  folders::Narrowing both = by.narrowing.value_or(folders::Narrowing());
  if (!words.empty()) {
    both.criteria = both.criteria.empty() ? words : "(" + both.criteria + ") AND " + words;
    both.text += (both.text.empty() ? "" : "; ") + ('"' + fromQt(by.words) + '"');
  }
  view.narrow(both);
}

bool CFolderView::find(const QString& typed) {
  const folders::FolderView* open = model_->folder();
  if (open == nullptr) return false;
  awaited_ = false;
  const folders::ColumnLayout layout = open->layout();
  if (!typed.isEmpty()) readAhead_->begin(folders::quickSelect(*open), ReadAhead::When::Now);
  const bool first = !typed.isEmpty() && folders::FirstMatches::canFind(*open) && readAhead_->goOn();
  const bool shown = first ? showFirst(typed)
                           : show(openView(open->folder().definition(), open->sortKey(), {narrowing_, typed}, &layout),
                                  FolderModel::Window::AtStart);
  if (!shown) return false;
  typedWords_ = typed;
  scrollToTop();
  if (!typed.isEmpty() && model_->rowCount() > 0) setCurrentIndex(model_->index(0, 0));
  return true;
}

// What the search needs is not read yet: the first rows are found without it.
bool CFolderView::showFirst(const QString& typed) {
  const folders::FolderView& open = *model_->folder();
  const folders::ColumnLayout layout = open.layout();
  View list = openView(open.folder().definition(), open.sortKey(), {narrowing_, {}}, &layout);
  View found = openView(open.folder().definition(), open.sortKey(), {narrowing_, typed}, &layout);
  if (!list || !found) return false;
  try {
    first_ = std::make_unique<folders::FirstMatches>(std::move(list), folders::quickCriteria(*found, fromQt(typed)),
                                                     FolderModel::kFirstRows);
    first_->lookFor(kFirstLook);
    model_->setFirstRows(std::move(found), first_->rows());
  } catch (const jet::Error& error) {
    first_.reset();
    emit failed(toQt(error.description()));
    return false;
  }
  searching_.start(0);
  return true;
}

// What finds the rows of a long list may have to be read again, when another program changed them: beside the window.
// The list stays as it is until then.
bool CFolderView::awaitsRows(const folders::FolderView& open) {
  if (folders::isStatistic(open.folder().definition())) return false;
  readAhead_->begin(open.folder().BuildQuery(), ReadAhead::When::Now);
  awaited_ = readAhead_->goOn();
  if (awaited_) searching_.start(kRetryInterval);
  return awaited_;
}

void CFolderView::goOnSearching() {
  if (!first_ && !awaited_) return;
  if (document_.app().surroundings().person.busy()) return searching_.start(kRetryInterval);
  if (!readAhead_->reading()) return finishSearching();
  if (awaited_ || first_->done()) return searching_.start(kRetryInterval);
  const auto before = static_cast<std::ptrdiff_t>(first_->rows().size());
  try {
    first_->lookFor(kFurtherLook);
  } catch (const jet::Error& error) {
    first_.reset();
    return emit failed(toQt(error.description()));
  }
  searching_.start(0);
  if (first_->rows().begin() + before == first_->rows().end()) return;
  model_->addFirstRows({first_->rows().begin() + before, first_->rows().end()});
  if (before == 0) setCurrentIndex(model_->index(0, 0));
  emit searched();
}

// The rows that are shown stay where they are; the others follow them.
void CFolderView::finishSearching() {
  awaited_ = false;
  const folders::FolderView& open = *model_->folder();
  const folders::ColumnLayout layout = open.layout();
  if (showWhereItWas(openView(open.folder().definition(), open.sortKey(), present(), &layout))) emit searched();
}

}  // namespace ui
