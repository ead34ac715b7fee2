#pragma once

#include "engine/Observer.h"
#include "engine/Workspace.h"
#include "engine/beats/BeatStrategy.h"
#include "engine/stages/StageRun.h"
#include "engine/store/ChannelStore.h"
#include "engine/timing/TimingStrategy.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace emeg {

/// Corrects a recording channel after channel, in place in its store: every channel in one pass over the
/// stages, or in two with the search for heart beats between them.
class WholeChannelCorrection {
public:
  /// Strategies are used by this correction alone; `beats` may be null where beats are not corrected. The
  /// store holds `plan.nrOfProcessed` samples per channel, and afterwards `plan.nrOfOutputs`.
  WholeChannelCorrection(RunPlan plan, ChannelStore& store, TimingStrategy& timing, BeatStrategy* beats,
                         Observer& observer);

  /// Throws StoreError, std::bad_alloc, and what the observer throws.
  void run();

  /// What was found: sliceDuration is 0 without a scan.
  const MRSequence& sequence() const { return shared_.sequence; }
  const SharedState& shared() const { return shared_; }

private:
  void orderChannels();
  void buildFilters();
  void allocateBuffers();
  void correctInOnePass(int channel);
  void correctInTwoPasses();
  void subtractReference();
  void passUnchanged(int channel);
  StageRun begin(Step step, int channel);
  void writeChannel(int channel, int64_t nrOfSamples);

  const RunPlan plan_;
  ChannelStore& store_;
  TimingStrategy& timing_;
  BeatStrategy* const beats_;
  Observer& observer_;
  Workspace work_;
  SharedState shared_;
  std::vector<int> order_;         ///< channels as they are corrected
  std::vector<int> pulseChannels_; ///< those of them with heart beats to remove, in the same order
};

} // namespace emeg
