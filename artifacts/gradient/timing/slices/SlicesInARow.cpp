#include "artifacts/gradient/timing/slices/SlicesInARow.h"

#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace emeg {

namespace {

constexpr double sliceReach = 0.02;    // of a slice: dead time at a volume's end
constexpr double leastReach = 1;       // samples
constexpr double fewestTeeth = 3;      // one or two that are highest say nothing
constexpr double fewestOthers = 6;     // lags that tell how much they differ by chance
constexpr double leastCombScore = 6;   // standard errors; hundreds of combs are tried
constexpr double leastContrast = 0.05; // of the loss
constexpr double samePhase = 0.02;     // samples
constexpr double leastLoss = 1e-9;
constexpr int mostLevels = 4;
constexpr double largestLoss = 0.01; // of correlation ...
constexpr double mostTimesLoss = 3;  // ... and that of the next slice

struct Contrast {
  double value = 0;
  double phase = 0; ///< samples from the next whole one, where what the samples make of a waveform is alike
};

/// By how much values stand out of both their neighbours, as a share of what they lack to be alike (a spike
/// or a movement that leaves the overlap is a step); the first two and the last do not count.
std::vector<Contrast> contrastsOf(const std::vector<CorrelationPeak>& peaks) {
  std::vector<Contrast> contrasts;
  for (size_t k = 2; k + 1 < peaks.size(); ++k) {
    const double beside = std::max(peaks[k - 1].value, peaks[k + 1].value);
    contrasts.push_back({std::max(0.0, peaks[k].value - beside) / std::max(1 - peaks[k].value, leastLoss),
                         std::fabs(peaks[k].lag - std::round(peaks[k].lag))});
  }
  return contrasts;
}

/// Student's t of every n-th value (from index n on; the first given is that of index 2) against the others
/// that lie as close to whole samples. Where most teeth are lower than their mean, one of them is not the
/// comb's.
double combScore(const std::vector<Contrast>& contrasts, size_t n) {
  struct {
    double count = 0, sum = 0, squares = 0;
    void add(double value) {
      count += 1;
      sum += value;
      squares += value * value;
    }
    double spread() const { return squares - sum * sum / count; }
  } teeth, others;
  std::vector<double> heights;
  double farthest = 0;
  for (size_t i = n - 2; i < contrasts.size(); i += n) {
    teeth.add(contrasts[i].value);
    heights.push_back(contrasts[i].value);
    farthest = std::max(farthest, contrasts[i].phase);
  }
  for (size_t i = 0; i < contrasts.size(); ++i)
    if ((i + 2) % n != 0 && contrasts[i].phase <= farthest + samePhase) others.add(contrasts[i].value);
  if (teeth.count < fewestTeeth || others.count < fewestOthers) return 0;
  const double difference =
      std::min(teeth.sum / teeth.count, upperMedianReordering(heights)) - others.sum / others.count;
  if (difference < leastContrast) return 0;
  const double variance = (teeth.spread() + others.spread()) / (teeth.count + others.count - 2);
  return variance > 0 ? difference / std::sqrt(variance * (1 / teeth.count + 1 / others.count)) : 0;
}

} // namespace

SlicesInARow::SlicesInARow(const Autocorrelation& correlation, double slice)
    : reach_(std::max(leastReach, sliceReach * slice)) {
  if (!(slice > 2 * reach_)) return;
  const auto longest = static_cast<double>(correlation.largestLag());
  const auto most = static_cast<size_t>(2 * longest / slice);
  for (double lag = slice; lag + reach_ < longest && peaks_.size() < most;) {
    peaks_.push_back(correlation.peakNear(lag, reach_));
    const auto count = static_cast<double>(peaks_.size() - 1);
    lag = peaks_.back().lag * (count + 1) / count;
  }
}

bool SlicesInARow::areNearlyAlike() const {
  if (peaks_.size() < 2) return false;
  std::vector<double> values;
  for (size_t k = 1; k < peaks_.size(); ++k) values.push_back(peaks_[k].value);
  const auto low = values.begin() + static_cast<int64_t>(values.size() / 10);
  std::nth_element(values.begin(), low, values.end());
  return 1 - *low < largestLoss + mostTimesLoss * (1 - peaks_[1].value);
}

bool SlicesInARow::make(double period) const {
  if (peaks_.size() < 2) return false;
  const double slice = peaks_.back().lag / static_cast<double>(peaks_.size() - 1);
  const double count = std::round(period / slice);
  return count > 1 && std::fabs(period - count * slice) <= reach_;
}

bool SlicesInARow::wouldShow(double period) const {
  return peaks_.size() > 2 && (fewestTeeth + 1) * period < peaks_.back().lag;
}

std::optional<Period> SlicesInARow::volume() const {
  std::optional<Period> volume;
  std::vector<CorrelationPeak> peaks = peaks_;
  for (int level = 0; level < mostLevels; ++level) {
    const std::vector<Contrast> contrasts = contrastsOf(peaks);
    size_t unit = 0;
    double highest = leastCombScore;
    for (size_t n = 2; n < contrasts.size() + 2; ++n)
      if (const double score = combScore(contrasts, n); score > highest) {
        highest = score;
        unit = n;
      }
    if (unit == 0) break;
    volume = Period{peaks[unit].lag, peaks[unit].value, peaks[unit].lag / static_cast<double>(unit)};
    std::vector<CorrelationPeak> teeth;
    for (size_t k = 0; k < peaks.size(); k += unit) teeth.push_back(peaks[k]);
    peaks = teeth;
  }
  return volume;
}

} // namespace emeg
