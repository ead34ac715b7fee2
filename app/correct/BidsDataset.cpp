#include "app/correct/BidsDataset.h"

#include "app/correct/TabSeparated.h"
#include "files/exchange/FileExtension.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fmt/format.h>
#include <map>

namespace emeg {

namespace {

namespace fs = std::filesystem;

constexpr const char* eegSuffix = "_eeg";
constexpr const char* descriptionKey = "_desc-";

bool endsWith(const std::string& text, const std::string& ending) {
  return text.size() >= ending.size() &&
         text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

/// The converter's suffix as a value of an entity, which may hold letters and digits alone.
std::string lettersAndDigits(const std::string& text) {
  std::string kept;
  std::copy_if(text.begin(), text.end(), std::back_inserter(kept),
               [](unsigned char letter) { return std::isalnum(letter) != 0; });
  return kept;
}

std::string rootOf(const fs::path& recording) {
  for (fs::path folder = recording.parent_path();; folder = folder.parent_path()) {
    if (fs::exists(folder / "dataset_description.json")) return folder.string();
    if (folder == folder.parent_path()) return {};
  }
}

std::string upperCase(std::string text) {
  for (char& letter : text) letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
  return text;
}

ChannelKind kindOfBidsType(const std::string& type) {
  static const std::map<std::string, ChannelKind> kinds = {
      {"EEG", ChannelKind::Eeg},     {"ECG", ChannelKind::Ecg},  {"EOG", ChannelKind::Eog},
      {"VEOG", ChannelKind::Eog},    {"HEOG", ChannelKind::Eog}, {"EMG", ChannelKind::Emg},
      {"TRIG", ChannelKind::Trigger}};
  const auto found = kinds.find(upperCase(type));
  return found == kinds.end() ? ChannelKind::Other : found->second;
}

} // namespace

std::string BidsPlace::entity(const std::string& key) const {
  const std::string text = "_" + entities + "_";
  const std::string start = "_" + key + "-";
  const size_t at = text.find(start);
  if (at == std::string::npos) return {};
  const size_t from = at + start.size();
  return text.substr(from, text.find('_', from) - from);
}

BidsPlace bidsPlaceOf(const std::string& input, const std::string& suffix) {
  std::error_code error;
  const fs::path path = fs::absolute(input, error).lexically_normal();
  const std::string stem = path.stem().string();
  BidsPlace place;
  place.root = rootOf(path);
  if (place.root.empty() || !endsWith(stem, eegSuffix) || stem.rfind("sub-", 0) != 0)
    throw UnusableInput(
        fmt::format("--bids: \"{}\" is no EEG recording of a BIDS dataset: its name should be "
                    "sub-LABEL_..._eeg{}, and a folder above it should hold "
                    "dataset_description.json.",
                    input, extensionOf(input)));
  place.entities = stem.substr(0, stem.size() - std::string(eegSuffix).size());
  place.relativeFolder = path.parent_path().lexically_relative(place.root).string();

  const std::string done = lettersAndDigits(suffix);
  const bool isDerivative = place.entities.find(descriptionKey) != std::string::npos;
  place.derivativeRoot = isDerivative ? place.root : place.root + "/derivatives/emeg";
  place.derivativeFolder = place.derivativeRoot + "/" + place.relativeFolder;
  place.derivativeStem =
      place.derivativeFolder + "/" + place.entities + (isDerivative ? "" : descriptionKey) + done;
  return place;
}

void applyBidsChannels(const BidsPlace& place, RecordingHeader& header) {
  const std::string path = place.sourceFile("_channels.tsv");
  if (!fs::exists(path)) return;
  const TabSeparated table = readTabSeparated(path);
  for (const auto& row : table.rows) {
    const std::string name = table.value(row, "name");
    const auto channel = std::find_if(header.channels.begin(), header.channels.end(),
                                      [&name](const RecordingChannel& c) { return c.name == name; });
    if (channel == header.channels.end()) continue;
    channel->type = table.value(row, "type");
    channel->kind = kindOfBidsType(channel->type);
    channel->kindRule = fmt::format("type \"{}\" in channels.tsv", channel->type);
    channel->good = table.value(row, "status") != "bad";
  }
}

} // namespace emeg
