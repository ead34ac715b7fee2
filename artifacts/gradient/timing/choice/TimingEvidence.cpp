#include "artifacts/gradient/timing/choice/TimingEvidence.h"

#include "artifacts/gradient/templates/BandLimitedShift.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double outsideShare = 0.2;     // of the scans' mean power
constexpr double shortestOutside = 0.05; // seconds
constexpr double strideSeconds = 0.35;   // between slices that are averaged with each other
constexpr int32_t farVolumes = 8;
constexpr int64_t mostSlicePairs = 20000; // enough to tell

/// Mean power of two stretches, and half the power of their difference: the same when they have nothing in
/// common.
struct Comparison {
  double power = 0;
  double unlike = 0;

  double share() const { return power > 0 ? std::min(unlike / power, 1.0) : 1; }
};

void compare(std::span<const double> signal, double position, double length, double distance,
             std::vector<double>& later, Comparison& sums) {
  const auto begin = static_cast<int64_t>(std::ceil(position));
  const auto end = static_cast<int64_t>(std::ceil(position + length));
  if (begin < 0 || static_cast<double>(end) + distance > static_cast<double>(signal.size())) return;
  later.resize(static_cast<size_t>(end - begin));
  readShifted(signal, static_cast<double>(begin) + distance, later);
  for (size_t i = 0; i < later.size(); ++i) {
    const double now = signal[static_cast<size_t>(begin) + i];
    sums.power += (now * now + later[i] * later[i]) / 2;
    sums.unlike += (now - later[i]) * (now - later[i]) / 2;
  }
}

double powerOf(std::span<const double> signal, double from, double to) {
  const auto n = static_cast<double>(signal.size());
  const auto begin = static_cast<int64_t>(std::clamp(std::ceil(from), 0.0, n));
  const auto end = static_cast<int64_t>(std::clamp(std::ceil(to), 0.0, n));
  double power = 0;
  for (int64_t i = begin; i < end; ++i)
    power += signal[static_cast<size_t>(i)] * signal[static_cast<size_t>(i)];
  return power;
}

Comparison compareVolumes(std::span<const double> signal, const ScanSegment& scan, int32_t lag) {
  Comparison sums;
  std::vector<double> later;
  for (int32_t v = 0; v + lag < scan.nrOfVolumes; ++v)
    compare(signal, scan.volumeOnset(v), scan.volumeDuration, lag * scan.volumeDuration, later, sums);
  return sums;
}

/// Inner slices that are `lag` slices apart; evenly spread volumes of a long scan.
void compareSlices(std::span<const double> signal, const ScanSegment& scan, int32_t lag, Comparison& sums) {
  const int32_t last = scan.nrOfSlicesPerVolume - 2;
  const int64_t pairs = last - lag;
  if (pairs < 1) return;
  const auto volumes = static_cast<int64_t>(scan.nrOfVolumes);
  const int64_t step = std::max<int64_t>(1, volumes * pairs / mostSlicePairs);
  std::vector<double> later;
  for (int64_t v = 0; v < volumes; v += step)
    for (int32_t s = 1; s + lag <= last; ++s)
      compare(signal, scan.volumeOnset(static_cast<double>(v)) + s * scan.sliceDuration, scan.sliceDuration,
              lag * scan.sliceDuration, later, sums);
}

/// Whether a window of the length of a slice in [from, to) is as busy as the scans.
bool isBusyBetween(std::span<const double> signal, double from, double to, double window, double meanPower) {
  for (double begin = from; begin + window <= to; begin += window / 2)
    if (powerOf(signal, begin, begin + window) > outsideShare * meanPower * window) return true;
  return false;
}

bool goesOnOutside(std::span<const double> signal, double samplingFrequency,
                   const std::vector<ScanSegment>& scans, double meanPower) {
  double behind = 0;
  double window = shortestOutside * samplingFrequency;
  for (size_t i = 0; i <= scans.size(); ++i) {
    const bool isLast = i == scans.size();
    if (!isLast) window = std::max(shortestOutside * samplingFrequency, scans[i].sliceDuration);
    const double next = isLast ? static_cast<double>(signal.size()) : scans[i].begin - window / 2;
    if (isBusyBetween(signal, behind, next, window, meanPower)) return true;
    if (!isLast) behind = scans[i].end + window / 2;
  }
  return false;
}

} // namespace

ScanSegment segmentOf(const MRSequence& sequence, double samplingFrequency) {
  ScanSegment segment;
  segment.firstVolumeOnset = sequence.firstTriggerTime * samplingFrequency;
  segment.volumeDuration = sequence.volumeDuration * samplingFrequency;
  segment.sliceDuration = sequence.sliceDuration * samplingFrequency;
  segment.nrOfVolumes = sequence.nrOfVolumes;
  segment.nrOfSlicesPerVolume = sequence.nrOfSlicesPerVolume;
  segment.isCountIdentifiable = true;
  segment.begin = std::max(0.0, segment.firstVolumeOnset);
  segment.end =
      segment.volumeOnset(segment.nrOfVolumes - 1) + segment.nrOfSlicesPerVolume * segment.sliceDuration;
  return segment;
}

TimingEvidence evidenceFor(std::span<const double> sharpened, double samplingFrequency,
                           const std::vector<ScanSegment>& scans) {
  TimingEvidence evidence;
  const double total = powerOf(sharpened, 0, static_cast<double>(sharpened.size()));
  if (scans.empty() || !(total > 0)) return evidence;
  Comparison volumes, far, slices, strides;
  double explained = 0, inside = 0, length = 0;
  for (const ScanSegment& scan : scans) {
    const Comparison own = compareVolumes(sharpened, scan, 1);
    const Comparison ownFar =
        compareVolumes(sharpened, scan, std::clamp(scan.nrOfVolumes / 2, 1, farVolumes));
    const double power = powerOf(sharpened, scan.begin, scan.end);
    explained += (1 - own.share()) * power;
    inside += power;
    length += scan.end - scan.begin;
    volumes.power += own.power;
    volumes.unlike += own.unlike;
    far.power += ownFar.power;
    far.unlike += ownFar.unlike;
    compareSlices(sharpened, scan, 1, slices);
    const double stride = std::ceil(strideSeconds * samplingFrequency / std::max(1.0, scan.sliceDuration));
    compareSlices(sharpened, scan, static_cast<int32_t>(std::max(1.0, stride)), strides);
  }
  evidence.unexplained = std::clamp(1 - explained / total, 0.0, 1.0);
  evidence.unlikeVolumes = volumes.share();
  evidence.unlikeFar = far.share();
  evidence.unlikeSlices = slices.power > 0 ? slices.share() : 0;
  evidence.unlikeStrides = strides.power > 0 ? strides.share() : evidence.unlikeSlices;
  evidence.goesOnOutside = length > 0 && goesOnOutside(sharpened, samplingFrequency, scans, inside / length);
  return evidence;
}

} // namespace emeg
