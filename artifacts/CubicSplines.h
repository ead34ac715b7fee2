#pragma once

#include <cstdint>

namespace emeg {

/// Cubic splines through n knots with this system's own end rules. Between knot k and k + 1 the value at
/// offset t is ((d[k] t + c[k]) t + b[k]) t + a[k].
///
/// Behind the last knot: c[n - 1] is what the routine leaves there, b[n - 1] the slope at the knot, d[n - 1]
/// = 0. Fewer than three knots give straight lines. All arrays hold n entries.

/// Knots at spacings h (h[k] > 0 is the distance from knot k to k + 1).
void computeSpacedSplineCoefficients(const double* h, const double* a, double* b, double* c, double* d,
                                     int64_t n);

/// Knots at unit spacing.
void computeSplineCoefficients(const double* a, double* b, double* c, double* d, int64_t n);

} // namespace emeg
