#include "artifacts/gradient/templates/SegmentRemoval.h"

#include "artifacts/CubicSplines.h"
#include "artifacts/gradient/templates/TemplateRemoval.h"
#include "artifacts/gradient/templates/TemplateWindow.h"
#include "artifacts/gradient/templates/WholeVolumes.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double fadeSeconds = 0.01; // beyond the scan's activity
constexpr uint64_t nrOfArrays = 5;   // samples, spline and estimate
constexpr int64_t fewestSamples = 16;
// Samples. Where scanner and amplifier have one clock, onsets lie at samples: rounding must not move the
// windows of some of them to the sample before, another some for every stretch of the channel.
constexpr double behindTheSample = 1e-6;
constexpr int64_t splineContext = 64; // samples behind which a spline does not feel where it was cut

/// The volumes whose templates reach into samples from ... to - 1: they rise before their onset, and end
/// where the next one begins.
VolumeRange volumesAround(const MRSequence& sequence, double samplingFrequency, int64_t from, int64_t to) {
  const auto volumeAt = [&](int64_t sample) {
    const double volume = (static_cast<double>(sample) / samplingFrequency - sequence.firstTriggerTime) /
                          sequence.volumeDuration;
    return static_cast<int64_t>(std::floor(std::clamp(volume, -1e9, 1e9)));
  };
  return {volumeAt(from), volumeAt(to) + 2};
}

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
  estimate(wholeRecording(channel), {0, static_cast<int64_t>(channel.size())}, artifactEstimate);
}

void SegmentRemoval::estimate(const RecordingStretch& stretch, PositionRange outputs,
                              std::span<double> artifactEstimate) {
  for (size_t i = 0; i < segments_.size(); ++i) estimateScan(i, stretch, outputs, artifactEstimate);
}

MRSequence SegmentRemoval::windowed(MRSequence sequence) const {
  sequence.windowHalfLength = windowSecondsOf(sequence, windowSlices_, volumeWise_);
  return sequence;
}

int64_t SegmentRemoval::context() const {
  double seconds = 0;
  for (const ScanSegment& segment : segments_)
    seconds = std::max(seconds, templateReachOf(windowed(sequenceOf(segment, fs_))));
  return static_cast<int64_t>(std::ceil(seconds * fs_)) + splineContext;
}

/// A scan and the stretch around it that is nearer to it than to any other, a volume at most.
void SegmentRemoval::estimateScan(size_t index, const RecordingStretch& stretch, PositionRange outputs,
                                  std::span<double> artifactEstimate) {
  ScanSegment scan = segments_[index];
  double from = scan.begin - scan.volumeDuration;
  double to = scan.end + scan.volumeDuration;
  if (index > 0) from = std::max(from, (segments_[index - 1].end + scan.begin) / 2);
  if (index + 1 < segments_.size()) to = std::min(to, (scan.end + segments_[index + 1].begin) / 2);
  const auto n = static_cast<double>(stretch.recordingLength);
  const PositionRange wanted{static_cast<int64_t>(std::clamp(std::floor(from), 0.0, n)),
                             static_cast<int64_t>(std::clamp(std::ceil(to), 0.0, n))};
  const PositionRange held{std::max(wanted.begin, stretch.first),
                           std::min(wanted.end, stretch.positions().end)};
  if (held.length() < fewestSamples || outputs.end <= held.begin || outputs.begin >= held.end) return;
  // What the stretch does not reach is not there to be completed.
  scan.beginsInVolume = scan.beginsInVolume && held.begin == wanted.begin;
  scan.endsInVolume = scan.endsInVolume && held.end == wanted.end;
  const auto offset = static_cast<double>(held.begin);
  scan.begin -= offset;
  scan.end -= offset;
  scan.firstVolumeOnset -= offset;

  const WholeVolumes whole =
      withWholeVolumes(stretch.samples.subspan(static_cast<size_t>(held.begin - stretch.first),
                                               static_cast<size_t>(held.length())),
                       scan);
  // Where the recording cuts the scan in its quiet, the activity ends before it.
  if (scan.beginsInVolume) scan.begin = std::min(scan.begin, static_cast<double>(whole.firstOfScan));
  if (scan.endsInVolume) scan.end = std::max(scan.end, static_cast<double>(whole.endOfScan));
  const MRSequence sequence =
      windowed(sequenceOf(scan, fs_, -static_cast<double>(whole.nrOfAddedBefore) - behindTheSample));
  const size_t length = whole.samples.size();
  for (std::vector<double>* array : {&b_, &c_, &d_}) array->resize(length);
  estimate_.assign(length, 0.0);
  computeSplineCoefficients(whole.samples.data(), b_.data(), c_.data(), d_.data(),
                            static_cast<int64_t>(length));
  estimateGradientArtifact(
      {whole.samples.data(), b_.data(), c_.data(), d_.data(), static_cast<int64_t>(length)}, sequence, fs_,
      volumeWise_,
      volumesAround(sequence, fs_, outputs.begin - held.begin + whole.nrOfAddedBefore,
                    outputs.end - held.begin + whole.nrOfAddedBefore),
      estimate_.data());
  const int64_t first = std::max(whole.firstOfScan, outputs.begin - held.begin);
  const int64_t end = std::min(whole.endOfScan, outputs.end - held.begin);
  for (int64_t t = first; t < end; ++t)
    artifactEstimate[static_cast<size_t>(held.begin + t - outputs.begin)] +=
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
