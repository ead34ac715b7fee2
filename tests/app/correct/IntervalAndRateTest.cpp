#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

// Cut before the correction: the converter never sees the rest.
TEST(Interval, GivesWhatARecordingThatWasCutBeforeGives) {
  const TestFolder folder;
  const auto whole = copyOf(scanRecording());
  whole->save(folder / "whole.vhdr");
  const auto cut = copyOf(scanRecording());
  for (auto& channel : cut->samples) channel = {channel.begin() + 2000, channel.begin() + 36500};
  cut->editableHeader().nrOfTimePoints = 34500;
  cut->save(folder / "cut.vhdr");
  ASSERT_EQ(runEmeg({"correct", folder / "whole.vhdr", "--interval", "2:36.5", "--quiet"}).status, 0);
  ASSERT_EQ(runEmeg({"correct", folder / "cut.vhdr", "--quiet"}).status, 0);
  const MemoryRecording one(folder / "whole_2000-36500ms_GRA.vhdr");
  const MemoryRecording other(folder / "cut_GRA.vhdr");
  EXPECT_EQ(one.header().nrOfTimePoints, 34500);
  EXPECT_EQ(one.samples, other.samples);
}

TEST(Rate, KeepsEveryNthSampleBehindTheLowPass) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "run.vhdr");
  ASSERT_EQ(runEmeg({"correct", folder / "run.vhdr", "--rate", "250", "--quiet"}).status, 0);
  const MemoryRecording after(folder / "run_dec4_GRA.vhdr");
  EXPECT_EQ(after.header().samplingFrequency, 250);
  EXPECT_EQ(after.header().nrOfTimePoints, 10000);
}

TEST(Channels, OnlyTheChosenOnesAreCorrectedAndWritten) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "run.vhdr");
  const std::string first = scanRecording().header().channels[0].name;
  const std::string third = scanRecording().header().channels[2].name;
  ASSERT_EQ(runEmeg({"correct", folder / "run.vhdr", "--channels", third + "," + first, "--quiet"}).status,
            0);
  const MemoryRecording after(folder / "run_2ch_GRA.vhdr");
  ASSERT_EQ(after.header().nrOfChannels(), 2);
  EXPECT_EQ(after.header().channels[0].name, third);
  EXPECT_EQ(after.header().channels[1].name, first);
}

TEST(Scale, MultipliesTheCorrectedSamples) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "run.vhdr");
  ASSERT_EQ(runEmeg({"correct", folder / "run.vhdr", "--quiet"}).status, 0);
  ASSERT_EQ(runEmeg({"correct", folder / "run.vhdr", "--scale", "3", "--quiet"}).status, 0);
  const MemoryRecording plain(folder / "run_GRA.vhdr");
  const MemoryRecording scaled(folder / "run_sc3_GRA.vhdr");
  for (size_t t = 0; t < plain.samples[0].size(); t += 100)
    EXPECT_NEAR(scaled.samples[0][t], 1000 * plain.samples[0][t],
                1e-3 + std::abs(plain.samples[0][t]) * 1e-3);
}

} // namespace emeg
