#include "artifacts/cardiac/model/CutEpochs.h"

#include "artifacts/cardiac/series/Energy.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

/// Of the weakest component's energy: what the scores' errors are weighed against.
constexpr double restraint = 0.1;

/// Solves a symmetric positive definite system in place by elimination; the solution is left in `right`.
void solvePositive(std::vector<std::vector<double>>& matrix, std::vector<double>& right) {
  const size_t n = right.size();
  for (size_t k = 0; k < n; ++k) {
    for (size_t i = k + 1; i < n; ++i) {
      const double factor = matrix[i][k] / matrix[k][k];
      for (size_t j = k; j < n; ++j) matrix[i][j] -= factor * matrix[k][j];
      right[i] -= factor * right[k];
    }
  }
  for (size_t k = n; k-- > 0;) {
    for (size_t j = k + 1; j < n; ++j) right[k] -= matrix[k][j] * right[j];
    right[k] /= matrix[k][k];
  }
}

double product(const std::vector<double>& x, const std::vector<double>& y, const RowPart& range) {
  double sum = 0;
  for (size_t j = range.begin; j < range.end; ++j) sum += x[j] * y[j];
  return sum;
}

} // namespace

RowPart valuesInside(const BeatTimeBase& base, const WarpTable& table, size_t interval, int64_t length) {
  const size_t count = table.warpPosition.size();
  const double start = base.start(interval);
  const double samples = base.length(interval);
  const auto last = static_cast<double>(length - 1);
  if (start >= 0 && start + samples <= last) return {0, count};
  const auto place = [&](size_t j) { return samples * table.warpPosition[j] + start + table.warpOffset[j]; };
  RowPart inside{0, count};
  while (inside.begin < count && place(inside.begin) < 0) ++inside.begin;
  while (inside.end > inside.begin && place(inside.end - 1) > last) --inside.end;
  return inside;
}

void resampleInside(const double* series, int64_t length, const BeatTimeBase& base, const WarpTable& table,
                    size_t index, const RowPart& inside, std::vector<double>& values) {
  const double start = base.start(index);
  const double samples = base.length(index);
  std::fill(values.begin(), values.end(), 0.0);
  for (size_t j = inside.begin; j < inside.end; ++j) {
    const double place = samples * table.warpPosition[j] + start + table.warpOffset[j];
    const double sample = std::clamp(std::floor(place), 0.0, static_cast<double>(length - 1));
    const auto at = static_cast<size_t>(sample);
    const double fraction = std::clamp(place - sample, 0.0, 1.0);
    values[j] = fraction > 0 ? (1 - fraction) * series[at] + fraction * series[at + 1] : series[at];
  }
}

RowPart epochInside(const BeatTimeBase& base, const RowPart& inFront, const RowPart& behind) {
  const auto half = static_cast<size_t>(base.epochHalfLength);
  const auto count = static_cast<size_t>(base.modelLength);
  const size_t skipped = count - half - 1; // values of the interval in front that the epoch leaves out
  if (behind.begin > 0 || behind.end == 0 || inFront.end < count) return {};
  const size_t begin = inFront.begin > skipped ? inFront.begin - skipped : 0;
  return {begin, half + std::min(behind.end, half + 1)};
}

void fitScores(const CutEpoch& cut, PrincipalComponents& model) {
  std::vector<PrincipalComponents::Component*> found;
  for (PrincipalComponents::Component& component : model.components)
    if (!component.scores.empty()) found.push_back(&component);
  const size_t n = found.size();
  if (n == 0 || cut.inside.begin >= cut.inside.end) return;
  std::vector<double> energies;
  energies.reserve(n);
  for (const auto* component : found) energies.push_back(energyOf(component->scores));
  const double weakest = *std::min_element(energies.begin(), energies.end());

  std::vector<std::vector<double>> matrix(n, std::vector<double>(n));
  std::vector<double> scores(n);
  for (size_t i = 0; i < n; ++i) {
    for (size_t j = 0; j < n; ++j) matrix[i][j] = product(found[i]->shape, found[j]->shape, cut.inside);
    matrix[i][i] += restraint * weakest / energies[i];
    scores[i] = product(found[i]->shape, cut.values, cut.inside);
  }
  solvePositive(matrix, scores);
  for (size_t i = 0; i < n; ++i) found[i]->scores[cut.epoch] = std::isfinite(scores[i]) ? scores[i] : 0.0;
}

} // namespace emeg
