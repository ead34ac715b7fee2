#pragma once

#include "engine/CorrectedSink.h"
#include "engine/CorrectionSettings.h"
#include "engine/Findings.h"
#include "engine/Observer.h"
#include "engine/RecordingShape.h"
#include "engine/settings/SettingChecks.h"
#include "engine/store/ChannelStore.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace emeg {

/// The correction of one recording, in three steps: its samples are taken in, scans and beats are found, the
/// corrected samples go out. Knows no file and no host. Used by one thread; several corrections may run in
/// several threads at once.
class Correction {
public:
  /// The store holds the channels of `shape` with storeLength() samples each; its content is the correction's
  /// own. Throws UnusableSettings.
  Correction(CorrectionSettings settings, RecordingShape shape, ChannelStore& store, Observer& observer);
  ~Correction();
  Correction(const Correction&) = delete;
  Correction& operator=(const Correction&) = delete;

  /// The next `count` time points of all channels, channel after channel: values[c x count + t], in
  /// microvolts. Samples that are not finite count as 0 and are counted. std::invalid_argument for blocks of
  /// another size than they say, or beyond the recording's end.
  void takeIn(int64_t count, std::span<const double> values);

  /// When all samples are there: looks for scans and heart beats. The caller may look at the result and go no
  /// further. Without a scan nothing of the gradient artifact is removed. Whole-channel methods find what
  /// they find while they correct: they do it here, in place. std::logic_error when samples are missing, here
  /// and below when it was not called.
  const Findings& find();

  /// Sends the corrected recording to the sink: nrOfOutputs() time points. The store's content is lost.
  void correct(CorrectedSink& sink);

  /// The same in two steps, for files that must know the smallest and largest value of every channel before
  /// the first: the corrected recording, as 32-bit floats, takes the recording's place in the store, and is
  /// read back from there.
  std::vector<ValueBounds> correctIntoStore();
  void readCorrected(CorrectedSink& sink);

  /// Time points and rate of the result.
  int64_t nrOfOutputs() const;
  double outputRate() const;
  /// All but the figures of merit are complete when find() has returned, so that a file's header can hold
  /// them; these when the recording was corrected.
  const Findings& findings() const;

  /// Samples per channel that the store must hold. Throws UnusableSettings.
  static int64_t storeLength(const CorrectionSettings& settings, const RecordingShape& shape);
  /// Bytes that a run will have in memory at most beside the store, and never less than what it allocates.
  static uint64_t memoryFor(const CorrectionSettings& settings, const RecordingShape& shape);

private:
  class Run;
  std::unique_ptr<Run> run_;
};

} // namespace emeg
