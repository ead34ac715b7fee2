#include "artifacts/gradient/timing/Autocorrelation.h"

#include "artifacts/gradient/timing/BandLimitedShift.h"
#include "dsp/RealFFT.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

void squareMagnitudes(std::vector<double>& spectrum) {
  spectrum[0] *= spectrum[0];
  spectrum[1] *= spectrum[1];
  for (size_t k = 2; k + 1 < spectrum.size(); k += 2) {
    spectrum[k] = spectrum[k] * spectrum[k] + spectrum[k + 1] * spectrum[k + 1];
    spectrum[k + 1] = 0;
  }
}

} // namespace

Autocorrelation::Autocorrelation(std::span<const double> signal, int64_t largestLag) {
  const auto n = static_cast<int64_t>(signal.size());
  largestLag = std::max<int64_t>(0, std::min(largestLag, n - 1));
  values_.assign(static_cast<size_t>(largestLag + 1), 0.0);
  if (n == 0) return;
  initFFTTables();
  int32_t log2n = 5;
  while ((int64_t{1} << log2n) < n + largestLag + 1) ++log2n;
  std::vector<double> work(size_t{1} << log2n, 0.0);
  std::copy(signal.begin(), signal.end(), work.begin());
  realFFTForward(work.data(), log2n);
  squareMagnitudes(work);
  realFFTInverse(work.data(), log2n);
  const double scale = 2 / static_cast<double>(work.size());

  double total = 0;
  for (const double value : signal) total += value * value;
  double head = total; // energy of all but the last `lag` samples
  double tail = total; // energy of all but the first `lag` samples
  for (int64_t lag = 0; lag <= largestLag; ++lag) {
    if (lag > 0) {
      const double last = signal[static_cast<size_t>(n - lag)];
      const double first = signal[static_cast<size_t>(lag - 1)];
      head -= last * last;
      tail -= first * first;
    }
    const double energy = std::sqrt(std::max(head, 0.0) * std::max(tail, 0.0));
    // What rounding leaves of an energy that has vanished is no energy.
    if (energy > 1e-9 * total)
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
