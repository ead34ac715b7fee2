#include "app/simulation/Electrodes.h"
#include "app/simulation/Simulation.h"
#include "files/formats/CcdFile.h"
#include "files/formats/ProtocolFile.h"
#include "tests/app/SimulatedFiles.h"

#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace emeg {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Options of a recording that is quick to make.
std::vector<std::string> simulate(const std::string& preset, const std::string& path,
                                  const std::vector<std::string>& more = {}) {
  std::vector<std::string> arguments = {"simulate", preset, path,         "--seconds", "12",
                                        "--fs",     "2000", "--channels", "2"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

TEST(RecordingFiles, TheSameSeedGivesTheSameBytes) {
  const TestFolder a;
  const TestFolder b;
  ASSERT_EQ(runEmeg(simulate("both", a / "r.ctc", {"--seed", "5"})).status, 0);
  ASSERT_EQ(runEmeg(simulate("both", b / "r.ctc", {"--seed", "5"})).status, 0);
  ASSERT_THAT(a.names(),
              ElementsAre("r.ccd", "r.ctc", "r.prt", "r_clean.ctc", "r_pulse.ctc", "r_truth.json"));
  ASSERT_EQ(a.names(), b.names());
  for (const std::string& name : a.names()) EXPECT_EQ(bytesOf(a / name), bytesOf(b / name)) << name;
}

TEST(RecordingFiles, AnotherSeedGivesOtherSamples) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg(simulate("both", folder / "a.ctc", {"--seed", "5"})).status, 0);
  ASSERT_EQ(runEmeg(simulate("both", folder / "b.ctc", {"--seed", "6"})).status, 0);
  EXPECT_NE(bytesOf(folder / "a.ctc"), bytesOf(folder / "b.ctc"));
  EXPECT_NE(bytesOf(folder / "a_clean.ctc"), bytesOf(folder / "b_clean.ctc"));
  EXPECT_NE(bytesOf(folder / "a_pulse.ctc"), bytesOf(folder / "b_pulse.ctc"));
}

TEST(RecordingFiles, EveryTypeAndOrganisationHoldsTheSameRecording) {
  SimulationParameters parameters = presetParameters(Preset::Both, 2000);
  parameters.nrOfChannels = 2;
  parameters.seconds = 12;
  Simulation simulation(parameters);
  SimulatedBlock block;
  ASSERT_TRUE(simulation.next(parameters.nrOfTimePoints(), block));

  const TestFolder folder;
  for (const int type : {1, 2, 3}) {
    for (const int organisation : {1, 2}) {
      const std::string path = folder / (std::to_string(type) + std::to_string(organisation) + ".ctc");
      ASSERT_EQ(
          runEmeg(simulate("both", path,
                           {"--type", std::to_string(type), "--organisation", std::to_string(organisation)}))
              .status,
          0);
      const ReadRecording read = readRecording(path);
      EXPECT_EQ(read.header.dataType, type);
      EXPECT_EQ(read.header.dataOrganisation, organisation);
      EXPECT_EQ(read.header.nrOfChannels, 2);
      ASSERT_EQ(read.header.nrOfTimePoints, 24000);
      EXPECT_EQ(read.header.samplingFrequency, 2000);
      for (int c = 0; c < 2; c++) {
        for (int64_t t = 0; t < 24000; t++) {
          double expected = block.recorded(c, t);
          if (type == 1) expected = static_cast<double>(static_cast<float>(expected));
          if (type == 3) expected = std::round(expected);
          ASSERT_EQ(read.at(c, t), expected);
        }
      }
    }
  }
}

TEST(RecordingFiles, LargeValuesOfIntegersAreClippedNotWrapped) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg(simulate("gap", folder / "i.ctc", {"--type", "3", "--uv-per-unit", "0.04"})).status, 0);
  ASSERT_EQ(runEmeg(simulate("gap", folder / "f.ctc")).status, 0);
  const ReadRecording integers = readRecording(folder / "i.ctc");
  const ReadRecording floats = readRecording(folder / "f.ctc");
  int clipped = 0;
  for (size_t i = 0; i < floats.samples.size(); i++) {
    const double expected = std::clamp(floats.samples[i] / 0.04, -32768.0, 32767.0);
    ASSERT_NEAR(integers.samples[i], expected, 0.51);
    if (integers.samples[i] == 32767 || integers.samples[i] == -32768) clipped++;
  }
  EXPECT_GT(clipped, 100);
}

TEST(RecordingFiles, RecordingOfIntegersStatesItsUnit) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg(simulate("bcg", folder / "i.ctc", {"--type", "3", "--uv-per-unit", "0.5"})).status, 0);
  const nlohmann::json truth = readTruth(folder / "i_truth.json");
  EXPECT_EQ(truth["microvoltsPerUnit"], 0.5);
  EXPECT_EQ(truth["dataType"], 3);
  const ReadRecording recording = readRecording(folder / "i.ctc");
  const ReadRecording clean = readRecording(folder / "i_clean.ctc");
  const ReadRecording pulse = readRecording(folder / "i_pulse.ctc");
  for (size_t i = 0; i < clean.samples.size(); i++)
    ASSERT_NEAR(recording.samples[i] * 0.5, clean.samples[i] + pulse.samples[i], 0.2501);
}

TEST(RecordingFiles, TheTruthTellsOfHardCasesWhereThereAreAny) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg(simulate("both", folder / "r.ctc",
                             {"--ectopic", "30", "--weak", "2,8,0.3", "--movement", "300", "--movement-count",
                              "3", "--dead-channel", "1", "--dead-channel", "1"}))
                .status,
            0);
  const nlohmann::json truth = readTruth(folder / "r_truth.json");
  const nlohmann::json& heart = truth.at("heart");
  EXPECT_EQ(heart.at("ectopicShare"), 0.3);
  EXPECT_FALSE(heart.at("ectopicBeatTimes").empty());
  for (const nlohmann::json& time : heart.at("ectopicBeatTimes"))
    EXPECT_THAT(heart.at("beatTimes"), testing::Contains(time));
  EXPECT_EQ(heart.at("weak"), (nlohmann::json{{"start", 2.0}, {"duration", 8.0}, {"factor", 0.3}}));
  EXPECT_EQ(heart.at("channelPeaksUv").at(1), 0);
  EXPECT_EQ(truth.at("movement").at("peakUv"), 300);
  EXPECT_EQ(truth.at("movement").at("bursts").size(), 3u);
  EXPECT_EQ(truth.at("movement").at("channelPeaksUv").size(), 2u);
  EXPECT_EQ(truth.at("deadChannels"), (nlohmann::json{1, 1}));
  EXPECT_EQ(truth.at("gradient").at("gains").at(1), 0);
  const ReadRecording recording = readRecording(folder / "r.ctc");
  for (int64_t t = 0; t < recording.header.nrOfTimePoints; t++) ASSERT_EQ(recording.at(1, t), 0);

  ASSERT_EQ(runEmeg(simulate("both", folder / "r.ctc", {"--force"})).status, 0);
  const nlohmann::json plain = readTruth(folder / "r_truth.json");
  EXPECT_FALSE(plain.contains("movement"));
  EXPECT_FALSE(plain.contains("deadChannels"));
  EXPECT_FALSE(plain.at("heart").contains("weak"));
  EXPECT_FALSE(plain.at("heart").contains("ectopicShare"));
}

TEST(RecordingFiles, TheTruthHoldsTheBeatsAroundTheRecordingToo) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg(simulate("bcg", folder / "r.ctc")).status, 0);
  const nlohmann::json heart = readTruth(folder / "r_truth.json").at("heart");
  const std::vector<double> all = heart.at("allBeatTimes");
  EXPECT_LT(all.front(), -1);
  EXPECT_GE(all.back(), 12);
  std::vector<double> inside;
  for (const double time : all)
    if (time >= 0 && time < 12) inside.push_back(time);
  EXPECT_EQ(heart.at("beatTimes").get<std::vector<double>>(), inside);
}

TEST(RecordingFiles, TheTruthAgreesWithTheData) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg(simulate("both", folder / "r.ctc", {"--type", "2", "--seed", "9"})).status, 0);
  const nlohmann::json truth = readTruth(folder / "r_truth.json");
  EXPECT_EQ(truth["preset"], "both");
  EXPECT_EQ(truth["seed"], 9);
  EXPECT_EQ(truth["samplingFrequency"], 2000);
  EXPECT_EQ(truth["nrOfChannels"], 2);
  EXPECT_EQ(truth["nrOfTimePoints"], 24000);
  EXPECT_EQ(truth["files"]["clean"], "r_clean.ctc");
  EXPECT_EQ(truth["files"]["pulse"], "r_pulse.ctc");

  const ReadRecording recording = readRecording(folder / "r.ctc");
  const ReadRecording clean = readRecording(folder / "r_clean.ctc");
  const ReadRecording pulse = readRecording(folder / "r_pulse.ctc");
  EXPECT_EQ(clean.header.dataType, 1);
  EXPECT_EQ(clean.header.dataOrganisation, 2);
  const nlohmann::json& gradient = truth["gradient"];
  const double scanStart = gradient["firstVolumeOnset"];
  const double scanEnd = gradient["endOfScan"];
  EXPECT_NEAR(scanEnd - scanStart,
              gradient["nrOfVolumes"].get<double>() * gradient["volumeDuration"].get<double>(), 1e-9);
  EXPECT_EQ(gradient["driftFactorAtVolumes"].size(), gradient["nrOfVolumes"].get<size_t>());

  for (int c = 0; c < 2; c++) {
    double cleanSquares = 0;
    double pulseSquares = 0;
    double gradientSquares = 0;
    double peak = 0;
    int64_t inScan = 0;
    for (int64_t t = 0; t < 24000; t++) {
      const double artifact = recording.at(c, t) - clean.at(c, t) - pulse.at(c, t);
      const double time = static_cast<double>(t) / 2000;
      cleanSquares += clean.at(c, t) * clean.at(c, t);
      pulseSquares += pulse.at(c, t) * pulse.at(c, t);
      peak = std::max(peak, std::abs(artifact));
      if (time < scanStart || time >= scanEnd) {
        ASSERT_NEAR(artifact, 0, 1e-4);
        continue;
      }
      gradientSquares += artifact * artifact;
      inScan++;
    }
    const auto channel = static_cast<size_t>(c);
    EXPECT_NEAR(std::sqrt(cleanSquares / 24000), truth["eeg"]["cleanRmsUv"][channel].get<double>(), 1e-4);
    EXPECT_NEAR(std::sqrt(pulseSquares / 24000), truth["heart"]["rmsUv"][channel].get<double>(), 1e-4);
    const double rms = gradient["rmsUv"][channel];
    EXPECT_NEAR(std::sqrt(gradientSquares / static_cast<double>(inScan)), rms, 1e-4);
    EXPECT_GT(rms, 250);
    EXPECT_NEAR(peak, 2500 * std::abs(gradient["gains"][channel].get<double>()), 0.25 * peak);
  }

  const std::vector<double> beats = truth["heart"]["beatTimes"];
  EXPECT_NEAR(static_cast<double>(beats.size()), 13, 2);
  for (const double beat : beats) {
    EXPECT_GE(beat, 0);
    EXPECT_LT(beat, 12);
  }
  const std::vector<double> onsets = truth["heart"]["pulseOnsets"];
  ASSERT_GE(onsets.size(), beats.size() - 1);
  EXPECT_NEAR(onsets.back() - 0.2, beats[beats.size() - (onsets.back() - 0.2 == beats.back() ? 1 : 2)], 0.9);
}

TEST(RecordingFiles, ChannelDescriptionNamesChannelsAndFiles) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg(simulate("gap", folder / "r.ctc")).status, 0);
  ChannelDescription description;
  ASSERT_EQ(readCcdFile(folder / "r.ccd", description), CcdReadResult::Ok);
  EXPECT_EQ(description.header.ctcFileName(), "r.ctc");
  EXPECT_EQ(description.header.prtFileName(), "r.prt");
  EXPECT_EQ(description.header.nrOfChannels(), 2);
  EXPECT_EQ(description.header.nrOfSelectedChannels(), 2);
  EXPECT_EQ(description.header.nrOfTimePoints(), 24000);
  EXPECT_EQ(description.header.samplingFrequency(), 2000);
  EXPECT_FALSE(description.header.flag(CcdHeader::Flag::GradientCorrected));
  ASSERT_EQ(description.channelRecords.size(), 2u);
  for (int c = 0; c < 2; c++) {
    const CcdChannelRecord& record = description.channelRecords[static_cast<size_t>(c)];
    EXPECT_EQ(record.name(), electrodeName(c));
    EXPECT_TRUE(record.good());
    EXPECT_EQ(record.samplingFrequency(), 2000);
  }
}

TEST(RecordingFiles, ProtocolHoldsTwoConditionsInsideTheRecording) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg(simulate("gap", folder / "r.ctc")).status, 0);
  const std::optional<Protocol> protocol = loadProtocol(folder / "r", "");
  ASSERT_TRUE(protocol);
  ASSERT_EQ(protocol->nrOfConditions(), 3);
  EXPECT_EQ(protocol->resolutionOfTime, TimeResolution::Usec);
  EXPECT_EQ(protocol->conditions[1].conditionName, "Rest");
  EXPECT_EQ(protocol->conditions[2].conditionName, "Task");
  for (size_t c = 1; c < 3; c++) {
    const Condition& condition = protocol->conditions[c];
    ASSERT_EQ(condition.nrOfIntervals(), 3);
    for (size_t i = 0; i < 3; i++) {
      EXPECT_LT(condition.onsets[i], condition.offsets[i]);
      EXPECT_LE(condition.offsets[i], 12e6);
    }
  }
}

TEST(RecordingFiles, SwitchesLeaveFilesOut) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg(simulate("both", folder / "r.ctc", {"--no-ccd", "--no-prt", "--no-truth"})).status, 0);
  EXPECT_THAT(folder.names(), ElementsAre("r.ctc"));
  ASSERT_EQ(runEmeg(simulate("gap", folder / "s.ctc", {"--no-prt", "--no-truth"})).status, 0);
  ChannelDescription description;
  ASSERT_EQ(readCcdFile(folder / "s.ccd", description), CcdReadResult::Ok);
  EXPECT_EQ(description.header.prtFileName(), "");
}

TEST(RecordingFiles, ExistingFilesAreNotReplacedUnlessForced) {
  for (const char* const name : {"r.ctc", "r.ccd", "r.prt", "r_clean.ctc", "r_pulse.ctc", "r_truth.json"}) {
    const TestFolder folder;
    std::ofstream(folder / name) << "precious";
    const ProgramRun refused = runEmeg(simulate("both", folder / "r.ctc"));
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr(name));
    EXPECT_THAT(refused.err, HasSubstr("--force"));
    EXPECT_EQ(bytesOf(folder / name), "precious");
    EXPECT_THAT(folder.names(), ElementsAre(name));
    EXPECT_EQ(runEmeg(simulate("both", folder / "r.ctc", {"--force"})).status, 0);
    EXPECT_NE(bytesOf(folder / name), "precious");
  }
}

TEST(RecordingFiles, AFolderThatIsMissingIsReported) {
  const TestFolder folder;
  const ProgramRun run = runEmeg(simulate("gap", folder / "missing/r.ctc"));
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("No such file or directory"));
  EXPECT_THAT(folder.names(), ElementsAre());
}

TEST(RecordingFiles, AFolderOfAFilesNameIsReportedAndNothingIsLeftBehind) {
  const TestFolder folder;
  std::filesystem::create_directory(folder / "r.prt");
  const ProgramRun run = runEmeg(simulate("gap", folder / "r.ctc", {"--force"}));
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("r.prt"));
  EXPECT_THAT(folder.names(), ElementsAre("r.prt"));
}

TEST(RecordingFiles, AFullDiskIsReportedAndNothingIsLeftBehind) {
  const TestFolder folder;
  for (const char* const organisation : {"1", "2"}) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      const rlimit limit = {60000, 60000};
      signal(SIGXFSZ, SIG_IGN);
      if (setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(99);
      const ProgramRun run = runEmeg(simulate("gap", folder / "r.ctc", {"--organisation", organisation}));
      _exit(run.status == 1 && run.err.find("Cannot write") != std::string::npos ? 42 : run.status);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 42);
    EXPECT_THAT(folder.names(), ElementsAre());
  }
}

} // namespace

} // namespace emeg
