#include "engine/figures/SpectralFigures.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace emeg {

BandPowers bandPowersOf(const PowerSpectrum& spectrum) {
  BandPowers powers{};
  for (size_t b = 0; b < eegBands.size(); ++b) {
    for (size_t k = 1; k < spectrum.powers.size(); ++k) {
      const double hz = static_cast<double>(k) * spectrum.hzPerBin;
      if (hz >= eegBands[b].lowest && hz < eegBands[b].highest) powers[b] += spectrum.powers[k];
    }
  }
  return powers;
}

SlicePeaks slicePeaksOf(const PowerSpectrum& spectrum, const MRSequence& sequence, double lowest) {
  SlicePeaks peaks;
  if (spectrum.powers.empty()) return peaks;
  const double sliceHz = 1 / sequence.sliceDuration;
  const double volumeHz = 1 / sequence.volumeDuration;
  // No slices are known, or their lines lie closer than the spectrum resolves.
  if (!(4 * sliceHz >= spectrum.hzPerBin) || !(volumeHz > 0) || !std::isfinite(volumeHz)) return peaks;
  // Pauses between volumes spread a slice's line over its neighbours at the volume frequency.
  const double peakHz = std::max(4 * spectrum.hzPerBin, sequence.hasVolumeGaps ? 1.2 * volumeHz : 0);
  const double sideHz = std::min(2 * peakHz + 2, sliceHz / 2);
  const double highest = static_cast<double>(spectrum.powers.size() - 1) * spectrum.hzPerBin;
  double atPeaks = 0;
  double beside = 0;
  std::vector<double> sides;
  for (double center = sliceHz; center + sideHz < highest; center += sliceHz) {
    if (center - sideHz < lowest) continue;
    const double line = std::floor(center / volumeHz + 0.5) * volumeHz;
    double nrOfPeakBins = 0;
    sides.clear();
    const auto firstBin = static_cast<size_t>(std::clamp(line - sideHz, 0.0, highest) / spectrum.hzPerBin);
    const auto lastBin = static_cast<size_t>(std::clamp(line + sideHz, 0.0, highest) / spectrum.hzPerBin);
    for (size_t k = firstBin; k <= lastBin; ++k) {
      const double distance = std::abs(static_cast<double>(k) * spectrum.hzPerBin - line);
      if (distance <= peakHz) {
        atPeaks += spectrum.powers[k];
        nrOfPeakBins += 1;
      } else {
        sides.push_back(spectrum.powers[k]);
      }
    }
    if (sides.empty()) continue;
    double mean = 0;
    for (const double power : sides) mean += power / static_cast<double>(sides.size());
    beside += nrOfPeakBins * mean;
  }
  peaks.rms = std::sqrt(std::max(atPeaks - beside, 0.0));
  peaks.toBackground = beside > 0 ? atPeaks / beside : 0;
  return peaks;
}

} // namespace emeg
