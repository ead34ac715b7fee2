#pragma once

#include <cstdint>

namespace emeg {

/// Smooth step from 0 at u = 0 to 1 at u = 1: 6u^5 - 15u^4 + 10u^3. ramp(u) + ramp(1 - u) = 1.
inline double quinticRamp(double u) {
  return ((6 * u - 15) * u + 10) * u * u * u;
}

/// Where one template is subtracted and with which weight. It rises over the `ramp` samples in front of
/// `onset`, stays at 1, and falls over the `ramp` samples in front of `end`, so that the templates of
/// adjoining slices cross-fade.
struct TemplateWindow {
  int64_t onset = 0;
  int64_t end = 0;
  int64_t ramp = 0;

  int64_t first() const { return onset - ramp; }

  double weightAt(int64_t p) const {
    double weight = 0;
    if (p > onset - ramp && p < onset) weight += risingWeightAt(p);
    if (p >= onset && p <= end - ramp) weight += 1;
    if (p > end - ramp && p < end) weight += fallingWeightAt(p);
    return weight;
  }

private:
  double risingWeightAt(int64_t p) const {
    return quinticRamp(static_cast<double>(p - (onset - ramp)) / static_cast<double>(ramp));
  }
  double fallingWeightAt(int64_t p) const {
    return quinticRamp(static_cast<double>(end - p) / static_cast<double>(ramp));
  }
};

} // namespace emeg
