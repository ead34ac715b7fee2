#include "tests/artifacts/reference/LiteralPulseModel.h"

#include "tests/artifacts/PulseModelSamples.h"
#include "tests/artifacts/reference/JacobiSvd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace emeg {
namespace {

double distance(const Matrix& a, const Matrix& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t k = 0; k < a[i].size(); ++k) sum += (a[i][k] - b[i][k]) * (a[i][k] - b[i][k]);
  return std::sqrt(sum);
}

double norm(const Matrix& a) {
  return distance(a, Matrix(a.size(), std::vector<double>(a.empty() ? 0 : a[0].size(), 0.0)));
}

Matrix sumOf(const Matrix& a, const Matrix& b) {
  Matrix sum = a;
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t k = 0; k < a[i].size(); ++k) sum[i][k] += b[i][k];
  return sum;
}

/// A matrix with the given singular values.
Matrix matrixWith(const std::vector<double>& singularValues, std::size_t m, std::size_t n) {
  JacobiSvd svd = jacobiSvd(noiseMatrix(m, n, 5));
  svd.singularValues.assign(m, 0.0);
  std::copy(singularValues.begin(), singularValues.end(), svd.singularValues.begin());
  return svd.truncated(m);
}

TEST(JacobiSvd, RestoresTheMatrixFromOrthonormalVectors) {
  for (const auto& [m, n] : {std::pair<std::size_t, std::size_t>{7, 31}, {12, 12}, {9, 4}}) {
    const Matrix matrix = noiseMatrix(m, n, 1);
    const JacobiSvd svd = jacobiSvd(matrix);
    EXPECT_LT(distance(svd.truncated(m), matrix), 1e-12 * norm(matrix));
    EXPECT_TRUE(std::is_sorted(svd.singularValues.rbegin(), svd.singularValues.rend()));
    for (std::size_t i = 0; i < m; ++i) {
      for (std::size_t j = 0; j < m; ++j) {
        double left = 0;
        double right = 0;
        for (std::size_t k = 0; k < m; ++k) left += svd.left[i][k] * svd.left[j][k];
        for (std::size_t k = 0; k < n; ++k) right += svd.right[i][k] * svd.right[j][k];
        EXPECT_NEAR(left, i == j ? 1 : 0, 1e-12);
        if (i < n && j < n) {
          EXPECT_NEAR(right, i == j ? 1 : 0, 1e-12);
        }
      }
    }
  }
}

TEST(JacobiSvd, FindsTheSingularValuesOfASmallMatrixByHand) {
  const JacobiSvd svd = jacobiSvd({{3, 0}, {4, 5}});
  EXPECT_NEAR(svd.singularValues[0], std::sqrt(45.0), 1e-12);
  EXPECT_NEAR(svd.singularValues[1], std::sqrt(5.0), 1e-12);
}

TEST(LiteralPrincipalComponentModel, AgreesWithTheSingularValueDecomposition) {
  const Matrix rows = matrixWith({100, 40, 15, 3, 1, 0.5}, 12, 61);
  const JacobiSvd svd = jacobiSvd(rows);
  for (int count = 1; count <= 3; ++count) {
    Matrix residual = rows;
    Matrix out;
    literalPrincipalComponentModel(count, residual, out);
    const Matrix best = svd.truncated(static_cast<std::size_t>(count));
    // The iteration ends at a relative change of the energy of 1e-6, an angle of about 1e-3.
    EXPECT_LT(distance(out, best), 3e-3 * 100);
    EXPECT_LT(distance(sumOf(out, residual), rows), 1e-12 * 100);
    EXPECT_GE(norm(residual), distance(rows, best) * (1 - 1e-12));
    EXPECT_LT(norm(residual), distance(rows, best) * 1.001);
  }
}

TEST(LiteralPrincipalComponentModel, ProjectsTheRowsOrthogonally) {
  Matrix residual = noiseMatrix(20, 51, 9);
  Matrix out;
  literalPrincipalComponentModel(3, residual, out);
  for (const std::vector<double>& modelled : out) {
    for (const std::vector<double>& left : residual) {
      double product = 0;
      for (std::size_t k = 0; k < left.size(); ++k) product += modelled[k] * left[k];
      EXPECT_NEAR(product, 0.0, 1e-10);
    }
  }
  EXPECT_GT(jacobiSvd(out).singularValues[2], 1.0);
  EXPECT_LT(jacobiSvd(out).singularValues[3], 1e-10);
}

TEST(LiteralPrincipalComponentModel, TakesAllOfAMatrixOfLowerRank) {
  for (const std::vector<double>& values : {std::vector<double>{50}, std::vector<double>{50, 20}}) {
    const Matrix rows = matrixWith(values, 10, 41);
    Matrix residual = rows;
    Matrix out;
    literalPrincipalComponentModel(3, residual, out);
    EXPECT_LT(distance(out, rows), 1e-9);
    EXPECT_LT(norm(residual), 1e-9);
  }
}

TEST(LiteralPrincipalComponentModel, TakesAllOfFewerThanThreeRows) {
  for (const std::size_t m : {std::size_t{1}, std::size_t{2}}) {
    const Matrix rows = noiseMatrix(m, 41, 3);
    Matrix residual = rows;
    Matrix out;
    literalPrincipalComponentModel(3, residual, out);
    EXPECT_LT(distance(out, rows), 1e-9);
    EXPECT_LT(norm(residual), 1e-9);
  }
}

TEST(LiteralPrincipalComponentModel, MakesNothingOfNothing) {
  Matrix zeros(5, std::vector<double>(11, 0.0));
  Matrix out;
  literalPrincipalComponentModel(3, zeros, out);
  EXPECT_EQ(out, zeros);
  Matrix none;
  literalPrincipalComponentModel(3, none, out);
  EXPECT_TRUE(out.empty());
}

TEST(LiteralPrincipalComponentModel, KeepsSilentRowsSilent) {
  Matrix rows = noiseMatrix(6, 21, 4);
  rows[2].assign(21, 0.0);
  Matrix out;
  literalPrincipalComponentModel(3, rows, out);
  EXPECT_EQ(out[2], std::vector<double>(21, 0.0));
  EXPECT_EQ(rows[2], std::vector<double>(21, 0.0));
  EXPECT_GT(norm(out), 1.0);
}

TEST(LiteralPrincipalComponentModel, FindsNoComponentFromAFirstColumnWithoutEnergy) {
  Matrix rows = noiseMatrix(6, 21, 4);
  for (std::vector<double>& row : rows) row[0] = 0.0;
  const Matrix before = rows;
  Matrix out;
  literalPrincipalComponentModel(3, rows, out);
  EXPECT_EQ(norm(out), 0.0);
  EXPECT_EQ(rows, before);
}

} // namespace
} // namespace emeg
