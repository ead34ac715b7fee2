#include "artifacts/gradient/timing/volumes/Autocorrelation.h"

#include "artifacts/gradient/templates/BandLimitedShift.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/RealFFT.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr int64_t interpolationReach = 18; // lags that the value between two others depends on

void squareMagnitudes(std::vector<double>& spectrum) {
  spectrum[0] *= spectrum[0];
  spectrum[1] *= spectrum[1];
  for (size_t k = 2; k + 1 < spectrum.size(); k += 2) {
    spectrum[k] = spectrum[k] * spectrum[k] + spectrum[k + 1] * spectrum[k + 1];
    spectrum[k + 1] = 0;
  }
}

/// Energies of what a signal is compared with at some lag.
class OverlapEnergies {
public:
  explicit OverlapEnergies(std::span<const double> signal)
      : n_(static_cast<int64_t>(signal.size())), sums_(signal.size() + 1, 0.0) {
    int64_t zeros = 0;
    for (int64_t i = 0; i < n_; ++i) {
      const double value = signal[static_cast<size_t>(i)];
      sums_[static_cast<size_t>(i + 1)] = sums_[static_cast<size_t>(i)] + value * value;
      zeros = value == 0 ? zeros + 1 : 0;
      if (zeros == shortestDropout) dropouts_.push_back({i + 1 - zeros, i + 1});
      if (zeros > shortestDropout) dropouts_.back().end = i + 1;
    }
    if (dropouts_.size() > mostDropouts) dropouts_.clear();
  }

  /// The root of both parts' energies.
  double at(int64_t lag) const {
    double head = between(0, n_ - lag);
    double tail = between(lag, n_);
    for (const auto& [begin, end] : dropouts_) {
      head -= between(begin - lag, end - lag);
      tail -= between(begin + lag, end + lag);
    }
    return std::sqrt(std::max(head, 0.0) * std::max(tail, 0.0));
  }

private:
  /// Where the recording was interrupted, the signal is exactly 0.
  struct Dropout {
    int64_t begin, end;
  };
  static constexpr int64_t shortestDropout = 32;
  static constexpr size_t mostDropouts = 100;

  double between(int64_t begin, int64_t end) const {
    begin = std::clamp<int64_t>(begin, 0, n_);
    end = std::clamp<int64_t>(end, begin, n_);
    return sums_[static_cast<size_t>(end)] - sums_[static_cast<size_t>(begin)];
  }

  int64_t n_;
  std::vector<double> sums_;
  std::vector<Dropout> dropouts_;
};

} // namespace

Autocorrelation::Autocorrelation(std::span<const double> signal, int64_t largestLag) {
  const auto n = static_cast<int64_t>(signal.size());
  largestLag_ = std::max<int64_t>(0, std::min(largestLag, n - 1 - interpolationReach));
  const int64_t lastLag = largestLag_ + interpolationReach;
  values_.assign(static_cast<size_t>(lastLag + 1), 0.0);
  if (n == 0) return;
  int32_t log2n = 5;
  while ((int64_t{1} << log2n) < n + lastLag + 1) ++log2n;
  std::vector<double> work(size_t{1} << log2n, 0.0);
  std::copy(signal.begin(), signal.end(), work.begin());
  FFTWorkspace workspace;
  realFFTForward(work.data(), log2n, workspace);
  squareMagnitudes(work);
  realFFTInverse(work.data(), log2n, workspace);
  const double scale = 2 / static_cast<double>(work.size());

  const OverlapEnergies energies(signal);
  for (int64_t lag = 0; lag <= std::min(lastLag, n - 1); ++lag) {
    const double energy = energies.at(lag);
    // What rounding leaves of an energy that has vanished is no energy.
    if (energy > 1e-9 * energies.at(0))
      values_[static_cast<size_t>(lag)] = work[static_cast<size_t>(lag)] * scale / energy;
  }
}

double Autocorrelation::between(double lag) const {
  if (!(lag >= 0 && lag <= static_cast<double>(largestLag()))) return 0;
  const double whole = std::floor(lag);
  return BandLimitedShift(lag - whole).at(values_, static_cast<int64_t>(whole));
}

CorrelationPeak Autocorrelation::refined(int64_t lag) const {
  CorrelationPeak best{static_cast<double>(lag), at(lag)};
  for (double step = 0.5; step >= 0.5 / 1024; step /= 2) {
    const double below = between(best.lag - step);
    const double above = between(best.lag + step);
    if (below > best.value && below >= above) {
      best = {best.lag - step, below};
    } else if (above > best.value) {
      best = {best.lag + step, above};
    }
  }
  return best;
}

CorrelationPeak Autocorrelation::peakNear(double lag, double reach) const {
  const auto from = std::max<int64_t>(1, static_cast<int64_t>(std::floor(lag - reach)));
  const auto to = std::min(largestLag() - 1, static_cast<int64_t>(std::ceil(lag + reach)));
  if (from > to) return {};
  int64_t best = from;
  for (int64_t candidate = from; candidate <= to; ++candidate)
    if (at(candidate) > at(best)) best = candidate;
  return refined(best);
}

std::vector<CorrelationPeak> Autocorrelation::peaks(int64_t smallestLag, double floor) const {
  std::vector<CorrelationPeak> found;
  for (int64_t lag = std::max<int64_t>(1, smallestLag); lag < largestLag(); ++lag)
    if (at(lag) > floor && at(lag) >= at(lag - 1) && at(lag) > at(lag + 1)) found.push_back(refined(lag));
  return found;
}

} // namespace emeg
