#include "tests/artifacts/reference/LiteralTemplateRemoval.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace emeg {

namespace {

int64_t floorOf(double x) {
  return static_cast<int64_t>(std::floor(x));
}

int64_t ceilOf(double x) {
  return static_cast<int64_t>(std::ceil(x));
}

// t(v, s) in samples.
double onsetOf(const LiteralTiming& timing, double fs, int32_t volume, int32_t slice) {
  return (static_cast<double>(volume) * timing.volumeDuration + timing.firstTriggerTime +
          static_cast<double>(slice) * timing.sliceDuration) *
         fs;
}

double widthOf(double fs, int32_t windowHalfLength) {
  return windowHalfLength == 0 ? 1.0 : static_cast<double>(windowHalfLength) * fs;
}

int64_t reachOf(double fs, int32_t windowHalfLength, double duration) {
  return ceilOf(2.0 * static_cast<double>(windowHalfLength) * fs / (fs * duration));
}

int64_t volumeReachOf(const LiteralTiming& timing, double fs, int32_t windowHalfLength) {
  return timing.nrOfVolumes >= 2 ? reachOf(fs, windowHalfLength, timing.volumeDuration) : 0;
}

double gaussian(double distance, double width) {
  const double ratio = distance / width;
  return std::exp(-(ratio * ratio));
}

// Last sample of a slice's segment. The first slice of a volume ends one sample earlier.
int64_t endOfSlice(const LiteralTiming& timing, double fs, int32_t volume, int32_t slice) {
  const int64_t end = floorOf(onsetOf(timing, fs, volume, slice) + fs * timing.sliceDuration);
  return slice == 0 ? end - 1 : end;
}

double fallingWeight(int64_t position, int64_t end, int64_t ramp) {
  if (position <= end - ramp) return 1.0;
  if (position >= end) return 0.0;
  return literalRamp(static_cast<double>(end - position) / static_cast<double>(ramp));
}

double risingWeight(int64_t position, int64_t begin, int64_t ramp) {
  if (position >= begin) return 1.0;
  if (position <= begin - ramp) return 0.0;
  return literalRamp(static_cast<double>(position - (begin - ramp)) / static_cast<double>(ramp));
}

bool isUsable(const LiteralTiming& timing, double fs) {
  return timing.nrOfVolumes >= 1 && timing.nrOfSlicesPerVolume >= 1 && std::isfinite(timing.sliceDuration) &&
         timing.sliceDuration > 0.0 && std::isfinite(timing.volumeDuration) && timing.volumeDuration > 0.0 &&
         std::isfinite(timing.firstTriggerTime) && std::isfinite(fs) && fs > 0.0;
}

void addTemplate(const LiteralTemplate& piece, const LiteralSpline& spline, std::vector<double>& estimate) {
  if (!piece.exists) return;
  const int64_t n = static_cast<int64_t>(estimate.size());
  const double o = static_cast<double>(piece.begin) - piece.onset;
  const int64_t firstPosition = piece.begin - piece.ramp;

  std::vector<double> segment(static_cast<std::size_t>(std::max<int64_t>(piece.end - firstPosition + 1, 0)),
                              0.0);
  double sumOfWeights = 0.0;
  for (const LiteralTemplate::Neighbour& neighbour : piece.neighbours) {
    sumOfWeights += neighbour.weight;
    const double aligned = neighbour.onset + o;
    const double f = aligned - std::floor(aligned);
    for (int64_t p = firstPosition; p <= piece.end; ++p) {
      segment[static_cast<std::size_t>(p - firstPosition)] +=
          neighbour.weight * literalSplineValue(spline, floorOf(aligned) + (p - piece.begin), f);
    }
  }
  if (!(sumOfWeights > 0.0)) return;

  for (int64_t p = firstPosition; p <= piece.end; ++p) {
    if (p < 0 || p >= n) continue;
    const double value = segment[static_cast<std::size_t>(p - firstPosition)] * (1.0 / sumOfWeights);
    estimate[static_cast<std::size_t>(p)] += piece.rampWeight(p) * value;
  }
}

} // namespace

double literalRamp(double u) {
  return ((6.0 * u - 15.0) * u + 10.0) * u * u * u;
}

double LiteralTemplate::rampWeight(int64_t position) const {
  if (!exists || position <= begin - ramp || position >= end) return 0.0;
  if (fillsRest) {
    const double rest = 1.0 - fallingWeight(position, endOfLastSlice, ramp) -
                        risingWeight(position, beginOfNextFirstSlice, ramp);
    return std::max(rest, 0.0);
  }
  // Where a ramp is longer than the segment the two parts overlap and both are added.
  double weight = 0.0;
  if (position > begin - ramp && position < begin) weight += risingWeight(position, begin, ramp);
  if (position >= begin && position <= end - ramp) weight += 1.0;
  if (position > end - ramp && position < end) weight += fallingWeight(position, end, ramp);
  return weight;
}

LiteralTemplate literalSliceTemplate(const LiteralTiming& timing, double samplingFrequency,
                                     int32_t windowHalfLength, int32_t volume, int32_t slice) {
  const double fs = samplingFrequency;
  const int32_t spv = timing.nrOfSlicesPerVolume;
  LiteralTemplate piece;
  piece.onset = onsetOf(timing, fs, volume, slice);
  piece.begin = floorOf(piece.onset);
  piece.end = endOfSlice(timing, fs, volume, slice);
  piece.ramp = ceilOf(fs * 0.33333 * timing.sliceDuration);

  if (slice == spv) {
    const int64_t next = floorOf(onsetOf(timing, fs, volume + 1, 0));
    if (next < piece.end) {
      piece.end = next;
      piece.fillsRest = true;
      piece.endOfLastSlice = endOfSlice(timing, fs, volume, spv - 1);
      piece.beginOfNextFirstSlice = next;
      piece.exists = piece.end > piece.begin;
    }
  }

  const bool inner = slice >= 1 && slice <= spv - 2;
  const int64_t stride = ceilOf(0.35 / timing.sliceDuration);
  const int64_t sliceReach = reachOf(fs, windowHalfLength, timing.sliceDuration);
  const int64_t volumeReach = volumeReachOf(timing, fs, windowHalfLength);
  const double width = widthOf(fs, windowHalfLength);
  for (int32_t v = 0; v < timing.nrOfVolumes; ++v) {
    if (v < volume - volumeReach || v > volume + volumeReach) continue;
    for (int32_t s = 0; s <= spv; ++s) {
      if (v == volume && s == slice) continue;
      if (inner) {
        if (s < 1 || s > spv - 2 || std::abs(s - slice) > sliceReach || (s - slice) % stride != 0) continue;
      } else if (s != slice) {
        continue;
      }
      const double onset = onsetOf(timing, fs, v, s);
      piece.neighbours.push_back({v, s, onset, gaussian(onset - piece.onset, width)});
    }
  }
  return piece;
}

LiteralTemplate literalVolumeTemplate(const LiteralTiming& timing, double samplingFrequency,
                                      int32_t windowHalfLength, int32_t volume) {
  const double fs = samplingFrequency;
  LiteralTemplate piece;
  piece.onset = onsetOf(timing, fs, volume, 0);
  piece.begin = floorOf(piece.onset);
  piece.end = floorOf(piece.onset + fs * timing.volumeDuration);
  const double rest =
      timing.volumeDuration - (static_cast<double>(timing.nrOfSlicesPerVolume) - 0.5) * timing.sliceDuration;
  piece.ramp = std::max<int64_t>(ceilOf(rest * fs), 1);

  const int64_t reach = volumeReachOf(timing, fs, windowHalfLength);
  const double width = widthOf(fs, windowHalfLength);
  for (int32_t v = 1; v <= timing.nrOfVolumes - 2; ++v) {
    if (v == volume || v < volume - reach || v > volume + reach) continue;
    const double onset = onsetOf(timing, fs, v, 0);
    piece.neighbours.push_back({v, 0, onset, gaussian(onset - piece.onset, width)});
  }
  return piece;
}

std::vector<double> literalArtifactEstimate(const std::vector<double>& channelSignal,
                                            double samplingFrequency, const LiteralTiming& timing,
                                            int32_t windowHalfLength, bool volumeWise) {
  std::vector<double> estimate(channelSignal.size(), 0.0);
  if (!isUsable(timing, samplingFrequency)) return estimate;
  const LiteralSpline spline = literalSpline(channelSignal);

  for (int32_t v = 0; v < timing.nrOfVolumes; ++v) {
    if (volumeWise) {
      addTemplate(literalVolumeTemplate(timing, samplingFrequency, windowHalfLength, v), spline, estimate);
      continue;
    }
    for (int32_t s = 0; s <= timing.nrOfSlicesPerVolume; ++s) {
      addTemplate(literalSliceTemplate(timing, samplingFrequency, windowHalfLength, v, s), spline, estimate);
    }
  }
  return estimate;
}

} // namespace emeg
