#include "engine/figures/ScanDoubts.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

using enum ScanDoubtKind;
using Doubts = std::vector<ScanDoubt>;

constexpr double notReducedRemaining = 0.5; // of the artifact's amplitude
constexpr double noticeableDrift = 0.0002;  // seconds
constexpr double longestSlice = 0.5;        // seconds
constexpr double hardlyAlike = 0.45;        // of a volume's power, sharpened; scans of 40 uV stay below 0.4
constexpr int32_t fewestMeasuredVolumes = 4;

/// One scan of a recording with its figures.
struct MeasuredScan {
  size_t number;
  const FoundScan& scan;
  const QualityFigures* quality; ///< null: too short to tell, or not measured

  ScanDoubt doubt(ScanDoubtKind kind, double measured) const { return {kind, number, measured, {}, {}}; }
};

/// Channels whose figures fulfil a condition.
template <typename Condition>
std::vector<size_t> channelsWith(const QualityFigures& quality, const Condition& condition) {
  std::vector<size_t> channels;
  for (size_t k = 0; k < quality.channels.size(); ++k)
    if (condition(quality.channels[k])) channels.push_back(k);
  return channels;
}

void doubtLength(const MeasuredScan& measured, const RecordingShape& shape, Doubts& doubts) {
  const MRSequence& sequence = measured.scan.sequence;
  const double seconds = static_cast<double>(shape.nrOfSamples) / shape.samplingFrequency;
  const double first = sequence.firstTriggerTime;
  const double end = first + sequence.nrOfVolumes * sequence.volumeDuration;
  if (end > seconds + sequence.volumeDuration || first < -sequence.volumeDuration)
    doubts.push_back({BeyondRecording, measured.number, 0, {first, end}, {}});
}

/// What was said about the scan's timing and does not go with it.
void doubtGivenTiming(const MeasuredScan& measured, TimingSource source, const TimingRequest& request,
                      Doubts& doubts) {
  const MRSequence& sequence = measured.scan.sequence;
  const int32_t given = request.given.nrOfSlicesPerVolume;
  if (given > 0 && given != sequence.nrOfSlicesPerVolume)
    doubts.push_back(measured.doubt(SlicesNotTaken, given));
  if (source == TimingSource::SliceMarkers && sequence.sliceDuration > longestSlice)
    doubts.push_back(measured.doubt(LongSlices, sequence.sliceDuration));
}

void doubtDrift(const MeasuredScan& measured, double samplingFrequency, Doubts& doubts) {
  const double drift = measured.quality->drift;
  if (std::abs(drift) > std::max(noticeableDrift, 0.5 / samplingFrequency))
    doubts.push_back(measured.doubt(Drift, drift));
  const double outside = measured.quality->artifactSecondsOutside;
  if (outside > 0) doubts.push_back(measured.doubt(ScanOutside, outside));
}

void doubtRemoval(const MeasuredScan& measured, Doubts& doubts) {
  std::vector<size_t> grew = channelsWith(*measured.quality, [](const ChannelQuality& channel) {
    return channel.isVisible() && channel.remaining() > 1;
  });
  std::vector<size_t> stayed = channelsWith(*measured.quality, [](const ChannelQuality& channel) {
    return channel.isVisible() && channel.remaining() > notReducedRemaining && channel.remaining() <= 1;
  });
  if (!grew.empty()) doubts.push_back({ArtifactGrew, measured.number, 0, {}, std::move(grew)});
  if (!stayed.empty()) doubts.push_back({ArtifactStayed, measured.number, 0, {}, std::move(stayed)});
}

void doubtTogether(const FoundScans& timing, const TimingRequest& request, Doubts& doubts) {
  if (timing.slicesDoNotRepeat) doubts.push_back({SlicesDoNotRepeat, 0, timing.slicesLeaveDb, {}, {}});
  // Whoever searched has judged.
  if (!request.isBlind() && timing.evidence.unlikeVolumes > hardlyAlike)
    doubts.push_back({VolumesUnlike, 0, timing.evidence.unlikeVolumes, {}, {}});
}

} // namespace

Doubts doubtsAboutScans(const Findings& found, const TimingRequest& request, const RecordingShape& shape) {
  const FoundScans& timing = found.timing;
  Doubts doubts;
  doubtTogether(timing, request, doubts);
  for (size_t i = 0; i < timing.scans.size(); ++i) {
    const bool isMeasured = i < found.quality.size() && found.quality[i];
    const MeasuredScan measured{i, timing.scans[i], isMeasured ? &*found.quality[i] : nullptr};
    const int32_t volumes = measured.scan.sequence.nrOfVolumes;
    doubtLength(measured, shape, doubts);
    doubtGivenTiming(measured, timing.source, request, doubts);
    if (!isMeasured) {
      if (volumes < fewestMeasuredVolumes) doubts.push_back(measured.doubt(TooFewVolumes, volumes));
      continue;
    }
    // What lies outside is outside of all scans.
    if (i == timing.indexOfLongest()) doubtDrift(measured, shape.samplingFrequency, doubts);
    doubtRemoval(measured, doubts);
  }
  return doubts;
}

} // namespace emeg
