#include "artifacts/SaturationRepair.h"

#include "artifacts/CubicSplines.h"

namespace emeg {

std::optional<SaturationLimits> saturationLimitsOf(uint8_t sampleFormatCode) {
  switch (sampleFormatCode) {
  case 1:
    return SaturationLimits{-32766.0, 32765.0};
  case 3:
    return SaturationLimits{2147483650.0, 2147483645.0};
  default:
    return std::nullopt;
  }
}

SaturationResult repairSaturations(double* channelSignal, int64_t n, const SaturationLimits& limits,
                                   double* scratch, double* b, double* c, double* d,
                                   const std::function<void()>& onDetected) {
  if (n < 1) return SaturationResult::NothingDone;

  // The usable values move to `scratch`; the channel itself becomes the list of their spacings. Writes never
  // get ahead of the sample being read.
  int64_t nrOfUsable = 0;
  bool saturated = false;
  for (int64_t i = 0; i < n; ++i) {
    const double x = channelSignal[i];
    if (limits.lower < x && x < limits.upper) {
      scratch[nrOfUsable] = x;
      channelSignal[nrOfUsable] = 1.0;
      ++nrOfUsable;
    } else {
      if (nrOfUsable > 0) channelSignal[nrOfUsable - 1] += 1.0;
      saturated = true;
    }
  }
  if (!saturated) return SaturationResult::NoSaturation;

  if (onDetected) onDetected();
  if (nrOfUsable == 0) return SaturationResult::NothingDone;

  computeSpacedSplineCoefficients(channelSignal, scratch, b, c, d, nrOfUsable);

  // Backwards, so that a spacing is read before its place is overwritten: the samples of knot k lie at k or
  // behind.
  int64_t out = n - 1;
  for (int64_t k = nrOfUsable - 1; k >= 0; --k) {
    for (double t = channelSignal[k] - 1.0; t >= 0.0; t -= 1.0) {
      channelSignal[out] = ((d[k] * t + c[k]) * t + b[k]) * t + scratch[k];
      --out;
    }
  }
  return SaturationResult::Repaired;
}

} // namespace emeg
