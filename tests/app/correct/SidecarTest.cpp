#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace emeg {

namespace {

using nlohmann::json;
using testing::HasSubstr;

} // namespace

TEST(Sidecar, HoldsParametersInputFindingsAndFigures) {
  const TestFolder folder;
  copyOf(heartRecording())->save(folder / "run.vhdr");
  const ProgramRun run = runEmeg({"correct", folder / "run.vhdr", "--bcg", "--slice-wise", "--window", "80",
                                  "--high-pass", "0.5", "--quiet"});
  ASSERT_EQ(run.status, 0) << run.err;
  const json sidecar = json::parse(bytesOf(folder / "run_HP0_GRA_BCG.json"));
  EXPECT_EQ(sidecar["GeneratedBy"]["Name"], "emeg correct");
  EXPECT_EQ(sidecar["Input"]["Files"].size(), 3u);
  EXPECT_EQ(sidecar["Input"]["Files"][0]["SHA256"].get<std::string>().size(), 64u);
  EXPECT_EQ(sidecar["Parameters"]["SliceWise"], true);
  EXPECT_EQ(sidecar["Parameters"]["TR"], nullptr);
  EXPECT_EQ(sidecar["Parameters"]["Interval"], nullptr);
  EXPECT_EQ(sidecar["Parameters"]["WindowHalfLengthSlices"], 80);
  EXPECT_EQ(sidecar["Parameters"]["HighPass"], 0.5);
  EXPECT_EQ(sidecar["Detected"]["Scans"][0]["SlicesPerVolume"], 20);
  EXPECT_GT(sidecar["Detected"]["HeartBeats"]["NumberOfBeats"].get<int>(), 30);
  EXPECT_TRUE(sidecar["Detected"]["HeartBeats"]["StretchesWithoutModel"].is_array());
  EXPECT_TRUE(sidecar["Warnings"].empty());
  ASSERT_EQ(sidecar["Channels"].size(), 6u);
  const json& channel = sidecar["Channels"][1];
  EXPECT_EQ(channel["Treatment"], "corrected");
  EXPECT_LT(channel["RemainingArtifact"].get<double>(), 0.1);
  EXPECT_LT(channel["MedianImagingArtifact"]["After"], channel["MedianImagingArtifact"]["Before"]);
  EXPECT_LT(channel["BandPowers"]["beta"]["Ratio"].get<double>(), 0.5);
  EXPECT_LT(channel["HeartBeatArtifact"]["BeatAverageRmsAfter"],
            channel["HeartBeatArtifact"]["BeatAverageRmsBefore"]);
}

TEST(Sidecar, ChecksumsAreThoseOfTheFiles) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "run.ctc");
  ASSERT_EQ(runEmeg({"correct", folder / "run.ctc", "--quiet"}).status, 0);
  const json sidecar = json::parse(bytesOf(folder / "run_GRA.json"));
  const std::string command = "sha256sum " + (folder / "run.ctc") + " > " + (folder / "sum.txt");
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(sidecar["Input"]["Files"][0]["SHA256"], bytesOf(folder / "sum.txt").substr(0, 64));
}

TEST(Sidecar, IsPrintedWhenAskedFor) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "run.vhdr");
  const ProgramRun run = runEmeg({"correct", folder / "run.vhdr", "--json"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, bytesOf(folder / "run_GRA.json"));
}

TEST(Sidecar, HoldsTheWarningsThatTheTerminalShows) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "run.vhdr");
  const ProgramRun run = runEmeg({"correct", folder / "run.vhdr", "--bcg", "--json"});
  EXPECT_EQ(run.status, 3);
  const json sidecar = json::parse(run.out);
  ASSERT_FALSE(sidecar["Warnings"].empty());
  for (const json& warning : sidecar["Warnings"]) EXPECT_THAT(run.err, HasSubstr(warning.get<std::string>()));
}

} // namespace emeg
