#include "artifacts/gradient/timing/volumes/ScanComparison.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace emeg {

namespace {

constexpr double worthLongerPeriod = 0.01;    // of the explained power
constexpr double goodEnough = 0.95;           // explained power of a scan beyond which no other is looked for
constexpr double multiplesMustExplain = 0.05; // more of the power than the volume itself
constexpr double halfOf = 0.5;
constexpr int32_t fewestAveraged = 4;
constexpr double sameSlice = 0.02;         // relative
constexpr double multipleTolerance = 1e-3; // relative

/// Several volumes taken for one.
bool isMultipleOf(const ScanSegment& scan, const ScanSegment& shorter) {
  const double times = scan.volumeDuration / shorter.volumeDuration;
  return times > 1.5 && std::fabs(times - std::round(times)) < multipleTolerance * times;
}

/// Volumes of alike slices without dead time look the same wherever they begin: a few slices may pass for
/// one.
bool isGapless(const ScanSegment& scan) {
  return std::fabs(scan.volumeDuration - scan.nrOfSlicesPerVolume * scan.sliceDuration) <
         sameSlice * scan.sliceDuration;
}

bool isLongerBetter(const ScanSegment& longer, double longerScore, const ScanSegment& shorter,
                    double shorterScore) {
  if (!isGapless(shorter)) return longerScore > shorterScore + multiplesMustExplain;
  if (longer.isCountIdentifiable && 1 - longer.explainedByVolume < halfOf * (1 - shorter.explainedByVolume))
    return longerScore > shorterScore;
  return longerScore > shorterScore + worthLongerPeriod;
}

/// A scan with volumes of its own, enough for one to be averaged from others on both sides: no acquisition of
/// alike slices between silent delays.
bool standsAlone(const ScanSegment& scan) {
  return scan.isCountIdentifiable && scan.nrOfVolumes >= fewestAveraged;
}

bool isPartOfOneVolume(const ScanSegment& part, const std::vector<ScanSegment>& scans) {
  return std::any_of(scans.begin(), scans.end(), [&](const ScanSegment& scan) {
    const double middle = (part.begin + part.end) / 2;
    return scan.isCountIdentifiable && scan.begin < middle && middle < scan.end &&
           part.end - part.begin < scan.volumeDuration;
  });
}

double powerBetween(std::span<const double> sharpened, double begin, double end) {
  const auto n = static_cast<double>(sharpened.size());
  double power = 0;
  for (auto i = static_cast<size_t>(std::clamp(begin, 0.0, n));
       i < static_cast<size_t>(std::clamp(end, 0.0, n)); ++i)
    power += sharpened[i] * sharpened[i];
  return power;
}

} // namespace

double scoreOf(const ScanSegment& scan, double covered) {
  return scan.explainedByVolume * std::min(covered, 1.0) +
         (scan.isCountIdentifiable ? 2 * worthLongerPeriod : 0);
}

bool isSettled(const ScanSegment& scan, double score) {
  return score > goodEnough && scan.isCountIdentifiable && scan.nrOfVolumes > 2 && !isGapless(scan);
}

bool isBetter(const ScanSegment& scan, double score, const ScanSegment& best, double bestScore) {
  if (best.isCountIdentifiable && isMultipleOf(scan, best))
    return isLongerBetter(scan, score, best, bestScore);
  if (scan.isCountIdentifiable && isMultipleOf(best, scan))
    return !isLongerBetter(best, bestScore, scan, score);
  return score > bestScore + worthLongerPeriod;
}

double scoreOf(const std::vector<ScanSegment>& scans, std::span<const double> sharpened) {
  double score = 0;
  for (const ScanSegment& scan : scans)
    score += powerBetween(sharpened, scan.begin, scan.end) * scoreOf(scan, 1);
  return score;
}

bool areBetter(const std::vector<ScanSegment>& across, const std::vector<ScanSegment>& apart,
               std::span<const double> sharpened) {
  if (across.empty() || apart.empty()) return apart.empty();
  const double scoreAcross = scoreOf(across, sharpened);
  const double scoreApart = scoreOf(apart, sharpened);
  const double difference = worthLongerPeriod * std::max(scoreAcross, scoreApart);
  if (std::all_of(apart.begin(), apart.end(), standsAlone)) return scoreAcross > scoreApart + difference;
  if (std::all_of(apart.begin(), apart.end(),
                  [&](const auto& scan) { return isPartOfOneVolume(scan, across); }))
    return true;
  return scoreAcross > scoreApart + difference ||
         (scoreAcross > scoreApart - difference && across.size() < apart.size());
}

} // namespace emeg
