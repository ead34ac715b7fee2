#include "artifacts/cardiac/search/BeatTemplate.h"

#include "artifacts/cardiac/series/Energy.h"
#include "dsp/Medians.h"
#include "dsp/VectorKernels.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

/// Rounding of a resemblance, relative to the largest: generously above what was ever seen.
constexpr double resemblanceRounding = 1e-12;

/// The normalised segments of a channel's beats, one at a time.
class BeatSegments {
public:
  BeatSegments(const double* channel, int64_t length, const std::vector<int32_t>& beats, int32_t period)
      : channel_(channel), length_(length), beats_(beats), period_(period), size_(2 * int64_t{period} + 1) {}

  int64_t size() const { return size_; }
  size_t nrOfBeats() const { return beats_.size(); }

  void copy(size_t beat, double* segment) const {
    copyWindow(channel_, length_, beats_[beat] - period_, size_, segment);
  }
  /// Sum of the normalised segments of the beats that are chosen.
  std::vector<double> sumOver(const std::vector<bool>& chosen) const {
    std::vector<double> sum(static_cast<size_t>(size_));
    std::vector<double> segment(sum.size());
    for (size_t k = 0; k < nrOfBeats(); ++k) {
      if (!chosen[k]) continue;
      copy(k, segment.data());
      vectorKernels().addScaled(segment.data(), normFactor(energyOf(segment)), size_, sum.data());
    }
    return sum;
  }

private:
  const double* channel_;
  int64_t length_;
  const std::vector<int32_t>& beats_;
  int64_t period_;
  int64_t size_;
};

struct Resemblances {
  std::vector<double> values; ///< one per beat
  double largestTerm = 0;     ///< of the differences that they are: the scale of their rounding
};

/// Minus the weighted product of each normalised segment with the sum of all others. Linear in the beats.
Resemblances resemblances(const BeatSegments& segments, const std::vector<double>& weights) {
  std::vector<double> weightedSum = segments.sumOver(std::vector<bool>(segments.nrOfBeats(), true));
  for (size_t i = 0; i < weightedSum.size(); ++i) weightedSum[i] *= weights[i];

  Resemblances result;
  std::vector<double> segment(weights.size());
  std::vector<double> weighted(weights.size());
  for (size_t k = 0; k < segments.nrOfBeats(); ++k) {
    segments.copy(k, segment.data());
    const double factor = normFactor(energyOf(segment));
    for (double& x : segment) x *= factor;
    for (size_t i = 0; i < segment.size(); ++i) weighted[i] = weights[i] * segment[i];
    const double toAll = vectorKernels().dot(segment.data(), weightedSum.data(), segments.size());
    const double toItself = vectorKernels().dot(segment.data(), weighted.data(), segments.size());
    result.values.push_back(-(toAll - toItself));
    result.largestTerm = std::max({result.largestTerm, std::abs(toAll), std::abs(toItself)});
  }
  return result;
}

/// The same from all pairs, each product summed in plain order: quadratic in the beats.
std::vector<double> resemblancesOfPairs(const BeatSegments& segments, const std::vector<double>& weights) {
  const size_t n = segments.nrOfBeats();
  const size_t size = weights.size();
  std::vector<double> samplesOfAll(size * n); // sample i of all beats stands together
  std::vector<double> factors(n);
  std::vector<double> segment(size);
  for (size_t k = 0; k < n; ++k) {
    segments.copy(k, segment.data());
    factors[k] = normFactor(energyOf(segment));
    for (size_t i = 0; i < size; ++i) samplesOfAll[i * n + k] = segment[i];
  }
  std::vector<double> result(n);
  std::vector<double> products(n);
  for (size_t first = 0; first < n; ++first) {
    std::fill(products.begin(), products.end(), 0.0);
    for (size_t i = 0; i < size; ++i) {
      const double* const samples = samplesOfAll.data() + i * n;
      vectorKernels().addScaled(samples + first + 1, weights[i] * samples[first],
                                static_cast<int64_t>(n - first - 1), products.data() + first + 1);
    }
    for (size_t second = first + 1; second < n; ++second) {
      const double product = products[second] * factors[first] * factors[second];
      result[first] -= product;
      result[second] -= product;
    }
  }
  return result;
}

/// Whether rounding of the resemblances cannot change which of them lie below their approximate median.
bool isClear(const Resemblances& resemblance, double median, double margin) {
  // Of a flat channel: 0 whatever the order. With an infinite sample: no number, which lies below nothing.
  if (resemblance.largestTerm == 0 || !std::isfinite(median)) return true;
  double sum = 0;
  double sumOfSquares = 0;
  double distance = margin;
  for (const double r : resemblance.values) {
    sum += r;
    sumOfSquares += r * r;
    distance = std::min(distance, std::abs(r - median));
  }
  const auto n = static_cast<double>(resemblance.values.size());
  const double deviation = std::sqrt(std::max(sumOfSquares / n - (sum / n) * (sum / n), 0.0));
  // The standard deviation, which places the bins, loses digits when it is small beside the values.
  const double rounding =
      resemblanceRounding * resemblance.largestTerm * std::max(1.0, resemblance.largestTerm / deviation);
  return distance > rounding;
}

std::vector<bool> below(const std::vector<double>& values, double limit) {
  std::vector<bool> result(values.size());
  std::transform(values.begin(), values.end(), result.begin(), [limit](double x) { return x < limit; });
  return result;
}

std::vector<bool> selectSegments(const BeatSegments& segments, const std::vector<double>& weights) {
  const auto n = static_cast<int32_t>(segments.nrOfBeats());
  const Resemblances resemblance = resemblances(segments, weights);
  double margin = 0;
  const double median = histogramMedian(resemblance.values.data(), n, margin);
  if (isClear(resemblance, median, margin)) return below(resemblance.values, median);

  const std::vector<double> ofPairs = resemblancesOfPairs(segments, weights);
  return below(ofPairs, histogramMedian(ofPairs.data(), n));
}

} // namespace

std::vector<bool> selectBeats(const double* channel, int64_t length, const std::vector<int32_t>& beats,
                              int32_t period, const std::vector<double>& weights) {
  return selectSegments(BeatSegments(channel, length, beats, period), weights);
}

std::vector<double> makeBeatTemplate(const double* channel, int64_t length, const std::vector<int32_t>& beats,
                                     int32_t period, const std::vector<double>& weights) {
  const BeatSegments segments(channel, length, beats, period);
  return segments.sumOver(selectSegments(segments, weights));
}

} // namespace emeg
