#pragma once

#include <cstddef>
#include <vector>

namespace emeg {

/// Singular value decomposition of an m x n matrix: the sum over k of
/// singularValues[k] * left[k][row] * right[k][column], singular values descending, m of them.
struct JacobiSvd {
  std::vector<double> singularValues;
  std::vector<std::vector<double>> left;  ///< m orthonormal vectors of m values
  std::vector<std::vector<double>> right; ///< m vectors of n values, orthonormal; 0 for a singular value of 0

  /// The best approximation of the matrix by one of the given rank.
  std::vector<std::vector<double>> truncated(std::size_t rank) const;
};

/// One-sided Jacobi rotations (Hestenes 1958) on the rows of a small matrix.
JacobiSvd jacobiSvd(const std::vector<std::vector<double>>& rows);

} // namespace emeg
