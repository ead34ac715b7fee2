#include "dsp/FirDesign.h"

#include "dsp/WindowedSinc.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <sstream>
#include <stdexcept>

namespace emeg {

namespace {

template <typename... Parts>
[[noreturn]] void refuse(const Parts&... parts) {
  std::ostringstream sentence;
  (sentence << ... << parts);
  throw std::invalid_argument(sentence.str());
}

/// Negated comparisons, so that NaN is refused as well.
void checkRate(double rate) {
  if (!(rate > 0) || !std::isfinite(rate))
    refuse("A filter needs a positive sampling rate, not ", rate, " Hz.");
}

void checkEdge(double edge, double rate) {
  checkRate(rate);
  if (!(edge > 0 && edge < rate / 2))
    refuse("A filter's edge must lie between 0 Hz and half the sampling rate, ", rate / 2, " Hz, but is ",
           edge, " Hz.");
}

/// The room for half a transition is compared with some tolerance, so that a width that was computed from the
/// edge fits.
void checkTransition(double edge, double transition, double rate) {
  if (!(transition > 0)) refuse("A filter's transition must be wider than 0 Hz, but is ", transition, " Hz.");
  if (!(transition <= 2 * std::min(edge, rate / 2 - edge) * (1 + 1e-9)))
    refuse("A transition of ", transition, " Hz around ", edge, " Hz reaches beyond 0 Hz or beyond half the ",
           "sampling rate, ", rate / 2, " Hz.");
}

/// Taps on each side of the middle one. What 3.3 promises for long filters takes a few taps more in short
/// ones.
int64_t halfLengthOf(double transition, double rate) {
  const double length = std::ceil(3.3 * rate / transition);
  if (!(length <= static_cast<double>(longestFir)))
    refuse("A filter with a transition of ", transition, " Hz at ", rate, " Hz needs ", length,
           " taps; at most ", longestFir, " are possible.");
  constexpr double shortLength = 100;
  constexpr int64_t moreOnEachSide = 2;
  return static_cast<int64_t>(length) / 2 + (length < shortLength ? moreOnEachSide : 0);
}

/// A transition that comes closer to 0 Hz or rate/2 than this meets its own mirror image there: both would
/// add up. A filter for a narrower one keeps the limits.
double undisturbed(double edge, double transition, double rate) {
  return std::min({transition, edge, rate / 2 - edge});
}

std::vector<double> windowedLowPass(double edge, int64_t half, double rate) {
  const double zerosPerTap = 2 * edge / rate;
  std::vector<double> taps(static_cast<std::size_t>(2 * half + 1));
  double* middle = taps.data() + half;
  for (int64_t i = 0; i <= half; ++i) {
    const double x = static_cast<double>(i);
    middle[i] = sinc(zerosPerTap * x) * hammingWindow(x / static_cast<double>(half));
    middle[-i] = middle[i];
  }
  normaliseSum(taps.data(), 2 * half + 1);
  return taps;
}

/// 1 minus the filter.
void complement(std::vector<double>& taps) {
  for (double& tap : taps) tap = -tap;
  taps[taps.size() / 2] += 1;
}

double defaultTransition(double edge, double rate) {
  checkEdge(edge, rate);
  return std::min({std::max(0.25 * edge, 2.0), edge, rate / 2 - edge});
}

} // namespace

std::vector<double> lowPassTaps(double edge, double transition, double rate) {
  checkEdge(edge, rate);
  checkTransition(edge, transition, rate);
  return windowedLowPass(edge, halfLengthOf(undisturbed(edge, transition, rate), rate), rate);
}

std::vector<double> highPassTaps(double edge, double transition, double rate) {
  std::vector<double> taps = lowPassTaps(edge, transition, rate);
  complement(taps);
  return taps;
}

std::vector<double> bandStopTaps(double lowEdge, double highEdge, double transition, double rate) {
  checkEdge(lowEdge, rate);
  checkEdge(highEdge, rate);
  if (!(lowEdge < highEdge))
    refuse("A band-stop's lower edge, ", lowEdge, " Hz, must lie below its upper one, ", highEdge, " Hz.");
  checkTransition(lowEdge, transition, rate);
  checkTransition(highEdge, transition, rate);
  if (!(transition <= (highEdge - lowEdge) * (1 + 1e-9)))
    refuse("A transition of ", transition, " Hz is wider than the band from ", lowEdge, " to ", highEdge,
           " Hz, whose middle would not be stopped.");
  const double narrower =
      std::min(undisturbed(lowEdge, transition, rate), undisturbed(highEdge, transition, rate));
  const int64_t half = halfLengthOf(narrower, rate);
  std::vector<double> band = windowedLowPass(highEdge, half, rate);
  const std::vector<double> below = windowedLowPass(lowEdge, half, rate);
  for (std::size_t i = 0; i < band.size(); ++i) band[i] -= below[i];
  complement(band);
  return band;
}

double defaultHighPassTransition(double edge, double rate) {
  return defaultTransition(edge, rate);
}

double defaultLowPassTransition(double edge, double rate) {
  return defaultTransition(edge, rate);
}

double defaultBandStopTransition(double lowEdge, double highEdge, double rate) {
  checkEdge(lowEdge, rate);
  checkEdge(highEdge, rate);
  if (!(lowEdge < highEdge))
    refuse("A band-stop's lower edge, ", lowEdge, " Hz, must lie below its upper one, ", highEdge, " Hz.");
  return std::min({1.0, highEdge - lowEdge, lowEdge, rate / 2 - highEdge});
}

} // namespace emeg
