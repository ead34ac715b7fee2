#include "artifacts/gradient/templates/TemplateKernels.h"

#include <algorithm>

namespace emeg {

void addShiftedSpline(const SplinedSignal& signal, int64_t first, double fraction, double weight,
                      int64_t count, double* out) {
  const int64_t begin = std::max<int64_t>(0, -first);
  const int64_t end = std::min(count, signal.nrOfSamples - first);
  if (begin >= end) return;
  const double* const y = signal.y + (first + begin);
  const double* const b = signal.b + (first + begin);
  const double* const c = signal.c + (first + begin);
  const double* const d = signal.d + (first + begin);
  double* const sum = out + begin;
  for (int64_t t = 0; t < end - begin; ++t)
    sum[t] += weight * (((d[t] * fraction + c[t]) * fraction + b[t]) * fraction + y[t]);
}

} // namespace emeg
