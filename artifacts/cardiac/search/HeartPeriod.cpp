#include "artifacts/cardiac/search/HeartPeriod.h"

#include "dsp/Medians.h"
#include "dsp/VectorKernels.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace emeg {

namespace {

constexpr double fastestHeart = 140.0; // beats per minute
constexpr double slowestHeart = 35.0;
constexpr double middleFrom = 0.15000000000000002; // 1 - 0.85 as doubles subtract
constexpr double middleTo = 0.85;
const double intervalTolerance = 0.5 * std::log(2.0);

int64_t rounded(double x) {
  return static_cast<int64_t>(std::floor(x + 0.5));
}

/// The correlation sums of one channel at all lags of the search.
class LagSums {
public:
  explicit LagSums(const BcgSeries& series)
      : length_(series.length), from_(rounded(static_cast<double>(length_) * middleFrom)),
        nrOfTerms_(std::max<int64_t>(rounded(static_cast<double>(length_) * middleTo) - from_ + 1, 0)),
        lagMin_(rounded(static_cast<double>(series.rate) * 60.0 / fastestHeart)),
        lagMax_(rounded(static_cast<double>(series.rate) * 60.0 / slowestHeart)),
        window_(static_cast<size_t>(nrOfTerms_ + lagMax_)),
        sums_(static_cast<size_t>(lagMax_ - lagMin_ + 1)) {}

  /// The lag of the first of the largest sums; `previous` when there is none.
  int32_t bestLag(const double* channel, int32_t previous) {
    // What would be correlated with samples behind the end of the series is correlated with 0.
    copyWindow(channel, length_, from_, nrOfTerms_ + lagMax_, window_.data());
    vectorKernels().slidingDot(window_.data() + lagMin_, window_.data(), nrOfTerms_, lagMax_ - lagMin_ + 1,
                               sums_.data());
    double best = -1e60;
    int32_t lag = previous;
    for (size_t k = 0; k < sums_.size(); ++k) {
      const double sum = std::isnan(sums_[k]) ? clippedSum(lagMin_ + static_cast<int64_t>(k)) : sums_[k];
      if (sum > best) {
        best = sum;
        lag = static_cast<int32_t>(lagMin_ + static_cast<int64_t>(k));
      }
    }
    return lag;
  }

private:
  /// Without the products with what lies behind the end: an infinite sample times 0 is no number.
  double clippedSum(int64_t lag) const {
    double sum = 0;
    for (int64_t j = 0; j < std::min(nrOfTerms_, length_ - from_ - lag); ++j)
      sum += window_[static_cast<size_t>(j)] * window_[static_cast<size_t>(j + lag)];
    return sum;
  }

  int64_t length_;
  int64_t from_;
  int64_t nrOfTerms_;
  int64_t lagMin_;
  int64_t lagMax_;
  std::vector<double> window_;
  std::vector<double> sums_;
};

} // namespace

double HeartPeriod::beatsPerMinute(float rate) const {
  return period > 0 ? static_cast<double>(rate) * 60.0 / period : 0.0;
}

HeartPeriod estimateHeartPeriod(const BcgSeries& series) {
  LagSums lagSums(series);
  std::vector<double> channelPeriods;
  HeartPeriod heart;
  for (const std::vector<double>& channel : series.channels) {
    heart.period = lagSums.bestLag(channel.data(), heart.period);
    channelPeriods.push_back(heart.period);
  }
  heart.period =
      static_cast<int32_t>(sortMedian(channelPeriods.data(), static_cast<int32_t>(channelPeriods.size())));
  heart.shortest = static_cast<int32_t>(rounded(std::exp(-intervalTolerance) * heart.period));
  heart.longest = static_cast<int32_t>(rounded(std::exp(intervalTolerance) * heart.period));
  return heart;
}

} // namespace emeg
