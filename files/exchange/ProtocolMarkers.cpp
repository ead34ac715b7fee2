#include "files/exchange/ProtocolMarkers.h"

#include "files/exchange/FileExtension.h"
#include "files/formats/ProtocolFile.h"
#include "files/formats/TriggerMarkers.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <set>

namespace emeg {

namespace {

constexpr size_t longestLabel = 127;

bool isDetected(const std::string& description) {
  return description == "MRGradientTriggers" || description == "HeartPulseTriggers";
}

void addMarkersOf(RecordingHeader& header, const Protocol& protocol) {
  const double timeUnitUs = 1 / timeFactorOf(protocol.resolutionOfTime, header.samplingFrequency);
  const double samplesPerUnit = timeUnitUs * header.samplingFrequency / microsecondsPerSecond;
  for (const Condition& condition : protocol.conditions) {
    for (size_t i = 0; i < condition.onsets.size(); ++i) {
      RecordingMarker marker;
      marker.description = condition.conditionName;
      marker.onset = condition.onsets[i] * samplesPerUnit;
      marker.duration = std::max(0.0, condition.offsets[i] - condition.onsets[i]) * samplesPerUnit;
      header.markers.push_back(std::move(marker));
    }
  }
}

void addMarkersOfFile(RecordingHeader& header, const std::string& basePath, const std::string& suffix) {
  const std::string path = basePath + suffix + ".prt";
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return;
  const std::optional<Protocol> protocol = loadProtocol(basePath, suffix);
  if (!protocol) {
    header.warnings.push_back("\"" + path + "\" is no protocol that can be read; its markers are missing.");
    return;
  }
  header.files.push_back(path);
  addMarkersOf(header, *protocol);
}

/// What a protocol file gives back: it is read line by line.
std::string labelOf(const RecordingMarker& marker) {
  std::string label = marker.description.empty() ? marker.type : marker.description;
  label.erase(0, std::min(label.find_first_not_of(' '), label.size()));
  for (char& c : label)
    if (static_cast<unsigned char>(c) <= ' ') c = '_';
  if (label.size() > longestLabel) label.resize(longestLabel);
  return label.empty() ? "Marker" : label;
}

/// "Code 12" is written as "Code12", so it is kept under that name from the start.
std::string labelAsWritten(const RecordingMarker& marker) {
  std::string label = labelOf(marker);
  if (label.starts_with("Code_")) label.erase(4, 1);
  return label;
}

} // namespace

void addProtocolMarkers(RecordingHeader& header, const std::string& ctcPath, const std::string& prtFileName,
                        bool hasDescription) {
  std::string base = withoutExtension(ctcPath);
  if (!prtFileName.empty()) base = withoutExtension(besideFile(ctcPath, fileNameOf(prtFileName)));
  if (!hasDescription || !prtFileName.empty()) addMarkersOfFile(header, base, "");
  addMarkersOfFile(header, base, triggerProtocolName);
  std::stable_sort(header.markers.begin(), header.markers.end(),
                   [](const RecordingMarker& a, const RecordingMarker& b) { return a.onset < b.onset; });
}

MarkerProtocols protocolsOf(const RecordingHeader& header) {
  MarkerProtocols protocols;
  protocols.main = Protocol(false, "", TimeResolution::Usec);
  protocols.main.startConditions();
  protocols.detected = makeTriggerProtocol();
  std::set<std::string> changed;
  int64_t nrOfLost = 0;
  const double usPerSample = microsecondsPerSecond / header.samplingFrequency;
  for (const RecordingMarker& marker : header.markers) {
    const std::string label = labelAsWritten(marker);
    if (label != marker.description) changed.insert(marker.description);
    const bool gradient = label == "MRGradientTriggers";
    Protocol& protocol = isDetected(label) ? protocols.detected : protocols.main;
    if (isDetected(label))
      protocol.findOrAddCondition(label, -1, gradient ? 64 : 255, 64, gradient ? 255 : 64);
    else
      protocol.findOrAddCondition(label, -1, -1, -1, -1);
    if (protocol.currentCondition() < 0) ++nrOfLost;
    protocol.addInterval(std::floor(marker.onset * usPerSample + 0.5),
                         std::floor((marker.onset + marker.duration) * usPerSample + 0.5));
  }
  assignMissingColours(protocols.main);
  if (!changed.empty())
    protocols.warnings.push_back("a protocol holds no blanks and at most 127 bytes of a marker's name: " +
                                 std::to_string(changed.size()) +
                                 (changed.size() == 1 ? " name was changed (\"" : " names were changed (\"") +
                                 *changed.begin() + "\"" + (changed.size() == 1 ? ")." : ", ...)."));
  if (nrOfLost > 0)
    protocols.warnings.push_back("a protocol holds at most 255 different names: " + std::to_string(nrOfLost) +
                                 " markers of further names are missing.");
  return protocols;
}

std::string protocolText(const Protocol& protocol, const std::string& ctcPath) {
  return formatProtocol(protocol, ctcPath, timeFactorOf(protocol.resolutionOfTime, 1), {}, {});
}

bool hasIntervals(const Protocol& protocol) {
  return std::any_of(protocol.conditions.begin(), protocol.conditions.end(),
                     [](const Condition& condition) { return condition.nrOfIntervals() > 0; });
}

} // namespace emeg
