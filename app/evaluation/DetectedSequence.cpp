#include "app/evaluation/DetectedSequence.h"

#include "app/evaluation/EvaluatedRecording.h"

#include <fstream>
#include <nlohmann/json.hpp>

namespace emeg {

namespace {

/// The number behind "label" in a log line.
std::optional<double> numberBehind(const std::string& line, const std::string& label) {
  const size_t at = line.find(label);
  if (at == std::string::npos) return std::nullopt;
  return std::strtod(line.c_str() + at + label.size(), nullptr);
}

} // namespace

std::optional<MRSequence> readDetectedSequence(const std::string& transcriptPath) {
  std::ifstream stream(transcriptPath);
  if (!stream) throw UnreadableFile("cannot open " + transcriptPath);
  MRSequence sequence;
  std::string line;
  try {
    while (std::getline(stream, line)) {
      const nlohmann::json call = nlohmann::json::parse(line);
      if (call.value("call", "") != "lmLogText" || !call.at("text").is_string()) continue;
      const std::string text = call.at("text");
      if (const auto value = numberBehind(text, "Number of volumes: "))
        sequence.nrOfVolumes = static_cast<int>(*value);
      if (const auto value = numberBehind(text, "Number of slices per volume: "))
        sequence.nrOfSlicesPerVolume = static_cast<int>(*value);
      if (const auto value = numberBehind(text, "Volume duration (s): ")) sequence.volumeDuration = *value;
      if (const auto value = numberBehind(text, "Slice duration (s): ")) sequence.sliceDuration = *value;
      if (const auto value = numberBehind(text, "First trigger time (s): "))
        sequence.firstTriggerTime = *value;
      if (const auto value = numberBehind(text, "First trigger time: ")) sequence.firstTriggerTime = *value;
    }
  } catch (const nlohmann::json::exception& error) {
    throw UnreadableFile(transcriptPath + " is not the transcript of a host run: " + error.what());
  }
  if (!(sequence.sliceDuration > 0)) return std::nullopt;
  return sequence;
}

} // namespace emeg
