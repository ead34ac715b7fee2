#include "artifacts/cardiac/PrincipalComponents.h"

#include "dsp/VectorKernels.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace emeg {

namespace {

constexpr double settled = 1e-6;
constexpr int mostTurns = 10000;

double energyOf(const double* values, size_t count) {
  double energy = 0;
  for (size_t i = 0; i < count; ++i) energy += values[i] * values[i];
  return energy;
}

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

/// The component that the power iteration from the first column leads to.
PrincipalComponents::Component firstComponent(const RowMatrix& rows) {
  const size_t m = rows.nrOfRows();
  const size_t length = rows.length();
  std::vector<double> scores(m);
  RowMatrix shape(1, length);
  RowMatrix next(1, length);
  for (size_t i = 0; i < m; ++i) {
    scores[i] = rows.row(i)[0];
    vectorKernels().addScaled(rows.row(i), scores[i], static_cast<int64_t>(length), shape.row(0));
  }
  double energy = energyOf(scores.data(), m);
  for (int turn = 1;; ++turn) {
    if (!normalise(shape)) return {};
    std::fill(next.row(0), next.row(0) + length, 0.0);
    project(rows, shape.row(0), scores, next.row(0));
    const double newEnergy = energyOf(scores.data(), m);
    if (std::abs(newEnergy / energy - 1) <= settled || turn == mostTurns) break;
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
  PrincipalComponents model;
  for (int k = 0; k < count; ++k) {
    const PrincipalComponents::Component& component = model.components.emplace_back(firstComponent(rows));
    for (size_t i = 0; i < component.scores.size(); ++i)
      vectorKernels().addScaled(component.shape.data(), -component.scores[i],
                                static_cast<int64_t>(rows.length()), rows.row(i));
  }
  return model;
}

} // namespace emeg
