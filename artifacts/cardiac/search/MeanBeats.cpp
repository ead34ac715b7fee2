#include "artifacts/cardiac/search/MeanBeats.h"

#include "artifacts/cardiac/search/BeatWeights.h"
#include "artifacts/cardiac/series/Energy.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double halfLength = 0.75; // of the period: the weights are small behind it

double medianOf(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// Sum of the normalised segments of the beats, `half` samples on either side.
std::vector<double> sumOfBeats(const double* samples, int64_t length, const std::vector<double>& beats,
                               int64_t half) {
  std::vector<double> sum(static_cast<size_t>(2 * half + 1));
  std::vector<double> segment(sum.size());
  for (const double beat : beats) {
    copyWindow(samples, length, static_cast<int64_t>(beat) - half, static_cast<int64_t>(segment.size()),
               segment.data());
    const double energy = energyOf(segment);
    if (!std::isfinite(energy)) continue;
    const double factor = normFactor(energy);
    for (size_t j = 0; j < sum.size(); ++j) sum[j] += factor * segment[j];
  }
  return sum;
}

} // namespace

MeanBeats::MeanBeats(const BcgSeries& series, const std::vector<double>& positions, int32_t period)
    : length_(series.length), half_(static_cast<int64_t>(halfLength * period)) {
  const std::vector<double> weights = beatWeights(period);
  weights_.assign(weights.begin() + (period - half_), weights.end() - (period - half_));
  for (const std::vector<double>& samples : series.channels) {
    if (!hasEnergy(samples.data(), length_)) continue;
    channels_.push_back({samples.data(), sumOfBeats(samples.data(), length_, positions, half_)});
  }
  std::vector<double> likenesses;
  likenesses.reserve(positions.size());
  for (const double position : positions) likenesses.push_back(likenessAt(static_cast<int64_t>(position)));
  const double limit = 0.5 * medianOf(likenesses);
  std::vector<double> alike;
  for (size_t i = 0; i < positions.size(); ++i)
    if (likenesses[i] >= limit) alike.push_back(positions[i]);
  for (Channel& channel : channels_) channel.mean = sumOfBeats(channel.samples, length_, alike, half_);
}

double MeanBeats::channelLikeness(const Channel& channel, int64_t sample) const {
  const int64_t from = std::max<int64_t>(-half_, -sample);
  const int64_t to = std::min(half_, length_ - 1 - sample);
  double both = 0;
  double ofSeries = 0;
  double ofMean = 0;
  for (int64_t j = from; j <= to; ++j) {
    const auto at = static_cast<size_t>(j + half_);
    const double x = channel.samples[sample + j];
    const double m = channel.mean[at];
    both += weights_[at] * x * m;
    ofSeries += weights_[at] * x * x;
    ofMean += weights_[at] * m * m;
  }
  const double likeness = both * normFactor(ofSeries) * normFactor(ofMean);
  return std::isfinite(likeness) ? likeness : 0.0;
}

double MeanBeats::likenessAt(int64_t sample) const {
  std::vector<double> likenesses;
  likenesses.reserve(channels_.size());
  for (const Channel& channel : channels_) likenesses.push_back(channelLikeness(channel, sample));
  return medianOf(std::move(likenesses));
}

} // namespace emeg
