#include "tests/artifacts/reference/LiteralHeartPeriod.h"

#include "dsp/Medians.h"

#include <cmath>

namespace emeg {

namespace {

int32_t floorOf(double x) {
  return static_cast<int32_t>(std::floor(x));
}

double wide(float x) {
  return static_cast<double>(x);
}

} // namespace

int32_t literalChannelPeriod(const std::vector<double>& channel, int32_t length, float rate,
                             int32_t previous) {
  const int32_t lagMin = floorOf(wide(rate) * 60.0 / 140.0 + 0.5);
  const int32_t lagMax = floorOf(wide(rate) * 60.0 / 35.0 + 0.5);
  const int32_t from = floorOf(length * 0.15000000000000002 + 0.5);
  const int32_t to = floorOf(length * 0.85 + 0.5);
  int32_t period = previous;
  double best = -1e60;
  for (int32_t lag = lagMin; lag <= lagMax; ++lag) {
    double s = 0.0;
    for (int32_t j = from; j <= to && j + lag < length; ++j)
      s += literalSample(channel, length, j) * literalSample(channel, length, j + lag);
    if (s > best) {
      best = s;
      period = lag;
    }
  }
  return period;
}

LiteralPeriod literalHeartPeriod(const std::vector<std::vector<double>>& series, int32_t length, float rate) {
  LiteralPeriod result;
  // A channel without a usable correlation takes the period of the channel before it.
  int32_t period = 0;
  for (const std::vector<double>& channel : series) {
    period = literalChannelPeriod(channel, length, rate, period);
    result.channelPeriods.push_back(period);
  }
  result.period = static_cast<int32_t>(
      sortMedian(result.channelPeriods.data(), static_cast<int32_t>(result.channelPeriods.size())));
  result.shortest = floorOf(std::exp(-0.5 * std::log(2.0)) * result.period + 0.5);
  result.longest = floorOf(std::exp(0.5 * std::log(2.0)) * result.period + 0.5);
  result.beatsPerMinute = result.period == 0 ? 0.0 : wide(rate) * 60.0 / result.period;
  return result;
}

} // namespace emeg
