#pragma once

#include "capture/deliver/converter.h"
#include "capture/deliver/spool.h"
#include "capture/deliver/state_store.h"

namespace capture {

// Hands the batches of one source over as ready files, each exactly once.
//
// The order of steps is what makes a kill or a power cut harmless at any moment: the ready file is written whole under
// a temporary name; the state, which names that file, is committed; the file gets its own name. On a restart a
// temporary file that the state names is decided and gets its name; any other is deleted and its entries are converted
// again. Only files with their own names are ever published.
class SourceDelivery {
 public:
  SourceDelivery(std::string source, StateStore& state, const Spool& spool);

  // What was committed last; its decided file has its name when this returns.
  [[nodiscard]] const SourceState& recovered() const { return committed_; }
  // What is new joins the source's newest ready file while that waits, for Tallybook or for its turn. Throws SpoolFault
  // or StateFault: nothing is handed over then and the same batch can be given again.
  void handOver(const Batch& batch);

 private:
  void finish();
  [[nodiscard]] std::optional<ReadyFile> fileToJoin(std::size_t more) const;

  std::string source_;
  StateStore& state_;
  const Spool& spool_;
  SourceState committed_;
  bool finished_ = false;  // the decided file has its name and the replaced one is gone
};

// After a start, before anything is published: temporary files that no state names are deleted, decided ones of
// replays get their names.
void recoverSpool(StateStore& state, const Spool& spool);

// Hands over lines of the past that gave no record before, once, beside a monitor that runs. Throws SpoolFault or
// StateFault.
void handOverReplay(StateStore& state, const Spool& spool, const ReadyFile& file, const std::string& records,
                    const std::vector<std::uint64_t>& recorded);

}  // namespace capture
