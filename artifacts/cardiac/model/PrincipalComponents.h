#pragma once

#include "artifacts/cardiac/model/RowMatrix.h"

#include <cstddef>
#include <vector>

namespace emeg {

/// The first principal components of the rows of a matrix (not centred). Row i is modelled by the sum over
/// components of scores[i] x shape.
class PrincipalComponents {
public:
  struct Component {
    std::vector<double> scores; ///< one per row; none: the component is 0
    std::vector<double> shape;  ///< unit length
  };
  std::vector<Component> components;

  /// The model of a row: as many values as the rows have.
  void modelOf(size_t row, std::vector<double>& model) const;
};

/// Finds `count` components one after another by power iteration with deflation; each starts from the first
/// column and ends when the sum of squares of the scores changes by no more than 1e-6 (relative), after 10000
/// turns at the latest. `rows` is left as the residual. Where nothing is left to find, components are 0.
PrincipalComponents principalComponentModel(int count, RowMatrix& rows);

} // namespace emeg
