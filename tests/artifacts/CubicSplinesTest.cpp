#include "artifacts/CubicSplines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace emeg {
namespace {

struct Spline {
  std::vector<double> h, a, b, c, d;

  double value(std::size_t k, double t) const { return ((d[k] * t + c[k]) * t + b[k]) * t + a[k]; }
  double slope(std::size_t k, double t) const { return (3.0 * d[k] * t + 2.0 * c[k]) * t + b[k]; }
  double curvature(std::size_t k, double t) const { return 6.0 * d[k] * t + 2.0 * c[k]; }
};

// The arrays start with values that no result may depend on.
Spline spacedSpline(const std::vector<double>& spacings, const std::vector<double>& values,
                    double before = std::numeric_limits<double>::quiet_NaN()) {
  const std::vector<double> stale(values.size(), before);
  Spline spline{spacings, values, stale, stale, stale};
  computeSpacedSplineCoefficients(spline.h.data(), spline.a.data(), spline.b.data(), spline.c.data(),
                                  spline.d.data(), static_cast<int64_t>(values.size()));
  return spline;
}

Spline unitSpline(const std::vector<double>& values,
                  double before = std::numeric_limits<double>::quiet_NaN()) {
  const std::vector<double> stale(values.size(), before);
  Spline spline{std::vector<double>(values.size(), 1.0), values, stale, stale, stale};
  computeSplineCoefficients(spline.a.data(), spline.b.data(), spline.c.data(), spline.d.data(),
                            static_cast<int64_t>(values.size()));
  return spline;
}

std::vector<double> randomValues(std::size_t n, uint64_t seed) {
  std::mt19937_64 generator(seed);
  std::vector<double> values(n);
  for (double& value : values) value = static_cast<double>(generator() >> 11) / 4503599627370496.0 - 1.0;
  return values;
}

std::vector<double> randomSpacings(std::size_t n, uint64_t seed) {
  std::mt19937_64 generator(seed);
  std::vector<double> spacings(n);
  for (double& spacing : spacings) spacing = static_cast<double>(1 + generator() % 5);
  return spacings;
}

// Gaussian elimination with row exchange of a full system.
std::vector<double> solveDense(std::vector<std::vector<double>> matrix, std::vector<double> rhs) {
  const std::size_t n = rhs.size();
  for (std::size_t column = 0; column < n; ++column) {
    std::size_t pivot = column;
    for (std::size_t row = column; row < n; ++row) {
      if (std::fabs(matrix[row][column]) > std::fabs(matrix[pivot][column])) pivot = row;
    }
    std::swap(matrix[column], matrix[pivot]);
    std::swap(rhs[column], rhs[pivot]);
    for (std::size_t row = column + 1; row < n; ++row) {
      const double factor = matrix[row][column] / matrix[column][column];
      for (std::size_t k = column; k < n; ++k) matrix[row][k] -= factor * matrix[column][k];
      rhs[row] -= factor * rhs[column];
    }
  }
  for (std::size_t row = n; row-- > 0;) {
    for (std::size_t k = row + 1; k < n; ++k) rhs[row] -= matrix[row][k] * rhs[k];
    rhs[row] /= matrix[row][row];
  }
  return rhs;
}

// The curvatures c[1] ... c[n - 1] as one dense system: continuity of the slope at the inner knots (the first
// row without a c[0] term, as the elimination starts there) and, as the last row, the end rule in terms of
// the row before it: eliminating c[n - 2] from c[n - 2] + 2 c[n - 1] (times its pivot) = ... gives c[n - 1]
// (1 - 2 p) = r.
std::vector<double> denseCurvatures(const std::vector<double>& h, const std::vector<double>& a) {
  const std::size_t n = a.size();
  const std::size_t unknowns = n - 1;
  std::vector<std::vector<double>> matrix(unknowns, std::vector<double>(unknowns, 0.0));
  std::vector<double> rhs(unknowns, 0.0);
  for (std::size_t k = 1; k + 1 < n; ++k) {
    const std::size_t row = k - 1;
    if (k > 1) matrix[row][row - 1] = h[k - 1];
    matrix[row][row] = 2.0 * (h[k - 1] + h[k]);
    matrix[row][row + 1] = h[k];
    rhs[row] = 3.0 * ((a[k + 1] - a[k]) / h[k] - (a[k] - a[k - 1]) / h[k - 1]);
  }
  // p c[n - 2] + h c[n - 1] = r (eliminated row) and c[n - 1] (1 - 2 p) = r give, subtracted,
  // p c[n - 2] + (h - 1 + 2 p) c[n - 1] = 0: with p not zero, c[n - 2] + ((h - 1) / p + 2) c[n - 1] = 0.
  // At unit spacing behind the last inner knot that is c[n - 2] = -2 c[n - 1], whatever p.
  double p = 2.0 * (h[0] + h[1]);
  for (std::size_t k = 2; k + 1 < n; ++k) p = 2.0 * (h[k - 1] + h[k]) - h[k - 1] * h[k - 1] / p;
  matrix[unknowns - 1][unknowns - 2] = 1.0;
  matrix[unknowns - 1][unknowns - 1] = (h[n - 2] - 1.0) / p + 2.0;
  return solveDense(matrix, rhs);
}

void expectContinuousToTheSecondDerivative(const Spline& spline, std::size_t firstSmoothKnot) {
  for (std::size_t k = 0; k + 1 < spline.a.size(); ++k) {
    EXPECT_EQ(spline.value(k, 0.0), spline.a[k]);
    EXPECT_NEAR(spline.value(k, spline.h[k]), spline.a[k + 1], 1e-11) << "knot " << k + 1;
    EXPECT_NEAR(spline.curvature(k, spline.h[k]), spline.curvature(k + 1, 0.0), 1e-11) << "knot " << k + 1;
    if (k + 1 >= firstSmoothKnot && k + 2 < spline.a.size()) {
      EXPECT_NEAR(spline.slope(k, spline.h[k]), spline.slope(k + 1, 0.0), 1e-11) << "knot " << k + 1;
    }
  }
}

TEST(CubicSplines, UnitSpacingGivesTheCurvaturesOfTheDenseSystem) {
  for (const std::size_t n : {3U, 4U, 5U, 8U, 40U}) {
    const std::vector<double> values = randomValues(n, n);
    const Spline spline = unitSpline(values);
    const std::vector<double> expected = denseCurvatures(std::vector<double>(n, 1.0), values);
    for (std::size_t k = 1; k < n; ++k)
      EXPECT_NEAR(spline.c[k], expected[k - 1], 1e-12) << n << " knots, " << k;
    EXPECT_EQ(spline.c[0], -0.5 * spline.c[1]);
  }
}

TEST(CubicSplines, ArbitrarySpacingGivesTheCurvaturesOfTheDenseSystem) {
  for (const std::size_t n : {3U, 4U, 5U, 8U, 40U}) {
    const std::vector<double> values = randomValues(n, 100 + n);
    const std::vector<double> spacings = randomSpacings(n, 200 + n);
    const Spline spline = spacedSpline(spacings, values);
    const std::vector<double> expected = denseCurvatures(spacings, values);
    for (std::size_t k = 1; k < n; ++k)
      EXPECT_NEAR(spline.c[k], expected[k - 1], 1e-12) << n << " knots, " << k;
    EXPECT_EQ(spline.c[0], -0.5 * spline.c[1]);
  }
}

TEST(CubicSplines, PassesThroughEveryKnotWithContinuousSlopeAndCurvature) {
  // The end rule puts a curvature at knot 0 that the equation of knot 1 does not know: the slope is
  // continuous from knot 2 on.
  expectContinuousToTheSecondDerivative(unitSpline(randomValues(60, 7)), 2);
  expectContinuousToTheSecondDerivative(spacedSpline(randomSpacings(60, 8), randomValues(60, 9)), 2);
}

TEST(CubicSplines, BothRoutinesAgreeAtUnitSpacing) {
  const std::vector<double> values = randomValues(500, 3);
  const Spline unit = unitSpline(values);
  const Spline spaced = spacedSpline(std::vector<double>(values.size(), 1.0), values);
  for (std::size_t k = 0; k < values.size(); ++k) {
    EXPECT_DOUBLE_EQ(unit.b[k], spaced.b[k]);
    EXPECT_DOUBLE_EQ(unit.c[k], spaced.c[k]);
    EXPECT_DOUBLE_EQ(unit.d[k], spaced.d[k]);
  }
}

TEST(CubicSplines, ALinearFunctionIsReproducedEverywhereAndContinuedBehindTheLastKnot) {
  const std::vector<double> spacings = randomSpacings(30, 5);
  std::vector<double> values(30);
  double x = 0.0;
  for (std::size_t k = 0; k < values.size(); ++k) {
    values[k] = 4.0 - 0.25 * x;
    x += spacings[k];
  }
  const Spline spline = spacedSpline(spacings, values);
  for (std::size_t k = 0; k < values.size(); ++k) {
    for (double t = 0.0; t < spacings[k]; t += 0.25) {
      EXPECT_NEAR(spline.value(k, t), values[k] - 0.25 * t, 1e-12);
    }
  }
}

TEST(CubicSplines, AParabolaIsReproducedAwayFromTheEnds) {
  const std::size_t n = 80;
  std::vector<double> values(n);
  for (std::size_t k = 0; k < n; ++k) values[k] = 0.5 * static_cast<double>(k * k) - 3.0;
  const Spline spline = unitSpline(values);
  for (std::size_t k = 30; k < 50; ++k) {
    const double x = static_cast<double>(k) + 0.37;
    EXPECT_NEAR(spline.value(k, 0.37), 0.5 * x * x - 3.0, 1e-9);
    EXPECT_NEAR(spline.c[k], 0.5, 1e-9);
  }
}

TEST(CubicSplines, ASampledSineIsInterpolatedToFourthOrder) {
  const auto worstError = [](double cyclesPerSample) {
    std::vector<double> values(400);
    for (std::size_t k = 0; k < values.size(); ++k) {
      values[k] = std::sin(2.0 * 3.14159265358979 * cyclesPerSample * static_cast<double>(k));
    }
    const Spline spline = unitSpline(values);
    double worst = 0.0;
    for (std::size_t k = 100; k < 300; ++k) {
      const double x = static_cast<double>(k) + 0.5;
      worst = std::max(
          worst, std::fabs(spline.value(k, 0.5) - std::sin(2.0 * 3.14159265358979 * cyclesPerSample * x)));
    }
    return worst;
  };
  const double coarse = worstError(0.05);
  const double fine = worstError(0.025);
  EXPECT_LT(coarse, 1e-4);
  EXPECT_NEAR(coarse / fine, 16.0, 1.5);
}

TEST(CubicSplines, KeepsTheSlopeAndNoThirdDerivativeBehindTheLastKnot) {
  const Spline unit = unitSpline(randomValues(25, 11));
  EXPECT_NEAR(unit.b[24], unit.slope(23, 1.0), 1e-12);
  EXPECT_EQ(unit.d[24], 0.0);
  EXPECT_NEAR(unit.c[24], unit.c[23] + 3.0 * unit.d[23], 1e-12);

  const std::vector<double> spacings = randomSpacings(25, 12);
  const Spline spaced = spacedSpline(spacings, randomValues(25, 13));
  EXPECT_NEAR(spaced.b[24], spaced.slope(23, spacings[23]), 1e-12);
  EXPECT_EQ(spaced.d[24], 0.0);
}

TEST(CubicSplines, NothingDependsOnWhatTheArraysHeldBefore) {
  const std::vector<double> spacings = randomSpacings(9, 1);
  for (std::size_t n = 1; n <= 9; ++n) {
    const std::vector<double> values = randomValues(n, 40 + n);
    const Spline first = unitSpline(values, -3.5e7);
    const Spline second = unitSpline(values, 12.25);
    EXPECT_EQ(first.b, second.b);
    EXPECT_EQ(first.c, second.c);
    EXPECT_EQ(first.d, second.d);
    const Spline third = spacedSpline(spacings, values, -3.5e7);
    const Spline fourth = spacedSpline(spacings, values, 12.25);
    EXPECT_EQ(third.b, fourth.b);
    EXPECT_EQ(third.c, fourth.c);
    EXPECT_EQ(third.d, fourth.d);
  }
}

TEST(CubicSplines, FewerThanThreeKnotsGiveAStraightLine) {
  const Spline two = unitSpline({1.0, 4.0});
  EXPECT_DOUBLE_EQ(two.value(0, 0.5), 2.5);
  EXPECT_DOUBLE_EQ(two.value(1, 2.0), 10.0);
  const Spline twoSpaced = spacedSpline({6.0, 1.0}, {1.0, 4.0});
  EXPECT_DOUBLE_EQ(twoSpaced.value(0, 3.0), 2.5);
  EXPECT_DOUBLE_EQ(twoSpaced.value(1, 2.0), 5.0);
  const Spline one = unitSpline({7.0});
  EXPECT_DOUBLE_EQ(one.value(0, 0.9), 7.0);
  const Spline oneSpaced = spacedSpline({5.0}, {7.0});
  EXPECT_DOUBLE_EQ(oneSpaced.value(0, 4.0), 7.0);
}

TEST(CubicSplines, NoKnotsTouchNoMemory) {
  computeSplineCoefficients(nullptr, nullptr, nullptr, nullptr, 0);
  computeSpacedSplineCoefficients(nullptr, nullptr, nullptr, nullptr, nullptr, 0);
  double untouched = 5.0;
  computeSplineCoefficients(&untouched, &untouched, &untouched, &untouched, -1);
  EXPECT_EQ(untouched, 5.0);
}

TEST(CubicSplines, ThreeKnotsFollowTheClosedForm) {
  // One inner knot: c[1] has pivot 4, right-hand side 3 (b[1] - b[0]) = -6; c[2] = -6 / (1 - 8) = 6/7.
  const Spline spline = unitSpline({0.0, 1.0, 0.0});
  EXPECT_DOUBLE_EQ(spline.c[2], 6.0 / 7.0);
  EXPECT_DOUBLE_EQ(spline.c[1], (-6.0 - 6.0 / 7.0) / 4.0);
  EXPECT_DOUBLE_EQ(spline.c[0], -0.5 * spline.c[1]);
}

} // namespace
} // namespace emeg
