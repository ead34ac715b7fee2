#include "artifacts/gradient/timing/volumes/Repeats.h"

#include "artifacts/gradient/templates/BandLimitedShift.h"
#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr int64_t firstSpan = 4;           // repeats aligned to begin with
constexpr int passesPerSpan = 2;           // average and line in turn
constexpr double leastSimilarity = 0.9;    // of the median
constexpr double largestDeviation = 4.5;   // robust standard deviations from the line
constexpr double smallestDeviation = 1e-3; // samples; what lies closer is never left out
constexpr double slopeStep = 0.1;          // samples

struct Line {
  double offset = 0;
  double slope = 0;
};

/// Least squares over the points that count; x = 0, 1, 2, ...
Line lineThrough(const std::vector<double>& y, const std::vector<bool>& used) {
  double n = 0, sx = 0, sy = 0, sxx = 0, sxy = 0;
  for (size_t i = 0; i < y.size(); ++i) {
    if (!used[i]) continue;
    const auto x = static_cast<double>(i);
    n += 1;
    sx += x;
    sy += y[i];
    sxx += x * x;
    sxy += x * y[i];
  }
  const double determinant = n * sxx - sx * sx;
  if (n < 1) return {};
  if (n < 2 || determinant <= 0) return {sy / n, 0};
  const double slope = (n * sxy - sx * sy) / determinant;
  return {(sy - slope * sx) / n, slope};
}

/// Fits, leaves out what lies far off, and fits again.
Line robustLine(const std::vector<double>& y, std::vector<bool>& used) {
  Line line = lineThrough(y, used);
  for (int pass = 0; pass < 3; ++pass) {
    std::vector<double> distances;
    for (size_t i = 0; i < y.size(); ++i)
      if (used[i]) distances.push_back(std::fabs(y[i] - line.offset - line.slope * static_cast<double>(i)));
    const double limit = std::max(largestDeviation * 1.4826 * upperMedian(distances), smallestDeviation);
    for (size_t i = 0; i < y.size(); ++i)
      if (std::fabs(y[i] - line.offset - line.slope * static_cast<double>(i)) > limit) used[i] = false;
    line = lineThrough(y, used);
  }
  return line;
}

/// One alignment of all repeats in the range with their average.
void alignOnce(std::span<const double> signal, FittedRepeats& fit) {
  const auto length = static_cast<int64_t>(std::floor(fit.line.period));
  const RepeatComparison comparison(averageRepeat(signal, fit.line, fit.range, length, fit.used));
  std::vector<double> delays, similarities;
  for (int64_t v = fit.range.first; v <= fit.range.last; ++v) {
    const RepeatFit repeat = fit.compareOutside(signal, comparison, v);
    delays.push_back(repeat.delay);
    similarities.push_back(repeat.similarity);
  }
  fit.similarity = upperMedian(similarities);
  fit.used.assign(delays.size(), false);
  for (size_t i = 0; i < delays.size(); ++i)
    fit.used[i] = similarities[i] > leastSimilarity * fit.similarity && std::fabs(delays[i]) < 2;
  const Line line = robustLine(delays, fit.used);
  fit.line.onset += line.offset - line.slope * static_cast<double>(fit.range.first);
  fit.line.period += line.slope;
}

} // namespace

RepeatRange wholeRepeats(const RepeatLine& line, double begin, double end) {
  if (!(line.period >= 1)) return {};
  return {static_cast<int64_t>(std::ceil((begin - line.onset) / line.period)),
          static_cast<int64_t>(std::floor((end - line.onset) / line.period)) - 1};
}

std::vector<double> averageRepeat(std::span<const double> signal, const RepeatLine& line, RepeatRange range,
                                  int64_t length, const std::vector<bool>& used) {
  std::vector<double> sum(static_cast<size_t>(std::max<int64_t>(length, 0)), 0.0);
  std::vector<double> repeat(sum.size());
  double count = 0;
  for (int64_t v = range.first; v <= range.last; ++v) {
    const double position = line.at(static_cast<double>(v));
    if (!used.empty() && !used[static_cast<size_t>(v - range.first)]) continue;
    if (position < 0 || position + static_cast<double>(length) > static_cast<double>(signal.size())) continue;
    readShifted(signal, position, repeat);
    for (size_t i = 0; i < sum.size(); ++i) sum[i] += repeat[i];
    count += 1;
  }
  if (count > 0)
    for (double& value : sum) value /= count;
  return sum;
}

RepeatComparison::RepeatComparison(std::vector<double> average)
    : average_(std::move(average)), slope_(average_.size()) {
  std::vector<double> below(average_.size());
  readShifted(average_, slopeStep, slope_);
  readShifted(average_, -slopeStep, below);
  for (size_t i = 0; i < slope_.size(); ++i) slope_[i] = (slope_[i] - below[i]) / (2 * slopeStep);
}

/// Least squares of y = g m - h m', where the repeat is g times the average m, late by h / g.
RepeatFit RepeatComparison::compare(std::span<const double> signal, double position) const {
  std::vector<double> repeat(average_.size());
  readShifted(signal, position, repeat);
  // The part of the repeat that the signal holds.
  const auto last = static_cast<double>(average_.size());
  const auto from = static_cast<size_t>(std::clamp(std::ceil(-position), 0.0, last));
  const auto to = static_cast<size_t>(
      std::clamp(std::floor(static_cast<double>(signal.size()) - position), static_cast<double>(from), last));
  double mm = 0, ms = 0, ss = 0, ym = 0, ys = 0, yy = 0;
  for (size_t i = from; i < to; ++i) {
    const double m = average_[i], s = slope_[i], y = repeat[i];
    mm += m * m;
    ms += m * s;
    ss += s * s;
    ym += y * m;
    ys += y * s;
    yy += y * y;
  }
  RepeatFit fit;
  const double determinant = mm * ss - ms * ms;
  if (!(mm > 0) || !(yy > 0) || !(determinant > 0)) return fit;
  fit.similarity = ym / std::sqrt(mm * yy);
  const double gain = (ym * ss - ys * ms) / determinant;
  const double slopeGain = (ys * mm - ym * ms) / determinant;
  if (gain > 0) fit.delay = -slopeGain / gain;
  return fit;
}

FittedRepeats fitRepeats(std::span<const double> signal, const RepeatLine& line, RepeatRange range) {
  FittedRepeats fit;
  fit.line = line;
  const int64_t middle = range.first + range.count() / 2;
  for (int64_t half = firstSpan / 2;; half *= 2) {
    fit.range = {std::max(range.first, middle - half), std::min(range.last, middle + half)};
    fit.used.clear();
    for (int pass = 0; pass < passesPerSpan; ++pass) alignOnce(signal, fit);
    if (fit.range.first == range.first && fit.range.last == range.last) break;
  }
  alignOnce(signal, fit);
  return fit;
}

} // namespace emeg
