#include "artifacts/cardiac/BeatReassembly.h"

#include "artifacts/cardiac/WarpEquation.h"

#include <algorithm>
#include <cmath>

namespace emeg {

void cutIntoEpochs(const BeatTimeBase& base, size_t index, const std::vector<double>& beat,
                   RowMatrix& epochs) {
  const auto half = static_cast<std::ptrdiff_t>(base.epochHalfLength);
  // The beat's last value is the next beat's first.
  if (index < base.nrOfEpochs()) std::copy(beat.end() - 1 - half, beat.end() - 1, epochs.row(index));
  if (index > 0) std::copy(beat.begin(), beat.begin() + half + 1, epochs.row(index - 1) + half);
}

void reassembleBeat(const BeatTimeBase& base, const double* epochBefore, const double* epochAfter,
                    std::vector<double>& beat) {
  const int32_t half = base.epochHalfLength;
  const int32_t fadeStart = base.modelLength - half - 1;
  for (int32_t j = 0; j < base.modelLength; ++j) {
    double& value = beat[static_cast<size_t>(j)];
    const double before = epochBefore && j < half ? epochBefore[half + j] : value;
    const double after = epochAfter && j > fadeStart ? epochAfter[j - fadeStart] : value;
    if (j <= fadeStart) {
      value = before;
    } else if (j >= half) {
      value = after;
    } else {
      const double t = static_cast<double>(j - fadeStart) / (half - fadeStart);
      value = t * after + (1 - t) * before;
    }
  }
}

namespace {

/// The beat at a place between 0 and its last index, by linear interpolation.
double interpolated(const std::vector<double>& beat, double place) {
  const auto last = static_cast<double>(beat.size() - 1);
  const double inside = std::clamp(place, 0.0, last);
  const double index = std::min(std::floor(inside), last - 1);
  const double fraction = inside - index;
  const auto at = static_cast<size_t>(index);
  return (1 - fraction) * beat[at] + fraction * beat[at + 1];
}

/// One side of the bend of the warp: the part `share` of the common time base.
struct WarpPart {
  double bend;       ///< 3 x (share - warpMargin)
  double share;      ///< a in front of the bend, 1 - a behind it
  double samples;    ///< of the interval on this side
  double medianBend; ///< bend in samples of an interval of the median length

  WarpPart(double part, const BeatTimeBase& base, double interval)
      : bend(3 * (part - base.warpMargin)), share(part),
        samples((interval - base.medianPulseInterval) * 0.5 + base.medianPulseInterval * part),
        medianBend(base.medianPulseInterval * bend) {}

  /// The root x of ((samples x - medianBend) x + medianBend) x = distance.
  double solve(double distance, double start) const {
    return solveRising([&](double x) { return ((samples * x - medianBend) * x + medianBend) * x - distance; },
                       [&](double x) { return (3 * samples * x - 2 * medianBend) * x + medianBend; }, start);
  }
  /// Distance on the common time base, 0 to share.
  double onTimeBase(double x) const { return ((1 - x) * bend + share * (x * x)) * x; }
};

} // namespace

void writeBeatBack(const BeatTimeBase& base, size_t index, double a, const std::vector<double>& beat,
                   double* series, int64_t length) {
  const double interval = base.length(index);
  const auto start = static_cast<int64_t>(base.start(index));
  const auto nrOfSamples = static_cast<int64_t>(interval);
  const double last = base.modelLength - 1;
  const auto write = [&](int64_t j, double place) {
    if (start + j >= 0 && start + j < length) series[start + j] = interpolated(beat, place);
  };

  const WarpPart front(a, base, interval);
  const WarpPart back(1 - a, base, interval);
  const double junction =
      std::floor((interval - base.medianPulseInterval) * 0.5 + base.medianPulseInterval * a);
  const auto end = static_cast<int64_t>(std::clamp(junction, -1.0, static_cast<double>(nrOfSamples - 1)));
  double x = 0.0;
  for (int64_t j = 0; j <= end; ++j) {
    x = front.solve(static_cast<double>(j), x);
    write(j, last * front.onTimeBase(x));
  }
  x = 0.0;
  for (int64_t j = nrOfSamples - 1; j > end; --j) {
    x = back.solve(static_cast<double>(nrOfSamples - j), x);
    write(j, last * (1 - back.onTimeBase(x)));
  }
}

} // namespace emeg
