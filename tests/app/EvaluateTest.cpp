#include "app/evaluation/DetectedSequence.h"
#include "app/evaluation/EvaluatedRecording.h"
#include "app/evaluation/Residual.h"
#include "tests/app/SimulatedFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

namespace emeg {

namespace {

using testing::HasSubstr;

void simulate(const TestFolder& folder, const std::string& preset,
              const std::vector<std::string>& more = {}) {
  std::vector<std::string> arguments = {"simulate",  preset, folder / "r.ctc", "--fs", "2000",
                                        "--seconds", "14",   "--channels",     "2"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  ASSERT_EQ(runEmeg(arguments).status, 0);
}

ProgramRun evaluate(const TestFolder& folder, const std::string& corrected) {
  return runEmeg({"evaluate", folder / corrected, "--truth", folder / "r_truth.json"});
}

} // namespace

TEST(Evaluate, FindsTheWholeArtifactInTheUncorrectedRecording) {
  const TestFolder folder;
  ASSERT_NO_FATAL_FAILURE(simulate(folder, "gap"));
  const auto residuals = measureResiduals(folder / "r.ctc", readSimulatedTruth(folder / "r_truth.json"));
  ASSERT_EQ(residuals.size(), 2u);
  const nlohmann::json truth = readTruth(folder / "r_truth.json");
  for (size_t c = 0; c < 2; ++c) {
    const double artifact = truth.at("gradient").at("rmsUv").at(c);
    EXPECT_NEAR(residuals[c].artifactUv, artifact, 0.01 * artifact);
    EXPECT_NEAR(residuals[c].decibels(), 0, 1e-9);
    EXPECT_EQ(residuals[c].outsideUv, 0);
  }
}

TEST(Evaluate, FindsNothingLeftInTheCleanRecording) {
  const TestFolder folder;
  ASSERT_NO_FATAL_FAILURE(simulate(folder, "gap"));
  for (const ChannelResidual& channel :
       measureResiduals(folder / "r_clean.ctc", readSimulatedTruth(folder / "r_truth.json"))) {
    EXPECT_EQ(channel.residualUv, 0);
    EXPECT_TRUE(std::isinf(channel.decibels()));
  }
}

// Integers and channel-after-channel storage: the artifact is the same to half a unit.
TEST(Evaluate, ReadsEveryTypeAndOrganisation) {
  const TestFolder floats;
  ASSERT_NO_FATAL_FAILURE(simulate(floats, "gap"));
  const double artifact =
      measureResiduals(floats / "r.ctc", readSimulatedTruth(floats / "r_truth.json"))[0].artifactUv;
  for (const char* type : {"1", "2", "3"}) {
    for (const char* organisation : {"1", "2"}) {
      const TestFolder folder;
      std::vector<std::string> options = {"--type", type, "--organisation", organisation};
      if (std::string(type) == "3") options.insert(options.end(), {"--uv-per-unit", "0.5"});
      ASSERT_NO_FATAL_FAILURE(simulate(folder, "gap", options));
      const auto truth = readSimulatedTruth(folder / "r_truth.json");
      EXPECT_NEAR(measureResiduals(folder / "r.ctc", truth)[0].artifactUv, artifact, 0.01)
          << type << organisation;
    }
  }
}

TEST(Evaluate, CountsTheHeartBeatArtifactAsClean) {
  const TestFolder folder;
  ASSERT_NO_FATAL_FAILURE(simulate(folder, "both"));
  const SimulatedTruth truth = readSimulatedTruth(folder / "r_truth.json");
  EXPECT_FALSE(truth.pulsePath.empty());
  const nlohmann::json json = readTruth(folder / "r_truth.json");
  const double artifact = json.at("gradient").at("rmsUv").at(0);
  EXPECT_NEAR(measureResiduals(folder / "r.ctc", truth)[0].artifactUv, artifact, 0.01 * artifact);
}

TEST(Evaluate, PrintsATableThatEndsWithTheRangeOfTheResidual) {
  const TestFolder folder;
  ASSERT_NO_FATAL_FAILURE(simulate(folder, "gap"));
  const ProgramRun run = evaluate(folder, "r.ctc");
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("slices per volume"));
  EXPECT_THAT(run.out, HasSubstr("The residual lies 0.0 to 0.0 dB below the gradient artifact."));
}

TEST(Evaluate, NamesTheFileThatItCannotUse) {
  const TestFolder folder;
  ASSERT_NO_FATAL_FAILURE(simulate(folder, "gap"));
  const auto complaint = [&](const std::string& corrected) {
    const ProgramRun run = evaluate(folder, corrected);
    EXPECT_EQ(run.status, 1);
    return run.err;
  };
  EXPECT_THAT(complaint("missing.ctc"), HasSubstr("missing.ctc"));
  EXPECT_THAT(complaint("r.prt"), HasSubstr("r.prt"));

  const std::string bytes = bytesOf(folder / "r.ctc");
  std::ofstream(folder / "short.ctc", std::ios::binary) << bytes.substr(0, bytes.size() - 1);
  EXPECT_THAT(complaint("short.ctc"), HasSubstr("shorter than its header says"));

  ASSERT_EQ(
      runEmeg({"simulate", "gap", folder / "other.ctc", "--fs", "2000", "--seconds", "13", "--channels", "2"})
          .status,
      0);
  EXPECT_THAT(complaint("other.ctc"), HasSubstr("differ in channels, time points or sampling frequency"));
}

TEST(Evaluate, LeavesChannelsWithoutArtifactOutOfTheRange) {
  const TestFolder folder;
  ASSERT_NO_FATAL_FAILURE(simulate(folder, "gap", {"--dead-channel", "1"}));
  EXPECT_TRUE(std::isnan(
      measureResiduals(folder / "r.ctc", readSimulatedTruth(folder / "r_truth.json"))[1].decibels()));
  EXPECT_THAT(evaluate(folder, "r.ctc").out, HasSubstr("The residual lies 0.0 to 0.0 dB below"));

  const TestFolder silent;
  ASSERT_NO_FATAL_FAILURE(simulate(silent, "gap", {"--dead-channel", "0", "--dead-channel", "1"}));
  EXPECT_THAT(evaluate(silent, "r.ctc").out, HasSubstr("No channel has a gradient artifact."));
}

TEST(Evaluate, RefusesATruthThatIsNone) {
  const TestFolder folder;
  ASSERT_NO_FATAL_FAILURE(simulate(folder, "bcg"));
  std::ofstream(folder / "r_truth.json") << "[]";
  EXPECT_THAT(evaluate(folder, "r.ctc").err, HasSubstr("is not the truth of a simulated recording"));
}

TEST(DetectedSequence, IsReadFromTheLogLinesOfATranscript) {
  const TestFolder folder;
  const auto line = [](const std::string& text) {
    return nlohmann::json{{"call", "lmLogText"}, {"text", "// EMEG artifacts > " + text}}.dump() + "\n";
  };
  std::ofstream(folder / "calls.jsonl")
      << line("Number of volumes: 62") << line("Number of slices per volume: 20")
      << line("Volume duration (s): 1.80033710000000") << line("Slice duration (s): 0.07501420000000")
      << line("First trigger time (s): 3.006547") << "{\"call\":\"execute\",\"answer\":true}\n";
  const auto found = readDetectedSequence(folder / "calls.jsonl");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->nrOfVolumes, 62);
  EXPECT_EQ(found->nrOfSlicesPerVolume, 20);
  EXPECT_EQ(found->volumeDuration, 1.8003371);
  EXPECT_EQ(found->sliceDuration, 0.0750142);
  EXPECT_EQ(found->firstTriggerTime, 3.006547);

  std::ofstream(folder / "none.jsonl") << line("Number of volumes: 0");
  EXPECT_FALSE(readDetectedSequence(folder / "none.jsonl"));
  std::ofstream(folder / "bad.jsonl") << "no json\n";
  EXPECT_THROW(readDetectedSequence(folder / "bad.jsonl"), UnreadableFile);
  EXPECT_THROW(readDetectedSequence(folder / "missing.jsonl"), UnreadableFile);
}

} // namespace emeg
