#include "app/correct/OutputPlace.h"

#include "app/correct/BidsFiles.h"
#include "files/exchange/FileExtension.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fmt/format.h>
#include <vector>

namespace emeg {

namespace {

namespace fs = std::filesystem;

constexpr std::array<const char*, 4> writtenExtensions = {".ctc", ".vhdr", ".edf", ".bdf"};

bool isWritten(const std::string& extension) {
  return std::find(writtenExtensions.begin(), writtenExtensions.end(), extension) != writtenExtensions.end();
}

std::string outputExtensionFor(const std::string& input) {
  return isWritten(extensionOf(input)) ? input.substr(withoutExtension(input).size()) : ".vhdr";
}

/// What a format's files beside the one that the user names end with.
std::vector<std::string> endingsBeside(const std::string& extension) {
  if (extension == ".vhdr") return {".eeg", ".vmrk"};
  if (extension == ".ctc") return {".ccd", ".prt", "_ArtifactsTriggers.prt"};
  return {};
}

void checkIsFree(const std::string& path) {
  std::error_code ignored;
  if (fs::exists(fs::symlink_status(path, ignored)))
    throw UnusableInput(
        fmt::format("\"{}\" exists already; choose another name with --output, or replace it with "
                    "--force.",
                    path));
}

} // namespace

std::string folderOf(const std::string& path) {
  const std::string folder = fs::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

OutputPlace outputPlaceOf(const CorrectParameters& parameters, const CorrectionPlan& plan) {
  OutputPlace place;
  const std::string extension = outputExtensionFor(parameters.input);
  if (parameters.bids) {
    place.bids = bidsPlaceOf(parameters.input, plan.suffix);
    // The format is none of those that BIDS takes.
    place.recording = place.bids->derivativeStem + "_eeg" + (extension == ".ctc" ? ".vhdr" : extension);
  } else {
    place.recording = parameters.output.empty() ? withoutExtension(parameters.input) + plan.suffix + extension
                                                : parameters.output;
  }
  if (!isWritten(extensionOf(place.recording)))
    throw UnusableInput(refusalOfOutputExtension(place.recording));
  std::error_code ignored;
  if (fs::equivalent(place.recording, parameters.input, ignored))
    throw UnusableInput(fmt::format("the output \"{}\" is the input; choose another name.", place.recording));
  place.sidecar = withoutExtension(place.recording) + ".json";
  return place;
}

void checkPlaceIsFree(const OutputPlace& place, bool force) {
  const std::string folder = folderOf(place.recording);
  std::error_code error;
  if (place.bids) fs::create_directories(folder, error);
  if (!fs::is_directory(folder))
    throw UnusableInput(fmt::format("there is no folder \"{}\" for the output; make it first.", folder));
  if (force) return;
  checkIsFree(place.recording);
  checkIsFree(place.sidecar);
  if (place.bids)
    for (const std::string& companion : companionPaths(*place.bids)) checkIsFree(companion);
  for (const std::string& ending : endingsBeside(extensionOf(place.recording)))
    checkIsFree(withoutExtension(place.recording) + ending);
}

} // namespace emeg
