#include "capture/deliver/source_delivery.h"

namespace capture {

namespace {
// A waiting file is rewritten by each batch that joins it; a larger one stays as it is.
constexpr std::uintmax_t kLargestJoined = 1024 * 1024;  // bytes
}  // namespace

SourceDelivery::SourceDelivery(std::string source, StateStore& state, const Spool& spool)
    : source_(std::move(source)), state_(state), spool_(spool), committed_(state.load(source_)) {
  finish();
}

// The replaced file goes before anything can be published: its records are in the other one.
void SourceDelivery::finish() {
  if (finished_) return;
  if (!committed_.pending.empty()) spool_.release(committed_.pending);
  if (!committed_.replaced.empty()) spool_.remove(committed_.replaced);
  finished_ = true;
}

std::optional<ReadyFile> SourceDelivery::fileToJoin(std::size_t more) const {
  std::optional<ReadyFile> last;
  for (const ReadyFile& file : spool_.waiting()) {
    if (file.source == source_ && !file.replay) last = file;
  }
  if (last && spool_.size(*last) + more > kLargestJoined) return std::nullopt;
  return last;
}

void SourceDelivery::handOver(const Batch& batch) {
  finish();
  SourceState next = batch.after;
  next.pending = committed_.pending;
  next.replaced = committed_.replaced;
  if (!batch.records.empty()) {
    const auto joined = fileToJoin(batch.records.size());
    const ReadyFile file{source_, joined ? joined->first : batch.first, batch.last, false};
    spool_.write(file, joined ? spool_.read(*joined) + batch.records : batch.records, joined);
    next.pending = file.name();
    next.replaced = joined ? joined->name() : std::string();
  }
  try {
    state_.commit(source_, next, batch.recorded, batch.unknown);
  } catch (const StateFault&) {
    // The same entries will come again under another name, perhaps.
    if (next.pending != committed_.pending) spool_.discard(next.pending);
    throw;
  }
  committed_ = std::move(next);
  finished_ = false;
  finish();
}

void recoverSpool(StateStore& state, const Spool& spool) {
  const auto lock = spool.lockDecisions();
  const auto replays = state.pendingReplays();
  std::vector<std::string> decided = replays;
  for (const std::string& source : state.sources()) decided.push_back(state.load(source).pending);
  spool.removeUndecided(decided);
  for (const std::string& file : replays) {
    spool.release(file);
    state.replayDone(file);
  }
}

void handOverReplay(StateStore& state, const Spool& spool, const ReadyFile& file, const std::string& records,
                    const std::vector<std::uint64_t>& recorded) {
  const auto lock = spool.lockDecisions();
  if (spool.size(file) > 0) throw SpoolFault("A replay of the same lines waits for Tallybook already: " + file.name());
  spool.write(file, records, std::nullopt);
  state.commitReplay(file.source, recorded, file.name());
  spool.release(file.name());
  state.replayDone(file.name());
}

}  // namespace capture
