#include "engine/SaturatedChannels.h"

#include "artifacts/SaturationRepair.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

// An amplifier's clipping shows at and next to the last integer.
constexpr int64_t limitMargin = 2;
constexpr size_t fewestUsable = 3; // of a spline

SaturationLimits limitsOf(const IntegerRange& integers) {
  return {static_cast<double>(integers.smallest + limitMargin),
          static_cast<double>(integers.largest - limitMargin)};
}

bool isUsable(double integer, const SaturationLimits& limits) {
  return limits.lower < integer && integer < limits.upper;
}

/// A sample that is no number counts as saturated.
double integerOf(double value, const IntegerRange& integers) {
  const double integer = std::floor((value - integers.offset) / integers.step + 0.5);
  return std::isfinite(integer) ? integer : static_cast<double>(integers.largest);
}

} // namespace

int64_t nrOfSaturated(std::span<const double> values, const IntegerRange& integers) {
  const SaturationLimits limits = limitsOf(integers);
  return std::count_if(values.begin(), values.end(),
                       [&](double value) { return !isUsable(integerOf(value, integers), limits); });
}

RepairedChannel repairSaturated(std::vector<double>& values, const IntegerRange& range) {
  const SaturationLimits limits = limitsOf(range);
  std::vector<double> integers(values.size());
  std::transform(values.begin(), values.end(), integers.begin(),
                 [&](double value) { return integerOf(value, range); });
  const auto usable = [&limits](double integer) { return isUsable(integer, limits); };
  const auto firstUsable = std::find_if(integers.begin(), integers.end(), usable);
  const auto lastUsable = std::find_if(integers.rbegin(), integers.rend(), usable).base();
  RepairedChannel result;
  const auto nrOfUsable = static_cast<size_t>(std::count_if(integers.begin(), integers.end(), usable));
  const auto nrOfUnusable = static_cast<int64_t>(integers.size() - nrOfUsable);
  if (nrOfUsable < fewestUsable) {
    result.nrOfLeft = nrOfUnusable;
    return result;
  }
  const auto first = static_cast<size_t>(firstUsable - integers.begin());
  const auto length = static_cast<size_t>(lastUsable - firstUsable);
  result.nrOfRepaired = static_cast<int64_t>(length - nrOfUsable);
  result.nrOfLeft = nrOfUnusable - result.nrOfRepaired;
  if (result.nrOfRepaired == 0) return result;

  std::vector<double> repaired(firstUsable, lastUsable);
  std::vector<double> scratch(length), b(length), c(length), d(length);
  repairSaturations(repaired.data(), static_cast<int64_t>(length), limits, scratch.data(), b.data(), c.data(),
                    d.data(), {});
  for (size_t i = 0; i < length; ++i)
    if (!isUsable(integers[first + i], limits)) values[first + i] = range.step * repaired[i] + range.offset;
  return result;
}

uint64_t memoryForRepair(int64_t nrOfSamples) {
  constexpr uint64_t arrays = 8; // values, integers, repaired, and five of the spline
  return arrays * sizeof(double) * static_cast<uint64_t>(nrOfSamples);
}

} // namespace emeg
