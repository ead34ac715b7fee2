#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <cmath>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace emeg {

namespace {

using testing::AnyOf;
using testing::HasSubstr;

std::unique_ptr<MemoryRecording> recordingOf(int64_t nrOfTimePoints, double samplingFrequency,
                                             int nrOfChannels,
                                             const std::function<double(int64_t)>& valueAt) {
  auto recording = std::make_unique<MemoryRecording>();
  recording->editableHeader().samplingFrequency = samplingFrequency;
  recording->editableHeader().nrOfTimePoints = nrOfTimePoints;
  for (int c = 0; c < nrOfChannels; ++c)
    recording->addChannel(std::string(1, static_cast<char>('A' + c)), ChannelKind::Eeg, valueAt);
  return recording;
}

/// Runs with everything switched on; the output is there exactly when the status says so.
int correct(MemoryRecording& recording, const std::string& extra = "--quiet") {
  const TestFolder folder;
  recording.save(folder / "run.vhdr");
  const ProgramRun run =
      runEmeg({"correct", folder / "run.vhdr", "-o", folder / "out.vhdr", "--bcg", "--average-reference",
               "--decimate", "2", "--high-pass", "0.5", "--line-noise", "2", "--allow-uncorrected", extra});
  const bool isWritten = run.status == 0 || run.status == 3;
  EXPECT_EQ(std::filesystem::exists(folder / "out.vhdr"), isWritten) << run.err;
  if (!isWritten) {
    EXPECT_THAT(run.err, HasSubstr("error: "));
    EXPECT_EQ(folder.names().size(), 3u);
  }
  return run.status;
}

} // namespace

TEST(HostileRecording, OfAnyLengthEndsWellOrWithAReason) {
  for (const int64_t length : {1, 2, 3, 10, 31, 32, 33, 100, 500, 1000, 5000}) {
    const auto recording =
        recordingOf(length, 500, 3, [](int64_t t) { return 50 * std::sin(0.3 * static_cast<double>(t)); });
    EXPECT_THAT(correct(*recording), AnyOf(0, 1, 2, 3)) << length;
  }
}

TEST(HostileRecording, OfAnySamplingFrequencyEndsWellOrWithAReason) {
  for (const double fs : {1.0, 9.0, 10.0, 49.0, 101.0, 1e5, 1e9}) {
    const auto recording =
        recordingOf(4000, fs, 2, [](int64_t t) { return 50 * std::sin(0.3 * static_cast<double>(t)); });
    EXPECT_THAT(correct(*recording), AnyOf(0, 1, 2, 3)) << fs;
  }
}

TEST(HostileRecording, OfAnyValuesEndsWellOrWithAReason) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double value : {0.0, 1e-30, -5000.0, 1e30, 3e38, 1e300, infinity, -infinity, std::nan("")}) {
    const auto constant = recordingOf(20000, 500, 2, [value](int64_t) { return value; });
    EXPECT_THAT(correct(*constant), AnyOf(0, 1, 2, 3)) << value;
    const auto spikes = recordingOf(
        20000, 500, 2, [value](int64_t t) { return t % 137 == 0 ? value : static_cast<double>(t % 10); });
    EXPECT_THAT(correct(*spikes), AnyOf(0, 1, 2, 3)) << value;
  }
}

TEST(HostileRecording, SamplesThatAreNoNumbersAreWarnedOf) {
  const TestFolder folder;
  const auto recording = copyOf(scanRecording());
  recording->samples[2][7000] = std::nan("");
  recording->save(folder / "run.vhdr");
  const ProgramRun run = runEmeg({"correct", folder / "run.vhdr"});
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, HasSubstr("1 samples are no numbers"));
}

TEST(HostileRecording, MarkersFarOutsideDoNoHarm) {
  const TestFolder folder;
  const auto recording = copyOf(scanRecording());
  recording->addMarker("Stimulus", "before", -500);
  recording->addMarker("Stimulus", "after", 1e9);
  recording->save(folder / "run.vhdr");
  EXPECT_EQ(runEmeg({"correct", folder / "run.vhdr", "--interval", "1:39", "--quiet"}).status, 0);
}

TEST(HostileRecording, AFileThatIsCutOffIsRefused) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "run.vhdr");
  std::filesystem::resize_file(folder / "run.eeg", 10);
  const ProgramRun run = runEmeg({"correct", folder / "run.vhdr"});
  EXPECT_THAT(run.status, AnyOf(1, 2));
  EXPECT_THAT(run.err, HasSubstr("run."));
  std::filesystem::remove(folder / "run.eeg");
  EXPECT_EQ(runEmeg({"correct", folder / "run.vhdr"}).status, 2);
}

// More beats than the plug-in's list has room for.
TEST(LongRecording, EveryHeartBeatIsFound) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg({"simulate", "both", folder / "run.ctc", "--fs", "1000", "--seconds", "1400",
                     "--channels", "2", "--heart-rate", "138", "--no-truth", "--no-prt"})
                .status,
            0);
  const ProgramRun run =
      runEmeg({"correct", folder / "run.ctc", "--bcg", "-o", folder / "out.vhdr", "--quiet"});
  EXPECT_EQ(run.status, 0) << run.err;
  const MemoryRecording after(folder / "out.vhdr");
  EXPECT_GT(
      std::count_if(after.header().markers.begin(), after.header().markers.end(),
                    [](const RecordingMarker& marker) { return marker.description == "HeartPulseTriggers"; }),
      3100);
}

} // namespace emeg
