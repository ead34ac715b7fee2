#include "tests/run/frozen/RunTables.h"

#include <cstring>
#include <limits>

namespace emeg::test {

namespace {

using Files = std::map<std::string, std::string>;

constexpr size_t headerSize = 32;
constexpr int32_t float32 = 1, float64 = 2, int16 = 3;
constexpr int32_t channelAfterChannel = 1, multiplexed = 2;

SimulationParameters recording() {
  return simulated(Preset::Gap, 2000, 31, 3, 25);
}

FrozenRun run(const std::string& name, const nlohmann::json& answers) {
  FrozenRun made;
  made.name = name;
  made.simulated = recording();
  made.answers = answers;
  return made;
}

FrozenRun stored(const std::string& name, int32_t dataType, int32_t dataOrganisation,
                 double microvoltsPerUnit) {
  FrozenRun made = run(name, withDescription({1, "yes", "default"}));
  made.storage = {dataType, dataOrganisation, microvoltsPerUnit};
  return made;
}

template <typename Value>
void put(std::string& bytes, size_t offset, Value value) {
  std::memcpy(bytes.data() + offset, &value, sizeof value);
}

/// Samples that are no finite numbers, or larger than any voltage.
void breakSamples(Files& files) {
  std::string& bytes = files["run.ctc"];
  put(bytes, headerSize + 4 * 1000, std::numeric_limits<float>::quiet_NaN());
  put(bytes, headerSize + 4 * 2001, std::numeric_limits<float>::infinity());
  put(bytes, headerSize + 4 * 70000, 1e30f);
}

void addTriggersOfAnEarlierRun(Files& files) {
  files["run_ArtifactsTriggers.prt"] =
      "\r\nFileVersion:        2\r\n\r\nResolutionOfTime:   usec\r\n\r\nNrOfConditions:     2"
      "\r\n\r\nHeartPulseTriggers\r\n2\r\n100000 100000\r\n900000 900000\r\nColor: 255 64 64"
      "\r\n\r\nMRGradientTriggers\r\n3\r\n1000 1000\r\n2000 2000\r\n3000 3000";
}

void useMilliseconds(Files& files) {
  files["run.prt"] = "\r\nFileVersion:        2\r\n\r\nResolutionOfTime:   msec\r\n\r\nNrOfConditions:     3"
                     "\r\n\r\nRest\r\n2\r\n0 500\r\n1000 1500\r\nColor: 1 2 3"
                     "\r\n\r\nCode 12\r\n1\r\n700 24999\r\n\r\nA long name of many words\r\n1\r\n20000 90000";
}

void useVolumes(Files& files) {
  useMilliseconds(files);
  std::string& text = files["run.prt"];
  text.replace(text.find("msec"), 4, "Volumes");
}

void keepOnlyFewSamples(Files& files) {
  std::string& bytes = files["run.ctc"];
  bytes.resize(headerSize + 3 * 700 * sizeof(float));
  put(bytes, 20, int32_t{700});
}

} // namespace

std::vector<FrozenRun> inputFileRuns() {
  std::vector<FrozenRun> runs = {
      stored("Int16Multiplexed", int16, multiplexed, 0.5),
      stored("Int16ChannelAfterChannel", int16, channelAfterChannel, 0.5),
      stored("Float64Multiplexed", float64, multiplexed, 1),
      stored("Float64ChannelAfterChannel", float64, channelAfterChannel, 1),
      stored("Float32ChannelAfterChannel", float32, channelAfterChannel, 1),
      run("RecordingAlone", withoutDescription({1, "no", "default"})),
  };
  const auto changed = [&](const char* name, void (*change)(Files&), const nlohmann::json& answers) {
    runs.push_back(run(name, answers));
    runs.back().change = change;
  };
  nlohmann::json withProtocol = withoutDescription({1, "yes", "default"});
  withProtocol["files"]["*.prt"] = "eeg/run.prt";
  runs.push_back(run("RecordingWithProtocol", withProtocol));
  changed("TriggersOfAnEarlierRun", addTriggersOfAnEarlierRun, withDescription({1, "yes", "default"}));
  changed("ProtocolInMilliseconds", useMilliseconds, withDescription({1, "yes", "default"}));
  changed("ProtocolInVolumes", useVolumes, withProtocol);
  changed("BrokenSamples", breakSamples, withDescription({1, "yes", "default"}));
  changed("BrokenSamplesWithHeart", breakSamples, withDescription({2, "yes", "default"}));
  changed("FewSamples", keepOnlyFewSamples, withoutDescription({1, "yes", "default"}));
  changed("FewSamplesWithHeart", keepOnlyFewSamples, withoutDescription({2, "no", "default"}));
  changed(
      "OutputOfAnEarlierRun", [](Files& files) { files["run_GRA.ctc"] = "an earlier result"; },
      withDescription({1, "yes", "default"}));
  return runs;
}

} // namespace emeg::test
