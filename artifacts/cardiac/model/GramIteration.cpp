#include "artifacts/cardiac/model/GramIteration.h"

#include "artifacts/cardiac/series/Energy.h"
#include "dsp/VectorKernels.h"

#include <cmath>

namespace emeg {

namespace {

constexpr size_t mostRows = 300;

/// Energy of a component relative to that of the first, below which the products are too coarse.
constexpr double leastEnergy = 1e-6;

/// A turn whose change of energy lies so close to the limit is decided by the direct iteration.
constexpr double undecided = 1e-9;

/// Products of all rows with one.
void productsWith(const RowMatrix& rows, const double* row, double* products) {
  const VectorKernels& kernels = vectorKernels();
  const auto length = static_cast<int64_t>(rows.length());
  size_t i = 0;
  for (; i + 4 <= rows.nrOfRows(); i += 4)
    kernels.dotFour(rows.row(i), static_cast<int64_t>(rows.stride()), row, length, products + i);
  for (; i < rows.nrOfRows(); ++i) products[i] = kernels.dot(rows.row(i), row, length);
}

} // namespace

bool GramIteration::paysFor(const RowMatrix& rows) {
  return rows.nrOfRows() <= mostRows && 2 * rows.nrOfRows() <= rows.length();
}

GramIteration::GramIteration(const RowMatrix& rows) : products_(rows.nrOfRows(), rows.nrOfRows()) {
  const VectorKernels& kernels = vectorKernels();
  const size_t n = rows.nrOfRows();
  const auto length = static_cast<int64_t>(rows.length());
  for (size_t i = 0; i < n; i += 4) { // four rows stay in the nearest cache while all behind them pass by
    for (size_t k = i; k < n; ++k) {
      double products[4] = {};
      if (i + 4 <= n) {
        kernels.dotFour(rows.row(i), static_cast<int64_t>(rows.stride()), rows.row(k), length, products);
      } else {
        for (size_t r = 0; i + r < n; ++r) products[r] = kernels.dot(rows.row(i + r), rows.row(k), length);
      }
      for (size_t r = 0; r < 4 && i + r < n; ++r)
        products_.row(i + r)[k] = products_.row(k)[i + r] = products[r];
    }
  }
}

std::optional<std::vector<double>> GramIteration::iterate(std::vector<double> scores, double settled,
                                                          int mostTurns) {
  double energy = energyOf(scores);
  std::vector<double> next(scores.size());
  for (int turn = 1; turn <= mostTurns; ++turn) {
    productsWith(products_, scores.data(), next.data());
    double shapeEnergy = 0; // of the shape before it is normalised
    for (size_t i = 0; i < scores.size(); ++i) shapeEnergy += scores[i] * next[i];
    const double newEnergy = energyOf(next) / shapeEnergy;
    if (!std::isfinite(newEnergy) || !(newEnergy > firstEnergy_ * leastEnergy)) return std::nullopt;
    const double change = std::abs(newEnergy / energy - 1);
    if (std::abs(change - settled) < undecided) return std::nullopt;
    if (change <= settled || turn == mostTurns) {
      if (firstEnergy_ == 0) firstEnergy_ = newEnergy;
      return scores;
    }
    const double norm = std::sqrt(shapeEnergy);
    for (size_t i = 0; i < scores.size(); ++i) scores[i] = next[i] / norm;
    energy = newEnergy;
  }
  return std::nullopt;
}

void GramIteration::deflate(const std::vector<double>& scores) {
  for (size_t i = 0; i < scores.size(); ++i)
    vectorKernels().addScaled(scores.data(), -scores[i], static_cast<int64_t>(scores.size()),
                              products_.row(i));
}

} // namespace emeg
