#include "artifacts/cardiac/BeatCarrying.h"

#include "artifacts/cardiac/MeanBeats.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr size_t fewestBeats = 8;
constexpr size_t mostBeatsCompared = 150; // enough for ranks, and quick
constexpr size_t nearestIntervals = 5;    // tell where the next beat may be
constexpr double reach = 0.2;             // of the interval, on either side of the place
constexpr double rankBetween = 0.98;      // of the likenesses between beats, the one that counts as highest
constexpr double rankAtBeats = 0.5;
constexpr double clearly = 0.5;       // of the way from there to that of beats
constexpr double leastDistance = 0.1; // between the two, for beats that stand out at all

double ranked(std::vector<double> values, double rank) {
  const auto place =
      values.begin() + static_cast<std::ptrdiff_t>(rank * static_cast<double>(values.size() - 1) + 0.5);
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

std::vector<double> intervalsOf(const std::vector<double>& positions) {
  std::vector<double> intervals;
  for (size_t i = 1; i < positions.size(); ++i) intervals.push_back(positions[i] - positions[i - 1]);
  return intervals;
}

struct Place {
  int64_t sample = 0;
  double likeness = -2;
  bool isPeak = false; ///< the likeness falls on either side
};

class BeatCarrier {
public:
  BeatCarrier(const BcgSeries& series, const std::vector<double>& positions)
      : length_(series.length),
        beats_(series, positions, static_cast<int32_t>(ranked(intervalsOf(positions), 0.5) + 0.5)) {
    std::vector<double> atBeats;
    std::vector<double> between;
    const size_t step = (positions.size() + mostBeatsCompared - 1) / mostBeatsCompared;
    for (size_t i = 0; i + 1 < positions.size(); i += step) {
      const double interval = positions[i + 1] - positions[i];
      atBeats.push_back(best(positions[i], interval).likeness);
      between.push_back(best(positions[i] + interval / 2, interval).likeness);
    }
    const double highest = ranked(between, rankBetween);
    const double usual = ranked(atBeats, rankAtBeats);
    standOut_ = usual > highest + leastDistance;
    limit_ = highest + clearly * (usual - highest);
  }

  /// Beats on one side (`step` -1: in front), the nearest first.
  std::vector<double> carry(std::vector<double> intervals, double from, double step) const {
    std::vector<double> carried;
    while (standOut_) {
      const double interval =
          ranked({intervals.end() - static_cast<std::ptrdiff_t>(std::min(nearestIntervals, intervals.size())),
                  intervals.end()},
                 0.5);
      const Place place = best(from + step * interval, interval);
      if (!place.isPeak || place.likeness < limit_) break;
      const auto beat = static_cast<double>(place.sample);
      intervals.push_back(std::abs(beat - from));
      carried.push_back(from = beat);
    }
    return carried;
  }

private:
  /// The place of the highest likeness around `expected`.
  Place best(double expected, double interval) const {
    const auto from = std::max<int64_t>(static_cast<int64_t>(expected - reach * interval), 0);
    const auto to = std::min<int64_t>(static_cast<int64_t>(expected + reach * interval), length_ - 1);
    Place place;
    std::vector<double> likenesses;
    for (int64_t sample = from; sample <= to; ++sample) {
      likenesses.push_back(beats_.likenessAt(sample));
      if (likenesses.back() > place.likeness) place = {sample, likenesses.back(), false};
    }
    place.isPeak = to > from && place.sample > from && place.sample < to;
    return place;
  }

  int64_t length_;
  MeanBeats beats_;
  bool standOut_ = false;
  double limit_ = 1;
};

} // namespace

CarriedBeats carryBeatsToEdges(const BcgSeries& series, const std::vector<double>& positions) {
  CarriedBeats carried;
  if (positions.size() < fewestBeats || !(positions.back() > positions.front())) return carried;
  const BeatCarrier carrier(series, positions);
  std::vector<double> intervals = intervalsOf(positions);
  carried.behind = carrier.carry(intervals, positions.back(), 1);
  std::reverse(intervals.begin(), intervals.end());
  carried.inFront = carrier.carry(intervals, positions.front(), -1);
  std::reverse(carried.inFront.begin(), carried.inFront.end());
  return carried;
}

} // namespace emeg
