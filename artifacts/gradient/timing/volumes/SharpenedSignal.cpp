#include "artifacts/gradient/timing/volumes/SharpenedSignal.h"

#include "dsp/Statistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace emeg {

namespace {

constexpr double largestValue = 1e12;
constexpr double differenceOver = 0.001; // seconds
constexpr int64_t leastDifference = 2;   // samples
constexpr double blockDuration = 0.1;    // seconds
constexpr double burstPercentile = 0.95;
constexpr double headroom = 1.5;
constexpr double blankAround = 0.005; // seconds
constexpr int64_t smallestBlankReach = 16;
constexpr double largestBlankedShare = 0.01;
constexpr size_t predictionOrder = 16;

double usable(double value) {
  return std::fabs(value) <= largestValue ? value : 0; // also for what is not a number
}

} // namespace

std::vector<double> sharpenedSignal(std::span<const double> channel, double samplingFrequency) {
  const auto n = static_cast<int64_t>(channel.size());
  // Over an even number of samples a second difference is blind to the highest frequency.
  const auto h = std::max(leastDifference,
                          2 * static_cast<int64_t>(std::floor(differenceOver * samplingFrequency / 2 + 0.5)));
  std::vector<double> sharpened(channel.size(), 0.0);
  for (int64_t i = h; i + h < n; ++i)
    sharpened[static_cast<size_t>(i)] = usable(channel[static_cast<size_t>(i - h)]) -
                                        2 * usable(channel[static_cast<size_t>(i)]) +
                                        usable(channel[static_cast<size_t>(i + h)]);
  return sharpened;
}

double levelOfBursts(std::span<const double> sharpened, double samplingFrequency) {
  const auto block = static_cast<size_t>(std::max(1.0, blockDuration * samplingFrequency));
  std::vector<double> largest;
  for (size_t begin = 0; begin < sharpened.size(); begin += block) {
    double most = 0;
    for (const double value : sharpened.subspan(begin, std::min(block, sharpened.size() - begin)))
      most = std::max(most, std::fabs(value));
    largest.push_back(most);
  }
  if (largest.empty()) return 0;
  return headroom * lowerPercentile(largest, burstPercentile);
}

void flattenSpectrum(std::span<double> signal, double floor) {
  std::array<double, predictionOrder + 1> products{};
  for (size_t i = predictionOrder; i < signal.size(); ++i)
    for (size_t lag = 0; lag <= predictionOrder; ++lag) products[lag] += signal[i] * signal[i - lag];
  if (!(products[0] > 0)) return;
  products[0] *= 1 + floor;

  // Levinson's recursion.
  std::array<double, predictionOrder + 1> filter{1};
  double error = products[0];
  for (size_t order = 1; order <= predictionOrder; ++order) {
    double sum = 0;
    for (size_t j = 0; j < order; ++j) sum += filter[j] * products[order - j];
    const double reflection = -sum / error;
    const auto before = filter;
    for (size_t j = 1; j <= order; ++j) filter[j] = before[j] + reflection * before[order - j];
    error *= 1 - reflection * reflection;
  }
  for (size_t i = signal.size(); i-- > 0;) {
    double sum = 0;
    for (size_t lag = 0; lag <= std::min(predictionOrder, i); ++lag) sum += filter[lag] * signal[i - lag];
    signal[i] = sum;
  }
}

void blankSpikes(std::span<double> sharpened, double level, double samplingFrequency) {
  const auto n = static_cast<int64_t>(sharpened.size());
  const auto reach = std::max(static_cast<int64_t>(blankAround * samplingFrequency), smallestBlankReach);
  std::vector<int64_t> spikes; // one per stretch that is blanked
  int64_t blanked = 0;
  for (int64_t i = 0; i < n; ++i) {
    if (std::fabs(sharpened[static_cast<size_t>(i)]) <= level) continue;
    blanked += spikes.empty() ? 2 * reach : std::min(i - spikes.back(), 2 * reach);
    spikes.push_back(i);
  }
  if (static_cast<double>(blanked) > largestBlankedShare * static_cast<double>(n)) {
    for (double& value : sharpened) value = std::clamp(value, -level, level);
    return;
  }
  for (const int64_t spike : spikes)
    std::fill(sharpened.begin() + std::max<int64_t>(spike - reach, 0),
              sharpened.begin() + std::min(spike + reach, n), 0.0);
}

} // namespace emeg
