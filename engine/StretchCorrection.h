#pragma once

#include "engine/CorrectedSink.h"
#include "engine/Correction.h"
#include "engine/Workspace.h"
#include "engine/figures/GradientMeter.h"
#include "engine/stages/StageRun.h"
#include "engine/stages/StretchPlan.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {

/// A corrected recording in the store, and its last stretch beside it.
struct KeptCorrection {
  std::vector<ValueBounds> bounds; ///< per channel
  std::vector<float> lastStretch;  ///< channel after channel
  int64_t lastCount = 0;           ///< its time points
};

/// Sends a recording through the stages stretch after stretch, all channels of a stretch together. Stretches
/// lie at places that follow from the recording alone: the result does not depend on memory.
class StretchCorrection {
public:
  /// `plan` says which stages are on, `stretchPlan` what they take; both outlive this. `offset`: the store's
  /// sample at which the recording begins. `meter` may be null.
  StretchCorrection(const RunPlan& plan, const StretchPlan& stretchPlan, ChannelStore& store, int64_t offset,
                    GradientMeter* meter, Observer& observer);

  void run(CorrectedSink& sink);

  /// Puts the result where the recording was, from the store's first sample on, but for the last stretch,
  /// which stays in memory.
  KeptCorrection runIntoStore();

  /// Time points of a stretch whose stages need no more than that around it.
  static int64_t longestFor(double samplingFrequency, size_t nrOfChannels);

private:
  int64_t stretchLength() const;
  template <typename Emit>
  void runStretches(const Emit& emit);
  size_t correctStretch(PositionRange stretch);
  void correctChannel(int channel, PositionRange outputs);
  void passUnchanged(int channel, PositionRange outputs);
  void subtractReference(size_t count);
  void measureAfter(size_t count);
  void measureBefore(int number, PositionRange stretch);
  void load(int channel);

  const RunPlan& plan_;
  const StretchPlan& stretchPlan_;
  ChannelStore& store_;
  const int64_t offset_;
  GradientMeter* const meter_;
  Observer& observer_;
  double outputRate_;
  std::vector<int> pulseNumber_; ///< per channel, -1 without heart beats to remove
  StretchState state_;
  Workspace work_;
  SharedState shared_;
  FigureWorkspace figureWork_;
  std::vector<float> block_; ///< the result of a stretch, channel after channel
  std::vector<double> values_;
};

} // namespace emeg
