#include "app/evaluation/HeartPulses.h"

#include "app/evaluation/EvaluatedRecording.h"
#include "files/exchange/RecordingReader.h"
#include "files/formats/ProtocolFile.h"
#include "files/formats/TriggerMarkers.h"

#include <algorithm>
#include <filesystem>
#include <memory>

namespace emeg {

namespace {

std::string basePathOf(const std::string& correctedPath) {
  return std::filesystem::path(correctedPath).replace_extension().string();
}

constexpr const char* heartPulseMarker = "HeartPulseTriggers";

std::optional<std::vector<double>> pulsesAmongMarkers(const std::string& path) {
  try {
    const std::unique_ptr<RecordingReader> recording = openRecording(path);
    std::vector<double> seconds;
    for (const RecordingMarker& marker : recording->header().markers)
      if (marker.description == heartPulseMarker)
        seconds.push_back(marker.onset / recording->header().samplingFrequency);
    if (seconds.empty()) return std::nullopt;
    return seconds;
  } catch (const RecordingError& error) {
    throw UnreadableFile(error.what());
  }
}

} // namespace

std::string triggerFileOf(const std::string& correctedPath) {
  if (!isCtcFile(correctedPath)) return correctedPath;
  return basePathOf(correctedPath) + triggerProtocolName + ".prt";
}

std::optional<std::vector<double>> readHeartPulses(const std::string& correctedPath,
                                                   double samplingFrequency) {
  if (!isCtcFile(correctedPath)) return pulsesAmongMarkers(correctedPath);
  auto protocol = loadProtocol(basePathOf(correctedPath), triggerProtocolName);
  if (!protocol) return std::nullopt;
  const double microseconds = timeFactorOf(protocol->resolutionOfTime, samplingFrequency);
  for (const Condition& condition : protocol->conditions) {
    if (condition.conditionName != heartPulseMarker) continue;
    std::vector<double> seconds;
    seconds.reserve(condition.onsets.size());
    for (const double onset : condition.onsets)
      seconds.push_back(onset / microseconds / microsecondsPerSecond);
    std::sort(seconds.begin(), seconds.end());
    return seconds;
  }
  return std::nullopt;
}

} // namespace emeg
