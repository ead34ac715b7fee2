#include "engine/stages/KnotSpline.h"

#include "artifacts/CubicSplines.h"

#include <algorithm>

namespace emeg {

/// The fraction is accumulated, not computed from the sample's index.
void combineWithSpline(StageRun& run, const std::vector<double>& knots, int64_t nrOfKnots,
                       int64_t samplesPerKnot, double sign) {
  const double* const a = knots.data();
  double* const b = run.work.splineB.data();
  double* const c = run.work.splineC.data();
  double* const d = run.work.splineD.data();
  computeSplineCoefficients(a, b, c, d, nrOfKnots);
  const double s = 1.0 / static_cast<double>(samplesPerKnot);
  double* const signal = run.signal();
  double t = 0;
  int64_t k = 0;
  for (int64_t i = 0; i < run.plan.nrOfSamples; ++i) {
    signal[i] += sign * (((d[k] * t + c[k]) * t + b[k]) * t + a[k]);
    if (t + s > 0.99999) {
      t = 0;
      k = std::min(k + 1, nrOfKnots - 1);
    } else {
      t += s;
    }
  }
}

} // namespace emeg
