#include "app/evaluation/BeatMatching.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double largestDelay = 1;    // seconds; with a regular heart every further interval fits as well
constexpr double delayStep = 0.005;   // of the search
constexpr int mostRefinements = 20;   // of the median; a handful is usual
constexpr double littleChange = 1e-9; // seconds

struct Pair {
  size_t beat;
  size_t pulse;
  double error; ///< pulse minus beat minus delay, seconds
};

/// Pairs within the tolerance, the closest first, nothing used twice.
std::vector<Pair> matchedPairs(const std::vector<double>& beats, const std::vector<double>& found,
                               double delay, double tolerance) {
  std::vector<Pair> candidates;
  size_t begin = 0;
  for (size_t j = 0; j < found.size(); j++) {
    const double time = found[j] - delay;
    while (begin < beats.size() && beats[begin] < time - tolerance) begin++;
    for (size_t i = begin; i < beats.size() && beats[i] <= time + tolerance; i++)
      candidates.push_back({i, j, time - beats[i]});
  }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const Pair& a, const Pair& b) { return std::abs(a.error) < std::abs(b.error); });
  std::vector<char> beatUsed(beats.size());
  std::vector<char> pulseUsed(found.size());
  std::vector<Pair> pairs;
  for (const Pair& pair : candidates) {
    if (beatUsed[pair.beat] != 0 || pulseUsed[pair.pulse] != 0) continue;
    beatUsed[pair.beat] = pulseUsed[pair.pulse] = 1;
    pairs.push_back(pair);
  }
  return pairs;
}

/// A pulse without a beat counts like one at the edge of the tolerance, so that a delay at which many pulses
/// only just match does not win over the true one.
double lossOf(const std::vector<double>& beats, const std::vector<double>& found, double delay,
              double tolerance) {
  const std::vector<Pair> pairs = matchedPairs(beats, found, delay, tolerance);
  double loss = tolerance * static_cast<double>(found.size() - pairs.size());
  for (const Pair& pair : pairs) loss += std::abs(pair.error);
  return loss;
}

double medianOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/// From small delays outwards: among equal ones the smallest wins.
double roughDelay(const std::vector<double>& beats, const std::vector<double>& found, double tolerance) {
  double best = 0;
  double smallestLoss = lossOf(beats, found, 0, tolerance);
  for (int step = 1; step * delayStep <= largestDelay; step++) {
    for (const double delay : {step * delayStep, -step * delayStep}) {
      const double loss = lossOf(beats, found, delay, tolerance);
      if (loss < smallestLoss) {
        smallestLoss = loss;
        best = delay;
      }
    }
  }
  return best;
}

} // namespace

double BeatAgreement::sensitivity() const {
  return nrOfTrueBeats > 0 ? static_cast<double>(nrOfMatched) / static_cast<double>(nrOfTrueBeats) : 0;
}

double BeatAgreement::positivePredictivity() const {
  return nrOfFound > 0 ? static_cast<double>(nrOfMatched) / static_cast<double>(nrOfFound) : 0;
}

BeatAgreement compareBeats(const std::vector<double>& trueBeats, const std::vector<double>& found,
                           double tolerance) {
  BeatAgreement agreement;
  agreement.nrOfFound = static_cast<int64_t>(found.size());
  if (found.empty()) return agreement;

  agreement.delay = roughDelay(trueBeats, found, tolerance);
  std::vector<Pair> pairs = matchedPairs(trueBeats, found, agreement.delay, tolerance);
  for (int i = 0; i < mostRefinements && !pairs.empty(); i++) {
    std::vector<double> differences;
    differences.reserve(pairs.size());
    for (const Pair& pair : pairs) differences.push_back(found[pair.pulse] - trueBeats[pair.beat]);
    const double median = medianOf(differences);
    const double change = std::abs(median - agreement.delay);
    agreement.delay = median;
    pairs = matchedPairs(trueBeats, found, agreement.delay, tolerance);
    if (change < littleChange) break;
  }

  for (const double beat : trueBeats) {
    const double expected = beat + agreement.delay;
    if (expected >= found.front() - tolerance && expected <= found.back() + tolerance)
      agreement.nrOfTrueBeats++;
  }
  agreement.nrOfMatched = static_cast<int64_t>(pairs.size());
  double squares = 0;
  for (const Pair& pair : pairs) {
    agreement.largestError = std::max(agreement.largestError, std::abs(pair.error));
    squares += pair.error * pair.error;
  }
  if (!pairs.empty()) agreement.rmsError = std::sqrt(squares / static_cast<double>(pairs.size()));
  return agreement;
}

} // namespace emeg
