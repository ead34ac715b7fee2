#include "artifacts/CubicSplines.h"

namespace emeg {

namespace {

// Too few knots for a curvature: a straight line through one or two knots, continued behind the last one.
void setStraightLine(double slope, double* b, double* c, double* d, int64_t n) {
  for (int64_t k = 0; k < n; ++k) {
    b[k] = slope;
    c[k] = 0.0;
    d[k] = 0.0;
  }
}

} // namespace

void computeSpacedSplineCoefficients(const double* h, const double* a, double* b, double* c, double* d,
                                     int64_t n) {
  if (n < 3) {
    setStraightLine(n == 2 ? (a[1] - a[0]) / h[0] : 0.0, b, c, d, n);
    return;
  }

  // Forward elimination of the tridiagonal system for the curvatures: c holds the diagonal, d the right-hand
  // side.
  for (int64_t k = 0; k < n - 1; ++k) b[k] = (a[k + 1] - a[k]) / h[k];
  c[1] = (h[0] + h[1]) * 2.0;
  d[1] = (b[1] - b[0]) * 3.0;
  for (int64_t k = 2; k < n - 1; ++k) {
    c[k] = (h[k - 1] + h[k]) * 2.0 - h[k - 1] * h[k - 1] / c[k - 1];
    d[k] = (b[k] - b[k - 1]) * 3.0 - d[k - 1] * h[k - 1] / c[k - 1];
  }

  // Back substitution between this system's own end rules.
  c[n - 1] = d[n - 2] / (1.0 - c[n - 2] * 2.0);
  for (int64_t k = n - 2; k >= 1; --k) c[k] = (d[k] - h[k] * c[k + 1]) / c[k];
  c[0] = c[1] * -0.5;

  for (int64_t k = 0; k < n - 1; ++k) {
    b[k] = b[k] - (c[k] * 2.0 + c[k + 1]) * h[k] / 3.0;
    d[k] = (c[k + 1] - c[k]) / (h[k] * 3.0);
  }
  b[n - 1] = b[n - 2] + (c[n - 2] + c[n - 1]) * h[n - 2];
  d[n - 1] = 0.0;
}

void computeSplineCoefficients(const double* a, double* b, double* c, double* d, int64_t n) {
  if (n < 3) {
    setStraightLine(n == 2 ? a[1] - a[0] : 0.0, b, c, d, n);
    return;
  }

  for (int64_t k = 0; k < n - 1; ++k) b[k] = a[k + 1] - a[k];
  c[1] = 4.0;
  d[1] = (b[1] - b[0]) * 3.0;
  for (int64_t k = 2; k < n - 1; ++k) {
    c[k] = 4.0 - 1.0 / c[k - 1];
    d[k] = (b[k] - b[k - 1]) * 3.0 - d[k - 1] / c[k - 1];
  }

  c[n - 1] = d[n - 2] / (1.0 - c[n - 2] * 2.0);
  for (int64_t k = n - 2; k >= 1; --k) c[k] = (d[k] - c[k + 1]) / c[k];
  c[0] = c[1] * -0.5;

  for (int64_t k = 0; k < n - 1; ++k) {
    b[k] = b[k] - (c[k] * 2.0 + c[k + 1]) / 3.0;
    d[k] = (c[k + 1] - c[k]) / 3.0;
  }
  b[n - 1] = b[n - 2] + (c[n - 2] + c[n - 1]);
  d[n - 1] = 0.0;
}

} // namespace emeg
