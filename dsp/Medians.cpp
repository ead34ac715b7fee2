#include "dsp/Medians.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace emeg {

namespace {

constexpr int nrOfBins = 1000;

/// Scale of the sums and back: keeps the sums of squares of large sample values in range.
constexpr double toSumScale = 0.001;
constexpr double fromSumScale = 1000;

/// A bin behind the median bin with fewer values than this ends the refinement.
constexpr int32_t sparseBin = 5;

struct Range {
  double low;
  double high;
  double width() const { return high - low; }
  double centre() const { return (low + high) / 2; }
};

double standardDeviation(double meanSquare, double mean) {
  // Rounding makes the variance of a nearly constant series negative; NaN passes through.
  const double variance = meanSquare - mean * mean;
  return std::sqrt(variance < 0 ? 0.0 : variance);
}

struct Histogram {
  /// One bin more than is ever filled: the refinement looks at the bin behind the median bin.
  std::array<int32_t, nrOfBins + 1> bins{};
  int32_t below = 0;
};

Histogram countValues(const double* values, int32_t count, const Range& range) {
  Histogram histogram;
  for (int32_t i = 0; i < count; ++i) {
    const double v = values[i];
    if (v < range.low) {
      ++histogram.below;
    } else if (v < range.high) {
      // Rounding can carry a value just below the end of the range into the bin that stays empty.
      const double bin = std::floor((v - range.low) * nrOfBins / range.width());
      ++histogram.bins[static_cast<std::size_t>(std::clamp(bin, 0.0, nrOfBins - 1.0))];
    }
  }
  return histogram;
}

/// Distance of the value from the nearest bin edge; the range's ends are edges.
double distanceFromEdge(double value, const Range& range) {
  const double binWidth = range.width() / nrOfBins;
  const double nearest = std::clamp(std::round((value - range.low) / binWidth), 0.0, double{nrOfBins});
  return std::abs(value - (range.low + nearest * binWidth));
}

double refinedMedian(const double* values, int32_t count, double* margin) {
  if (margin) *margin = 0;
  if (count <= 0) return 0;
  double sum = 0;
  double sumOfSquares = 0;
  for (int32_t i = 0; i < count; ++i) {
    const double scaled = values[i] * toSumScale;
    sum += scaled;
    sumOfSquares += scaled * scaled;
  }
  const double scaledMean = sum / count;
  const double spread = standardDeviation(sumOfSquares / count, scaledMean) * fromSumScale;
  const double mean = scaledMean * fromSumScale;
  const double resolution = spread * 1e-6;
  Range range{mean - spread, mean + spread};
  // A spread that is not a finite number fails this test as well.
  if (!(range.width() > resolution)) return range.centre();

  const int32_t half = count / 2;
  if (margin) *margin = std::numeric_limits<double>::max();
  for (;;) {
    const Histogram histogram = countValues(values, count, range);
    for (int32_t i = 0; margin && i < count; ++i)
      *margin = std::min(*margin, distanceFromEdge(values[i], range));
    int32_t counted = histogram.below;
    int bin = 0;
    while (counted < half && bin < nrOfBins) counted += histogram.bins[static_cast<std::size_t>(bin++)];
    const int medianBin = bin - 1;
    const int32_t next = histogram.bins[static_cast<std::size_t>(bin)]; // the bin behind the median's

    const double width = range.width();
    range = {range.low + medianBin * width / nrOfBins, range.low + (medianBin + 1) * width / nrOfBins};
    // A range that rounding no longer lets shrink is as narrow as it gets.
    if (next < sparseBin || !(range.width() > resolution) || !(range.width() < width)) return range.centre();
  }
}

} // namespace

double sortMedian(double* values, int32_t count) {
  if (count <= 0) return 0;
  for (int32_t i = 1; i < count; ++i) {
    const double value = values[i];
    int32_t place = i;
    for (; place > 0 && values[place - 1] > value; --place) values[place] = values[place - 1];
    values[place] = value;
  }
  return values[count / 2];
}

double histogramMedian(const double* values, int32_t count) {
  return refinedMedian(values, count, nullptr);
}

double histogramMedian(const double* values, int32_t count, double& margin) {
  return refinedMedian(values, count, &margin);
}

} // namespace emeg
