#include "engine/settings/OutputRate.h"

#include "dsp/OutputInstants.h"
#include "engine/settings/SettingText.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double rateTolerance = 1e-6; // of a ratio of two rates that should be a whole number
constexpr double largestIncrease = 10; // of the sampling frequency

std::string ratesNear(double recorded, double wanted) {
  const double below = std::max(1.0, std::floor(recorded / wanted));
  return shortTextOf(recorded / below) + " and " + shortTextOf(recorded / (below + 1)) + " Hz are possible";
}

} // namespace

int64_t wholeDivisor(double recorded, double rate) {
  const double factor = recorded / rate;
  const double whole = std::floor(factor + 0.5);
  const bool isWhole = whole >= 1 && whole < OutputInstants::steepestRatio &&
                       std::abs(factor - whole) <= rateTolerance * whole;
  return isWhole ? static_cast<int64_t>(whole) : 0;
}

std::optional<std::string> problemOfRate(double recorded, double rate, const Method& method,
                                         const std::string& prefix) {
  const double highest = largestIncrease * recorded;
  const double lowest = recorded / OutputInstants::steepestRatio;
  if (!(rate > lowest && rate <= highest))
    return prefix + "rate " + shortTextOf(rate) + ": from the recording's " + shortTextOf(recorded) +
           " Hz, rates above " + shortTextOf(lowest) + " and up to " + shortTextOf(highest) +
           " Hz can be made; give one of these, in Hz.";
  if (method.wholeChannels && wholeDivisor(recorded, rate) == 0)
    return prefix + "rate " + shortTextOf(rate) + ": with " + prefix + "as-plugin the recording's " +
           shortTextOf(recorded) + " Hz can only be divided by whole numbers; " + ratesNear(recorded, rate) +
           ".";
  return std::nullopt;
}

} // namespace emeg
