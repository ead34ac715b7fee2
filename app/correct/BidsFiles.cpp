#include "app/correct/BidsFiles.h"

#include "app/correct/MarkerTransfer.h"
#include "app/correct/TabSeparated.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <nlohmann/json.hpp>

namespace emeg {

namespace {

using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

constexpr const char* bidsVersion = "1.8.0";

bool wasFound(const RecordingMarker& marker) {
  return marker.description == gradientMarkerName || marker.description == pulseMarkerName ||
         marker.description == unmodelledMarkerName || marker.description == guessedMarkerName;
}

std::string seconds(double samples, double rate) {
  return fmt::format("{:.6f}", samples / rate);
}

void addRow(TabSeparated& events, const RecordingMarker& marker, double rate) {
  std::vector<std::string> row = events.emptyRow();
  row[events.addColumn("onset")] = seconds(marker.onset, rate);
  row[events.addColumn("duration")] = seconds(marker.duration, rate);
  row[events.addColumn("trial_type")] = marker.description;
  row[events.addColumn("sample")] = fmt::format("{}", std::llround(marker.onset));
  events.rows.push_back(std::move(row));
}

double numberIn(const std::string& text) {
  double number = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
  return parsed.ec == std::errc() ? number : std::nan("");
}

/// The dataset's own events at their places in the output; those outside the interval go.
TabSeparated transferredEvents(const std::string& path, const CorrectionPlan& plan, double inputRate,
                               double rate) {
  TabSeparated events = readTabSeparated(path);
  const double start = static_cast<double>(plan.firstTimePoint) / inputRate;
  const double length = static_cast<double>(plan.nrOfTimePoints) / inputRate;
  const size_t onsetColumn = events.addColumn("onset");
  events.addColumn("duration");
  events.addColumn("trial_type");
  const size_t sampleColumn = events.addColumn("sample");
  std::vector<std::vector<std::string>> kept;
  for (std::vector<std::string>& row : events.rows) {
    const double onset = numberIn(row[onsetColumn]) - start;
    if (plan.hasInterval && !(onset >= 0 && onset < length)) continue;
    if (std::isfinite(onset)) {
      row[onsetColumn] = fmt::format("{:.6f}", onset);
      row[sampleColumn] = fmt::format("{}", std::llround(onset * rate));
    }
    kept.push_back(std::move(row));
  }
  events.rows = std::move(kept);
  return events;
}

std::string eventsText(const BidsPlace& place, const CorrectionResult& result,
                       const std::vector<RecordingMarker>& markers, double rate) {
  const std::string source = place.sourceFile("_events.tsv");
  const bool hasOwn = fs::exists(source);
  TabSeparated events;
  events.columns = {"onset", "duration", "trial_type", "sample"};
  if (hasOwn) events = transferredEvents(source, result.plan, result.header.samplingFrequency, rate);
  for (const RecordingMarker& marker : markers)
    if (!hasOwn || wasFound(marker)) addRow(events, marker, rate);
  const size_t onsetColumn = events.addColumn("onset");
  std::stable_sort(events.rows.begin(), events.rows.end(), [onsetColumn](const auto& a, const auto& b) {
    return numberIn(a[onsetColumn]) < numberIn(b[onsetColumn]);
  });
  return events.text();
}

Json jsonOf(const std::string& path) {
  std::ifstream file(path);
  Json json = Json::parse(file, nullptr, false);
  return json.is_object() ? json : Json::object();
}

std::string eventsDescription(const BidsPlace& place) {
  Json description = jsonOf(place.sourceFile("_events.json"));
  Json& trialType = description["trial_type"];
  if (!trialType.contains("Description")) trialType["Description"] = "Name of the event";
  Json& levels = trialType["Levels"];
  levels[gradientMarkerName] =
      "Onset of an MR slice (or of a volume when there are no pauses between volumes), found in "
      "the EEG, from markers or from a given TR";
  levels[pulseMarkerName] = "Heart beat, found in the EEG, or the known one that was used";
  levels[guessedMarkerName] = "Known heart beats are missing here and their places were guessed";
  levels[unmodelledMarkerName] = "No heart beat model here: the heart beat artifact was not removed";
  description["sample"] = {{"Description", "Nearest sample of the corrected recording, the first is 0"}};
  return description.dump(2) + "\n";
}

const char* bidsTypeOf(ChannelKind kind) {
  switch (kind) {
  case ChannelKind::Eeg:
    return "EEG";
  case ChannelKind::Ecg:
    return "ECG";
  case ChannelKind::Eog:
    return "EOG";
  case ChannelKind::Emg:
    return "EMG";
  case ChannelKind::Trigger:
  case ChannelKind::Status:
    return "TRIG";
  case ChannelKind::Other:
    break;
  }
  return "MISC";
}

std::string channelsText(const CorrectionResult& result, double rate) {
  TabSeparated table;
  table.columns = {"name", "type", "units", "sampling_frequency", "status", "description"};
  for (size_t c = 0; c < result.header.channels.size(); ++c) {
    const RecordingChannel& channel = result.header.channels[c];
    table.rows.push_back({channel.name, bidsTypeOf(channel.kind), channel.unit, fmt::format("{:g}", rate),
                          channel.good ? "good" : "bad", treatmentOf(result.plan.channels.roles[c])});
  }
  return table.text();
}

} // namespace

std::vector<std::string> companionPaths(const BidsPlace& place) {
  return {place.derivativeStem + "_events.tsv", place.derivativeStem + "_events.json",
          place.derivativeStem + "_channels.tsv"};
}

std::vector<CompanionFile> companionFiles(const BidsPlace& place, const CorrectionResult& result,
                                          const std::vector<RecordingMarker>& markers, double rate) {
  const std::vector<std::string> paths = companionPaths(place);
  return {{paths[0], eventsText(place, result, markers, rate)},
          {paths[1], eventsDescription(place)},
          {paths[2], channelsText(result, rate)}};
}

std::string bidsSidecar(const BidsPlace& place, const CorrectionResult& result,
                        const CorrectParameters& parameters, const std::string& sidecar) {
  const std::string task = place.entity("task");
  Json json = jsonOf(place.root + "/task-" + task + "_eeg.json");
  json.update(jsonOf(place.sourceFile("_eeg.json")));
  if (!json.contains("TaskName")) json["TaskName"] = task;
  for (const char* field : {"EEGReference", "PowerLineFrequency"})
    if (!json.contains(field)) json[field] = "n/a";
  if (parameters.averageReference) json["EEGReference"] = "average of the EEG channels";
  const double rate = result.plan.outputRate;
  json["SamplingFrequency"] = rate;
  json["RecordingType"] = "continuous";
  json["RecordingDuration"] = static_cast<double>(result.plan.nrOfOutputs) / rate;
  Json filters = json.contains("SoftwareFilters") && json["SoftwareFilters"].is_object()
                     ? json["SoftwareFilters"]
                     : Json::object();
  if (parameters.highPass > 0)
    filters["High-pass (zero phase)"] = {{"half-amplitude cutoff (Hz)", parameters.highPass}};
  if (parameters.lowPass > 0)
    filters["Low-pass (zero phase)"] = {{"half-amplitude cutoff (Hz)", parameters.lowPass}};
  if (result.plan.samplesPerOutput > 1)
    filters["Anti-alias low-pass (zero phase)"] = {{"half-amplitude cutoff (Hz)", rate / 2}};
  filters["emeg correct"] = {{"gradient artifact removed", true},
                             {"heart beat artifact removed", parameters.bcg}};
  json["SoftwareFilters"] = filters;
  json["Sources"] = {"bids::" + place.relativeFolder + "/" + fs::path(parameters.input).filename().string()};
  json["EmegCorrect"] = Json::parse(sidecar);
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string derivativeDescription() {
  const Json json = {{"Name", "EEG without MR gradient and heart beat artifacts"},
                     {"BIDSVersion", bidsVersion},
                     {"DatasetType", "derivative"},
                     {"GeneratedBy", {{{"Name", "emeg correct"}, {"Version", EMEG_VERSION}}}}};
  return json.dump(2) + "\n";
}

} // namespace emeg
