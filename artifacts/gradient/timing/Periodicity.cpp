#include "artifacts/gradient/timing/Periodicity.h"

#include "artifacts/gradient/timing/Autocorrelation.h"
#include "artifacts/gradient/timing/BandLimitedShift.h"
#include "artifacts/gradient/timing/SharpenedSignal.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace emeg {

namespace {

constexpr double activityWindow = 0.05; // seconds
constexpr double quietPercentile = 0.02;
constexpr double busyPercentile = 0.98;
constexpr double contrastOfScans = 3;                       // busy to quiet; below, there is no quiet
constexpr double deepestQuiet = 1e-3;                       // of the busy level
constexpr int64_t largestCorrelatedSpan = int64_t{1} << 21; // samples; bounds memory and time
constexpr double longestPeriod = 20;                        // seconds
constexpr double shortestTone = 0.004;                      // seconds; periods from here on are looked at ...
constexpr double shortestPeriod = 0.015;                    // ... but shorter than this they are tones
constexpr double leastCorrelation = 0.1;
constexpr double lineTolerance = 0.003; // relative, of the period of the mains
constexpr double spectralFloor = 0.1;
constexpr double noiseFloor = 0.01;      // of the mean power, in what an average leaves
constexpr double harmlessLoss = 0.001;   // of correlation
constexpr double independentShare = 0.1; // of the samples
constexpr int64_t blocksPerWindow = 8;
constexpr double shortestWindow = 0.3; // seconds
constexpr double leastUnitCorrelation = 0.01;
constexpr double shortestPart = 0.25;    // seconds; no volume is shorter
constexpr double largestPartLoss = 0.02; // of correlation
constexpr double sameContrast = 0.8;
constexpr double partReach = 0.45;   // of the part, on either side
constexpr double besideAPeak = 0.01; // seconds
constexpr double leastContrast = 0.002;
constexpr double unitDeviations = 8;

double percentile(std::vector<double> values, double share) {
  const auto rank = values.begin() + static_cast<int64_t>(share * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), rank, values.end());
  return *rank;
}

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

/// Where sampling or clipping makes volumes look a little different, those that the samples hit at the same
/// phase resemble each other most: the period is then several volumes. The parts of a period that stand out
/// as clearly as the period itself.
std::vector<Period> equalParts(const Autocorrelation& correlation, const CorrelationPeak& whole,
                               double samplingFrequency) {
  std::vector<Period> parts;
  const double shortest = shortestPart * samplingFrequency;
  for (int k = 2; whole.lag / k >= shortest; ++k) {
    const CorrelationPeak part = correlation.peakNear(whole.lag / k, 1);
    if (part.value < whole.value - largestPartLoss) continue;
    const double reach = partReach * part.lag;
    const double beside = besideAPeak * samplingFrequency;
    const double contrast = contrastOf(correlation, whole, reach, beside);
    if (contrast > leastContrast && contrastOf(correlation, part, reach, beside) > sameContrast * contrast)
      parts.push_back({part.lag, part.value});
  }
  return parts;
}

/// At most so many repeats, from the middle.
RepeatRange middleOf(RepeatRange range, int64_t count) {
  count = std::max<int64_t>(count, 2);
  if (range.count() <= count) return range;
  const int64_t first = range.first + (range.count() - count) / 2;
  return {first, first + count - 1};
}

struct RepeatAndAverage {
  std::span<const double> values;
  std::vector<double> expected;
};

/// The samples of a repeat, and the average repeat (which begins `margin` samples early) at the same places.
RepeatAndAverage repeatAndAverage(std::span<const double> signal, const RepeatLine& line, int64_t repeat,
                                  const std::vector<double>& average, int64_t margin) {
  const double position = line.at(static_cast<double>(repeat));
  const auto n = static_cast<int64_t>(signal.size());
  const auto from = std::clamp<int64_t>(static_cast<int64_t>(std::ceil(position)), 0, n);
  const auto to = std::clamp<int64_t>(static_cast<int64_t>(std::ceil(position + line.period)), from, n);
  RepeatAndAverage result{signal.subspan(static_cast<size_t>(from), static_cast<size_t>(to - from)),
                          std::vector<double>(static_cast<size_t>(to - from))};
  readShifted(average, static_cast<double>(from + margin) - position, result.expected);
  return result;
}

double gainOf(std::span<const double> values, const std::vector<double>& expected) {
  double product = 0, power = 0;
  for (size_t i = 0; i < values.size(); ++i) {
    product += values[i] * expected[i];
    power += expected[i] * expected[i];
  }
  return power > 0 ? product / power : 0;
}

std::vector<double> everyNth(const std::vector<double>& values, int64_t n) {
  std::vector<double> result;
  for (size_t i = 0; i < values.size(); i += static_cast<size_t>(n)) result.push_back(values[i]);
  return result;
}

/// By how much values stand out of their neighbours, from index 2 on.
std::vector<double> contrastsOf(const std::vector<double>& values) {
  std::vector<double> contrast(values.size(), 0.0);
  for (size_t k = 2; k + 1 < values.size(); ++k) {
    const double beside = k == 2 ? values[3] : (values[k - 1] + values[k + 1]) / 2;
    contrast[k] = values[k] - std::max(0.0, beside);
  }
  return contrast;
}

/// What hardly any value stands out by, from the quarter that stands out least: every larger unit makes three
/// contrasts.
double limitOf(const std::vector<double>& contrast) {
  std::vector<double> distances;
  for (size_t k = 2; k + 1 < contrast.size(); ++k) distances.push_back(std::fabs(contrast[k]));
  if (distances.empty()) return 1;
  return std::max(unitDeviations * 3.139 * percentile(distances, 0.25), leastUnitCorrelation);
}

/// The first index whose value stands out (about) as much as any; 1 when none does.
int64_t outstandingIndex(const std::vector<double>& contrast, double limit) {
  const double best = contrast.empty() ? 0 : *std::max_element(contrast.begin(), contrast.end());
  if (best < limit) return 1;
  for (size_t k = 2; k < contrast.size(); ++k)
    if (contrast[k] >= 0.7 * best) return static_cast<int64_t>(k);
  return 1;
}

/// Running medians: a slow change of the artifact's size is no difference between repeats, one repeat that is
/// larger than its neighbours is.
std::vector<double> smoothed(const std::vector<double>& gains) {
  constexpr int64_t reach = 4;
  const auto n = static_cast<int64_t>(gains.size());
  std::vector<double> result;
  for (int64_t i = 0; i < n; ++i) {
    const auto from = gains.begin() + std::max<int64_t>(0, i - reach);
    const auto to = gains.begin() + std::min(n, i + reach + 1);
    result.push_back(percentile(std::vector<double>(from, to), 0.5));
  }
  return result;
}

} // namespace

std::vector<SampleRange> busyStretches(std::span<const double> sharpened, double samplingFrequency,
                                       double longestGap) {
  const auto window = static_cast<int64_t>(std::max(1.0, activityWindow * samplingFrequency));
  const auto n = static_cast<int64_t>(sharpened.size());
  std::vector<double> activity;
  for (int64_t begin = 0; begin < n; begin += window) {
    const int64_t end = std::min(begin + window, n);
    double sum = 0;
    for (int64_t i = begin; i < end; ++i) sum += std::fabs(sharpened[static_cast<size_t>(i)]);
    activity.push_back(sum / static_cast<double>(end - begin));
  }
  if (activity.empty()) return {};
  const double busy = percentile(activity, busyPercentile);
  if (!(busy > 0)) return {};
  const double quiet = std::max(percentile(activity, quietPercentile), deepestQuiet * busy);
  const double threshold = busy / quiet < contrastOfScans ? 0 : std::sqrt(busy * quiet);

  std::vector<SampleRange> stretches;
  for (size_t k = 0; k < activity.size(); ++k) {
    if (activity[k] < threshold) continue;
    const int64_t begin = static_cast<int64_t>(k) * window;
    const int64_t end = std::min(begin + window, n);
    if (!stretches.empty() &&
        static_cast<double>(begin - stretches.back().end) <= longestGap * samplingFrequency)
      stretches.back().end = end;
    else
      stretches.push_back({begin, end});
  }
  return stretches;
}

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
  std::vector<Period> periods, parts;
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
    if (share == 1.0) parts = equalParts(correlation, *shortest, samplingFrequency);
  }
  periods.insert(periods.end(), parts.begin(), parts.end());
  return periods;
}

SampleRange longestRepeatingStretch(std::span<const double> sharpened, double period,
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
  const double threshold = std::max(0.6 * percentile(similarity, 0.9), leastCorrelation);

  SampleRange longest;
  for (size_t k = 0; k < similarity.size(); ++k) {
    if (similarity[k] < threshold) continue;
    size_t last = k;
    while (last + 1 < similarity.size() && similarity[last + 1] >= threshold) ++last;
    const SampleRange run{static_cast<int64_t>(k) * block,
                          static_cast<int64_t>(last + blocksPerWindow) * block + lag};
    if (run.length() > longest.length()) longest = run;
    k = last;
  }
  longest.end = std::min(longest.end, n);
  return longest;
}

int64_t repeatsPerLargerUnit(std::span<const double> sharpened, const FittedRepeats& repeats,
                             double samplingFrequency) {
  const double period = repeats.line.period;
  const auto length = static_cast<int64_t>(std::ceil(period));
  const RepeatRange range = middleOf(repeats.range, largestCorrelatedSpan / std::max<int64_t>(length, 1));
  const auto begin =
      static_cast<int64_t>(std::max(0.0, std::ceil(repeats.line.at(static_cast<double>(range.first)))));
  const auto end =
      std::min(static_cast<int64_t>(std::floor(repeats.line.at(static_cast<double>(range.last + 1)))),
               static_cast<int64_t>(sharpened.size()));
  if (end - begin < 4 * length) return 1;

  // The average reaches beyond the repeat, so that interpolating at its ends meets no step.
  constexpr int64_t margin = 24;
  const RepeatLine early{repeats.line.onset - static_cast<double>(margin), period};
  const auto firstUsed = repeats.used.begin() + (range.first - repeats.range.first);
  const std::vector<bool> used(firstUsed, firstUsed + range.count());
  const std::vector<double> average = averageRepeat(sharpened, early, range, length + 2 * margin, used);
  std::vector<double> gains;
  for (int64_t v = range.first; v <= range.last; ++v) {
    const auto [values, expected] = repeatAndAverage(sharpened, repeats.line, v, average, margin);
    gains.push_back(gainOf(values, expected));
  }
  gains = smoothed(gains);

  std::vector<double> rest(static_cast<size_t>(end - begin), 0.0);
  for (int64_t v = range.first; v <= range.last; ++v) {
    const double position = repeats.line.at(static_cast<double>(v));
    const auto from = static_cast<int64_t>(std::ceil(position));
    const auto [values, expected] = repeatAndAverage(sharpened, repeats.line, v, average, margin);
    const double gain = gains[static_cast<size_t>(v - range.first)];
    for (size_t i = 0; i < values.size(); ++i) {
      const int64_t at = from + static_cast<int64_t>(i) - begin;
      if (at >= 0 && at < end - begin) rest[static_cast<size_t>(at)] = values[i] - gain * expected[i];
    }
  }

  flattenSpectrum(rest, noiseFloor);
  const Autocorrelation correlation(
      rest, std::min((end - begin) * 2 / 3, static_cast<int64_t>(longestPeriod * samplingFrequency)));
  std::vector<double> values{1}; // index k: after k repeats
  for (int64_t k = 1; static_cast<double>(k) * period < static_cast<double>(correlation.largestLag()); ++k)
    values.push_back(correlation.between(static_cast<double>(k) * period));
  // What sampling makes of a waveform comes again after a few repeats already; a volume stands out even of
  // these.
  const double limit = limitOf(contrastsOf(values));
  int64_t unit = 1;
  for (int64_t next = 0; next != 1; unit *= next) {
    next = outstandingIndex(contrastsOf(values), limit);
    values = everyNth(values, next);
  }
  return unit;
}

} // namespace emeg
