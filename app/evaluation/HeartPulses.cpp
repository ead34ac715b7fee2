#include "app/evaluation/HeartPulses.h"

#include "files/formats/ProtocolFile.h"
#include "files/formats/TriggerMarkers.h"

#include <algorithm>
#include <filesystem>

namespace emeg {

namespace {

std::string basePathOf(const std::string& correctedPath) {
  return std::filesystem::path(correctedPath).replace_extension().string();
}

} // namespace

std::string triggerFileOf(const std::string& correctedPath) {
  return basePathOf(correctedPath) + triggerProtocolName + ".prt";
}

std::optional<std::vector<double>> readHeartPulses(const std::string& correctedPath,
                                                   double samplingFrequency) {
  auto protocol = loadProtocol(basePathOf(correctedPath), triggerProtocolName);
  if (!protocol) return std::nullopt;
  const double microseconds = timeFactorOf(protocol->resolutionOfTime, samplingFrequency);
  for (const Condition& condition : protocol->conditions) {
    if (condition.conditionName != "HeartPulseTriggers") continue;
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
