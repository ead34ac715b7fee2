#pragma once

#include "tests/artifacts/BurstTrain.h"
#include "tests/plugin/converter/Recordings.h"

namespace emeg::test {

/// A recording made in the scanner together with what it should have been.
struct ScannedRecording {
  Recording recording;
  Channels clean; ///< the same without gradient artifact
  BurstTrain train;

  /// Root of the mean square of `signal` minus the clean channel, microvolts.
  double residualRms(int channel, const std::vector<double>& signal) const;
  double artifactRms(int channel) const {
    return residualRms(channel, recording.samples[static_cast<size_t>(channel)]);
  }
};

/// Every channel has noise of its own and a smaller artifact than the one before it. All samples are whole
/// microvolts, so that every sample type holds the same values.
ScannedRecording scanned(const BurstTrain& train, int nrOfChannels = 2);

/// Ten slices and a pause per volume, 12 volumes in 16 s.
ScannedRecording scannedWithVolumeGaps();
/// 14 slices per volume without a pause, 23 s that begin just before a volume and end within one.
ScannedRecording scannedContinuously();
/// Half a second of noise at 1 kHz in which there is nothing to correct.
Recording shortNoise(int nrOfChannels = 2, int nrOfTimePoints = 500);

} // namespace emeg::test
