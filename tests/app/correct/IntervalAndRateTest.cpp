#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numbers>

namespace emeg {

// Cut before the correction, which never sees the rest.
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

TEST(Rate, CanBeAnyOther) {
  const TestFolder folder;
  const auto recording = copyOf(scanRecording());
  recording->editableHeader().markers.clear();
  recording->addMarker("Stimulus", "S", 20000);
  // A slow wave that no correction touches.
  for (auto& channel : recording->samples)
    for (size_t t = 0; t < channel.size(); ++t)
      channel[t] += 100 * std::sin(2 * std::numbers::pi * 0.4 * static_cast<double>(t) / 1000);
  recording->save(folder / "run.vhdr");
  ASSERT_EQ(runEmeg({"correct", folder / "run.vhdr", "--quiet"}).status, 0);
  const MemoryRecording plain(folder / "run_GRA.vhdr");
  for (const double rate : {256.0, 512.0, 1500.0}) {
    const std::string name = "run_" + std::to_string(static_cast<int>(rate)) + "Hz_GRA.vhdr";
    ASSERT_EQ(runEmeg({"correct", folder / "run.vhdr", "--rate", std::to_string(rate), "--quiet"}).status, 0);
    const MemoryRecording after(folder / name);
    EXPECT_EQ(after.header().samplingFrequency, rate);
    EXPECT_EQ(after.header().nrOfTimePoints, static_cast<int64_t>(39.999 * rate) + 1);
    const auto marker = std::find_if(after.header().markers.begin(), after.header().markers.end(),
                                     [](const RecordingMarker& m) { return m.description == "S"; });
    ASSERT_NE(marker, after.header().markers.end());
    EXPECT_NEAR(marker->onset, 20 * rate, 1e-6);
    EXPECT_NEAR(amplitudeAt(after.samples[2], 0.4, rate), amplitudeAt(plain.samples[2], 0.4, 1000), 0.1);
  }
}

// A window in whole seconds would be the same for all of them.
TEST(Window, IsAsManySlicesAsWereAskedFor) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "run.vhdr");
  std::vector<std::vector<double>> results;
  for (const char* window : {"1", "5", "11"}) {
    const ProgramRun run = runEmeg({"correct", folder / "run.vhdr", "--slice-wise", "--window", window,
                                    "--quiet", "-o", folder / "out.vhdr", "--force"});
    ASSERT_EQ(run.status & ~3, 0) << run.err;
    results.push_back(MemoryRecording(folder / "out.vhdr").samples[1]);
  }
  EXPECT_NE(results[0], results[1]);
  EXPECT_NE(results[1], results[2]);
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
