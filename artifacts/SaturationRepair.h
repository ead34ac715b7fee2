#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace emeg {

/// Limits of the recording's integer range; a sample is usable only when it lies strictly between the two.
struct SaturationLimits {
  double lower = 0;
  double upper = 0;
};

/// The limits that belong to a sample-format code; nothing for codes that cannot saturate. The limits of code
/// 3 form an empty range: with that code every sample counts as saturated.
std::optional<SaturationLimits> saturationLimitsOf(uint8_t sampleFormatCode);

enum class SaturationResult {
  NothingDone,  ///< no samples, or none of them usable: the channel is as it was
  NoSaturation, ///< every sample is usable; the channel now holds the knot spacings, 1.0 throughout
  Repaired      ///< saturated samples were replaced by a cubic spline through the usable ones
};

/// Replaces the saturated samples of one channel (`n` samples, in place) by a cubic spline through the
/// others.
///
/// `onDetected` is called once, before the repair, when there is a saturated sample. Saturated samples in
/// front of the first usable one are not repaired: the channel is rebuilt from there on, and the positions
/// before it are left with knot spacings (or, behind as many positions as there are usable samples, with what
/// they held). Those behind the last usable sample continue the spline as `computeSpacedSplineCoefficients`
/// ends it. `scratch`, `b`, `c` and `d` are work arrays of `n` entries.
SaturationResult repairSaturations(double* channelSignal, int64_t n, const SaturationLimits& limits,
                                   double* scratch, double* b, double* c, double* d,
                                   const std::function<void()>& onDetected);

} // namespace emeg
