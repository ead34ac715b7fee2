#include "app/evaluation/DetectedSequence.h"
#include "app/evaluation/Residual.h"
#include "app/simulation/SimulatedRecording.h"
#include "tests/TestFolder.h"
#include "tests/run/HostRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace emeg {
namespace {

struct Reference {
  Preset preset;
  double samplingFrequency;
  uint64_t seed;
};

void PrintTo(const Reference& reference, std::ostream* out) {
  *out << nameOf(reference.preset) << " at " << reference.samplingFrequency << " Hz, seed " << reference.seed;
}

/// How far the residual must lie below the artifact.
double demandedDecibels(double samplingFrequency, bool volumeWise) {
  if (samplingFrequency < 4000) return 33;
  return volumeWise ? 39 : 45;
}

class ReferenceRecordings : public testing::TestWithParam<Reference> {
protected:
  void simulate() {
    SimulationParameters parameters = presetParameters(GetParam().preset, GetParam().samplingFrequency);
    parameters.seed = GetParam().seed;
    parameters.nrOfChannels = 2;
    parameters.seconds = 120;
    RecordingTarget target;
    target.path = folder_ / "run.ctc";
    ASSERT_EQ(writeRecording(parameters, target, [](double) {}), "");
  }

  test::HostRunResult correct(bool volumeWise) const {
    const nlohmann::json answers = {{"files", {{"*.ccd", "run.ccd"}}},
                                    {"prompts",
                                     {{{"prompt", "EEG-fMRI artifact correction"}, {"answer", 1}},
                                      {{"prompt", "volume-wise"}, {"answer", volumeWise}},
                                      {{"prompt", "Window half-length"}, {"answer", 150}}}}};
    test::HostRun run;
    run.plugin = EMEG_PLUGIN_PATH;
    run.workFolder = folder_.path();
    return run.withAnswers(answers);
  }

  /// The samples of a CTC file as bytes.
  std::string samplesOf(const std::string& path) const {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const auto length = static_cast<size_t>(120 * GetParam().samplingFrequency * 2) * sizeof(float);
    return bytes.size() > length ? bytes.substr(bytes.size() - length) : "";
  }

  TestFolder folder_;
};

} // namespace

TEST_P(ReferenceRecordings, AreTimedExactlyAndCorrectedInBothModes) {
  ASSERT_NO_FATAL_FAILURE(simulate());
  const SimulatedTruth truth = readSimulatedTruth(folder_ / "run_truth.json");
  for (const bool volumeWise : {false, true}) {
    SCOPED_TRACE(volumeWise ? "volume-wise" : "slice-wise");
    const test::HostRunResult result = correct(volumeWise);
    ASSERT_EQ(result.exitStatus, 0) << result.standardError;
    EXPECT_EQ(result.logLines().back(), "// EMEG artifacts > Operations successfully executed!");

    const auto found = readDetectedSequence(folder_ / "host-run/transcript.jsonl");
    ASSERT_TRUE(found);
    ASSERT_EQ(truth.scans.size(), 1u);
    EXPECT_EQ(found->nrOfVolumes, truth.scans[0].nrOfVolumes);
    EXPECT_EQ(found->nrOfSlicesPerVolume, truth.nrOfSlicesPerVolume);
    EXPECT_LT(std::fabs(found->volumeDuration / truth.volumeDuration - 1), 1e-6);

    const std::string command = std::string(EMEG_PROGRAM) + " correct " + (folder_ / "run.ctc") + " -o " +
                                (folder_ / "emeg.ctc") + " --as-plugin --force --quiet" +
                                (volumeWise ? "" : " --slice-wise") + " > " + (folder_ / "summary.txt");
    ASSERT_EQ(std::system(command.c_str()), 0);
    const std::string samples = samplesOf(folder_ / "run_GRA.ctc");
    EXPECT_FALSE(samples.empty());
    EXPECT_TRUE(samplesOf(folder_ / "emeg.ctc") == samples) << "emeg correct --as-plugin gives other samples";

    for (const ChannelResidual& channel : measureResiduals(folder_ / "run_GRA.ctc", truth)) {
      EXPECT_GE(channel.decibels(), demandedDecibels(GetParam().samplingFrequency, volumeWise))
          << channel.name;
      EXPECT_LT(channel.outsideUv, 5) << channel.name;
      RecordProperty("decibels_" + std::string(volumeWise ? "volume_" : "slice_") + channel.name,
                     std::to_string(channel.decibels()));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    AllKinds, ReferenceRecordings,
    testing::Values(Reference{Preset::Gap, 2000, 1}, Reference{Preset::Gap, 2000, 2},
                    Reference{Preset::Gap, 2000, 3}, Reference{Preset::Continuous, 2000, 1},
                    Reference{Preset::Continuous, 2000, 2}, Reference{Preset::Continuous, 2000, 3},
                    Reference{Preset::Gap, 5000, 1}, Reference{Preset::Gap, 5000, 2},
                    Reference{Preset::Gap, 5000, 3}, Reference{Preset::Continuous, 5000, 1},
                    Reference{Preset::Continuous, 5000, 2}, Reference{Preset::Continuous, 5000, 3}));

} // namespace emeg
