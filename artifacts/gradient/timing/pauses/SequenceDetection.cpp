#include "artifacts/gradient/timing/pauses/SequenceDetection.h"

#include "artifacts/gradient/timing/pauses/BurstDelay.h"
#include "artifacts/gradient/timing/pauses/FirstTrigger.h"
#include "artifacts/gradient/timing/pauses/QuietRuns.h"
#include "artifacts/gradient/timing/pauses/SliceCounts.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/FrequencyFilter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace emeg {

namespace {

void filterAt100Hz(std::vector<double>& signal, int64_t nrOfSamples, EdgeKind kind, double samplingFrequency,
                   int32_t log2FftLength, FFTWorkspace& workspace) {
  FilterStageList stages;
  stages.addFilterStage(kind, 200 / samplingFrequency, 5.0);
  filterSignalFFT(signal.data(), nrOfSamples, makeFilterResponse(stages, log2FftLength), workspace);
}

/// Magnitude of the activity above 100 Hz, smoothed below 100 Hz.
std::vector<double> bandEnvelope(const SplinedSignal& signal, double samplingFrequency, int32_t log2FftLength,
                                 FFTWorkspace& workspace) {
  const int64_t n = signal.nrOfSamples;
  std::vector<double> work(size_t{1} << log2FftLength, 0.0);
  std::copy(signal.y, signal.y + n, work.begin());
  filterAt100Hz(work, n, EdgeKind::HighPass, samplingFrequency, log2FftLength, workspace);
  for (int64_t i = 0; i < n; ++i) work[static_cast<size_t>(i)] = std::fabs(work[static_cast<size_t>(i)]);
  filterAt100Hz(work, n, EdgeKind::LowPass, samplingFrequency, log2FftLength, workspace);
  return work;
}

/// Mean of the values that exist; not a number when none does.
class MeanOfMeasured {
public:
  void add(double value) {
    if (std::isnan(value)) return;
    sum_ += value;
    ++count_;
  }
  double mean() const { return sum_ / count_; }

private:
  double sum_ = 0;
  int count_ = 0;
};

/// Seconds per volume from the slices of two volumes far apart.
double measureVolumeDuration(const BurstDelay& delays, const SliceCounts& counts, bool hasVolumeGaps,
                             double fs) {
  const int64_t spv = counts.nrOfSlicesPerVolume;
  int64_t firstVolume = 0;
  int64_t lastVolume = counts.nrOfVolumes - 1;
  if (!hasVolumeGaps) {
    // Continuous acquisition leaves out the first and the last volume, except where only three exist.
    firstVolume = counts.nrOfVolumes == 3 ? 0 : 1;
    lastVolume = counts.nrOfVolumes == 3 ? 1 : counts.nrOfVolumes - 2;
  }
  MeanOfMeasured seconds;
  for (int64_t s = 0; s < spv; ++s) {
    seconds.add(delays.measureBurstDelay(firstVolume * spv + counts.firstSlice + s,
                                         lastVolume * spv + counts.firstSlice + s) /
                fs / static_cast<double>(lastVolume - firstVolume));
  }
  return seconds.mean();
}

/// Seconds per slice: within every volume, from its second to its second last slice gap. A burst that the end
/// of the recording cuts off is left out.
double measureSliceDuration(const BurstDelay& delays, const SliceCounts& counts, double fs) {
  const int64_t spv = counts.nrOfSlicesPerVolume;
  MeanOfMeasured seconds;
  for (int64_t v = 0; v < counts.nrOfVolumes; ++v) {
    seconds.add(
        delays.measureBurstDelay(spv * v + counts.firstSlice + 1, spv * (v + 1) + counts.firstSlice - 2) /
        fs / static_cast<double>(spv - 3));
  }
  return seconds.mean();
}

bool isUsableDuration(double seconds) {
  return std::isfinite(seconds) && seconds > 0;
}

} // namespace

int32_t windowHalfLengthOf(const MRSequence& sequence, int32_t slices) {
  const double slicesPerSecond = sequence.nrOfSlicesPerVolume / sequence.volumeDuration;
  return static_cast<int32_t>(std::min(std::ceil(slices / slicesPerSecond),
                                       static_cast<double>(std::numeric_limits<int32_t>::max())));
}

MRSequence detectMRSequence(const SplinedSignal& signal, double samplingFrequency, int32_t log2FftLength,
                            FFTWorkspace& workspace, const LogLine& log) {
  const double fs = samplingFrequency;
  log("Automatic detection of MR sequence parameters");

  // No run is longer than the signal.
  const auto minimalQuietLength =
      static_cast<int64_t>(std::min(std::floor(0.01 * fs), static_cast<double>(signal.nrOfSamples)));
  std::vector<QuietRun> runs;
  {
    const std::vector<double> envelope = bandEnvelope(signal, fs, log2FftLength, workspace);
    const double envelopeThreshold = envelopeThresholdOf(envelope.data(), signal.nrOfSamples);
    runs = findQuietRuns(envelope.data(), signal.nrOfSamples, envelopeThreshold, minimalQuietLength);
  }

  const QuietBands bands = findQuietBands(classifyLengths(runs));
  if (!bands.hasVolumeGaps) log("No volumes gaps in this data set (continuous acquisition)");

  const auto alignHalfWidth = static_cast<int32_t>(std::max<int64_t>(minimalQuietLength / 10, 1));
  const BurstDelay delays(signal, runs, alignHalfWidth);
  const SliceCounts counts =
      bands.hasVolumeGaps ? countWithVolumeGaps(runs, bands) : countContinuous(runs, bands, delays, fs, log);
  logLine(log, "Number of volumes: %d", counts.nrOfVolumes);
  logLine(log, "Number of slices per volume: %d", counts.nrOfSlicesPerVolume);
  logLine(log, "First slice: %d", counts.firstSlice);
  const bool startsInside = counts.firstSlice >= 0 && counts.firstSlice < static_cast<int64_t>(runs.size());
  if (counts.nrOfVolumes < 1 || counts.nrOfSlicesPerVolume < 1 || !startsInside) return {};

  MRSequence sequence;
  sequence.nrOfVolumes = counts.nrOfVolumes;
  sequence.nrOfSlicesPerVolume = counts.nrOfSlicesPerVolume;
  sequence.hasVolumeGaps = bands.hasVolumeGaps;
  sequence.sliceDuration = measureSliceDuration(delays, counts, fs);
  sequence.volumeDuration = counts.nrOfVolumes >= 2
                                ? measureVolumeDuration(delays, counts, bands.hasVolumeGaps, fs)
                                : counts.nrOfSlicesPerVolume * sequence.sliceDuration;
  if (!isUsableDuration(sequence.sliceDuration) || !isUsableDuration(sequence.volumeDuration)) return {};

  if (counts.nrOfVolumes >= 2) logLine(log, "Volume duration (s): %.14f", sequence.volumeDuration);
  logLine(log, "Slice duration (s): %.14f", sequence.sliceDuration);

  const double firstOnset = static_cast<double>(runs[static_cast<size_t>(counts.firstSlice)].end());
  if (bands.hasVolumeGaps) {
    sequence.firstTriggerTime = firstTriggerInVolumeGaps(signal, sequence, firstOnset, fs);
    logLine(log, "First trigger time (s): %f", sequence.firstTriggerTime);
  } else {
    sequence.firstTriggerTime = firstOnset / fs - sequence.sliceDuration;
    logLine(log, "First trigger time: %f", sequence.firstTriggerTime);
  }
  return sequence;
}

} // namespace emeg
