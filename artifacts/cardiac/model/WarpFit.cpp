#include "artifacts/cardiac/model/WarpFit.h"

#include "artifacts/cardiac/model/ResamplingKernels.h"
#include "artifacts/cardiac/model/RowMatrix.h"
#include "artifacts/cardiac/series/Energy.h"
#include "dsp/VectorKernels.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace emeg {

namespace {

constexpr double finestStep = 0.001;

/// Rounding of a score, relative to it: generously above what was ever seen.
constexpr double scoreRounding = 1e-11;

constexpr size_t rowsAtOnce = 4;

/// The brackets' points lie `step` apart.
struct WarpRange {
  double low = 0;
  double high = 1;
  double step = 0;
};

WarpRange widestRange(const BeatTimeBase& base) {
  const double low = base.warpMargin;
  const double high = 1 - base.warpMargin;
  return {low, high, (high - low) / 4};
}

} // namespace

double warpScore(const double* series, int64_t length, const BeatTimeBase& base, const WarpTable& table) {
  const auto size = static_cast<size_t>(base.modelLength);
  const auto lastSample = static_cast<int32_t>(length - 1);
  const ResamplingKernels& resampling = resamplingKernels();
  RowMatrix rows(rowsAtOnce, size);
  std::vector<int32_t> samples(size);
  std::vector<double> fractions(size);
  std::vector<double> sum(size);
  for (size_t first = 0; first < base.nrOfIntervals(); first += rowsAtOnce) {
    std::array<double, rowsAtOnce> factors{};
    for (size_t r = 0; r < rowsAtOnce && first + r < base.nrOfIntervals(); ++r) {
      const size_t index = first + r;
      double energy = 0;
      if (resampling.findPlaces(base.start(index), base.length(index), table.warpPosition.data(),
                                table.warpOffset.data(), base.modelLength, lastSample, samples.data(),
                                fractions.data())) {
        energy = resampling.interpolate(series, lastSample, samples.data(), fractions.data(),
                                        base.modelLength, rows.row(r));
      } else {
        resampleInterval(series, length, base, table, index, rows.row(r));
        energy = vectorKernels().dot(rows.row(r), rows.row(r), base.modelLength);
      }
      factors[r] = normFactor(energy);
    }
    vectorKernels().addScaledFour(rows.row(0), static_cast<int64_t>(rows.stride()), factors.data(),
                                  base.modelLength, sum.data());
  }
  return energyOf(sum);
}

double plainWarpScore(const double* series, int64_t length, const BeatTimeBase& base,
                      const WarpTable& table) {
  std::vector<double> sum(static_cast<size_t>(base.modelLength));
  std::vector<double> beat(sum.size());
  for (size_t i = 0; i < base.nrOfIntervals(); ++i) {
    resampleInterval(series, length, base, table, i, beat.data());
    const double norm = std::sqrt(energyOf(beat));
    if (!(norm > 0)) continue;
    for (size_t j = 0; j < sum.size(); ++j) sum[j] += beat[j] / norm;
  }
  return energyOf(sum);
}

void resampleInterval(const double* series, int64_t length, const BeatTimeBase& base, const WarpTable& table,
                      size_t index, double* values) {
  const double start = base.start(index);
  const double samples = base.length(index);
  const auto last = static_cast<double>(length - 1);
  double sample = std::clamp(start, 0.0, last);
  for (size_t j = 0; j < table.warpPosition.size(); ++j) {
    const double place = samples * table.warpPosition[j] + start + table.warpOffset[j];
    while (place >= sample + 1 && sample < last) ++sample;
    const double fraction = place - sample;
    const auto at = static_cast<size_t>(sample);
    values[j] = (1.0 - fraction) * series[at] + fraction * series[at + 1];
  }
}

WarpFit::WarpFit(const BeatTimeBase& base) : base_(base) {
  const WarpRange range = widestRange(base);
  if (base.nrOfIntervals() == 0 || !(range.step > finestStep)) return;
  for (size_t k = 0; k < Bracket().size(); ++k) {
    const double a = range.low + static_cast<double>(k) * range.step;
    sharedTables_.emplace_back(a, makeWarpTable(a, base));
  }
}

double WarpFit::scoreOf(double a, const double* series, int64_t length) const {
  for (const auto& [parameter, table] : sharedTables_)
    if (parameter == a) return warpScore(series, length, base_, table);
  return warpScore(series, length, base_, makeWarpTable(a, base_));
}

/// The first point of the highest score.
size_t WarpFit::highestOf(Bracket& bracket, const double* series, int64_t length) const {
  const auto isLower = [](const Point& x, const Point& y) { return x.score < y.score; };
  const auto highest = std::max_element(bracket.begin(), bracket.end(), isLower);
  const double limit = highest->score * (1 - scoreRounding);
  const auto isClose = [limit](const Point& point) { return !(point.score < limit); };
  if (std::count_if(bracket.begin(), bracket.end(), isClose) == 1)
    return static_cast<size_t>(highest - bracket.begin());

  Bracket plain = bracket;
  for (Point& point : plain)
    point.score = plainWarpScore(series, length, base_, makeWarpTable(point.a, base_));
  return static_cast<size_t>(std::max_element(plain.begin(), plain.end(), isLower) - plain.begin());
}

double WarpFit::fit(const double* series, int64_t length) const {
  auto [low, high, step] = widestRange(base_);
  double a = 0.5;
  Bracket bracket;
  while (step > finestStep) {
    for (size_t k = 0; k < bracket.size(); ++k) {
      Point& point = bracket[k];
      if (point.isScored) continue;
      point.a = low + static_cast<double>(k) * step;
      point.score = scoreOf(point.a, series, length);
      point.isScored = true;
    }
    const size_t k = std::clamp<size_t>(highestOf(bracket, series, length), 1, 3);
    high = low + static_cast<double>(k + 1) * step;
    low += static_cast<double>(k - 1) * step;
    step /= 2;
    bracket = {bracket[k - 1], Point(), bracket[k], Point(), bracket[k + 1]};
    a = (low + high) / 2;
  }
  return a;
}

} // namespace emeg
