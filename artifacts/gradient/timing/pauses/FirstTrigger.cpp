#include "artifacts/gradient/timing/pauses/FirstTrigger.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace emeg {

double firstTriggerInVolumeGaps(const SplinedSignal& signal, const MRSequence& sequence, double firstOnset,
                                double samplingFrequency) {
  const double fs = samplingFrequency;
  const double block = sequence.nrOfSlicesPerVolume * sequence.sliceDuration;
  const double gap = sequence.volumeDuration - block;
  const double gapSamples = std::floor(gap * fs + 0.5);
  const double searchStart = firstOnset + block * fs + 0.3 * gapSamples;
  const double searchLength = std::ceil(0.7 * gapSamples);
  if (searchLength < 1) return firstOnset / fs;

  // No gap of a recording is longer than the recording.
  const int64_t length =
      static_cast<int64_t>(std::min(searchLength, static_cast<double>(signal.nrOfSamples)));
  std::vector<double> gapProfile(static_cast<size_t>(length), 0.0);
  for (int64_t v = 0; v + 1 < sequence.nrOfVolumes; ++v) {
    const double position = static_cast<double>(v) * sequence.volumeDuration * fs + searchStart;
    const double whole = std::floor(position);
    const double f = position - whole;
    const int64_t k = static_cast<int64_t>(whole);
    const int64_t end = std::min(length, signal.nrOfSamples - k);
    for (int64_t t = std::max<int64_t>(0, -k); t < end; ++t)
      gapProfile[static_cast<size_t>(t)] += signal.derivative(k + t, f);
  }

  const int64_t half = length / 2;
  double quietLevel = 0;
  for (int64_t t = 0; t < half; ++t)
    quietLevel = std::max(quietLevel, std::fabs(gapProfile[static_cast<size_t>(t)]));
  int64_t onset = half <= 1 ? 1 : half;
  while (onset < length && std::fabs(gapProfile[static_cast<size_t>(onset)]) < 3 * quietLevel) ++onset;
  return (static_cast<double>(onset) + searchStart) / fs - sequence.volumeDuration;
}

} // namespace emeg
