#include "app/correct/CorrectionPlan.h"

#include "app/markers/NamedMarkers.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>

namespace emeg {

namespace {

constexpr double lowestFrequency = 10; // Hz: the artifact correction keeps ten values a second apart
constexpr double longestSeconds = 1e9; // no recording is longer; keeps the arithmetic of sample numbers exact
constexpr double rateTolerance = 1e-6; // of a ratio of two rates that should be a whole number
constexpr int largestDecimation = 1000;

int64_t nearestTimePoint(double seconds, double samplingFrequency) {
  return static_cast<int64_t>(std::floor(seconds * samplingFrequency + 0.5));
}

void cutInterval(const RecordingHeader& header, const CorrectParameters& parameters, CorrectionPlan& plan) {
  plan.nrOfTimePoints = header.nrOfTimePoints;
  if (!parameters.interval) return;
  const Seconds& interval = *parameters.interval;
  const double end = interval.end.value_or(header.seconds());
  if (!(interval.start >= 0) || !(end > interval.start) || end > longestSeconds ||
      interval.start >= header.seconds())
    throw UnusableInput(
        fmt::format("--interval {:g}:{:g} holds nothing of the recording, which lasts {:.3f} s; "
                    "give START:END in seconds from its first sample.",
                    interval.start, end, header.seconds()));
  plan.firstTimePoint = nearestTimePoint(interval.start, header.samplingFrequency);
  const int64_t last = std::min(nearestTimePoint(end, header.samplingFrequency), header.nrOfTimePoints);
  plan.nrOfTimePoints = last - plan.firstTimePoint;
  plan.hasInterval = plan.nrOfTimePoints != header.nrOfTimePoints;
  if (plan.nrOfTimePoints < 1)
    throw UnusableInput(fmt::format("--interval {:g}:{:g} is shorter than a sample.", interval.start, end));
}

std::string ratesNear(double samplingFrequency, double wanted) {
  const double factor = samplingFrequency / wanted;
  const double below = std::max(1.0, std::floor(factor));
  return fmt::format("{:g} and {:g} Hz are possible", samplingFrequency / below,
                     samplingFrequency / (below + 1));
}

int decimationOf(const RecordingHeader& header, const CorrectParameters& parameters) {
  if (!parameters.rate) return parameters.decimate;
  const double rate = *parameters.rate;
  const double factor = header.samplingFrequency / rate;
  const double whole = std::floor(factor + 0.5);
  if (!(rate > 0) || whole < 1 || whole > largestDecimation ||
      std::abs(factor - whole) > rateTolerance * whole)
    throw UnusableInput(
        fmt::format("--rate {:g}: the recording's {:g} Hz can only be divided by whole numbers; {}.", rate,
                    header.samplingFrequency, ratesNear(header.samplingFrequency, std::max(rate, 0.001))));
  return static_cast<int>(whole);
}

void checkEdge(const char* option, double hz, double nyquist) {
  if (hz < 0 || hz >= nyquist || !std::isfinite(hz))
    throw UnusableInput(
        fmt::format("{} {:g}: a filter edge lies between 0 and {:g} Hz, half of the recording's "
                    "sampling frequency.",
                    option, hz, nyquist));
}

void checkFilters(const RecordingHeader& header, const CorrectParameters& parameters) {
  const double nyquist = header.samplingFrequency / 2;
  checkEdge("--high-pass", parameters.highPass, nyquist);
  checkEdge("--low-pass", parameters.lowPass, nyquist);
  for (const Notch& notch : parameters.notches) {
    checkEdge("--notch", notch.frequency - notch.width / 2, nyquist);
    checkEdge("--notch", notch.frequency + notch.width / 2, nyquist);
    if (!(notch.frequency - notch.width / 2 > 0) || !(notch.width > 0))
      throw UnusableInput(
          fmt::format("--notch {:g}:{:g}: the stop band must begin above 0 Hz and be wider than 0.",
                      notch.frequency, notch.width));
  }
  for (const double hz : parameters.lineNoise) {
    checkEdge("--line-noise", hz, nyquist);
    if (!(hz > 0)) throw UnusableInput("--line-noise 0: give the frequency in Hz, such as 50 or 60.");
  }
  if (parameters.highPass > 0 && parameters.lowPass > 0 && parameters.highPass >= parameters.lowPass)
    throw UnusableInput(fmt::format("--high-pass {:g} --low-pass {:g} leaves no frequency.",
                                    parameters.highPass, parameters.lowPass));
}

void checkSize(const RecordingHeader& header, const CorrectParameters& parameters,
               const CorrectionPlan& plan) {
  if (header.samplingFrequency < lowestFrequency)
    throw UnusableInput(fmt::format("\"{}\" has {:g} samples a second; the correction needs {:g} at least.",
                                    parameters.input, header.samplingFrequency, lowestFrequency));
  if (plan.nrOfTimePoints > std::numeric_limits<int32_t>::max())
    throw UnusableInput(
        fmt::format("\"{}\" has {} time points, 2147483647 can be corrected at once; choose a part "
                    "with --interval START:END.",
                    parameters.input, plan.nrOfTimePoints));
  if (plan.channels.corrected.size() > static_cast<size_t>(std::numeric_limits<int16_t>::max()))
    throw UnusableInput(
        fmt::format("\"{}\" has {} channels, 32767 can be corrected at once; choose some with "
                    "--channels NAME,...",
                    parameters.input, plan.channels.corrected.size()));
}

TimingRequest timingOf(const RecordingHeader& header, const CorrectParameters& parameters,
                       const CorrectionPlan& plan) {
  const auto first = static_cast<double>(plan.firstTimePoint);
  TimingRequest timing;
  timing.volumeWise = parameters.volumeWise;
  timing.windowSlices = parameters.window;
  timing.given.volumeDuration = parameters.tr;
  timing.given.nrOfSlicesPerVolume = parameters.slices;
  const double seconds = static_cast<double>(plan.nrOfTimePoints) / header.samplingFrequency;
  if (parameters.first) {
    timing.given.firstOnset = *parameters.first - first / header.samplingFrequency;
    if (!(std::abs(*timing.given.firstOnset) <= seconds))
      throw UnusableInput(
          fmt::format("--first {:g}: the corrected part of \"{}\" lasts from {:.3f} to {:.3f} s; "
                      "give the onset of a volume there, in seconds.",
                      *parameters.first, parameters.input, first / header.samplingFrequency,
                      first / header.samplingFrequency + seconds));
  }
  if (parameters.tr > seconds / 3)
    throw UnusableInput(fmt::format("--tr {:g}: the corrected part of \"{}\" lasts {:.3f} s, and three volumes "
                                    "are needed at least; the TR is given in seconds.",
                                    parameters.tr, parameters.input, seconds));

  const bool areVolumes = !parameters.volumeMarkers.empty();
  if (!areVolumes && parameters.sliceMarkers.empty()) return timing;
  timing.markerKind = areVolumes ? MarkerKind::Volume : MarkerKind::Slice;
  const std::string& name = areVolumes ? parameters.volumeMarkers : parameters.sliceMarkers;
  for (const double onset : withoutDoubles(onsetsOfMarkers(header, name), header.samplingFrequency))
    if (onset >= first && onset < static_cast<double>(plan.endTimePoint()))
      timing.markers.push_back(onset - first);
  constexpr size_t fewestMarkers = 3;
  if (timing.markers.size() < fewestMarkers)
    throw UnusableInput(fmt::format(
        "the markers \"{}\" stand at {} places in the corrected part of \"{}\", {} are needed to tell when "
        "volumes begin; leave the option out to find them in the EEG itself.",
        name, timing.markers.size(), parameters.input, fewestMarkers));
  return timing;
}

} // namespace

CorrectionPlan planCorrection(const RecordingHeader& header, const CorrectParameters& parameters) {
  CorrectionPlan plan;
  plan.channels = planChannels(header, parameters);
  cutInterval(header, parameters, plan);
  plan.decimationFactor = decimationOf(header, parameters);
  checkFilters(header, parameters);
  checkSize(header, parameters, plan);
  plan.timing = timingOf(header, parameters, plan);
  plan.beats = requestedBeats(header, parameters, plan.firstTimePoint, plan.nrOfTimePoints);

  HostAnswers::Dialogue& dialogue = plan.dialogue;
  dialogue.correctBcg = parameters.bcg;
  dialogue.volumeWise = parameters.volumeWise;
  dialogue.window = parameters.window;
  dialogue.decimationFactor = plan.decimationFactor;
  dialogue.highPass = parameters.highPass;
  dialogue.lowPass = parameters.lowPass;
  dialogue.notches = parameters.notches;
  dialogue.averageReference = parameters.averageReference;
  dialogue.scalingOrder = parameters.scale;

  NamedSelection named;
  named.nrOfChannels = parameters.channels.empty() ? 0 : header.nrOfChannels();
  named.hasInterval = plan.hasInterval;
  const double msPerSample = 1000 / header.samplingFrequency;
  named.startMs = static_cast<double>(plan.firstTimePoint) * msPerSample;
  named.endMs = static_cast<double>(plan.endTimePoint()) * msPerSample;
  plan.suffix = outputSuffixOf(dialogue, named);
  return plan;
}

} // namespace emeg
