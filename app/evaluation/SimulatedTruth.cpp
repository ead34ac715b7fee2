#include "app/evaluation/SimulatedTruth.h"

#include "app/evaluation/EvaluatedRecording.h"

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

namespace emeg {

namespace {

/// Truth files of older versions know one scan only, and no list.
std::vector<SimulatedScan> scansIn(const nlohmann::json& gradient) {
  const auto scanIn = [](const nlohmann::json& json) {
    return SimulatedScan{json.at("nrOfVolumes"), json.at("firstVolumeOnset"), json.at("endOfScan")};
  };
  if (!gradient.contains("scans")) return {scanIn(gradient)};
  std::vector<SimulatedScan> scans;
  for (const nlohmann::json& json : gradient.at("scans")) scans.push_back(scanIn(json));
  return scans;
}

} // namespace

SimulatedTruth readSimulatedTruth(const std::string& path) {
  std::ifstream stream(path);
  if (!stream) throw UnreadableFile("cannot open " + path);
  SimulatedTruth truth;
  try {
    const nlohmann::json json = nlohmann::json::parse(stream);
    const auto beside = [&](const std::string& name) {
      return (std::filesystem::path(path).parent_path() / name).string();
    };
    const nlohmann::json& files = json.at("files");
    truth.recordingPath = beside(files.at("recording"));
    truth.cleanPath = beside(files.at("clean"));
    if (files.contains("pulse")) truth.pulsePath = beside(files.at("pulse"));
    truth.microvoltsPerUnit = json.at("microvoltsPerUnit");
    truth.channelNames = json.at("channelNames");
    truth.seconds = json.at("seconds");
    if (json.contains("gradient")) {
      const nlohmann::json& gradient = json.at("gradient");
      truth.nrOfSlicesPerVolume = gradient.at("nrOfSlicesPerVolume");
      truth.volumeDuration = gradient.at("volumeDuration");
      truth.sliceDuration = gradient.at("sliceDuration");
      truth.scans = scansIn(gradient);
    }
    if (truth.hasHeart()) truth.beatTimes = json.at("heart").at("allBeatTimes").get<std::vector<double>>();
  } catch (const nlohmann::json::exception& error) {
    throw UnreadableFile(path + " is not the truth of a simulated recording: " + error.what());
  }
  return truth;
}

} // namespace emeg
