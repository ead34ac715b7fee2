#include "app/correct/KnownBeats.h"

#include "app/markers/NamedMarkers.h"
#include "dsp/Statistics.h"

#include <algorithm>
#include <fmt/format.h>

namespace emeg {

namespace {

constexpr size_t fewestBeats = 3;   // of the pulse model
constexpr double slowestHeart = 20; // beats per minute, as the median of the markers' intervals
constexpr double fastestHeart = 240;
constexpr double lowestEcgFrequency = 80; // Hz

std::vector<double> differentTimes(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  times.erase(std::unique(times.begin(), times.end()), times.end());
  return times;
}

/// Of two times at least, all different.
double medianInterval(const std::vector<double>& times) {
  std::vector<double> intervals;
  for (size_t i = 1; i < times.size(); ++i) intervals.push_back(times[i] - times[i - 1]);
  return upperMedianReordering(intervals);
}

BeatRequest beatsOfMarkers(const RecordingHeader& header, const CorrectParameters& parameters,
                           int64_t firstTimePoint, int64_t nrOfTimePoints) {
  BeatRequest request{BeatSource::Markers, parameters.pulseMarkers, {}};
  for (const double onset : onsetsOfMarkers(header, parameters.pulseMarkers)) {
    const double sample = onset - static_cast<double>(firstTimePoint);
    if (sample >= 0 && sample < static_cast<double>(nrOfTimePoints))
      request.times.push_back(sample / header.samplingFrequency);
  }
  const std::vector<double> places = differentTimes(request.times);
  if (places.size() < fewestBeats)
    throw UnusableInput(fmt::format(
        "--pulse-markers: the markers \"{}\" stand at {} places of what is corrected; it takes {} "
        "heart beats at least. Leave the option out to have them found in the EEG.",
        parameters.pulseMarkers, places.size(), fewestBeats));
  const double beatsPerMinute = 60 / medianInterval(places);
  if (!(beatsPerMinute >= slowestHeart && beatsPerMinute <= fastestHeart))
    throw UnusableInput(fmt::format(
        "--pulse-markers: the markers \"{}\" come {:.0f} times a minute: these are no heart beats. "
        "`emeg info` lists the recording's markers.",
        parameters.pulseMarkers, beatsPerMinute));
  return request;
}

BeatRequest beatsOfChannel(const RecordingHeader& header, const CorrectParameters& parameters) {
  const auto channel =
      std::find_if(header.channels.begin(), header.channels.end(),
                   [&](const RecordingChannel& candidate) { return candidate.name == parameters.ecg; });
  if (channel == header.channels.end())
    throw UnusableInput(fmt::format("--ecg: there is no channel \"{}\"{}; `emeg info` lists the recording's.",
                                    parameters.ecg,
                                    parameters.channels.empty() ? "" : " among those of --channels"));
  if (channel->kind == ChannelKind::Trigger || channel->kind == ChannelKind::Status)
    throw UnusableInput(fmt::format("--ecg: channel \"{}\" is taken for a {} channel, which passes "
                                    "unchanged ({}). Name the channel with the electrocardiogram.",
                                    parameters.ecg, nameOf(channel->kind), channel->kindRule));
  if (header.samplingFrequency < lowestEcgFrequency)
    throw UnusableInput(fmt::format("--ecg: R peaks cannot be found at {:g} samples a second; it takes {:g}.",
                                    header.samplingFrequency, lowestEcgFrequency));
  return {BeatSource::Ecg, parameters.ecg, {}};
}

} // namespace

const char* nameOf(BeatSource source) {
  switch (source) {
  case BeatSource::Markers:
    return "markers";
  case BeatSource::Ecg:
    return "ecg";
  case BeatSource::Blind:
    break;
  }
  return "blind";
}

BeatRequest requestedBeats(const RecordingHeader& header, const CorrectParameters& parameters,
                           int64_t firstTimePoint, int64_t nrOfTimePoints) {
  if (!parameters.bcg) return {};
  if (!parameters.pulseMarkers.empty())
    return beatsOfMarkers(header, parameters, firstTimePoint, nrOfTimePoints);
  if (!parameters.ecg.empty()) return beatsOfChannel(header, parameters);
  return {};
}

std::string problemWithKnownBeats(const BeatRequest& request, const KnownPulses& pulses) {
  if (request.source == BeatSource::Blind || pulses.positions.size() >= fewestBeats) return "";
  if (request.source == BeatSource::Ecg)
    return fmt::format(
        "{} heart beats were found in channel \"{}\", so nothing was written. Is it an "
        "electrocardiogram, and connected? Leave out --ecg to have the beats found in the EEG.",
        pulses.positions.size(), request.name);
  return fmt::format("only {} of the markers \"{}\" can be heart beats, so nothing was written. Leave out "
                     "--pulse-markers to have the beats found in the EEG.",
                     pulses.positions.size(), request.name);
}

} // namespace emeg
