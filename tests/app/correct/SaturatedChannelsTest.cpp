#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace emeg {

TEST(SaturatedChannels, AFileOfFloatsCannotShowThem) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "run.vhdr");
  const ProgramRun run = runEmeg({"correct", folder / "run.vhdr", "--repair-saturation"});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, testing::HasSubstr("stores no integers"));
}

TEST(SaturatedChannels, OfAnEdfFileAreRepairedBeforeTheCorrection) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "run.edf");
  // A few extreme samples of every channel count as saturated: the file's range is that of its values.
  const ProgramRun run = runEmeg({"correct", folder / "run.edf", "--repair-saturation", "--quiet"});
  EXPECT_NE(run.status, 2) << run.err;
  const auto sidecar = nlohmann::json::parse(bytesOf(folder / "run_GRA.json"));
  EXPECT_TRUE(sidecar["Parameters"]["RepairSaturation"].get<bool>());
  EXPECT_GE(sidecar["Channels"][0]["SaturatedSamples"]["Repaired"].get<int>(), 1) << sidecar["Channels"][0];
}

} // namespace emeg
