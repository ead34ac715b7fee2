#include "artifacts/cardiac/model/PrincipalComponents.h"

#include "artifacts/cardiac/model/GramIteration.h"
#include "artifacts/cardiac/series/Energy.h"
#include "dsp/VectorKernels.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace emeg {

namespace {

constexpr double settled = 1e-6;
constexpr int mostTurns = 10000;

/// Divides by the Euclidean norm; false when there is nothing to divide.
bool normalise(RowMatrix& shape) {
  double* const v = shape.row(0);
  const auto length = static_cast<int64_t>(shape.length());
  const double norm = std::sqrt(vectorKernels().dot(v, v, length));
  if (!(norm > 0)) return false;
  for (int64_t k = 0; k < length; ++k) v[k] /= norm;
  return true;
}

/// scores[i] = row i x shape, and next += row i x scores[i] while the row is in the cache: the sum from which
/// the next turn's shape is made.
void project(const RowMatrix& rows, const double* shape, std::vector<double>& scores, double* next) {
  const VectorKernels& kernels = vectorKernels();
  const auto length = static_cast<int64_t>(rows.length());
  const auto stride = static_cast<int64_t>(rows.stride());
  size_t i = 0;
  for (; i + 4 <= rows.nrOfRows(); i += 4) {
    kernels.dotFour(rows.row(i), stride, shape, length, scores.data() + i);
    kernels.addScaledFour(rows.row(i), stride, scores.data() + i, length, next);
  }
  for (; i < rows.nrOfRows(); ++i) {
    scores[i] = kernels.dot(rows.row(i), shape, length);
    kernels.addScaled(rows.row(i), scores[i], length, next);
  }
}

std::vector<double> firstColumn(const RowMatrix& rows) {
  std::vector<double> column(rows.nrOfRows());
  for (size_t i = 0; i < column.size(); ++i) column[i] = rows.row(i)[0];
  return column;
}

/// Turns from `scores` on until they settle: at least one.
PrincipalComponents::Component settle(const RowMatrix& rows, std::vector<double> scores, int turns) {
  const size_t length = rows.length();
  RowMatrix shape(1, length);
  RowMatrix next(1, length);
  for (size_t i = 0; i < rows.nrOfRows(); ++i)
    vectorKernels().addScaled(rows.row(i), scores[i], static_cast<int64_t>(length), shape.row(0));
  double energy = energyOf(scores);
  for (int turn = 1;; ++turn) {
    if (!normalise(shape)) return {};
    std::fill(next.row(0), next.row(0) + length, 0.0);
    project(rows, shape.row(0), scores, next.row(0));
    const double newEnergy = energyOf(scores);
    if (std::abs(newEnergy / energy - 1) <= settled || turn == turns) break;
    energy = newEnergy;
    std::swap(shape, next);
  }
  return {std::move(scores), std::vector<double>(shape.row(0), shape.row(0) + length)};
}

} // namespace

void PrincipalComponents::modelOf(size_t row, std::vector<double>& model) const {
  std::fill(model.begin(), model.end(), 0.0);
  for (const Component& component : components)
    if (!component.scores.empty())
      vectorKernels().addScaled(component.shape.data(), component.scores[row],
                                static_cast<int64_t>(model.size()), model.data());
}

PrincipalComponents principalComponentModel(int count, RowMatrix& rows) {
  std::optional<GramIteration> gram;
  if (GramIteration::paysFor(rows)) gram.emplace(rows);
  PrincipalComponents model;
  for (int k = 0; k < count; ++k) {
    std::vector<double> start = firstColumn(rows);
    int turns = mostTurns;
    if (gram) {
      if (auto almostSettled = gram->iterate(start, settled, mostTurns)) {
        start = std::move(*almostSettled);
        turns = 1;
      }
    }
    const PrincipalComponents::Component& component =
        model.components.emplace_back(settle(rows, std::move(start), turns));
    for (size_t i = 0; i < component.scores.size(); ++i)
      vectorKernels().addScaled(component.shape.data(), -component.scores[i],
                                static_cast<int64_t>(rows.length()), rows.row(i));
    if (gram && !component.scores.empty()) gram->deflate(component.scores);
  }
  return model;
}

} // namespace emeg
