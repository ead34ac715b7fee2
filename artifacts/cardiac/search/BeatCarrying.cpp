#include "artifacts/cardiac/search/BeatCarrying.h"

#include "artifacts/cardiac/search/MeanBeats.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr size_t fewestBeats = 8;
constexpr size_t mostBeatsCompared = 150; // enough for ranks, and quick
constexpr size_t nearestIntervals = 5;    // tell where the next beat may be
constexpr double reach = 0.4;             // of the interval, on either side of the place
constexpr double reachBetween = 0.15;     // the same at beats, and in the middle between two
constexpr double rankBetween = 0.8; // of the likenesses between beats, the one that counts as usual there
constexpr double rankAtBeats = 0.5;
constexpr double clearly = 0.6;        // of the way from there to that of beats
constexpr double leastDistance = 0.15; // between the two, for beats that stand out at all

double ranked(std::vector<double> values, double rank) {
  const auto place = values.begin() + std::lround(rank * static_cast<double>(values.size() - 1));
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

/// Highest likenesses at beats, and between them.
struct Likenesses {
  std::vector<double> atBeats;
  std::vector<double> between;
};

int32_t medianInterval(const std::vector<double>& positions) {
  return static_cast<int32_t>(std::lround(ranked(intervalsOf(positions), 0.5)));
}

/// The place of the highest likeness within `distance` samples of the one that is expected.
Place bestPlace(const MeanBeats& beats, int64_t length, double expected, double distance) {
  const auto from = std::max<int64_t>(static_cast<int64_t>(expected - distance), 0);
  const auto to = std::min<int64_t>(static_cast<int64_t>(expected + distance), length - 1);
  Place place;
  for (int64_t sample = from; sample <= to; ++sample) {
    const double likeness = beats.likenessAt(sample);
    if (likeness > place.likeness) place = {sample, likeness, false};
  }
  place.isPeak = place.sample > from && place.sample < to;
  return place;
}

/// Every second beat, from `first` on, compared with the mean of all others: a beat resembles a mean that it
/// is part of.
void compareWithOthers(const BcgSeries& series, const std::vector<double>& positions, size_t first,
                       Likenesses& likenesses) {
  std::vector<double> others;
  for (size_t i = 1 - first; i < positions.size(); i += 2) others.push_back(positions[i]);
  const MeanBeats beats(series, others, medianInterval(positions));
  const size_t step = 2 * ((positions.size() + mostBeatsCompared - 1) / mostBeatsCompared);
  for (size_t i = first; i + 1 < positions.size(); i += step) {
    const double interval = positions[i + 1] - positions[i];
    const auto highest = [&](double place) {
      return bestPlace(beats, series.length, place, reachBetween * interval).likeness;
    };
    likenesses.atBeats.push_back(highest(positions[i]));
    likenesses.between.push_back(highest(positions[i] + interval / 2));
  }
}

class BeatCarrier {
public:
  BeatCarrier(const BcgSeries& series, const std::vector<double>& positions)
      : length_(series.length), beats_(series, positions, medianInterval(positions)) {
    Likenesses likenesses;
    compareWithOthers(series, positions, 0, likenesses);
    compareWithOthers(series, positions, 1, likenesses);
    const double without = ranked(likenesses.between, rankBetween);
    const double usual = ranked(likenesses.atBeats, rankAtBeats);
    standOut_ = usual > without + leastDistance;
    limit_ = without + clearly * (usual - without);
  }

  /// Beats on one side (`step` -1: in front), the nearest first.
  std::vector<double> carry(std::vector<double> intervals, double from, double step) const {
    std::vector<double> carried;
    while (standOut_) {
      const double interval =
          ranked({intervals.end() - static_cast<std::ptrdiff_t>(std::min(nearestIntervals, intervals.size())),
                  intervals.end()},
                 0.5);
      const Place place = bestPlace(beats_, length_, from + step * interval, reach * interval);
      if (!place.isPeak || place.likeness < limit_) break;
      const auto beat = static_cast<double>(place.sample);
      intervals.push_back(std::abs(beat - from));
      carried.push_back(from = beat);
    }
    return carried;
  }

private:
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
