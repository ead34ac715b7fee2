#include "app/correct/TimedConverter.h"

#include "converter/steps/MachineResources.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr uint64_t searchArrays = 8; // channel, sharpened copy, comparisons
constexpr uint64_t trialArrays = 4;  // channel, estimate and what they leave, beside the removal's own

FoundScan foundScanOf(const ScanSegment& segment, double samplingFrequency) {
  FoundScan scan;
  ScanSegment whole = segment;
  whole.beginsInVolume = whole.endsInVolume = false;
  scan.sequence = sequenceOf(whole, samplingFrequency);
  scan.begin = segment.begin / samplingFrequency;
  scan.end = segment.end / samplingFrequency;
  scan.partsBefore = segment.beginsInVolume ? 1 : 0;
  scan.partsBehind = segment.endsInVolume ? 1 : 0;
  scan.isCountIdentifiable = segment.isCountIdentifiable;
  scan.nrOfChannelsAgreeing = segment.nrOfChannelsAgreeing;
  scan.nrOfChannelsAsked = segment.nrOfChannelsAsked;
  return scan;
}

} // namespace

size_t FoundScans::indexOfLongest() const {
  const auto longest = std::max_element(scans.begin(), scans.end(), [](const auto& a, const auto& b) {
    return a.sequence.nrOfVolumes < b.sequence.nrOfVolumes;
  });
  return static_cast<size_t>(longest - scans.begin());
}

const FoundScan& FoundScans::longest() const {
  return scans[indexOfLongest()];
}

TimedConverter::TimedConverter(const char* logPrefix, TimingRequest request)
    : EMEGArtifactPreprocessor(logPrefix, true), request_(std::move(request)) {}

bool TimedConverter::detectSequence(const SplinedSignal& channel) {
  if (isChosen_) return true;
  isChosen_ = true;
  const MRSequence fromQuiet = request_.isBlind() ? sequenceFromQuiet(channel) : MRSequence();
  if (!hasMemory(channel.nrOfSamples)) return false;

  const std::vector<int32_t> candidates = channelsWithSequence();
  const ChannelReader reader = [&](int index, std::vector<double>& samples) {
    readInterval(candidates[static_cast<size_t>(index)], samples);
  };
  const auto tell = [this](const std::string& line) { log.logProgress("%s", line.c_str()); };
  const TimingChoice choice = chooseTiming(fromQuiet, request_, reader, static_cast<int>(candidates.size()),
                                           values.samplingFrequency, tell);
  found_.source = choice.source;
  found_.doubt = choice.doubt;
  found_.evidence = choice.evidence;
  found_.slicesDoNotRepeat = choice.slicesDoNotRepeat;
  found_.slicesLeaveDb = choice.slicesLeaveDb;
  if (choice.source == TimingSource::None) return true;
  if (choice.slicesDoNotRepeat) switches.volumeWise = 1;
  return choice.source == TimingSource::QuietBetweenSlices ? useSequence(fromQuiet)
                                                           : useSegments(choice.scans);
}

void TimedConverter::estimateGradient(const SplinedSignal& channel) {
  if (!removal_) return EMEGArtifactPreprocessor::estimateGradient(channel);
  const auto n = static_cast<size_t>(channel.nrOfSamples);
  removal_->estimate({channel.y, n}, std::span(buffers.artifactEstimate).first(n));
}

MRSequence TimedConverter::sequenceFromQuiet(const SplinedSignal& channel) {
  return detectMRSequence(channel, values.samplingFrequency, span.log2FftLength, buffers.fftWorkspace,
                          [this](const std::string& line) { log.logProgress("%s", line.c_str()); });
}

std::vector<int32_t> TimedConverter::channelsWithSequence() const {
  std::vector<int32_t> result;
  for (int32_t channel = 0; channel < selection.nrOfSelectedChannels; ++channel)
    if (roleOf(channel).showsSequence) result.push_back(channel);
  return result;
}

/// No channel has been corrected yet when the timing is chosen: the chunk files hold the recording. What
/// cannot be read, or is no number, counts as 0.
void TimedConverter::readInterval(int32_t channel, std::vector<double>& samples) {
  const int64_t processed = span.nrOfProcessedTimePoints();
  const int64_t margin = span.firstTimePoint - span.firstProcessedTimePoint;
  block_.resize(static_cast<size_t>(processed));
  samples.assign(static_cast<size_t>(span.nrOfIntervalTimePoints), 0.0);
  if (!chunkFiles.readChannel(channel, processed, block_.data())) return;
  for (size_t i = 0; i < samples.size(); ++i) {
    const float sample = block_[static_cast<size_t>(margin) + i];
    samples[i] = std::isfinite(sample) ? static_cast<double>(sample) : 0;
  }
}

bool TimedConverter::hasMemory(int64_t nrOfSamples) {
  MachineResources needed;
  const uint64_t array = sizeof(double) * static_cast<uint64_t>(nrOfSamples);
  needed.memory =
      std::max(searchArrays * array, SegmentRemoval::memoryFor(nrOfSamples) + trialArrays * array);
  const std::string shortage =
      describeShortage(needed, availableResources(inputPathBuffer.path()), inputPathBuffer.path());
  return shortage.empty() || showError(shortage);
}

bool TimedConverter::useSequence(const MRSequence& sequenceOfQuiet) {
  sequence = sequenceOfQuiet;
  addGradientTriggers();
  if (!askWindow()) return false;
  FoundScan scan = foundScanOf(segmentOf(sequence, values.samplingFrequency), values.samplingFrequency);
  scan.sequence = sequence;
  found_.scans = {scan};
  return true;
}

bool TimedConverter::useSegments(const std::vector<ScanSegment>& segments) {
  for (const ScanSegment& segment : segments) {
    FoundScan scan = foundScanOf(segment, values.samplingFrequency);
    scan.sequence.windowHalfLength = windowHalfLengthOf(scan.sequence, request_.windowSlices);
    found_.scans.push_back(scan);
    sequence = scan.sequence;
    addGradientTriggers();
  }
  sequence = found_.longest().sequence;
  removal_ = std::make_unique<SegmentRemoval>(segments, values.samplingFrequency, switches.volumeWise != 0,
                                              request_.windowSlices);
  return true;
}

} // namespace emeg
