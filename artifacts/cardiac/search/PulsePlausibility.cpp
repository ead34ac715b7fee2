#include "artifacts/cardiac/search/PulsePlausibility.h"

#include "artifacts/cardiac/series/Energy.h"
#include "dsp/Statistics.h"
#include "dsp/VectorKernels.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double fastestHeart = 140; // beats per minute, as the search has it
constexpr double slowestHeart = 35;
constexpr double stretchSeconds = 8;
constexpr size_t mostVoters = 16;       // channels that vote for the period: enough, and quick
constexpr double offByAThird = 4.0 / 3; // ratio to the median interval
constexpr double epochHalfLength = 0.4; // of the period: what is between is much the same in all beats
constexpr double unlike = 0.5;          // of the pulses' median likeness to their average
constexpr size_t fewestPulses = 3;

/// The lag with the largest sum of the stretches' normalised correlations; 0 when there is none.
double periodOf(const double* channel, int64_t length, float rate) {
  const auto lagMin = std::llround(static_cast<double>(rate) * 60 / fastestHeart);
  const auto lagMax = std::llround(static_cast<double>(rate) * 60 / slowestHeart);
  const auto stretch = std::llround(static_cast<double>(rate) * stretchSeconds);
  std::vector<double> sums(static_cast<size_t>(lagMax - lagMin + 1), 0.0);
  std::vector<double> products(sums.size());
  for (int64_t first = 0; first + stretch + lagMax <= length; first += stretch) {
    const double* const samples = channel + first;
    const double factor = normFactor(energyOf({samples, static_cast<size_t>(stretch + lagMax)}));
    vectorKernels().slidingDot(samples + lagMin, samples, stretch, static_cast<int64_t>(sums.size()),
                               products.data());
    for (size_t k = 0; k < sums.size(); ++k) sums[k] += factor * factor * products[k];
  }
  const auto best = std::max_element(sums.begin(), sums.end());
  return *best > 0 ? static_cast<double>(lagMin + (best - sums.begin())) : 0.0;
}

int32_t commonPeriod(const BcgSeries& series) {
  std::vector<double> periods;
  const size_t step = (series.nrOfChannels() + mostVoters - 1) / mostVoters;
  for (size_t c = 0; c < series.nrOfChannels(); c += step) {
    const double period = periodOf(series.channels[c].data(), series.length, series.rate);
    if (period > 0) periods.push_back(period);
  }
  return static_cast<int32_t>(upperMedian(periods));
}

void measureIntervals(const std::vector<double>& pulses, PulsePlausibility& result) {
  if (pulses.size() < 2) return;
  std::vector<double> intervals;
  for (size_t i = 1; i < pulses.size(); ++i) intervals.push_back(pulses[i] - pulses[i - 1]);
  result.medianInterval = upperMedian(intervals);
  result.meanInterval = (pulses.back() - pulses.front()) / static_cast<double>(intervals.size());
  double nrOfOff = 0;
  for (size_t i = 0; i < intervals.size(); ++i) {
    const double ratio = intervals[i] / result.medianInterval;
    if (ratio <= offByAThird && ratio >= 1 / offByAThird) continue;
    ++nrOfOff;
    if (result.firstOff < 0) result.firstOff = pulses[i];
  }
  result.offIntervals = nrOfOff / static_cast<double>(intervals.size());
}

/// A channel around every pulse, each of unit energy, and what they share.
struct ChannelLikeness {
  double commonShare = 0;
  std::vector<double> toAverage; ///< correlation of every pulse with the average of the others
};

ChannelLikeness likenessIn(const double* channel, const std::vector<int64_t>& starts, size_t count) {
  std::vector<double> factors;
  std::vector<double> sum(count, 0.0);
  for (const int64_t start : starts) {
    factors.push_back(normFactor(energyOf({channel + start, count})));
    vectorKernels().addScaled(channel + start, factors.back(), static_cast<int64_t>(count), sum.data());
  }
  const auto n = static_cast<double>(starts.size());
  const double energy = energyOf(sum);
  ChannelLikeness likeness;
  likeness.commonShare = (energy / n - 1) / (n - 1);
  for (size_t i = 0; i < starts.size(); ++i) {
    // With the pulse itself taken out: sum - e, for e of unit energy.
    const double along =
        factors[i] * vectorKernels().dot(channel + starts[i], sum.data(), static_cast<int64_t>(count));
    const double rest = energy - 2 * along + 1;
    likeness.toAverage.push_back((along - 1) * normFactor(rest));
  }
  return likeness;
}

void measureLikeness(const BcgSeries& series, const std::vector<double>& pulses, int32_t period,
                     PulsePlausibility& result) {
  const auto half = static_cast<int64_t>(epochHalfLength * period);
  std::vector<int64_t> starts;
  for (const double pulse : pulses) {
    const int64_t start = static_cast<int64_t>(pulse) - half;
    if (start >= 0 && start + 2 * half < series.length) starts.push_back(start);
  }
  if (starts.size() < fewestPulses) return;
  std::vector<double> shares;
  std::vector<std::vector<double>> ofPulse(starts.size());
  for (const std::vector<double>& channel : series.channels) {
    if (!hasEnergy(channel.data(), series.length)) continue;
    const ChannelLikeness likeness = likenessIn(channel.data(), starts, static_cast<size_t>(2 * half + 1));
    shares.push_back(likeness.commonShare);
    for (size_t i = 0; i < starts.size(); ++i) ofPulse[i].push_back(likeness.toAverage[i]);
  }
  result.commonShare = std::clamp(upperMedian(shares), 0.0, 1.0);
  std::vector<double> likenesses;
  likenesses.reserve(ofPulse.size());
  for (const std::vector<double>& channels : ofPulse) likenesses.push_back(upperMedian(channels));
  const double limit = unlike * upperMedian(likenesses);
  const auto nrOfUnlike = std::count_if(likenesses.begin(), likenesses.end(),
                                        [limit](double likeness) { return likeness < limit; });
  result.unlikePulses = static_cast<double>(nrOfUnlike) / static_cast<double>(likenesses.size());
}

} // namespace

PulsePlausibility measurePlausibility(const BcgSeries& series, const std::vector<double>& pulses,
                                      int32_t period) {
  PulsePlausibility result;
  result.commonPeriod = commonPeriod(series);
  measureIntervals(pulses, result);
  if (period > 0) measureLikeness(series, pulses, period, result);
  return result;
}

} // namespace emeg
