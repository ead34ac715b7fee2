#include "app/correct/SaturatedChannels.h"

#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <numbers>

namespace emeg {

namespace {

constexpr int64_t length = 5000;
constexpr StoredIntegers sixteenBit{0.5, 0, -32768, 32767};

/// A 16-bit recording of half-microvolt steps: a clean wave and one that is cut at both limits.
std::unique_ptr<MemoryRecording> clippedRecording() {
  auto owned = std::make_unique<MemoryRecording>();
  MemoryRecording& recording = *owned;
  RecordingHeader& header = recording.editableHeader();
  header.samplingFrequency = 1000;
  header.nrOfTimePoints = length;
  const auto wave = [](int64_t t, double amplitude) {
    const double value = amplitude * std::sin(2 * std::numbers::pi * 5 * static_cast<double>(t) / 1000);
    return 0.5 * std::floor(std::clamp(value, -32768.0, 32767.0) + 0.5);
  };
  recording.addChannel("Cz", ChannelKind::Eeg, [&wave](int64_t t) { return wave(t, 10000); });
  recording.addChannel("Pz", ChannelKind::Eeg, [&wave](int64_t t) { return wave(t, 34000); });
  for (RecordingChannel& channel : header.channels) channel.stored = sixteenBit;
  return owned;
}

CorrectionPlan planOf(const RecordingHeader& header) {
  CorrectionPlan plan;
  plan.channels = planChannels(header, {});
  plan.nrOfTimePoints = header.nrOfTimePoints;
  return plan;
}

std::vector<double> channelOf(const std::string& path, int channel) {
  std::vector<double> values(length);
  ScratchChannel(path, ScratchSamples::Float64, length).read(channel, 0, values);
  return values;
}

const auto ignoreProgress = [](double) {};

} // namespace

TEST(SaturatedChannels, SaturatedSamplesAreReplacedAndAllOthersKeepTheirBits) {
  const TestFolder folder;
  const auto owned = clippedRecording();
  MemoryRecording& recording = *owned;
  const CorrectionPlan plan = planOf(recording.header());
  const std::string scratch = folder / "recording.ctc";
  writeScratchInput(recording, plan, ScratchSamples::Float64, scratch, ignoreProgress);
  const auto repaired = repairSaturatedChannels(scratch, recording.header(), plan, ignoreProgress);

  ASSERT_EQ(repaired.size(), 1u);
  EXPECT_EQ(repaired[0].channel, 1);
  EXPECT_GT(repaired[0].nrOfRepaired, 100);
  EXPECT_EQ(repaired[0].nrOfLeft, 0);
  EXPECT_EQ(channelOf(scratch, 0), recording.samples[0]);
  const std::vector<double> after = channelOf(scratch, 1);
  for (size_t t = 0; t < after.size(); ++t) {
    const double before = recording.samples[1][t];
    const double truth = 17000 * std::sin(2 * std::numbers::pi * 5 * static_cast<double>(t) / 1000);
    if (std::abs(before) < 0.5 * 32765)
      ASSERT_EQ(after[t], before) << t;
    else
      ASSERT_NEAR(after[t], truth, 100) << t; // of up to 617 that were cut off
  }
}

TEST(SaturatedChannels, SaturatedSamplesAtTheEndsStayAndAreCounted) {
  const TestFolder folder;
  const auto owned = clippedRecording();
  MemoryRecording& recording = *owned;
  for (size_t t = 0; t < 10; ++t) recording.samples[0][t] = sixteenBit.valueOf(32767);
  for (size_t t = length - 7; t < length; ++t) recording.samples[0][t] = sixteenBit.valueOf(-32768);
  const CorrectionPlan plan = planOf(recording.header());
  const std::string scratch = folder / "recording.ctc";
  writeScratchInput(recording, plan, ScratchSamples::Float64, scratch, ignoreProgress);
  const auto repaired = repairSaturatedChannels(scratch, recording.header(), plan, ignoreProgress);
  ASSERT_EQ(repaired.size(), 2u);
  EXPECT_EQ(repaired[0].nrOfRepaired, 0);
  EXPECT_EQ(repaired[0].nrOfLeft, 17);
  EXPECT_EQ(channelOf(scratch, 0), recording.samples[0]);
}

TEST(SaturatedChannels, AChannelOfNothingElseStaysAsItIs) {
  const TestFolder folder;
  const auto owned = clippedRecording();
  MemoryRecording& recording = *owned;
  for (double& value : recording.samples[0]) value = sixteenBit.valueOf(32767);
  const CorrectionPlan plan = planOf(recording.header());
  const std::string scratch = folder / "recording.ctc";
  writeScratchInput(recording, plan, ScratchSamples::Float64, scratch, ignoreProgress);
  EXPECT_EQ(repairSaturatedChannels(scratch, recording.header(), plan, ignoreProgress)[0].nrOfLeft, length);
  EXPECT_EQ(channelOf(scratch, 0), recording.samples[0]);
}

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
