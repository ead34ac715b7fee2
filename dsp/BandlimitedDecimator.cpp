#include "dsp/BandlimitedDecimator.h"

#include "dsp/RecordingStretch.h"
#include "dsp/VectorKernels.h"
#include "dsp/WindowedSinc.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace emeg {

namespace {

constexpr double targetRate = 250;
constexpr double highestRate = 1e6;
constexpr double highestEdge = 100;
constexpr double lowestEdgeShare = 1e-5;
constexpr double attenuation = 85;

void checkRateAndEdge(double rate, double edge) {
  if (rate > 0 && rate <= highestRate && edge >= lowestEdgeShare * rate && edge <= highestEdge) return;
  std::ostringstream sentence;
  sentence << "A recording at " << rate << " Hz cannot be kept below " << edge
           << " Hz: its sampling rate must be above 0 and at most " << highestRate
           << " Hz, the edge at least 1/100000 of it and at most " << highestEdge << " Hz.";
  throw std::invalid_argument(sentence.str());
}

std::vector<double> lowPassOrNothing(double rate, double edge) {
  const double stopEdge = edge * 8 / 7;
  if (stopEdge >= rate / 2) return {1.0};
  const KaiserSinc kernel(edge / rate, 2 * (stopEdge - edge) / rate, attenuation);
  const auto half = static_cast<int64_t>(std::ceil(kernel.halfWidth()));
  std::vector<double> taps(static_cast<std::size_t>(2 * half + 1));
  for (int64_t i = -half; i <= half; ++i)
    taps[static_cast<std::size_t>(half + i)] = kernel(static_cast<double>(i));
  normaliseSum(taps.data(), 2 * half + 1);
  return taps;
}

} // namespace

BandlimitedDecimator::BandlimitedDecimator(double rate, double edge) : rate_(rate), step_(1) {
  checkRateAndEdge(rate, edge);
  step_ = std::max<int64_t>(static_cast<int64_t>(rate / targetRate), 1);
  taps_ = lowPassOrNothing(rate, edge);
  window_.resize(taps_.size());
}

void BandlimitedDecimator::add(std::span<const double> samples, std::vector<double>& out) {
  // Pieces of the filter's length, so that a long block does not lie here a second time.
  const std::size_t piece = std::max<std::size_t>(taps_.size(), 4096);
  kept_.reserve(3 * piece);
  while (!samples.empty()) {
    const std::span<const double> next = samples.first(std::min(piece, samples.size()));
    samples = samples.subspan(next.size());
    kept_.insert(kept_.end(), next.begin(), next.end());
    // As long as the recording's end is not known, it is as far away as can be.
    const int64_t received = keptFrom_ + static_cast<int64_t>(kept_.size());
    makeOutputs(received - halfLength(), std::numeric_limits<int64_t>::max(), out);
    if (kept_.size() >= 2 * piece) forgetSamples();
  }
}

void BandlimitedDecimator::finish(std::vector<double>& out) {
  const int64_t received = keptFrom_ + static_cast<int64_t>(kept_.size());
  makeOutputs(received, received, out);
  kept_.clear();
  keptFrom_ = 0;
  next_ = 0;
}

void BandlimitedDecimator::makeOutputs(int64_t end, int64_t recordingLength, std::vector<double>& out) {
  const RecordingStretch stretch{kept_, keptFrom_, recordingLength};
  const auto taps = static_cast<int64_t>(taps_.size());
  for (; next_ < end; next_ += step_) {
    const int64_t first = next_ - halfLength();
    const double* samples = window_.data();
    if (first >= keptFrom_ && first + taps <= keptFrom_ + static_cast<int64_t>(kept_.size()))
      samples = kept_.data() + (first - keptFrom_);
    else
      copyContinued(stretch, first, window_);
    out.push_back(vectorKernels().dot(samples, taps_.data(), taps));
  }
}

/// Everything that neither the next outputs nor a reflection at the end can need.
void BandlimitedDecimator::forgetSamples() {
  const int64_t received = keptFrom_ + static_cast<int64_t>(kept_.size());
  const int64_t neededFrom = std::max<int64_t>(std::min(next_, received - 1) - halfLength(), keptFrom_);
  kept_.erase(kept_.begin(), kept_.begin() + (neededFrom - keptFrom_));
  keptFrom_ = neededFrom;
}

} // namespace emeg
