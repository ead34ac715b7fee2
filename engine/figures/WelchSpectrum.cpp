#include "engine/figures/WelchSpectrum.h"

#include "dsp/RealFFT.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace emeg {

namespace {

constexpr double windowSeconds = 8;
constexpr int64_t mostWindows = 100;
constexpr int32_t shortestLog2 = 5;
constexpr int32_t longestLog2 = 20;

std::vector<double> hannWindow(size_t length) {
  std::vector<double> window(length);
  for (size_t i = 0; i < length; ++i)
    window[i] =
        0.5 - 0.5 * std::cos(2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(length));
  return window;
}

float asFloat(double sample) {
  constexpr auto largest = static_cast<double>(std::numeric_limits<float>::max());
  return std::abs(sample) <= largest ? static_cast<float>(sample) : std::numeric_limits<float>::quiet_NaN();
}

float asFloat(float sample) {
  return sample;
}

} // namespace

WelchWindows::WelchWindows(double from, double to, double highest, double samplingFrequency,
                           int64_t nrOfTimePoints) {
  const double fs = samplingFrequency;
  if (!std::isfinite(fs) || !(fs > 0) || nrOfTimePoints <= 0) return;
  log2Length_ = static_cast<int32_t>(
      std::clamp<double>(std::round(std::log2(windowSeconds * fs)), shortestLog2, longestLog2));
  // NaN fails the comparison that keeps it from a conversion.
  const auto sampleAt = [&](double seconds) {
    const double sample = seconds * fs;
    if (!(sample > 0)) return int64_t{0};
    return sample < static_cast<double>(nrOfTimePoints) ? static_cast<int64_t>(sample) : nrOfTimePoints;
  };
  first_ = sampleAt(from);
  end_ = sampleAt(to);
  if (end_ - first_ < length()) return;
  count_ = std::min(mostWindows, 2 * (end_ - first_) / length() - 1);
  hzPerBin_ = fs / static_cast<double>(length());
  const auto samples = static_cast<size_t>(length());
  const size_t mostBins = samples / 2;
  const double bins = highest > 0 ? std::floor(highest / hzPerBin_) + 1 : 1;
  nrOfBins_ = static_cast<size_t>(std::min(bins, static_cast<double>(mostBins)));
  hann_ = hannWindow(samples);
  double windowPower = 0;
  for (const double value : hann_) windowPower += value * value;
  scale_ = 2 / (windowPower * static_cast<double>(length()) * static_cast<double>(count_));
}

int64_t WelchWindows::startOf(int64_t window) const {
  return count_ == 1 ? first_ : first_ + (end_ - first_ - length()) * window / (count_ - 1);
}

WelchSpectrum::WelchSpectrum(const WelchWindows& windows)
    : windows_(&windows), powers_(windows.count() > 0 ? windows.nrOfBins() : 0, 0.0) {}

void WelchSpectrum::add(std::span<const double> samples, FigureWorkspace& workspace) {
  const int64_t behind = position_ + static_cast<int64_t>(samples.size());
  const auto length = static_cast<size_t>(windows_->length());
  while (window_ < windows_->count() && windows_->startOf(window_) < behind) {
    const int64_t start = windows_->startOf(window_);
    const bool isComplete = start + windows_->length() <= behind;
    if (isComplete && start >= position_) {
      transform(samples.subspan(static_cast<size_t>(start - position_), length), workspace);
    } else {
      const auto seen = static_cast<int64_t>(pending_.size());
      collect(samples.first(static_cast<size_t>(std::min(start + windows_->length(), behind) - position_))
                  .subspan(static_cast<size_t>(start + seen - position_)));
      if (!isComplete) break;
      transform(std::span<const float>(pending_), workspace);
    }
    beginNextWindow(start);
  }
  position_ = behind;
}

void WelchSpectrum::collect(std::span<const double> samples) {
  pending_.reserve(static_cast<size_t>(windows_->length()));
  for (const double sample : samples) pending_.push_back(asFloat(sample));
}

/// Keeps what the next window shares with the one that began at `start`.
void WelchSpectrum::beginNextWindow(int64_t start) {
  ++window_;
  if (window_ == windows_->count()) {
    pending_ = std::vector<float>(); // braces alone would keep the memory
    return;
  }
  const int64_t gone = windows_->startOf(window_) - start;
  const auto seen = static_cast<int64_t>(pending_.size());
  pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(std::min(gone, seen)));
}

template <typename Value>
void WelchSpectrum::transform(std::span<const Value> samples, FigureWorkspace& workspace) {
  std::vector<double>& window = workspace.window;
  window.resize(samples.size());
  double mean = 0;
  for (size_t i = 0; i < samples.size(); ++i) {
    window[i] = static_cast<double>(asFloat(samples[i]));
    if (std::isfinite(window[i])) mean += window[i] / static_cast<double>(samples.size());
  }
  for (size_t i = 0; i < samples.size(); ++i)
    window[i] = std::isfinite(window[i]) ? (window[i] - mean) * windows_->hann()[i] : 0;
  realFFTForward(window.data(), windows_->log2Length(), workspace.fft);
  for (size_t k = 1; k < powers_.size(); ++k)
    powers_[k] += windows_->scale() * (window[2 * k] * window[2 * k] + window[2 * k + 1] * window[2 * k + 1]);
}

PowerSpectrum WelchSpectrum::spectrum(double factor) const {
  PowerSpectrum spectrum{windows_->hzPerBin(), powers_};
  for (double& power : spectrum.powers) power *= factor;
  return spectrum;
}

} // namespace emeg
