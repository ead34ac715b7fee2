#include "artifacts/gradient/timing/slices/SliceDuration.h"

#include "artifacts/gradient/templates/BandLimitedShift.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace emeg {

namespace {

constexpr double shortestSlice = 0.015; // seconds
constexpr double longestSlice = 0.6;    // seconds
constexpr double leastSliceSamples = 4;
constexpr double leastSliceCorrelation = 0.4;
constexpr double leastFlatCorrelation = 0.2; // with the spectrum evened out, where noise counts
constexpr double sliceLossShare = 0.5;       // of what even the best distance leaves unexplained ...
constexpr double sliceLoss = 0.001;          // ... and of correlation

/// The lag of highest correlation between samples, from the whole lag that is highest on.
double refinedLag(const CircularVolume& volume, double lag) {
  double best = volume.correlation(lag);
  for (double step = 0.5; step > 0.001; step /= 2) {
    const double below = volume.correlation(lag - step);
    const double above = volume.correlation(lag + step);
    if (below > best && below >= above) {
      lag -= step;
      best = below;
    } else if (above > best) {
      lag += step;
      best = above;
    }
  }
  return lag;
}

struct Peak {
  double lag = 0;
  double value = 0;
};

/// The highest point between the samples of a series around one of them.
Peak highestBetween(const std::vector<double>& values, double position) {
  const auto valueAt = [&](double at) {
    const double whole = std::floor(at);
    return BandLimitedShift(at - whole).at(values, static_cast<int64_t>(whole));
  };
  Peak best{position, valueAt(position)};
  for (double step = 0.5; step > 0.005; step /= 2)
    for (const double lag : {best.lag - step, best.lag + step})
      if (const double value = valueAt(lag); value > best.value) best = {lag, value};
  return best;
}

/// The shortest distance at which the volume resembles itself almost as much as at any; 0 when at none.
double shortestSimilarDistance(const CircularVolume& volume, double least) {
  const int64_t from = volume.samples(shortestSlice);
  const int64_t to = std::min(volume.samples(longestSlice), volume.length() / 2 + volume.length() / 8);
  // Some more on both sides to interpolate with.
  const int64_t margin = std::min<int64_t>(16, from);
  std::vector<double> values;
  for (int64_t lag = from - margin; lag <= std::min(to + margin, volume.length()); ++lag)
    values.push_back(volume.correlation(lag));
  std::vector<Peak> peaks;
  double best = 0;
  for (int64_t lag = from; lag <= to; ++lag) {
    const auto i = static_cast<size_t>(lag - from + margin);
    if (i == 0 || i + 1 >= values.size() || values[i] < values[i - 1] || values[i] <= values[i + 1]) continue;
    if (values[i] < 0.5 * least) continue; // between samples it may be higher
    Peak peak = highestBetween(values, static_cast<double>(i));
    peak.lag += static_cast<double>(from - margin);
    peaks.push_back(peak);
    best = std::max(best, peak.value);
  }
  if (best < least) return 0;
  best = std::min(best, 1.0);
  const double enough = best - std::min(sliceLossShare * (1 - best), 0.05 * best) - sliceLoss;
  const auto first =
      std::find_if(peaks.begin(), peaks.end(), [&](const Peak& peak) { return peak.value >= enough; });
  // A readout makes peaks around every distance; the highest of them is meant.
  Peak chosen = *first;
  for (auto peak = first; peak != peaks.end() && peak->lag < 1.2 * first->lag; ++peak)
    if (peak->value > chosen.value) chosen = *peak;
  return refinedLag(volume, chosen.lag);
}

/// Sharpens the slice duration at distances of 2, 4, 8, ... slices.
double refinedSliceDuration(const CircularVolume& volume, double slice) {
  for (int64_t k = 2; static_cast<double>(k) * slice < 0.6 * volume.duration(); k *= 2) {
    const double lag = refinedLag(volume, static_cast<double>(k) * slice);
    if (volume.correlation(lag) < 0.3 || std::fabs(lag - static_cast<double>(k) * slice) > 1) break;
    slice = lag / static_cast<double>(k);
  }
  return slice;
}

} // namespace

double sliceDurationIn(const CircularVolume& volume, const CircularVolume& flatVolume,
                       const KnownSlices& known) {
  const double volumeDuration = volume.duration();
  double slice = known.sliceDuration >= leastSliceSamples && known.sliceDuration < 0.75 * volumeDuration
                     ? known.sliceDuration
                     : 0;
  if (slice > 0) {
    const double refined = refinedSliceDuration(flatVolume, refinedLag(flatVolume, slice));
    if (std::fabs(refined - slice) < 1) slice = refined;
  } else if (known.nrOfSlices > 0) {
    // What the volume shows, where it goes with the count.
    slice = shortestSimilarDistance(flatVolume, leastFlatCorrelation);
    const double times = slice > 0 ? volumeDuration / known.nrOfSlices / slice : 0;
    if (times > 0 && times < 1.8 && times > 0.98)
      slice = refinedSliceDuration(flatVolume, slice);
    else if (times >= 1.8)
      slice = refinedLag(flatVolume, std::round(times) * slice);
    else
      slice = volumeDuration / known.nrOfSlices;
  } else {
    slice = shortestSimilarDistance(flatVolume, leastFlatCorrelation);
    if (slice == 0) slice = shortestSimilarDistance(volume, leastSliceCorrelation);
    if (slice > 0) slice = refinedSliceDuration(flatVolume, slice);
  }
  return slice;
}

} // namespace emeg
