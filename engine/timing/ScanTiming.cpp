#include "engine/timing/ScanTiming.h"

#include "artifacts/CubicSplines.h"
#include "artifacts/gradient/templates/SegmentRemoval.h"
#include "artifacts/gradient/templates/TemplateRemoval.h"
#include "dsp/FrequencyFilter.h"
#include "engine/figures/GradientMeter.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double artifactHighPassHz = 1.0;
constexpr double splitOrder = 3.0;
constexpr int64_t transformMargin = 10; // samples, so that the padding has room
constexpr int mostWitnesses = 7;        // channels that are asked whether what was found is a scan
constexpr uint64_t searchArrays = 8;    // channel, sharpened copy, comparisons
constexpr uint64_t trialArrays = 4;     // channel, estimate and what they leave, beside the removal's own

/// The timing that the quiet between slices shows in a channel.
MRSequence sequenceFromQuiet(std::vector<double> channel, double samplingFrequency, Observer& observer) {
  const auto n = static_cast<int64_t>(channel.size());
  const auto log2Length =
      static_cast<int32_t>(std::ceil(std::log2(static_cast<double>(n + transformMargin))));
  FilterStageList stages;
  stages.addFilterStage(EdgeKind::HighPass, artifactHighPassHz * 2 / samplingFrequency, splitOrder);
  const FilterResponse highPass = makeFilterResponse(stages, log2Length);
  channel.resize(size_t{1} << log2Length);
  FFTWorkspace workspace;
  filterSignalFFT(channel.data(), n, highPass, workspace);
  std::vector<double> b(static_cast<size_t>(n)), c(b.size()), d(b.size());
  computeSplineCoefficients(channel.data(), b.data(), c.data(), d.data(), n);
  return detectMRSequence({channel.data(), b.data(), c.data(), d.data(), n}, samplingFrequency, log2Length,
                          workspace, [&observer](const std::string& line) { observer.detail(line); });
}

FoundScan foundScanOf(const ScanSegment& segment, double samplingFrequency, int slices, bool volumeWise) {
  FoundScan scan;
  ScanSegment whole = segment;
  whole.beginsInVolume = whole.endsInVolume = false;
  scan.sequence = sequenceOf(whole, samplingFrequency);
  scan.sequence.windowHalfLength = windowSecondsOf(scan.sequence, slices, volumeWise);
  scan.begin = segment.begin / samplingFrequency;
  scan.end = segment.end / samplingFrequency;
  scan.partsBefore = segment.beginsInVolume ? 1 : 0;
  scan.partsBehind = segment.endsInVolume ? 1 : 0;
  scan.isCountIdentifiable = segment.isCountIdentifiable;
  scan.nrOfChannelsAgreeing = segment.nrOfChannelsAgreeing;
  scan.nrOfChannelsAsked = segment.nrOfChannelsAsked;
  return scan;
}

/// Measures the scan in a few channels as they are, until one shows it: noise has rhythms of its own.
bool standsOut(CachedChannels& recording, const std::vector<int>& channels, int64_t nrOfSamples,
               double samplingFrequency, const FoundScans& found) {
  // Other ways compare volumes with each other, which says more.
  if (found.source != TimingSource::QuietBetweenSlices) return true;
  const auto nrOfChannels = static_cast<int>(channels.size());
  const int witnesses = std::min(nrOfChannels, mostWitnesses);
  MeteredCorrection metered;
  metered.scans = {found.longest()};
  metered.nrOfChannels = 1;
  metered.showsScan = {true};
  metered.samplingFrequency = metered.samplingFrequencyAfter = samplingFrequency;
  metered.nrOfTimePoints = metered.nrOfTimePointsAfter = nrOfSamples;
  FigureWorkspace workspace;
  std::vector<double> samples;
  // One channel that shows it is enough.
  for (int i = 0; i < witnesses; ++i) {
    recording.read(channels[static_cast<size_t>((2 * i + 1) * nrOfChannels / (2 * witnesses))], samples);
    GradientMeter meter(metered);
    meter.addBefore(0, samples, workspace);
    meter.addAfter(0, samples, workspace);
    const auto figures = meter.figures();
    if (looksLikeScan(found.source, figures.front() ? &*figures.front() : nullptr)) return true;
  }
  return false;
}

} // namespace

uint64_t memoryForScanSearch(int64_t nrOfSamples) {
  const uint64_t array = sizeof(double) * static_cast<uint64_t>(nrOfSamples);
  return std::max(searchArrays * array, SegmentRemoval::memoryFor(nrOfSamples) + trialArrays * array);
}

TimedScans findScans(CachedChannels& recording, const std::vector<int>& channels, int64_t nrOfSamples,
                     double samplingFrequency, const TimingRequest& request, Observer& observer) {
  TimedScans result;
  result.volumeWise = request.volumeWise;
  if (channels.empty()) return result;
  observer.stepBegins(Step::FindingScans, channels.front());
  MRSequence fromQuiet;
  if (request.isBlind()) {
    std::vector<double> first;
    recording.read(channels.front(), first);
    fromQuiet = sequenceFromQuiet(std::move(first), samplingFrequency, observer);
  }
  const ChannelReader reader = [&](int index, std::vector<double>& samples) {
    observer.progress(0);
    recording.read(channels[static_cast<size_t>(index)], samples);
  };
  const TimingChoice choice =
      chooseTiming(fromQuiet, request, reader, static_cast<int>(channels.size()), samplingFrequency,
                   [&observer](const std::string& line) { observer.detail(line); });
  if (choice.source == TimingSource::None) return result;
  FoundScans& found = result.found;
  found.source = choice.source;
  found.doubt = choice.doubt;
  found.evidence = choice.evidence;
  found.slicesDoNotRepeat = choice.slicesDoNotRepeat;
  found.slicesLeaveDb = choice.slicesLeaveDb;
  result.volumeWise = request.volumeWise || choice.slicesDoNotRepeat;
  for (const ScanSegment& segment : choice.scans)
    found.scans.push_back(foundScanOf(segment, samplingFrequency, request.windowSlices, result.volumeWise));
  if (!standsOut(recording, channels, nrOfSamples, samplingFrequency, found)) {
    result.found = FoundScans();
    return result;
  }
  result.segments = choice.scans;
  return result;
}

} // namespace emeg
