#include "artifacts/cardiac/search/GapFilling.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace emeg {

namespace {

/// Half-width of the window around an expected beat, relative to the interval that leads there.
double relativeWindow() {
  const double up = std::exp2(0.25);
  const double down = std::exp2(-0.25);
  return (up - down) / (up + 2 + down);
}

constexpr float highestValue = 1e30f;
constexpr int32_t noCandidate = -1;

/// Intervals that lead through a gap, growing or shrinking linearly.
struct GapPlan {
  double nrOfSteps = 0;
  double firstStep = 0;
  double lastStep = 0;

  GapPlan(double gap, double halfBefore, double halfAfter)
      : nrOfSteps(std::floor(2 * gap / (halfBefore + halfAfter) + 0.5)),
        firstStep(gap / nrOfSteps + (halfBefore - halfAfter) * 0.5) {
    const double change = (halfAfter - halfBefore) / (nrOfSteps - 1);
    lastStep = firstStep + (nrOfSteps - 1) * change;
  }
};

/// Places beats between two candidates that move towards each other.
class GapInterpolation {
public:
  GapInterpolation(const PulseCandidates& candidates, int32_t start, int32_t end)
      : candidates_(candidates), start_(start), end_(end) {}

  std::vector<int32_t> place(double halfBefore, double halfAfter) {
    std::vector<int32_t> beats;
    std::vector<int32_t> beatsFromTheBack;
    for (bool front = true;; front = !front) {
      const GapPlan plan(between(start_, end_), halfBefore, halfAfter);
      if (!(plan.nrOfSteps >= 2)) break;
      const int32_t beat = front
                               ? candidateNear(candidates_.position(start_) + plan.firstStep, plan.firstStep)
                               : candidateNear(candidates_.position(end_) - plan.lastStep, plan.lastStep);
      if (beat == noCandidate) break;
      if (front) {
        halfBefore = (between(start_, beat) + halfBefore) * 0.5;
        beats.push_back(start_ = beat);
      } else {
        halfAfter = (between(beat, end_) + halfAfter) * 0.5;
        beatsFromTheBack.push_back(end_ = beat);
      }
    }
    beats.insert(beats.end(), beatsFromTheBack.rbegin(), beatsFromTheBack.rend());
    return beats;
  }

private:
  double between(int32_t from, int32_t to) const {
    return static_cast<double>(candidates_.position(to)) - static_cast<double>(candidates_.position(from));
  }
  bool isInside(int32_t index) const { return index > start_ && index < end_; }

  /// The deepest candidate in the window; the deeper of its neighbours when the window is empty. A choice
  /// that does not lie inside the gap is replaced by a neighbour that does.
  int32_t candidateNear(double expected, double step) const {
    const double width = step * relativeWindow();
    const auto& positions = candidates_.positions;
    const auto edge = std::lower_bound(positions.begin(), positions.end(), expected - width,
                                       [](int32_t position, double x) { return position < x; });
    const auto later = static_cast<int32_t>(edge - positions.begin());
    const int32_t earlier = later - 1;

    int32_t choice = noCandidate;
    float lowest = highestValue;
    for (int32_t j = later; j < candidates_.count() && candidates_.position(j) <= expected + width; ++j) {
      if (!(candidates_.value(j) < lowest)) continue;
      lowest = candidates_.value(j);
      choice = j;
    }
    if (choice == noCandidate) {
      const bool takeLater = earlier < 0 || (later < candidates_.count() &&
                                             candidates_.value(later) < candidates_.value(earlier));
      choice = takeLater ? later : earlier;
    }
    if (isInside(choice)) return choice;
    const int32_t other = choice == later ? earlier : later;
    return isInside(other) ? other : noCandidate;
  }

  const PulseCandidates& candidates_;
  int32_t start_;
  int32_t end_;
};

/// Average mark of a path without the candidate that it reached last.
double averageMark(const PulseCandidates& candidates, const std::vector<int32_t>& path, bool reversed) {
  const size_t last = reversed ? 0 : path.size() - 1;
  double sum = 0;
  for (size_t k = 0; k < path.size(); ++k)
    if (k != last) sum += candidates.mark(path[k]);
  return sum / static_cast<double>(path.size() - 1);
}

/// Appends a chain by a path that begins at the last beat of the one, or the last but one, and ends at the
/// first beat of the other, or the second: the beats that it leaves out are bypassed.
void appendByPath(PulseChain& whole, const std::vector<int32_t>& path, const PulseChain& next) {
  whole.erase(std::lower_bound(whole.begin(), whole.end(), path.front()), whole.end());
  whole.insert(whole.end(), path.begin(), path.end());
  whole.insert(whole.end(), std::upper_bound(next.begin(), next.end(), path.back()), next.end());
}

void appendByInterpolation(const PulseCandidates& candidates, PulseChain& whole, const PulseChain& next) {
  const auto halfOf = [&](int32_t from, int32_t to) {
    return (static_cast<double>(candidates.position(to)) - static_cast<double>(candidates.position(from))) *
           0.5;
  };
  const std::vector<int32_t> beats =
      interpolateBeats(candidates, whole.back(), next.front(), halfOf(whole[whole.size() - 2], whole.back()),
                       halfOf(next[0], next[1]));
  whole.insert(whole.end(), beats.begin(), beats.end());
  whole.insert(whole.end(), next.begin(), next.end());
}

void append(const PulseCandidates& candidates, PulsePathSearch& search, PulseChain& whole,
            const PulseChain& next) {
  const GapPaths paths = findGapPaths(candidates, search, whole, next);
  const auto score = [&](const std::vector<int32_t>& path, bool connects, bool reversed) {
    return connects ? averageMark(candidates, path, reversed) : 0.0;
  };
  const int32_t forwardEnd = paths.forward.back();
  const int32_t backwardEnd = paths.backward.front();
  const double forwardScore = score(paths.forward, forwardEnd == next[0] || forwardEnd == next[1], false);
  const double backwardScore =
      score(paths.backward, backwardEnd == whole.back() || backwardEnd == whole[whole.size() - 2], true);
  if (backwardScore > forwardScore) {
    appendByPath(whole, paths.forward, next);
  } else if (forwardScore > backwardScore) {
    appendByPath(whole, paths.backward, next);
  } else {
    appendByInterpolation(candidates, whole, next);
  }
}

} // namespace

std::vector<int32_t> interpolateBeats(const PulseCandidates& candidates, int32_t start, int32_t end,
                                      double halfBefore, double halfAfter) {
  return GapInterpolation(candidates, start, end).place(halfBefore, halfAfter);
}

PulseChain fillGaps(PulseChains chains, const PulseCandidates& candidates, PulsePathSearch& search) {
  if (chains.empty()) return {};
  search.setTolerance(linkingTolerances[std::size(linkingTolerances) - 1]);
  PulseChain whole = std::move(chains.front());
  for (size_t k = 1; k < chains.size(); ++k) append(candidates, search, whole, chains[k]);
  return whole;
}

} // namespace emeg
