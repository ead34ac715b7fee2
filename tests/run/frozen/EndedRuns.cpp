#include "tests/run/frozen/RunTables.h"

#include <cstring>

namespace emeg::test {

namespace {

using Files = std::map<std::string, std::string>;

const nlohmann::json complete = {1, "yes", "default"};

/// 240 kB of recording, 7.5 kB in each of the chunk files.
FrozenRun run(const std::string& name, const nlohmann::json& answers,
              std::function<void(Files&)> change = nullptr) {
  FrozenRun made;
  made.name = name;
  made.simulated = simulated(Preset::Gap, 1000, 41, 2, 30);
  made.answers = answers;
  made.change = std::move(change);
  return made;
}

FrozenRun onASmallDisk(const std::string& name, uint64_t largestFile) {
  FrozenRun made = run(name, withDescription(complete));
  made.largestFile = largestFile;
  return made;
}

FrozenRun inHost(const std::string& name, const std::vector<int>& version) {
  FrozenRun made;
  made.name = name;
  made.answers = {{"version", version}};
  return made;
}

template <typename Value>
auto headerWith(size_t offset, Value value) {
  return
      [offset, value](Files& files) { std::memcpy(files["run.ctc"].data() + offset, &value, sizeof value); };
}

auto without(const std::string& name) {
  return [name](Files& files) { files.erase(name); };
}

auto cutTo(const std::string& name, size_t size) {
  return [name, size](Files& files) { files[name].resize(size); };
}

auto folderNamed(const std::string& name) {
  return [name](Files& files) { files[name + "/"] = ""; };
}

/// As long a name as a file can have when the recording is written, too long for its protocol.
FrozenRun longName() {
  const std::string name(240, 'n');
  FrozenRun made = run("ProtocolNameTooLong", {{"files", {{"*.ctc", name + ".ctc"}}}, {"inOrder", complete}});
  made.answers["files"]["*.ctc"] = "eeg/" + name + ".ctc";
  made.change = [name](Files& files) { files = {{name + ".ctc", files["run.ctc"]}}; };
  return made;
}

std::vector<FrozenRun> cancelledRuns() {
  nlohmann::json zeroWindow = withDescription({1, "yes"});
  zeroWindow["parameters"]["integers"]["0"] = 0;
  nlohmann::json protocolOnly;
  protocolOnly["files"]["*.prt"] = "eeg/run.prt";
  return {
      run("CancelledAtTheFiles", nlohmann::json::object()),
      run("CancelledBehindTheProtocol", protocolOnly),
      run("CancelledAtTheCorrection", withDescription({nullptr})),
      run("CorrectionOfZero", withDescription({0})),
      run("CorrectionNotInTheMenu", withDescription({3})),
      run("CancelledAtTheWindow", withDescription({1, "no", nullptr})),
      run("CancelledAtTheWindowWithHeart", withDescription({2, "yes", nullptr})),
      run("WindowOfZero", withDescription({1, "yes", 0})),
      run("WindowOfZeroFromTheDialogue", zeroWindow),
      inHost("HostTooOldForThePlugin", {1, 9, 8}),
      inHost("HostTooOldForTheRun", {2, 0, 9}),
  };
}

std::vector<FrozenRun> failedRuns() {
  const nlohmann::json described = withDescription(complete);
  return {
      run("MissingRecording", described, without("run.ctc")),
      run("MissingDescription", described, without("run.ccd")),
      run("MissingProtocol", described, without("run.prt")),
      run("DescriptionCutShort", described, cutTo("run.ccd", 100)),
      run("HeaderCutShort", described, cutTo("run.ctc", 20)),
      run("RecordingCutToAThird", described, cutTo("run.ctc", 80000)),
      run("RecordingCutALittle", described, cutTo("run.ctc", 239001)),
      run("UnknownSampleType", described, headerWith(8, int32_t{4})),
      run("NoChannels", described, headerWith(16, int16_t{0})),
      run("NoTimePoints", described, headerWith(20, int32_t{0})),
      run("SamplingFrequencyOfZero", described, headerWith(24, 0.0f)),
      run("SamplingFrequencyTooLow", described, headerWith(24, 9.0f)),
      run("FolderInPlaceOfTheRecording", described,
          [](Files& files) {
            files.erase("run.ctc");
            files["run.ctc/"] = "";
          }),
      run("FolderInPlaceOfTheOutput", described, folderNamed("run_GRA.ctc")),
      run("FolderInPlaceOfTheProtocol", described, folderNamed("run_GRA.prt")),
      run("FolderInPlaceOfTheTriggers", described, folderNamed("run_GRA_ArtifactsTriggers.prt")),
      run("FolderInPlaceOfTheDescription", described, folderNamed("run_GRA.ccd")),
      onASmallDisk("DiskFullWithChunkFiles", 7000),
      onASmallDisk("DiskFullWithTheRecording", 200000),
      longName(),
  };
}

} // namespace

std::vector<FrozenRun> endedRuns() {
  std::vector<FrozenRun> runs = cancelledRuns();
  for (FrozenRun& failed : failedRuns()) runs.push_back(std::move(failed));
  return runs;
}

} // namespace emeg::test
