#include "artifacts/gradient/timing/volumes/ScanDescription.h"

#include "artifacts/gradient/templates/BandLimitedShift.h"
#include "artifacts/gradient/timing/volumes/ScanEdges.h"
#include "artifacts/gradient/timing/volumes/TypicalRepeat.h"
#include "artifacts/gradient/timing/volumes/VolumeOnset.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace emeg {

namespace {

constexpr double leastSimilarity = 0.5; // of the median, for one more volume
constexpr double similarityBehindMisses = 0.85;
constexpr int64_t toleratedMisses = 2;  // volumes that a spike or a dropout may spoil
constexpr double blockOfVolume = 0.01;  // seconds
constexpr double leastActive = 0.05;    // of a volume that is a single slice
constexpr double shortestBurst = 0.2;   // of a slice
constexpr double edgeOfRecording = 0.1; // of a volume; a scan seen from later on began with one
constexpr double edgeSlack = 0.3;       // of a slice: what may be missing of a whole volume ...
constexpr double endSlack = 0.9;        // ... and at the end of a scan that the recording does not cut
constexpr double longestEndSlack = 0.1; // seconds

/// Repeats beyond the known ones that still resemble the average, in one direction.
int64_t outermostRepeat(std::span<const double> signal, const FittedRepeats& fit,
                        const RepeatComparison& comparison, int64_t from, int64_t step,
                        PositionRange limits) {
  int64_t outermost = from;
  int64_t misses = 0;
  for (int64_t v = from + step; misses <= toleratedMisses; v += step) {
    const double position = fit.line.at(static_cast<double>(v));
    if (position < static_cast<double>(limits.begin) ||
        position + fit.line.period > static_cast<double>(limits.end))
      break;
    const RepeatFit repeat = fit.compareOutside(signal, comparison, v);
    // Behind a gap it could be another scan, with its own phase.
    const double wanted = misses == 0 ? leastSimilarity : similarityBehindMisses;
    if (repeat.similarity > wanted * fit.similarity && std::fabs(repeat.delay) < 1) {
      outermost = v;
      misses = 0;
    } else {
      ++misses;
    }
  }
  return outermost;
}

/// Follows the repeats to both ends, in steps that double, so that the line always holds for the next ones.
FittedRepeats extended(std::span<const double> signal, FittedRepeats fit, PositionRange limits) {
  for (int round = 0; round < 40; ++round) {
    const RepeatComparison comparison(
        averageRepeat(signal, fit.line, fit.range, static_cast<int64_t>(fit.line.period), fit.used));
    const auto reach =
        static_cast<int64_t>(std::ceil(fit.line.period)) * std::max<int64_t>(fit.range.count(), 4);
    const PositionRange near{
        std::max(limits.begin,
                 static_cast<int64_t>(fit.line.at(static_cast<double>(fit.range.first))) - reach),
        std::min(limits.end,
                 static_cast<int64_t>(fit.line.at(static_cast<double>(fit.range.last + 1))) + reach)};
    const RepeatRange range{outermostRepeat(signal, fit, comparison, fit.range.first, -1, near),
                            outermostRepeat(signal, fit, comparison, fit.range.last, 1, near)};
    if (range.first == fit.range.first && range.last == fit.range.last) break;
    fit = fitRepeats(signal, fit.line, range);
  }
  return fit;
}

/// Every repeat is part of the average, which would explain 1 / count of mere noise; that is taken off.
double explainedByAverage(std::span<const double> signal, const FittedRepeats& fit,
                          const std::vector<double>& average) {
  std::vector<double> repeat(average.size());
  double rest = 0, power = 0, count = 0;
  for (int64_t v = fit.range.first; v <= fit.range.last; ++v) {
    if (!fit.used[static_cast<size_t>(v - fit.range.first)]) continue;
    readShifted(signal, fit.line.at(static_cast<double>(v)), repeat);
    count += 1;
    for (size_t i = 0; i < repeat.size(); ++i) {
      rest += (repeat[i] - average[i]) * (repeat[i] - average[i]);
      power += repeat[i] * repeat[i];
    }
  }
  return power > 0 && count > 1 ? 1 - rest / power * count / (count - 1) : 0;
}

/// What may be missing of a whole volume at the end of a scan. The end is known to a block; where the
/// recording goes on behind it, the scan was not cut: it ends with a volume, the quiet of whose last slice is
/// not seen.
double slackAtEnd(const ScanSegment& segment, double nrOfSamples, double samplingFrequency) {
  const double block = std::min(blockOfVolume * samplingFrequency, segment.sliceDuration / 2);
  const double slack = edgeSlack * segment.sliceDuration + block;
  if (nrOfSamples - segment.end < segment.sliceDuration) return slack;
  return std::max(slack, std::min(endSlack * segment.sliceDuration, longestEndSlack * samplingFrequency));
}

/// Whole volumes between the edges, and whether parts are left over.
void countVolumes(ScanSegment& segment, const SliceStructure& slices, double anyOnset, double slackBehind) {
  const double slack = edgeSlack * segment.sliceDuration;
  const double T = segment.volumeDuration;
  const double first = std::ceil((segment.begin - slack - slices.firstActivity - anyOnset) / T);
  const double last = std::floor((segment.end + slackBehind - slices.lastActivity - anyOnset) / T);
  segment.firstVolumeOnset = anyOnset + first * T;
  segment.nrOfVolumes = static_cast<int32_t>(std::clamp(last - first + 1, 0.0, 1e9));
  segment.beginsInVolume = segment.begin + slack < segment.firstVolumeOnset + slices.firstActivity;
  segment.endsInVolume = segment.end - slack > segment.endOfVolumes() + slices.firstActivity;
}

/// Between the edges, the quiet at the end of the last slice not counted.
double slicesIn(const ScanSegment& segment, double sliceDuration) {
  return std::max(1.0, std::ceil((segment.end - segment.begin) / sliceDuration - shortestBurst));
}

/// All slices are alike: about two seconds are taken for a volume, so that few slices are left over.
ScanSegment alikeSlices(ScanSegment segment, double sliceDuration, int32_t slicesPerVolume) {
  const double slices = slicesIn(segment, sliceDuration);
  segment.sliceDuration = sliceDuration;
  segment.nrOfSlicesPerVolume = slicesPerVolume;
  segment.volumeDuration = sliceDuration * slicesPerVolume;
  segment.nrOfVolumes = static_cast<int32_t>(std::floor(slices / slicesPerVolume));
  segment.endsInVolume = slices > static_cast<double>(segment.nrOfVolumes) * slicesPerVolume;
  segment.explainedBySlice = 1;
  return segment;
}

/// The count near `wanted` that divides the number of slices with the smallest remainder.
int32_t bestDivisor(double slices, int32_t wanted) {
  int32_t best = wanted;
  double smallest = std::fmod(slices, wanted);
  for (int32_t candidate = std::max(3, wanted - wanted / 3); candidate <= wanted + wanted / 3; ++candidate) {
    const double remainder = std::fmod(slices, candidate);
    if (remainder < smallest) {
      smallest = remainder;
      best = candidate;
    }
  }
  return best;
}

} // namespace

std::optional<ScanSegment> describeScan(std::span<const double> sharpened, double samplingFrequency,
                                        FittedRepeats volumes, PositionRange limits,
                                        const KnownTiming& known) {
  const FittedRepeats fit = extended(sharpened, std::move(volumes), limits);
  if (fit.range.count() < 2) return std::nullopt;
  const double period = fit.line.period;
  const auto length = static_cast<int64_t>(std::floor(period));
  std::vector<double> average = averageRepeat(sharpened, fit.line, fit.range, length, fit.used);

  ScanSegment segment;
  segment.volumeDuration = period;
  segment.nrOfRepeats = std::count(fit.used.begin(), fit.used.end(), true);
  segment.explainedByVolume = explainedByAverage(sharpened, fit, average);
  const ScanEdges edges(sharpened, fit, std::move(average), samplingFrequency, limits);
  segment.begin = edges.begin();
  segment.end = edges.end();
  if (!(segment.end > segment.begin)) return std::nullopt;

  if (known.slicesTakenForVolume > 0) {
    segment.firstVolumeOnset = segment.begin;
    const double slices = slicesIn(segment, period);
    const bool isGiven = known.slices.nrOfSlices > 0;
    segment.isCountIdentifiable = isGiven;
    return alikeSlices(
        segment, period,
        isGiven ? std::min(known.slices.nrOfSlices, static_cast<int32_t>(std::clamp(slices, 1.0, 1e9)))
                : bestDivisor(slices, known.slicesTakenForVolume));
  }

  // Behind the last volume there may be quiet.
  const auto block = static_cast<int64_t>(blockOfVolume * samplingFrequency);
  const auto twoVolumes = typicalRepeat(sharpened, fit.line, {fit.range.first, fit.range.last - 1},
                                        static_cast<int64_t>(std::ceil(2 * period)) + 1, block, fit.used);
  KnownSlices knownSlices = known.slices;
  if (known.volumeOnset) knownSlices.onset = *known.volumeOnset - fit.line.onset;
  SliceStructure slices = findSlices(twoVolumes, period, samplingFrequency, knownSlices);
  // A click every second is no volume.
  if (slices.nrOfSlices == 1 && slices.lastActivity - slices.firstActivity < leastActive * period)
    return std::nullopt;
  segment.nrOfSlicesPerVolume = slices.nrOfSlices;
  segment.sliceDuration = slices.sliceDuration;
  segment.isCountIdentifiable = slices.isOnsetKnown || known.slices.nrOfSlices > 0;
  segment.explainedBySlice = slices.explainedBySlice;
  double onset = known.volumeOnset.value_or(0);
  if (!known.volumeOnset) {
    const bool isBeginSeen = segment.begin > edgeOfRecording * period;
    onset = volumeOnset(twoVolumes, fit.line, slices,
                        isBeginSeen ? std::optional<double>(segment.begin) : std::nullopt);
    slices.onset = onset - fit.line.onset;
    findActivity(twoVolumes, period, samplingFrequency, slices);
  }
  const auto nrOfSamples = static_cast<double>(sharpened.size());
  countVolumes(segment, slices, onset, slackAtEnd(segment, nrOfSamples, samplingFrequency));
  return segment;
}

} // namespace emeg
