#include "artifacts/cardiac/search/BeatTracking.h"

#include "artifacts/cardiac/search/BeatWeights.h"
#include "artifacts/cardiac/series/Energy.h"
#include "dsp/Medians.h"
#include "dsp/VectorKernels.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double noScore = -1e50;

/// What a channel has learned from its beats: 4 x period + 1 values, the beat in the middle.
struct RunningTemplate {
  const double* samples = nullptr;
  bool energetic = false;
  std::vector<double> sum;   ///< of the normalised segments
  std::vector<double> votes; ///< +1 for every beat that rises there, -1 for every other
};

class BeatTracker {
public:
  BeatTracker(const BcgSeries& series, const HeartPeriod& heart)
      : length_(series.length), heart_(heart), period_(heart.period), weights_(beatWeights(heart.period)),
        interval_(heart.period) {
    for (const std::vector<double>& channel : series.channels) {
      RunningTemplate running;
      running.samples = channel.data();
      running.energetic = hasEnergy(channel.data(), length_);
      running.sum.assign(static_cast<size_t>(4 * period_ + 1), 0.0);
      running.votes.assign(static_cast<size_t>(4 * period_ + 1), 0.0);
      templates_.push_back(std::move(running));
    }
    const int64_t nrOfIntervals = heart.longest - heart.shortest + 1;
    window_.resize(static_cast<size_t>(std::max(nrOfIntervals + 2 * period_, 4 * period_ + 3)));
    squares_.resize(window_.size());
    factors_.resize(static_cast<size_t>(nrOfIntervals));
    scores_.resize(static_cast<size_t>(nrOfIntervals));
    bounds_.resize(static_cast<size_t>(2 * period_ + 1));
    costs_.resize(static_cast<size_t>(2 * period_ + 1));
    spread_.resize(static_cast<size_t>(4 * period_ + 1));
  }

  std::vector<int32_t> track() {
    addBeat(static_cast<int32_t>(3 * period_));
    while (beats_.back() < length_ - 2 * period_ - heart_.longest && beats_.size() < maxNrOfTrackedBeats) {
      interval_ = nextInterval();
      addBeat(beats_.back() + interval_);
      shiftBeats(alignment());
    }
    return std::move(beats_);
  }

private:
  /// The median over channels of the interval to the segment that best resembles the channel's template.
  int32_t nextInterval() {
    choices_.clear();
    for (const RunningTemplate& running : templates_)
      choices_.push_back(running.energetic ? bestInterval(running) : interval_);
    return static_cast<int32_t>(sortMedian(choices_.data(), static_cast<int32_t>(choices_.size())));
  }

  /// The highest local maximum of the scores; the previous interval when there is none.
  int32_t bestInterval(const RunningTemplate& running) {
    scoreIntervals(running);
    double best = noScore;
    int32_t choice = interval_;
    for (size_t k = 2; k < scores_.size(); ++k) {
      const double score = scores_[k - 1];
      if (score > scores_[k - 2] && score > scores_[k] && score > best) {
        best = score;
        choice = heart_.shortest + static_cast<int32_t>(k) - 1;
      }
    }
    return choice;
  }

  /// Weighted squares of template plus normalised segment, for every interval that is accepted.
  void scoreIntervals(const RunningTemplate& running) {
    const auto count = static_cast<int64_t>(scores_.size());
    const int64_t taps = 2 * period_ + 1;
    const int64_t first = beats_.back() + heart_.shortest - period_;
    copyWindow(running.samples, length_, first, count + taps - 1, window_.data());
    for (size_t i = 0; i < static_cast<size_t>(count + taps - 1); ++i) squares_[i] = window_[i] * window_[i];
    kernels_.slidingSum(squares_.data(), taps, count, factors_.data());
    for (double& factor : factors_) factor = normFactor(factor);
    kernels_.slidingWeightedSquares(window_.data(), factors_.data(), weights_.data(),
                                    running.sum.data() + period_, taps, count, scores_.data());
  }

  void addBeat(int32_t position) {
    beats_.push_back(position);
    for (RunningTemplate& running : templates_) {
      // One sample more on either side tells whether the first and the last position rise.
      copyWindow(running.samples, length_, position - 2 * period_ - 1, 4 * period_ + 3, window_.data());
      const double* const segment = window_.data() + 1;
      const double factor = normFactor(energyOf({segment + period_, static_cast<size_t>(2 * period_ + 1)}));
      for (int64_t k = 0; k <= 4 * period_; ++k) {
        running.sum[static_cast<size_t>(k)] += factor * segment[k];
        running.votes[static_cast<size_t>(k)] += segment[k + 1] > segment[k - 1] ? 1.0 : -1.0;
      }
    }
  }

  /// The median over channels of the shift that brings the most consistent slopes under the weights.
  int64_t alignment() {
    choices_.clear();
    for (const RunningTemplate& running : templates_)
      if (running.energetic) choices_.push_back(static_cast<double>(bestShift(running)));
    const double median = sortMedian(choices_.data(), static_cast<int32_t>(choices_.size()));
    return -static_cast<int64_t>(std::trunc(median));
  }

  /// The first shift of the smallest cost. No term of a cost is negative: the sum over the middle half of the
  /// weights, which holds nearly all of it, already rules most shifts out.
  int64_t bestShift(const RunningTemplate& running) {
    const auto n = static_cast<double>(beats_.size());
    std::transform(running.votes.begin(), running.votes.end(), spread_.begin(),
                   [n](double vote) { return n - vote * vote / n; });
    const int64_t taps = 2 * period_ + 1;
    const int64_t left = period_ / 2;
    kernels_.slidingDot(spread_.data() + left, weights_.data() + left, taps - 2 * left, taps, bounds_.data());
    const int64_t promising = std::min_element(bounds_.begin(), bounds_.end()) - bounds_.begin();
    double reached = 0;
    kernels_.slidingDot(spread_.data() + promising, weights_.data(), taps, 1, &reached);

    constexpr double rounding = 1 + 1e-9;
    const auto mayBeSmallest = [&](double bound) { return !(bound > reached * rounding); };
    const auto first = std::find_if(bounds_.begin(), bounds_.end(), mayBeSmallest) - bounds_.begin();
    const auto end = bounds_.rend() - std::find_if(bounds_.rbegin(), bounds_.rend(), mayBeSmallest);
    kernels_.slidingDot(spread_.data() + first, weights_.data(), taps, end - first, costs_.data());
    return first + (std::min_element(costs_.begin(), costs_.begin() + (end - first)) - costs_.begin()) -
           period_;
  }

  void shiftBeats(int64_t shift) {
    if (shift == 0) return;
    for (int32_t& beat : beats_) beat -= static_cast<int32_t>(shift);
    const int64_t size = 4 * period_ + 1;
    const int64_t newFirst = ((-shift) % size + size) % size; // the element that comes to index 0
    for (RunningTemplate& running : templates_) {
      std::rotate(running.sum.begin(), running.sum.begin() + newFirst, running.sum.end());
      std::rotate(running.votes.begin(), running.votes.begin() + newFirst, running.votes.end());
    }
  }

  const VectorKernels& kernels_ = vectorKernels();
  int64_t length_;
  HeartPeriod heart_;
  int64_t period_;
  std::vector<double> weights_;
  std::vector<RunningTemplate> templates_;
  std::vector<int32_t> beats_;
  int32_t interval_; ///< between the last two beats
  std::vector<double> choices_, window_, squares_, factors_, scores_, bounds_, costs_, spread_;
};

} // namespace

std::vector<int32_t> trackBeats(const BcgSeries& series, const HeartPeriod& heart) {
  if (heart.period <= 0) return {};
  return BeatTracker(series, heart).track();
}

} // namespace emeg
