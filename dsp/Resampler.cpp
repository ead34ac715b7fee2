#include "dsp/Resampler.h"

#include "dsp/VectorKernels.h"
#include "dsp/WindowedSinc.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <string>

namespace emeg {

namespace {

/// Shares of the lower rate. 10 dB more than promised: scaling every phase's taps to a sum of 1 costs some.
constexpr double cutoff = 0.45;
constexpr double transition = 0.1;
constexpr double attenuation = 90;

/// A table of taps has at most so many (8 MB).
constexpr int64_t largestTable = int64_t{1} << 20;

/// Straight lines between so many values per zero crossing of the kernel are within 3e-7 of its peak.
constexpr double kernelStepsPerCrossing = 2048;

KaiserSinc kernelFor(double oldRate, double newRate) {
  const double lowerRate = std::min(oldRate, newRate) / oldRate;
  return {cutoff * lowerRate, transition * lowerRate, attenuation};
}

} // namespace

Resampler::Resampler(double oldRate, double newRate) : instants_(oldRate, newRate) {
  if (oldRate == newRate) return;
  const KaiserSinc kernel = kernelFor(oldRate, newRate);
  halfTaps_ = static_cast<int64_t>(std::ceil(kernel.halfWidth()));
  if (instants_.phases() > 0 && instants_.phases() <= largestTable / (2 * halfTaps_))
    tabulateTaps(oldRate, newRate);
  else
    tabulateKernel(oldRate, newRate);
}

void Resampler::tabulateTaps(double oldRate, double newRate) {
  const KaiserSinc kernel = kernelFor(oldRate, newRate);
  const int64_t phases = instants_.phases();
  taps_.resize(static_cast<std::size_t>(phases * 2 * halfTaps_));
  for (int64_t phase = 0; phase < phases; ++phase) {
    double* taps = taps_.data() + phase * 2 * halfTaps_;
    const double fraction = static_cast<double>(phase) / static_cast<double>(phases);
    for (int64_t j = 0; j < 2 * halfTaps_; ++j)
      taps[j] = kernel(static_cast<double>(j - halfTaps_ + 1) - fraction);
    normaliseSum(taps, 2 * halfTaps_);
  }
}

void Resampler::tabulateKernel(double oldRate, double newRate) {
  const KaiserSinc kernel = kernelFor(oldRate, newRate);
  kernelStepsPerSample_ = kernelStepsPerCrossing / kernel.crossingDistance();
  const double last = std::ceil(static_cast<double>(halfTaps_) * kernelStepsPerSample_) + 1;
  kernel_.resize(static_cast<std::size_t>(last) + 1);
  // The kernel jumps to 0 at its end. Straight lines must not cross that jump: the table goes on behind it.
  kernelEnd_ = kernel.halfWidth();
  const double lastInside = std::nextafter(kernelEnd_, 0.0);
  for (std::size_t i = 0; i < kernel_.size(); ++i)
    kernel_[i] = kernel(std::min(static_cast<double>(i) / kernelStepsPerSample_, lastInside));
}

double Resampler::kernelAt(double distance) const {
  if (distance >= kernelEnd_) return 0;
  const double step = distance * kernelStepsPerSample_;
  const auto i = static_cast<std::size_t>(step);
  return kernel_[i] + (step - static_cast<double>(i)) * (kernel_[i + 1] - kernel_[i]);
}

const double* Resampler::tapsFor(const OutputInstant& instant, std::span<double> work) const {
  if (!taps_.empty()) return taps_.data() + instant.phase * 2 * halfTaps_;
  for (int64_t i = 0; i < halfTaps_; ++i) {
    const auto before = static_cast<std::size_t>(halfTaps_ - 1 - i);
    const auto behind = static_cast<std::size_t>(halfTaps_ + i);
    work[before] = kernelAt(static_cast<double>(i) + instant.fraction);
    work[behind] = kernelAt(static_cast<double>(i + 1) - instant.fraction);
  }
  normaliseSum(work.data(), 2 * halfTaps_);
  return work.data();
}

int64_t Resampler::outputLength(int64_t recordingLength) const {
  if (recordingLength < 0 || recordingLength > longestRecording)
    throw std::invalid_argument("A recording of " + std::to_string(recordingLength) +
                                " samples cannot be brought to another sampling rate.");
  return recordingLength == 0 ? 0 : instants_.countUpTo(recordingLength - 1);
}

PositionRange Resampler::outputsIn(PositionRange stretch, int64_t recordingLength) const {
  const int64_t all = outputLength(recordingLength);
  const auto countBefore = [&](int64_t position) {
    if (position >= recordingLength) return all;
    return std::min(instants_.countBelow(std::max<int64_t>(position, 0)), all);
  };
  return {countBefore(stretch.begin), countBefore(std::max(stretch.begin, stretch.end))};
}

PositionRange Resampler::inputFor(PositionRange outputs, int64_t recordingLength) const {
  if (outputs.begin >= outputs.end) return {};
  return withContext({instants_[outputs.begin].whole, instants_[outputs.end - 1].whole + 1}, halfTaps_,
                     recordingLength);
}

void Resampler::apply(const RecordingStretch& in, PositionRange outputs, std::span<double> out) const {
  checkStretch(in);
  checkOutputs(outputs, outputLength(in.recordingLength), out.size());
  if (halfTaps_ == 0) return copyContinued(in, outputs.begin, out);
  const auto taps = static_cast<std::size_t>(2 * halfTaps_);
  const PositionRange held = in.positions();
  std::vector<double> copied(taps);
  std::vector<double> work(taps_.empty() ? taps : 0);
  for (std::size_t i = 0; i < out.size(); ++i) {
    const OutputInstant instant = instants_[outputs.begin + static_cast<int64_t>(i)];
    const int64_t first = instant.whole - halfTaps_ + 1;
    const double* samples = copied.data();
    if (first >= held.begin && instant.whole + halfTaps_ < held.end)
      samples = in.samples.data() + (first - held.begin);
    else
      copyContinued(in, first, copied);
    out[i] = vectorKernels().dot(samples, tapsFor(instant, work), 2 * halfTaps_);
  }
}

std::vector<double> Resampler::apply(std::span<const double> recording) const {
  const RecordingStretch whole = wholeRecording(recording);
  std::vector<double> resampled(static_cast<std::size_t>(outputLength(whole.recordingLength)));
  apply(whole, {0, static_cast<int64_t>(resampled.size())}, resampled);
  return resampled;
}

} // namespace emeg
