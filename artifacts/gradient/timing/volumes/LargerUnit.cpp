#include "artifacts/gradient/timing/volumes/LargerUnit.h"

#include "artifacts/gradient/templates/BandLimitedShift.h"
#include "artifacts/gradient/timing/volumes/Autocorrelation.h"
#include "artifacts/gradient/timing/volumes/SharpenedSignal.h"
#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

namespace emeg {

namespace {

constexpr int64_t largestSpan = int64_t{1} << 21; // samples; bounds memory and time
constexpr double longestPeriod = 20;              // seconds
constexpr double noiseFloor = 0.01;               // of the mean power, in what an average leaves
constexpr double leastUnitCorrelation = 0.01;
constexpr double unitDeviations = 8;

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
  return std::max(unitDeviations * 3.139 * lowerPercentile(distances, 0.25), leastUnitCorrelation);
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
    result.push_back(lowerPercentile(std::span<const double>(from, to), 0.5));
  }
  return result;
}

} // namespace

int64_t repeatsPerLargerUnit(std::span<const double> sharpened, const FittedRepeats& repeats,
                             double samplingFrequency) {
  const double period = repeats.line.period;
  const auto length = static_cast<int64_t>(std::ceil(period));
  const RepeatRange range = middleOf(repeats.range, largestSpan / std::max<int64_t>(length, 1));
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
