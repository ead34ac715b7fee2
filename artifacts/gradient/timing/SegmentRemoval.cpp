#include "artifacts/gradient/timing/SegmentRemoval.h"

#include "artifacts/CubicSplines.h"
#include "artifacts/gradient/TemplateRemoval.h"
#include "artifacts/gradient/TemplateWindow.h"
#include "artifacts/gradient/timing/WholeVolumes.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double fadeSeconds = 0.01; // beyond the scan's activity
constexpr uint64_t nrOfArrays = 5;   // samples, spline and estimate
constexpr int64_t fewestSamples = 16;

} // namespace

SegmentRemoval::SegmentRemoval(std::vector<ScanSegment> segments, double samplingFrequency, bool volumeWise,
                               int32_t windowSlices)
    : segments_(std::move(segments)), fs_(samplingFrequency), volumeWise_(volumeWise),
      windowSlices_(windowSlices) {}

uint64_t SegmentRemoval::memoryFor(int64_t nrOfSamples) {
  // Completed volumes at both ends add up to two volumes, each a third of the recording at most.
  return nrOfArrays * sizeof(double) * static_cast<uint64_t>(nrOfSamples) * 5 / 3;
}

void SegmentRemoval::estimate(std::span<const double> channel, std::span<double> artifactEstimate) {
  for (size_t i = 0; i < segments_.size(); ++i) estimateScan(i, channel, artifactEstimate);
}

/// A scan and the stretch around it that is nearer to it than to any other, a volume at most.
void SegmentRemoval::estimateScan(size_t index, std::span<const double> channel,
                                  std::span<double> artifactEstimate) {
  const auto n = static_cast<double>(channel.size());
  ScanSegment scan = segments_[index];
  double from = scan.begin - scan.volumeDuration;
  double to = scan.end + scan.volumeDuration;
  if (index > 0) from = std::max(from, (segments_[index - 1].end + scan.begin) / 2);
  if (index + 1 < segments_.size()) to = std::min(to, (scan.end + segments_[index + 1].begin) / 2);
  const auto begin = static_cast<int64_t>(std::clamp(std::floor(from), 0.0, n));
  const auto end = static_cast<int64_t>(std::clamp(std::ceil(to), 0.0, n));
  if (end - begin < fewestSamples) return;
  const auto offset = static_cast<double>(begin);
  scan.begin -= offset;
  scan.end -= offset;
  scan.firstVolumeOnset -= offset;

  const WholeVolumes whole =
      withWholeVolumes(channel.subspan(static_cast<size_t>(begin), static_cast<size_t>(end - begin)), scan);
  // Where the recording cuts the scan in its quiet, the activity ends before it.
  if (scan.beginsInVolume) scan.begin = std::min(scan.begin, static_cast<double>(whole.firstOfScan));
  if (scan.endsInVolume) scan.end = std::max(scan.end, static_cast<double>(whole.endOfScan));
  MRSequence sequence = sequenceOf(scan, fs_, -static_cast<double>(whole.nrOfAddedBefore));
  sequence.windowHalfLength = windowHalfLengthOf(sequence, windowSlices_);
  const size_t length = whole.samples.size();
  for (std::vector<double>* array : {&b_, &c_, &d_}) array->resize(length);
  estimate_.assign(length, 0.0);
  computeSplineCoefficients(whole.samples.data(), b_.data(), c_.data(), d_.data(),
                            static_cast<int64_t>(length));
  estimateGradientArtifact(
      {whole.samples.data(), b_.data(), c_.data(), d_.data(), static_cast<int64_t>(length)}, sequence, fs_,
      volumeWise_, estimate_.data());
  for (int64_t t = whole.firstOfScan; t < whole.endOfScan; ++t)
    artifactEstimate[static_cast<size_t>(begin + t)] +=
        weightAt(scan, static_cast<double>(t)) * estimate_[static_cast<size_t>(t + whole.nrOfAddedBefore)];
}

/// Templates reach beyond the scan, into EEG that holds no artifact: they fade there.
double SegmentRemoval::weightAt(const ScanSegment& segment, double position) const {
  const double outside = std::max(segment.begin - position, position - segment.end);
  if (outside <= 0) return 1;
  const double fade = fadeSeconds * fs_;
  return outside < fade ? quinticRamp(1 - outside / fade) : 0;
}

} // namespace emeg
