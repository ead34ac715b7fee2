#include "app/simulation/RecordingDescription.h"

#include "app/simulation/HeartBeats.h"
#include "files/formats/Protocol.h"
#include "files/formats/ProtocolFile.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace emeg {

namespace {

constexpr int eegChannelType = 0;
constexpr double longestBlockSeconds = 10;
constexpr int fewestBlocks = 6;
constexpr double microsecondsPerSecond = 1e6;

/// What a monitor beside the scanner would send: a marker "R" at every R peak.
void addRPeaks(const SimulationParameters& parameters, Protocol& protocol) {
  protocol.findOrAddCondition("R", -1, 255, 64, 64);
  for (const double time : HeartBeats::draw(*parameters.heart, parameters.seed, parameters.seconds).times) {
    const double us = std::floor(time * microsecondsPerSecond + 0.5);
    if (time >= 0 && time < parameters.seconds) protocol.addInterval(us, us);
  }
}

Protocol blockDesign(const SimulationParameters& parameters) {
  const double blockSeconds = std::min(longestBlockSeconds, parameters.seconds / fewestBlocks);
  const double blockUs = std::floor(blockSeconds * microsecondsPerSecond);
  const double endUs = parameters.seconds * microsecondsPerSecond;
  Protocol protocol(false, "", TimeResolution::Usec);
  protocol.startConditions();
  const auto addBlocks = [&](const char* name, double firstOnset, int r, int g, int b) {
    protocol.findOrAddCondition(name, -1, r, g, b);
    for (double onset = firstOnset; onset + blockUs <= endUs; onset += 2 * blockUs)
      protocol.addInterval(onset, onset + blockUs);
  };
  addBlocks("Rest", 0, 128, 128, 128);
  addBlocks("Task", blockUs, 255, 128, 0);
  if (parameters.ecg) addRPeaks(parameters, protocol);
  return protocol;
}

} // namespace

ChannelDescription describeChannels(const SimulationParameters& parameters, const std::string& ctcFileName,
                                    const std::string& prtFileName) {
  ChannelDescription description;
  const double fs = parameters.samplingFrequency;
  const double endMs = 1000 * static_cast<double>(parameters.nrOfTimePoints() - 1) / fs;
  description.header.setCtcFileName(ctcFileName);
  description.header.setPrtFileName(prtFileName);
  description.header.setNrOfChannels(parameters.nrOfChannels);
  description.header.setNrOfSelectedChannels(parameters.nrOfChannels);
  description.header.setDecimationFactor(1);
  description.header.setSamplingFrequency(fs);
  description.header.setIntervalStartMs(0);
  description.header.setIntervalEndMs(endMs);
  description.header.setIntervalLengthMs(endMs);
  description.header.setNrOfTimePoints(static_cast<int32_t>(parameters.nrOfTimePoints()));
  for (int c = 0; c < parameters.nrOfChannels; c++)
    description.channelRecords.push_back(
        CcdChannelRecord::make(parameters.channelName(c), eegChannelType, fs));
  return description;
}

RecordingHeader describeRecording(const SimulationParameters& parameters,
                                  const std::vector<int64_t>& triggers) {
  RecordingHeader header;
  header.samplingFrequency = parameters.samplingFrequency;
  header.nrOfTimePoints = parameters.nrOfTimePoints();
  for (int c = 0; c < parameters.nrOfChannels; c++) {
    RecordingChannel channel;
    channel.name = parameters.channelName(c);
    if (parameters.isEcg(c)) channel.kind = ChannelKind::Ecg;
    channel.unit = "uV";
    header.channels.push_back(channel);
  }
  const double samplesPerUs = parameters.samplingFrequency / microsecondsPerSecond;
  for (const Condition& condition : blockDesign(parameters).conditions) {
    for (size_t i = 0; i < condition.onsets.size(); i++) {
      RecordingMarker marker;
      marker.description = condition.conditionName;
      marker.onset = condition.onsets[i] * samplesPerUs;
      marker.duration = (condition.offsets[i] - condition.onsets[i]) * samplesPerUs;
      header.markers.push_back(marker);
    }
  }
  for (const int64_t timePoint : triggers) {
    RecordingMarker marker;
    marker.description = parameters.triggers.name;
    marker.onset = static_cast<double>(timePoint);
    header.markers.push_back(marker);
  }
  std::stable_sort(header.markers.begin(), header.markers.end(),
                   [](const RecordingMarker& a, const RecordingMarker& b) { return a.onset < b.onset; });
  return header;
}

std::string protocolText(const SimulationParameters& parameters, const std::vector<int64_t>& triggers,
                         const std::string& ctcFileName) {
  Protocol protocol = blockDesign(parameters);
  const double usPerSample = microsecondsPerSecond / parameters.samplingFrequency;
  if (!triggers.empty())
    protocol.findOrAddCondition(parameters.triggers.name, static_cast<int64_t>(triggers.size()), 64, 64, 255);
  for (const int64_t timePoint : triggers)
    protocol.addInterval(static_cast<double>(timePoint) * usPerSample,
                         static_cast<double>(timePoint + 1) * usPerSample);

  std::vector<std::string> labels;
  labels.reserve(protocol.conditions.size());
  for (int c = 0; c < protocol.nrOfConditions(); c++)
    labels.push_back(c == 0 ? std::string() : conditionLabel(protocol, c));
  const double factor = timeFactorOf(protocol.resolutionOfTime, parameters.samplingFrequency);
  return formatProtocol(protocol, ctcFileName, factor, labels, std::vector<double>(labels.size(), 0.0));
}

} // namespace emeg
