#pragma once

#include "artifacts/cardiac/model/RowMatrix.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace emeg {

/// The power iteration for principal components of few long rows, turn by turn in the space of their scores:
/// the products of all pairs of rows (the Gram matrix) are taken once, and every turn costs no more than
/// their number. The products square the rows' range of values, so components far below the first are left to
/// the direct iteration, and so are turns on which rounding could decide.
class GramIteration {
public:
  /// Whether the products cost less than the turns that they replace.
  static bool paysFor(const RowMatrix& rows);

  explicit GramIteration(const RowMatrix& rows);

  /// The scores of the last turn but one, from which one direct turn leads to the component. `scores` are
  /// those of the start, `settled` the relative change of their energy that ends the iteration. Nothing where
  /// precision does not allow it.
  std::optional<std::vector<double>> iterate(std::vector<double> scores, double settled, int mostTurns);

  /// Takes a component out of the products.
  void deflate(const std::vector<double>& scores);

private:
  RowMatrix products_;
  double firstEnergy_ = 0; ///< of the scores of the first component
};

} // namespace emeg
