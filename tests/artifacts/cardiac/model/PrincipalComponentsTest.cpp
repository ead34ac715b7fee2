#include "artifacts/cardiac/model/PrincipalComponents.h"

#include "artifacts/cardiac/model/RowMatrix.h"
#include "tests/artifacts/PulseModelSamples.h"
#include "tests/artifacts/reference/JacobiSvd.h"
#include "tests/artifacts/reference/LiteralPulseModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace emeg {
namespace {

RowMatrix rowsOf(const Matrix& matrix) {
  RowMatrix rows(matrix.size(), matrix.empty() ? 0 : matrix[0].size());
  for (std::size_t i = 0; i < matrix.size(); ++i) std::copy(matrix[i].begin(), matrix[i].end(), rows.row(i));
  return rows;
}

Matrix matrixOf(const RowMatrix& rows) {
  Matrix matrix;
  for (std::size_t i = 0; i < rows.nrOfRows(); ++i)
    matrix.emplace_back(rows.row(i), rows.row(i) + rows.length());
  return matrix;
}

double distance(const Matrix& a, const Matrix& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t k = 0; k < a[i].size(); ++k) sum += (a[i][k] - b[i][k]) * (a[i][k] - b[i][k]);
  return std::sqrt(sum);
}

double norm(const Matrix& a) {
  return distance(a, Matrix(a.size(), std::vector<double>(a.empty() ? 0 : a[0].size(), 0.0)));
}

Matrix sumOf(Matrix a, const Matrix& b) {
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t k = 0; k < a[i].size(); ++k) a[i][k] += b[i][k];
  return a;
}

/// Noise turned so that it has these singular values.
Matrix matrixWith(const std::vector<double>& singularValues, std::size_t m, std::size_t n) {
  JacobiSvd svd = jacobiSvd(noiseMatrix(m, n, 5));
  svd.singularValues.assign(m, 0.0);
  std::copy(singularValues.begin(), singularValues.end(), svd.singularValues.begin());
  return svd.truncated(m);
}

struct Modelled {
  Matrix model;
  Matrix residual;
  std::vector<PrincipalComponents::Component> components;
};

Modelled modelled(int count, const Matrix& matrix) {
  RowMatrix rows = rowsOf(matrix);
  const PrincipalComponents components = principalComponentModel(count, rows);
  Modelled result;
  for (const std::vector<double>& row : matrix) {
    // What stood in the model before does not matter.
    std::vector<double> model(row.size(), 99.0);
    components.modelOf(result.model.size(), model);
    result.model.push_back(model);
  }
  result.residual = matrixOf(rows);
  result.components = components.components;
  return result;
}

Modelled literallyModelled(int count, const Matrix& matrix) {
  Modelled result;
  result.residual = matrix;
  literalPrincipalComponentModel(count, result.residual, result.model);
  return result;
}

void expectLiteral(int count, const Matrix& matrix) {
  const Modelled actual = modelled(count, matrix);
  const Modelled literal = literallyModelled(count, matrix);
  EXPECT_LE(distance(actual.model, literal.model), 1e-9 * norm(matrix));
  EXPECT_LE(distance(actual.residual, literal.residual), 1e-9 * norm(matrix));
}

TEST(PrincipalComponentModel, AgreesWithThePlainVersionForEveryNumberOfRows) {
  for (std::size_t m = 4; m <= 21; ++m)
    for (const std::size_t n : {5, 8, 31, 64, 203}) {
      SCOPED_TRACE(std::to_string(m) + " x " + std::to_string(n));
      expectLiteral(3, noiseMatrix(m, n, static_cast<unsigned>(100 * m + n)));
    }
}

TEST(PrincipalComponentModel, AgreesWithThePlainVersionForEveryNumberOfComponents) {
  const Matrix matrix = matrixWith({100, 40, 15, 3, 1, 0.5}, 12, 61);
  for (int count = 0; count <= 4; ++count) expectLiteral(count, matrix);
}

TEST(PrincipalComponentModel, AgreesWithThePlainVersionAtAnyScale) {
  for (const double scale : {1e-120, 1e-30, 1e6, 1e60}) {
    Matrix matrix = matrixWith({100, 40, 15, 3, 1}, 9, 40);
    for (std::vector<double>& row : matrix)
      for (double& value : row) value *= scale;
    expectLiteral(3, matrix);
  }
}

TEST(PrincipalComponentModel, AgreesWithThePlainVersionForVeryManyRows) {
  // Around the number of rows above which the products of all pairs no longer pay.
  for (const std::size_t m : {299, 300, 301}) {
    Matrix matrix = noiseMatrix(m, 2 * m, 8);
    for (std::size_t i = 0; i < m; ++i)
      for (std::size_t k = 0; k < 2 * m; ++k)
        for (const std::size_t wave : {1, 2, 3})
          matrix[i][k] += 20 / static_cast<double>(wave) * std::cos(static_cast<double>(wave * i)) *
                          std::cos(0.02 * static_cast<double>(wave * k));
    expectLiteral(3, matrix);
  }
}

TEST(PrincipalComponentModel, FindsComponentsFarWeakerThanTheFirst) {
  for (const double weak : {1e-1, 1e-2, 1e-3, 1e-4, 1e-5, 1e-6, 1e-7}) {
    const Matrix matrix = matrixWith({1000, 1000 * weak, 200 * weak, 10 * weak}, 9, 61);
    const Modelled actual = modelled(3, matrix);
    const Modelled literal = literallyModelled(3, matrix);
    EXPECT_LT(distance(actual.model, literal.model), 1e-9 * 1000 * weak + 1e-14 * 1000) << weak;
    EXPECT_LT(distance(actual.residual, literal.residual), 1e-9 * 1000 * weak + 1e-14 * 1000) << weak;
  }
}

TEST(PrincipalComponentModel, FindsTheBestApproximationOfThatRank) {
  const Matrix matrix = matrixWith({100, 40, 15, 3, 1, 0.5}, 12, 61);
  const JacobiSvd svd = jacobiSvd(matrix);
  for (int count = 1; count <= 3; ++count) {
    const Modelled result = modelled(count, matrix);
    const Matrix best = svd.truncated(static_cast<std::size_t>(count));
    // The iteration ends when the energy changes by a millionth: an angle of about a thousandth.
    EXPECT_LT(distance(result.model, best), 3e-3 * 100);
    EXPECT_LT(distance(sumOf(result.model, result.residual), matrix), 1e-12 * 100);
    EXPECT_GE(norm(result.residual), distance(matrix, best) * (1 - 1e-12));
    EXPECT_LT(norm(result.residual), distance(matrix, best) * 1.001);
  }
}

TEST(PrincipalComponentModel, HasShapesOfUnitLengthAndTheSingularValuesAsScores) {
  const Matrix matrix = matrixWith({100, 40, 15, 3, 1, 0.5}, 12, 61);
  const JacobiSvd svd = jacobiSvd(matrix);
  const Modelled result = modelled(3, matrix);
  ASSERT_EQ(result.components.size(), 3U);
  for (std::size_t k = 0; k < 3; ++k) {
    const PrincipalComponents::Component& component = result.components[k];
    ASSERT_EQ(component.scores.size(), 12U);
    ASSERT_EQ(component.shape.size(), 61U);
    double length = 0;
    double energy = 0;
    double along = 0;
    for (const double value : component.shape) length += value * value;
    for (const double value : component.scores) energy += value * value;
    for (std::size_t j = 0; j < 61; ++j) along += component.shape[j] * svd.right[k][j];
    EXPECT_NEAR(length, 1, 1e-12);
    EXPECT_NEAR(std::sqrt(energy), svd.singularValues[k], 1e-5 * svd.singularValues[k]);
    EXPECT_NEAR(std::fabs(along), 1, 1e-5);
  }
}

TEST(PrincipalComponentModel, DoesNotCentreTheRows) {
  const Matrix constant(6, std::vector<double>(20, 5.0));
  const Modelled result = modelled(1, constant);
  EXPECT_LT(distance(result.model, constant), 1e-12);
}

TEST(PrincipalComponentModel, LeavesResidualsThatAreOrthogonalToTheModel) {
  const Modelled result = modelled(3, noiseMatrix(20, 51, 9));
  for (const std::vector<double>& model : result.model)
    for (const std::vector<double>& residual : result.residual) {
      double product = 0;
      for (std::size_t k = 0; k < 51; ++k) product += model[k] * residual[k];
      EXPECT_NEAR(product, 0, 1e-10);
    }
}

TEST(PrincipalComponentModel, TakesAllOfAMatrixOfLowerRank) {
  for (const std::vector<double>& values : {std::vector<double>{50}, {50, 20}, {50, 20, 5}}) {
    const Matrix matrix = matrixWith(values, 10, 41);
    const Modelled result = modelled(3, matrix);
    EXPECT_LT(distance(result.model, matrix), 2e-2);
    EXPECT_LT(distance(sumOf(result.model, result.residual), matrix), 1e-9);
    for (const std::vector<double>& row : result.model)
      for (const double value : row) ASSERT_TRUE(std::isfinite(value));
  }
}

TEST(PrincipalComponentModel, TakesAllOfFewerThanThreeRows) {
  for (const std::size_t m : {std::size_t{1}, std::size_t{2}, std::size_t{3}}) {
    const Matrix matrix = noiseMatrix(m, 41, 3);
    const Modelled result = modelled(3, matrix);
    EXPECT_LT(distance(result.model, matrix), 1e-9) << m;
    EXPECT_LT(norm(result.residual), 1e-9) << m;
  }
}

TEST(PrincipalComponentModel, MakesNothingOfNothing) {
  const Matrix silent(5, std::vector<double>(11, 0.0));
  const Modelled result = modelled(3, silent);
  EXPECT_EQ(result.model, silent);
  EXPECT_EQ(result.residual, silent);
}

TEST(PrincipalComponentModel, AnExactlyDeflatedResidualGivesComponentsThatAreZero) {
  // One row whose values and length are powers of two: nothing is left of it after the first component.
  const Matrix matrix(1, std::vector<double>(16, 2.0));
  const Modelled result = modelled(3, matrix);
  EXPECT_EQ(result.model, matrix);
  EXPECT_EQ(norm(result.residual), 0);
  ASSERT_EQ(result.components.size(), 3U);
  EXPECT_EQ(result.components[0].scores.size(), 1U);
  EXPECT_TRUE(result.components[1].scores.empty());
  EXPECT_TRUE(result.components[2].scores.empty());
}

TEST(PrincipalComponentModel, KeepsSilentRowsSilent) {
  Matrix matrix = noiseMatrix(6, 21, 4);
  matrix[2].assign(21, 0.0);
  const Modelled result = modelled(3, matrix);
  EXPECT_EQ(result.model[2], std::vector<double>(21, 0.0));
  EXPECT_EQ(result.residual[2], std::vector<double>(21, 0.0));
  EXPECT_GT(norm(result.model), 1.0);
}

TEST(PrincipalComponentModel, StartsFromTheFirstColumn) {
  // Without energy there, no component is found; a start that is a component already stays one, even if
  // another is stronger.
  Matrix matrix = noiseMatrix(6, 21, 4);
  for (std::vector<double>& row : matrix) row[0] = 0.0;
  const Modelled nothing = modelled(3, matrix);
  EXPECT_EQ(norm(nothing.model), 0.0);
  EXPECT_EQ(nothing.residual, matrix);

  const Matrix diagonal = {{3, 0, 0, 0}, {0, 5, 0, 0}, {0, 0, 7, 0}};
  const Modelled first = modelled(1, diagonal);
  EXPECT_EQ(first.model, (Matrix{{3, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}}));
}

/// Singular values that lie so close together, and a start so far from the largest of them, that every turn
/// of the iteration finds a little more energy, for far longer than it may go on.
Matrix slowMatrix(std::size_t silentColumns, std::vector<double>& squares, std::vector<double>& start) {
  constexpr std::size_t m = 71;
  Matrix matrix(m, std::vector<double>(m + 1 + silentColumns, 0.0));
  for (std::size_t i = 0; i < m; ++i) {
    const double place = 0.0005 * static_cast<double>(i) - 0.005;
    squares.push_back(std::exp(place));
    start.push_back(1e-40 * std::exp(-place * place / 4e-6));
    matrix[i][0] = start[i];
    matrix[i][i + 1] = std::exp(place / 2);
  }
  return matrix;
}

/// Long rows with few others are iterated by the products of all pairs of rows.
void expectTenThousandTurns(std::size_t silentColumns) {
  std::vector<double> squares;
  std::vector<double> start;
  const Matrix matrix = slowMatrix(silentColumns, squares, start);
  const auto energyAfter = [&](double turns) {
    double above = 0;
    double below = 0;
    for (std::size_t i = 0; i < squares.size(); ++i) {
      // Everything in one exponent: the factors leave the range of the numbers.
      const double weight =
          std::exp(2 * std::log(start[i] / start[10]) + (2 * turns - 1) * std::log(squares[i]) - 300);
      above += squares[i] * weight;
      below += weight;
    }
    return above / below;
  };
  ASSERT_GT(energyAfter(10001) / energyAfter(10000), 1 + 1.5e-6);
  ASSERT_GT(energyAfter(12000) / energyAfter(10000), 1.002);

  const Modelled result = modelled(1, matrix);
  double energy = 0;
  for (const double score : result.components[0].scores) energy += score * score;
  EXPECT_NEAR(energy / energyAfter(10000), 1, 2e-7);
  EXPECT_LT(distance(result.model, literallyModelled(1, matrix).model), 1e-9);
}

TEST(PrincipalComponentModel, EndsAfterTenThousandTurns) {
  expectTenThousandTurns(0);
}

TEST(PrincipalComponentModel, EndsAfterTenThousandTurnsOfLongRowsToo) {
  expectTenThousandTurns(200);
}

TEST(PrincipalComponentModel, EndsWithTheFirstTurnThatChangesTheEnergyByAMillionthOrLess) {
  // Two singular values: the energy of every turn has a closed form.
  for (const double ratio : {0.9, 0.97, 0.99})
    for (const std::size_t length : {3, 4, 30}) {
      Matrix matrix = {{1e-9, 1, 0}, {0.5e-9, 0, std::sqrt(ratio)}};
      for (std::vector<double>& row : matrix) row.resize(length, 0.0);
      const auto energyAfter = [&](int turns) {
        const double weight = 0.25 * std::pow(ratio, 2 * turns - 1);
        return (1 + ratio * weight) / (1 + weight);
      };
      int turns = 2;
      while (energyAfter(turns) / energyAfter(turns - 1) - 1 > 1e-6) ++turns;
      double energy = 0;
      const Modelled result = modelled(1, matrix);
      for (const double score : result.components[0].scores) energy += score * score;
      EXPECT_NEAR(energy, energyAfter(turns), 1e-11) << turns;
      EXPECT_GT(energyAfter(turns + 1) - energyAfter(turns), 1e-9); // so that one turn more would show
      EXPECT_GT(energyAfter(turns) - energyAfter(turns - 1), 1e-9);
    }
}

TEST(PrincipalComponentModel, ComesToAnEndOnValuesThatOverflowOrAreNoNumbers) {
  for (const double bad : {1e160, 1e300, std::numeric_limits<double>::infinity(), std::nan("")}) {
    Matrix matrix = noiseMatrix(7, 33, 2);
    matrix[3][5] = bad;
    modelled(3, matrix);
    for (std::vector<double>& row : matrix) row.assign(33, bad);
    const Modelled result = modelled(3, matrix);
    EXPECT_EQ(result.components.size(), 3U);
  }
}

TEST(RowMatrix, BeginsEveryRowWithACacheLineAndHoldsZeros) {
  for (const std::size_t length : {0, 1, 7, 8, 9, 64, 1001}) {
    RowMatrix rows(5, length);
    EXPECT_EQ(rows.nrOfRows(), 5U);
    EXPECT_EQ(rows.length(), length);
    EXPECT_GE(rows.stride(), length);
    EXPECT_LT(rows.stride(), length + 8);
    for (std::size_t i = 0; i < 5 && length > 0; ++i) {
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(rows.row(i)) % 64, 0U);
      EXPECT_EQ(rows.row(i) - rows.row(0), static_cast<std::ptrdiff_t>(i * rows.stride()));
      for (std::size_t k = 0; k < length; ++k) ASSERT_EQ(rows.row(i)[k], 0.0);
      rows.row(i)[length - 1] = 1.0;
    }
  }
}

} // namespace
} // namespace emeg
