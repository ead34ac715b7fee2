#include "artifacts/gradient/timing/markers/MarkerTiming.h"

#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double sameDistance = 0.02;    // relative; distances that close are one kind
constexpr double onLine = 0.05;          // of an interval: what is further off is out of step
constexpr double leastOnLine = 2;        // samples; quantisation alone moves markers by one
constexpr double largestPosition = 1e15; // samples
constexpr int64_t leastMarkers = 3;
constexpr int64_t mostOutOfStep = 2;

std::vector<double> inOrder(std::span<const double> markers) {
  std::vector<double> sorted;
  for (const double marker : markers)
    if (std::fabs(marker) < largestPosition) sorted.push_back(marker);
  std::sort(sorted.begin(), sorted.end());
  return sorted;
}

/// The distance that most neighbouring markers have: the longest run of nearly equal ones among the sorted
/// distances, and their median. 0 when there is none.
double commonestDistance(const std::vector<double>& sorted) {
  std::vector<double> distances;
  for (size_t i = 1; i < sorted.size(); ++i)
    if (sorted[i] - sorted[i - 1] >= leastOnLine) distances.push_back(sorted[i] - sorted[i - 1]);
  std::sort(distances.begin(), distances.end());
  size_t most = 0;
  double commonest = 0;
  size_t end = 0;
  for (size_t begin = 0; begin < distances.size(); ++begin) {
    const double reach = std::max(sameDistance * distances[begin], leastOnLine);
    while (end < distances.size() && distances[end] <= distances[begin] + reach) ++end;
    if (end - begin > most) {
      most = end - begin;
      commonest = distances[begin + (end - begin) / 2];
    }
  }
  return commonest;
}

struct IndexedMarker {
  int64_t repeat;
  double position;
};

/// Least squares, marker by marker.
class GrowingLine {
public:
  void add(const IndexedMarker& marker) {
    const auto x = static_cast<double>(marker.repeat);
    n_ += 1;
    sx_ += x;
    sy_ += marker.position;
    sxx_ += x * x;
    sxy_ += x * marker.position;
  }
  /// Changes nothing while there are too few.
  void setLine(MarkerLine& line) const {
    const double determinant = n_ * sxx_ - sx_ * sx_;
    if (n_ < leastMarkers || !(determinant > 0)) return;
    line.interval = (n_ * sxy_ - sx_ * sy_) / determinant;
    line.onset = (sy_ - line.interval * sx_) / n_;
  }

private:
  double n_ = 0, sx_ = 0, sy_ = 0, sxx_ = 0, sxy_ = 0;
};

/// How far off a marker may be: markers that have been precise so far are not suddenly off by a twentieth of
/// an interval; what is, belongs to another scan.
class Precision {
public:
  void add(double off) {
    ++count_;
    squares_ += off * off;
  }
  double largestOff(double interval) const {
    const double loose = std::max(onLine * interval, leastOnLine);
    if (count_ < enoughToTell) return loose;
    const double scatter = std::sqrt(squares_ / static_cast<double>(count_));
    return std::min(loose, leastOnLine + largestDeviation * scatter);
  }

private:
  static constexpr int64_t enoughToTell = 4;
  static constexpr double largestDeviation = 6;
  int64_t count_ = 0;
  double squares_ = 0;
};

/// Once more without the markers that lie further off than the others.
void refit(const std::vector<IndexedMarker>& members, MarkerLine& line) {
  std::vector<double> distances;
  distances.reserve(members.size());
  const auto distanceOf = [&](const IndexedMarker& m) {
    return std::fabs(m.position - line.onset - line.interval * static_cast<double>(m.repeat));
  };
  for (const IndexedMarker& member : members) distances.push_back(distanceOf(member));
  const double limit = std::max(4 * upperMedianReordering(distances), 1.0);
  GrowingLine growing;
  for (const IndexedMarker& member : members)
    if (distanceOf(member) <= limit) growing.add(member);
  growing.setLine(line);
}

/// Follows the markers from one on; what is in step belongs to the line. `next` becomes the first marker
/// behind.
MarkerLine lineFrom(const std::vector<double>& sorted, size_t first, double interval, double longestGap,
                    size_t& next) {
  std::vector<IndexedMarker> members{{0, sorted[first]}};
  MarkerLine line;
  line.onset = sorted[first];
  line.interval = interval;
  GrowingLine growing;
  growing.add(members.front());
  Precision precision;
  int64_t outOfStep = 0;
  for (next = first + 1; next < sorted.size(); ++next) {
    const double distance = (sorted[next] - members.back().position) / line.interval;
    if (distance > longestGap) break;
    const double steps = std::round(distance);
    const double off = std::fabs(distance - steps) * line.interval;
    if (steps < 1 || off > precision.largestOff(line.interval)) {
      // A stray marker; several in a row are another scan.
      if (++outOfStep > mostOutOfStep) {
        next -= static_cast<size_t>(mostOutOfStep);
        line.nrOfStray -= mostOutOfStep;
        break;
      }
      ++line.nrOfStray;
      continue;
    }
    outOfStep = 0;
    precision.add(off);
    members.push_back({members.back().repeat + static_cast<int64_t>(steps), sorted[next]});
    growing.add(members.back());
    growing.setLine(line);
  }
  refit(members, line);
  line.nrOfMarkers = static_cast<int64_t>(members.size());
  line.nrOfRepeats = members.back().repeat + 1;
  line.nrOfMissing = line.nrOfRepeats - line.nrOfMarkers;
  return line;
}

} // namespace

std::vector<MarkerLine> fitMarkerLines(std::span<const double> markers, double longestGap) {
  const std::vector<double> sorted = inOrder(markers);
  const double interval = commonestDistance(sorted);
  std::vector<MarkerLine> lines;
  if (!(interval > 0)) return lines;
  for (size_t first = 0; first < sorted.size();) {
    size_t next = first + 1;
    const MarkerLine line = lineFrom(sorted, first, interval, longestGap, next);
    if (line.nrOfMarkers >= leastMarkers) {
      lines.push_back(line);
      first = next;
    } else {
      ++first; // it was a stray one
    }
  }
  return lines;
}

} // namespace emeg
