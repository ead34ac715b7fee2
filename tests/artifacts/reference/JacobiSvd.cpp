#include "tests/artifacts/reference/JacobiSvd.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace emeg {

namespace {

double dot(const std::vector<double>& a, const std::vector<double>& b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

/// Turns two vectors in their plane.
void rotate(std::vector<double>& a, std::vector<double>& b, double cosine, double sine) {
  for (std::size_t k = 0; k < a.size(); ++k) {
    const double first = a[k];
    const double second = b[k];
    a[k] = cosine * first - sine * second;
    b[k] = sine * first + cosine * second;
  }
}

} // namespace

JacobiSvd jacobiSvd(const std::vector<std::vector<double>>& rows) {
  const std::size_t m = rows.size();
  std::vector<std::vector<double>> work = rows;
  std::vector<std::vector<double>> turns(m, std::vector<double>(m, 0.0));
  for (std::size_t i = 0; i < m; ++i) turns[i][i] = 1.0;

  // Rows whose product is below the rounding error of the whole matrix are as orthogonal as they get.
  double energy = 0.0;
  for (const std::vector<double>& row : rows) energy += dot(row, row);
  const double negligible = 1e-30 * energy;
  bool turned = true;
  for (int sweep = 0; sweep < 100 && turned; ++sweep) {
    turned = false;
    for (std::size_t p = 0; p < m; ++p) {
      for (std::size_t q = p + 1; q < m; ++q) {
        const double alpha = dot(work[p], work[p]);
        const double beta = dot(work[q], work[q]);
        const double gamma = dot(work[p], work[q]);
        if (std::fabs(gamma) <= 1e-15 * std::sqrt(alpha * beta) || std::fabs(gamma) <= negligible) continue;
        turned = true;
        const double zeta = (beta - alpha) / (2 * gamma);
        const double tangent = std::copysign(1.0, zeta) / (std::fabs(zeta) + std::sqrt(1 + zeta * zeta));
        const double cosine = 1 / std::sqrt(1 + tangent * tangent);
        rotate(work[p], work[q], cosine, cosine * tangent);
        rotate(turns[p], turns[q], cosine, cosine * tangent);
      }
    }
  }

  std::vector<std::size_t> order(m);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::size_t a, std::size_t b) { return dot(work[a], work[a]) > dot(work[b], work[b]); });
  JacobiSvd svd;
  for (const std::size_t k : order) {
    const double value = std::sqrt(dot(work[k], work[k]));
    svd.singularValues.push_back(value);
    svd.left.push_back(turns[k]);
    if (value > 0)
      for (double& x : work[k]) x /= value;
    svd.right.push_back(work[k]);
  }
  return svd;
}

std::vector<std::vector<double>> JacobiSvd::truncated(std::size_t rank) const {
  const std::size_t m = left.size();
  const std::size_t n = m == 0 ? 0 : right[0].size();
  std::vector<std::vector<double>> matrix(m, std::vector<double>(n, 0.0));
  for (std::size_t k = 0; k < std::min(rank, m); ++k)
    for (std::size_t i = 0; i < m; ++i)
      for (std::size_t j = 0; j < n; ++j) matrix[i][j] += singularValues[k] * left[k][i] * right[k][j];
  return matrix;
}

} // namespace emeg
