#include "app/correct/CorrectionPlan.h"

#include "app/correct/KnownBeats.h"
#include "app/correct/OutputName.h"
#include "app/markers/NamedMarkers.h"
#include "dsp/OutputInstants.h"
#include "engine/settings/OutputRate.h"
#include "engine/settings/SettingChecks.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>

namespace emeg {

namespace {

constexpr double longestSeconds = 1e9; // no recording is longer; keeps the arithmetic of sample numbers exact

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

/// What stands before the names of options.
constexpr const char* dashes = "--";

void refuse(const std::optional<std::string>& problem) {
  if (problem) throw UnusableInput(*problem);
}

void chooseRate(const RecordingHeader& header, const CorrectParameters& parameters, CorrectionPlan& plan) {
  const double samplingFrequency = header.samplingFrequency;
  int64_t divisor = parameters.decimate;
  if (parameters.rate) {
    refuse(problemOfRate(samplingFrequency, *parameters.rate, plan.settings.method, dashes));
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

void checkSize(const CorrectParameters& parameters, const CorrectionPlan& plan) {
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
  if (parameters.first) timing.given.firstOnset = *parameters.first - first / header.samplingFrequency;

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
  checkSize(parameters, plan);
  CorrectionSettings& settings = plan.settings;
  settings.method = parameters.asPlugin ? asThePluginDoes : stretchByStretch;
  chooseRate(header, parameters, plan);
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
  refuse(firstProblemOf(settings, plan.shapeOf(header), dashes));
  plan.suffix = suffixOf(header, parameters, plan);
  return plan;
}

} // namespace emeg
