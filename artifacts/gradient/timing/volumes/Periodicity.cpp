#include "artifacts/gradient/timing/volumes/Periodicity.h"

#include "artifacts/gradient/templates/BandLimitedShift.h"
#include "artifacts/gradient/timing/slices/SlicesInARow.h"
#include "artifacts/gradient/timing/volumes/Autocorrelation.h"
#include "artifacts/gradient/timing/volumes/SharpenedSignal.h"
#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace emeg {

namespace {

constexpr int64_t largestCorrelatedSpan = int64_t{1} << 21; // samples; bounds memory and time
constexpr double longestPeriod = 20;                        // seconds
constexpr double shortestTone = 0.004;                      // seconds; periods from here on are looked at ...
constexpr double shortestPeriod = 0.015;                    // ... but shorter than this they are tones
constexpr double leastCorrelation = 0.1;
constexpr double lineTolerance = 0.003; // relative, of the period of the mains
constexpr double spectralFloor = 0.1;
constexpr double harmlessLoss = 0.001;   // of correlation
constexpr double independentShare = 0.1; // of the samples
constexpr int64_t blocksPerWindow = 8;
constexpr double shortestWindow = 0.3;   // seconds
constexpr double shortestPart = 0.25;    // seconds; no volume is shorter
constexpr double largestPartLoss = 0.02; // of correlation
constexpr double sameContrast = 0.8;
constexpr double partReach = 0.45;   // of the part, on either side
constexpr double besideAPeak = 0.01; // seconds
constexpr double leastContrast = 0.002;
constexpr int mostSlicesTried = 3;

/// A sinusoid of the mains repeats itself like a very short slice.
bool isTone(double period, double samplingFrequency) {
  const double seconds = period / samplingFrequency;
  if (seconds < shortestPeriod) return true;
  for (const double mains : {50.0, 60.0})
    if (std::fabs(seconds * mains - 1) < lineTolerance) return true;
  return false;
}

/// How far a peak stands out of what surrounds it, the peaks right beside it (of a readout's tone) left out.
double contrastOf(const Autocorrelation& correlation, const CorrelationPeak& peak, double reach,
                  double beside) {
  double highest = 0;
  const auto look = [&](double begin, double end) {
    for (auto lag = std::max<int64_t>(1, static_cast<int64_t>(begin));
         lag <= std::min(static_cast<int64_t>(end), correlation.largestLag()); ++lag)
      highest = std::max(highest, correlation.at(lag));
  };
  look(peak.lag - reach, peak.lag - beside);
  look(peak.lag + beside, peak.lag + reach);
  return peak.value - highest;
}

/// Where sampling, clipping or jitter makes volumes look a little different, some that lie several volumes
/// apart resemble each other most: the period is then several volumes. The parts of a period that stand out
/// as clearly as the period itself.
void addEqualParts(const Autocorrelation& correlation, const Period& whole, double samplingFrequency,
                   std::vector<Period>& parts) {
  const double shortest = shortestPart * samplingFrequency;
  for (int k = 2; whole.samples / k >= shortest; ++k) {
    const CorrelationPeak part = correlation.peakNear(whole.samples / k, 1);
    if (part.value < whole.similarity - largestPartLoss) continue;
    const double reach = partReach * part.lag;
    const double beside = besideAPeak * samplingFrequency;
    const double contrast = contrastOf(correlation, {whole.samples, whole.similarity}, reach, beside);
    if (contrast > leastContrast && contrastOf(correlation, part, reach, beside) > sameContrast * contrast)
      parts.push_back({part.lag, part.value});
  }
}

/// So many slices are a volume where they stand out of fewer and more, not where they happen to be most
/// alike, or where the samples hit them at the same phase. Slices are the shortest stretches of which the
/// likeliest period is one or several, and of which more are about as alike.
void settleSlices(const Autocorrelation& correlation, const std::vector<CorrelationPeak>& peaks,
                  double samplingFrequency, std::vector<Period>& periods) {
  const Period likeliest = periods.front();
  int tried = 0;
  for (const CorrelationPeak& peak : peaks) {
    if (peak.lag > likeliest.samples || peak.lag >= shortestPart * samplingFrequency) return;
    if (peak.value < likeliest.similarity - largestPartLoss || isTone(peak.lag, samplingFrequency)) continue;
    if (++tried > mostSlicesTried) return;
    const SlicesInARow slices(correlation, peak.lag);
    if (!slices.areNearlyAlike() || !(peak.lag == likeliest.samples || slices.make(likeliest.samples)))
      continue;
    const bool isSlice = peak.lag == likeliest.samples;
    std::optional<Period> volume = slices.volume();
    // Shorter ones, which may look like the mains, may be the slices.
    for (const double parts : {2, 3})
      if (volume && correlation.peakNear(volume->slice / parts, 1).value > peak.value - largestPartLoss)
        volume->slice = 0;
    if (!volume && !isSlice && !slices.wouldShow(likeliest.samples)) return;
    std::erase_if(periods, [&](const Period& period) {
      return period.samples == likeliest.samples || slices.make(period.samples);
    });
    periods.insert(periods.begin(), volume ? *volume : Period{peak.lag, peak.value});
    return;
  }
}

} // namespace

std::vector<Period> findPeriods(std::span<const double> sharpened, double samplingFrequency, bool evened,
                                double expected, double reach) {
  const auto whole = static_cast<int64_t>(sharpened.size());
  const int64_t n = std::min(whole, largestCorrelatedSpan);
  const auto from = sharpened.begin() + (whole - n) / 2;
  std::vector<double> part(from, from + n);
  if (evened) flattenSpectrum(part, spectralFloor);
  const Autocorrelation correlation(
      part, std::min(2 * n / 3, static_cast<int64_t>(longestPeriod * samplingFrequency)));
  if (expected > 0) {
    const CorrelationPeak peak = correlation.peakNear(expected, reach);
    if (peak.value < leastCorrelation) return {};
    return {{peak.lag, peak.value}};
  }

  const std::vector<CorrelationPeak> peaks =
      correlation.peaks(static_cast<int64_t>(shortestTone * samplingFrequency), leastCorrelation);
  if (peaks.empty()) return {};
  const double best = std::max_element(peaks.begin(), peaks.end(), [](const auto& a, const auto& b) {
                        return a.value < b.value;
                      })->value;
  const double loss = std::max(0.0, 1 - best);
  std::vector<Period> periods;
  for (const double share : {1.0, 0.3, 0.1, 0.0}) {
    const auto shortest = std::find_if(peaks.begin(), peaks.end(), [&](const CorrelationPeak& peak) {
      // The estimate is the better, the more of the signal overlaps and the more it is alike.
      const double independent = independentShare * (static_cast<double>(n) - peak.lag);
      const double tolerance =
          harmlessLoss + std::min(loss, 1.5 * harmlessLoss) + 4 * loss * (1 + best) / std::sqrt(independent);
      return peak.value >= best - share * tolerance;
    });
    if (shortest == peaks.end() || isTone(shortest->lag, samplingFrequency)) break;
    if (!periods.empty() && periods.back().samples == shortest->lag) continue;
    periods.push_back({shortest->lag, shortest->value});
  }
  std::vector<Period> parts;
  for (const Period& period : periods) addEqualParts(correlation, period, samplingFrequency, parts);
  periods.insert(periods.end(), parts.begin(), parts.end());

  if (!periods.empty()) settleSlices(correlation, peaks, samplingFrequency, periods);
  return periods;
}

PositionRange longestRepeatingStretch(std::span<const double> sharpened, double period,
                                      double samplingFrequency) {
  const auto n = static_cast<int64_t>(sharpened.size());
  const double whole = std::floor(period);
  const auto lag = static_cast<int64_t>(whole);
  const BandLimitedShift shift(period - whole);
  const double window = std::max(
      period < shortestWindow * samplingFrequency ? shortestWindow * samplingFrequency : period, 16.0);
  const auto block = static_cast<int64_t>(window) / blocksPerWindow;

  struct Products {
    double cross = 0, now = 0, later = 0;
  };
  std::vector<Products> blocks;
  for (int64_t begin = 0; begin + block + lag <= n; begin += block) {
    Products sums;
    for (int64_t i = begin; i < begin + block; ++i) {
      const double now = sharpened[static_cast<size_t>(i)];
      const double later = shift.at(sharpened, i + lag);
      sums.cross += now * later;
      sums.now += now * now;
      sums.later += later * later;
    }
    blocks.push_back(sums);
  }

  std::vector<double> similarity;
  for (size_t k = 0; k + blocksPerWindow <= blocks.size(); ++k) {
    Products sums;
    for (size_t j = k; j < k + blocksPerWindow; ++j) {
      sums.cross += blocks[j].cross;
      sums.now += blocks[j].now;
      sums.later += blocks[j].later;
    }
    const double energy = std::sqrt(sums.now * sums.later);
    similarity.push_back(energy > 0 ? sums.cross / energy : 0);
  }
  if (similarity.empty()) return {};
  const double threshold = std::max(0.6 * lowerPercentile(similarity, 0.9), leastCorrelation);

  PositionRange longest;
  for (size_t k = 0; k < similarity.size(); ++k) {
    if (similarity[k] < threshold) continue;
    size_t last = k;
    while (last + 1 < similarity.size() && similarity[last + 1] >= threshold) ++last;
    const PositionRange run{static_cast<int64_t>(k) * block,
                            static_cast<int64_t>(last + blocksPerWindow) * block + lag};
    if (run.length() > longest.length()) longest = run;
    k = last;
  }
  longest.end = std::min(longest.end, n);
  return longest;
}

} // namespace emeg
