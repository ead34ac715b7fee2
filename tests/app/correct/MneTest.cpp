// MNE-Python reads what emeg correct writes. Skipped where it is not installed.

#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace emeg {

namespace {

using nlohmann::json;
using testing::StartsWith;

const std::string python = "/usr/bin/python3";

bool runQuietly(const std::string& command) {
  return std::system((command + " 2>/dev/null").c_str()) == 0;
}

class CorrectedInMne : public testing::TestWithParam<const char*> {
protected:
  void SetUp() override {
    if (!runQuietly(python + " -c 'import mne' >/dev/null")) GTEST_SKIP() << "python3-mne is not installed";
  }

  json seenOf(const std::string& path) const {
    const std::string output = folder / "seen.json";
    EXPECT_TRUE(
        runQuietly(python + " " + EMEG_CORRECT_TESTS + "/read_good_stretches.py " + path + " >" + output));
    return json::parse(bytesOf(output));
  }

  const TestFolder folder;
};

INSTANTIATE_TEST_SUITE_P(Formats, CorrectedInMne, testing::Values("out.vhdr", "out.bdf", "out.edf"));

} // namespace

TEST_P(CorrectedInMne, StretchesWithoutModelAreLeftOut) {
  copyOf(heartRecording())->save(folder / "run.vhdr");
  const std::string output = folder / GetParam();
  ASSERT_NE(runEmeg({"correct", folder / "run.vhdr", "-o", output, "--bcg", "--quiet"}).status, 2);
  const json seen = seenOf(output);
  const json found = json::parse(bytesOf(folder / "out.json"))["Detected"];
  EXPECT_EQ(seen["samplingFrequency"], 1000);
  double bad = 0;
  for (const json& stretch : found["HeartBeats"]["StretchesWithoutModel"])
    bad += stretch[1].get<double>() - stretch[0].get<double>();
  EXPECT_NEAR(seen["nrOfGoodTimePoints"].get<double>(), seen["nrOfTimePoints"].get<double>() - 1000 * bad, 5);
}

TEST_P(CorrectedInMne, OnsetsThatWereFoundAreAnnotatedAtTheirTimes) {
  copyOf(heartRecording())->save(folder / "run.vhdr");
  const std::string output = folder / GetParam();
  ASSERT_NE(runEmeg({"correct", folder / "run.vhdr", "-o", output, "--bcg", "--quiet"}).status, 2);
  const json annotations = seenOf(output)["annotations"];
  const json found = json::parse(bytesOf(folder / "out.json"))["Detected"];
  const std::string prefix = std::string(GetParam()) == "out.vhdr" ? "Comment/" : "";
  ASSERT_TRUE(annotations.contains(prefix + "HeartPulseTriggers")) << annotations;
  EXPECT_EQ(annotations[prefix + "HeartPulseTriggers"].size(),
            found["HeartBeats"]["NumberOfBeats"].get<size_t>());
  EXPECT_NEAR(annotations[prefix + "MRGradientTriggers"][0].get<double>(),
              found["Scans"][0]["FirstVolumeOnset"].get<double>(), 0.0006);
}

// Two and a half seconds later, and in another year.
TEST_P(CorrectedInMne, AnIntervalBeginsAtItsOwnTimeOfDay) {
  const auto recording = copyOf(scanRecording());
  recording->editableHeader().start = StartTime{2023, 12, 31, 23, 59, 59, 0};
  recording->save(folder / "run.vhdr");
  const std::string output = folder / GetParam();
  ASSERT_NE(runEmeg({"correct", folder / "run.vhdr", "-o", output, "--interval", "2.5:39", "--quiet"}).status,
            2);
  // MNE-Python reads whole seconds of an EDF file's start.
  const bool isBrainVision = std::string(GetParam()) == "out.vhdr";
  EXPECT_THAT(seenOf(output)["start"].get<std::string>(),
              StartsWith(isBrainVision ? "2024-01-01 00:00:01.5" : "2024-01-01 00:00:01"));
}

} // namespace emeg
