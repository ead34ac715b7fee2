#include "app/correct/CorrectionPlan.h"

#include "app/correct/KnownBeats.h"
#include "app/correct/OutputName.h"
#include "app/markers/NamedMarkers.h"
#include "dsp/OutputInstants.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>

namespace emeg {

namespace {

constexpr double lowestFrequency = 10; // Hz: the artifact correction keeps ten values a second apart
constexpr double longestSeconds = 1e9; // no recording is longer; keeps the arithmetic of sample numbers exact
constexpr double rateTolerance = 1e-6; // of a ratio of two rates that should be a whole number
constexpr double largestIncrease = 10; // of the sampling frequency

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

/// The whole number that divides one rate into the other; 0 where there is none.
int64_t wholeDivisor(double samplingFrequency, double rate) {
  const double factor = samplingFrequency / rate;
  const double whole = std::floor(factor + 0.5);
  const bool isWhole = whole >= 1 && whole < OutputInstants::steepestRatio &&
                       std::abs(factor - whole) <= rateTolerance * whole;
  return isWhole ? static_cast<int64_t>(whole) : 0;
}

void checkRate(double samplingFrequency, double rate, bool onlyDivisors) {
  const double highest = largestIncrease * samplingFrequency;
  const double lowest = samplingFrequency / OutputInstants::steepestRatio;
  if (!(rate > lowest && rate <= highest))
    throw UnusableInput(
        fmt::format("--rate {:g}: from the recording's {:g} Hz, rates above {:g} and up to {:g} "
                    "Hz can be made; give one of these, in Hz.",
                    rate, samplingFrequency, lowest, highest));
  if (onlyDivisors && wholeDivisor(samplingFrequency, rate) == 0)
    throw UnusableInput(
        fmt::format("--rate {:g}: with --as-plugin the recording's {:g} Hz can only be divided by whole "
                    "numbers; {}.",
                    rate, samplingFrequency, ratesNear(samplingFrequency, rate)));
}

void chooseRate(const RecordingHeader& header, const CorrectParameters& parameters, CorrectionPlan& plan) {
  const double samplingFrequency = header.samplingFrequency;
  int64_t divisor = parameters.decimate;
  if (parameters.rate) {
    checkRate(samplingFrequency, *parameters.rate, parameters.asPlugin);
    divisor = wholeDivisor(samplingFrequency, *parameters.rate);
  }
  if (divisor > 0) {
    plan.samplesPerOutput = static_cast<double>(divisor);
    plan.outputRate = samplingFrequency / plan.samplesPerOutput;
    plan.nrOfOutputs = (plan.nrOfTimePoints - 1) / divisor + 1;
  } else {
    plan.outputRate = *parameters.rate;
    plan.samplesPerOutput = samplingFrequency / plan.outputRate;
    plan.nrOfOutputs = OutputInstants(samplingFrequency, plan.outputRate).countUpTo(plan.nrOfTimePoints - 1);
  }
  CorrectionSettings& settings = plan.settings;
  if (parameters.asPlugin)
    settings.decimation = static_cast<int>(divisor);
  else if (divisor != 1)
    settings.rate = plan.outputRate;
}

/// Where filter edges may lie.
struct EdgeRange {
  double nyquist = 0;
  const char* rate = "the recording's";
};

void checkEdge(const char* option, double hz, const EdgeRange& range) {
  if (hz < 0 || hz >= range.nyquist || !std::isfinite(hz))
    throw UnusableInput(fmt::format("{} {:g}: the frequency lies between 0 and {:g} Hz, half of {} sampling "
                                    "frequency.",
                                    option, hz, range.nyquist, range.rate));
}

void checkFilters(const RecordingHeader& header, const CorrectParameters& parameters,
                  const CorrectionPlan& plan) {
  const EdgeRange recorded{header.samplingFrequency / 2};
  EdgeRange range = recorded;
  // The plug-in's filters are those of the recorded rate.
  if (!parameters.asPlugin && plan.outputRate < header.samplingFrequency)
    range = {plan.outputRate / 2, "the new"};
  checkEdge("--high-pass", parameters.highPass, range);
  checkEdge("--low-pass", parameters.lowPass, range);
  for (const Notch& notch : parameters.notches) {
    checkEdge("--notch", notch.frequency - notch.width / 2, range);
    checkEdge("--notch", notch.frequency + notch.width / 2, range);
    if (!(notch.frequency - notch.width / 2 > 0) || !(notch.width > 0))
      throw UnusableInput(
          fmt::format("--notch {:g}:{:g}: the stop band must begin above 0 Hz and be wider than 0.",
                      notch.frequency, notch.width));
  }
  for (const double hz : parameters.lineNoise) {
    checkEdge("--line-noise", hz, recorded);
    if (!(hz > 0)) throw UnusableInput("--line-noise 0: give the frequency in Hz, such as 50 or 60.");
  }
  if (parameters.highPass > 0 && parameters.lowPass > 0 && parameters.highPass >= parameters.lowPass)
    throw UnusableInput(fmt::format("--high-pass {:g} --low-pass {:g} leaves no frequency.",
                                    parameters.highPass, parameters.lowPass));
}

/// Samples at the limits of integers cannot be told from others without integers.
void checkSaturationCanShow(const RecordingHeader& header, const CorrectParameters& parameters,
                            const CorrectionPlan& plan) {
  if (!parameters.repairSaturation) return;
  for (const int channel : plan.channels.corrected)
    if (header.channels[static_cast<size_t>(channel)].stored) return;
  throw UnusableInput(
      fmt::format("--repair-saturation: \"{}\" stores no integers, so saturated samples cannot be "
                  "told from others; give the file that the amplifier wrote.",
                  parameters.input));
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
  timing.volumeWise = !parameters.sliceWise;
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
    throw UnusableInput(
        fmt::format("--tr {:g}: the corrected part of \"{}\" lasts {:.3f} s, and three volumes "
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

std::string suffixOf(const RecordingHeader& header, const CorrectParameters& parameters,
                     const CorrectionPlan& plan) {
  const double msPerSample = 1000 / header.samplingFrequency;
  NamedSteps steps;
  steps.nrOfChosenChannels = parameters.channels.empty() ? 0 : header.nrOfChannels();
  steps.hasInterval = plan.hasInterval;
  steps.startMs = static_cast<double>(plan.firstTimePoint) * msPerSample;
  steps.endMs = static_cast<double>(plan.endTimePoint()) * msPerSample;
  steps.highPass = parameters.highPass;
  steps.lowPass = parameters.lowPass;
  steps.hasNotches = !parameters.notches.empty();
  const double divisor = std::floor(plan.samplesPerOutput);
  if (divisor == plan.samplesPerOutput)
    steps.decimation = static_cast<int>(divisor);
  else
    steps.rate = plan.outputRate;
  steps.scalingOrder = parameters.scale;
  steps.removesBeats = parameters.bcg;
  return outputSuffixOf(steps);
}

} // namespace

RecordingShape CorrectionPlan::shapeOf(const RecordingHeader& header) const {
  RecordingShape shape;
  shape.samplingFrequency = header.samplingFrequency;
  shape.nrOfSamples = nrOfTimePoints;
  shape.roles = channels.roles;
  for (const RecordingChannel& channel : header.channels) {
    std::optional<IntegerRange> integers;
    if (channel.stored)
      integers = {channel.stored->step, channel.stored->offset, channel.stored->smallest,
                  channel.stored->largest};
    shape.integers.push_back(integers);
  }
  return shape;
}

CorrectionPlan planCorrection(const RecordingHeader& header, const CorrectParameters& parameters) {
  CorrectionPlan plan;
  plan.channels = planChannels(header, parameters);
  cutInterval(header, parameters, plan);
  checkSize(header, parameters, plan);
  chooseRate(header, parameters, plan);
  checkFilters(header, parameters, plan);
  checkSaturationCanShow(header, parameters, plan);

  CorrectionSettings& settings = plan.settings;
  settings.method = parameters.asPlugin ? asThePluginDoes : stretchByStretch;
  settings.heartBeats = parameters.bcg;
  settings.timing = timingOf(header, parameters, plan);
  settings.beats = requestedBeats(header, parameters, plan.firstTimePoint, plan.nrOfTimePoints);
  settings.lineNoise = parameters.lineNoise;
  settings.repairSaturation = parameters.repairSaturation;
  settings.highPass = parameters.highPass;
  settings.lowPass = parameters.lowPass;
  settings.notches = parameters.notches;
  settings.averageReference = parameters.averageReference;
  settings.scalingOrder = parameters.scale;
  plan.suffix = suffixOf(header, parameters, plan);
  return plan;
}

} // namespace emeg
