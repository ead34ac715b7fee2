#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <limits>

namespace emeg::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr const char* endsEarly = "Error reading file: <br>Attempt to read beyond the end of file.";

class HostileRecording : public PluginRun {
protected:
  /// Checks that a recording is refused with one message box that says all of this, before any chunk file is
  /// made.
  void expectOneMessageBox(const std::string& bytes, const std::vector<std::string>& parts) const {
    const std::string ctc = write("run1.ctc", bytes);
    const HostRunResult result = run(answers(ctc));
    EXPECT_EQ(result.exitStatus, 1);
    ASSERT_EQ(result.messageBoxes().size(), 1u);
    for (const std::string& part : parts) EXPECT_THAT(result.messageBoxes()[0], HasSubstr(part));
    for (const std::string& line : result.logLines())
      EXPECT_THAT(line, testing::Not(HasSubstr("Creating chunk")));
    EXPECT_TRUE(contents() == (std::map<std::string, std::string>{{"run1.ctc", bytes}}));
  }
};

TEST_F(HostileRecording, OfNoBytesEndsTooEarly) {
  expectRefused(write("run1.ctc", ""), endsEarly);
}

TEST_F(HostileRecording, ShorterThanItsHeaderEndsTooEarly) {
  expectRefused(write("run1.ctc", ctcBytes(1, 2, 1, 10, 1000, "").substr(0, 31)), endsEarly);
}

TEST_F(HostileRecording, OfAnyOtherTypeIsUnsupported) {
  for (const int32_t dataType : {0, 4, 7, -1, 0x7fffffff})
    expectRefused(write("run1.ctc", ctcBytes(dataType, 2, 2, 10, 1000, std::string(160, '\1'))),
                  "Unsupported data type");
}

TEST_F(HostileRecording, WithoutChannelsIsRefusedWhenTheParametersAreDefined) {
  for (const int nrOfChannels : {0, -1, -32768, 32768, 65535}) {
    const std::string ctc = write("run1.ctc", ctcBytes(1, 2, nrOfChannels, 10, 1000, std::string(160, '\1')));
    const HostRunResult result = run(answers(ctc));
    EXPECT_EQ(differenceOf(result.transcript, ExpectedCalls::ofARun()
                                                  .choosesOnly(ctc)
                                                  .logs("Defining parameters")
                                                  .shows("No channels found!")
                                                  .returns(false)),
              "")
        << nrOfChannels;
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(names(), ElementsAre("run1.ctc"));
  }
}

TEST_F(HostileRecording, WithoutTimePointsIsRefusedWithItsNameAndTheNumber) {
  for (const int32_t nrOfTimePoints : {0, -1, -12345, std::numeric_limits<int32_t>::min()})
    expectOneMessageBox(ctcBytes(1, 2, 2, nrOfTimePoints, 1000, std::string(160, '\1')),
                        {path("run1.ctc"), "no samples", std::to_string(nrOfTimePoints)});
}

TEST_F(HostileRecording, WithAnImpossibleSamplingFrequencyIsRefused) {
  for (const float frequency : {0.0f, -0.0f, -1.0f, notANumber, infinity, -infinity})
    expectOneMessageBox(ctcBytes(1, 2, 2, 20, frequency, std::string(160, '\1')),
                        {"sampling frequency", path("run1.ctc")});
}

TEST_F(HostileRecording, SampledBelowTenHertzCannotBeCorrected) {
  for (const float frequency : {5.0f, 9.999f, 1e-30f, std::numeric_limits<float>::denorm_min()})
    expectOneMessageBox(ctcBytes(1, 2, 2, 20, frequency, std::string(160, '\1')),
                        {"sampling frequency", path("run1.ctc"), "10 Hz"});
}

TEST_F(HostileRecording, SampledAtTenHertzOrUnusuallyFastIsProcessed) {
  for (const float frequency : {10.0f, 1e6f, std::numeric_limits<float>::max()}) {
    Recording recording = shortNoise();
    recording.samplingFrequency = static_cast<double>(frequency);
    const HostRunResult result = run(answers(write(recording)));
    EXPECT_EQ(result.exitStatus, 0) << frequency << result.standardOutput;
    EXPECT_EQ(readOutput(path("run1_GRA.ctc")).nrOfTimePoints(), recording.nrOfTimePoints());
  }
}

TEST_F(HostileRecording, PromisingMoreThanTheMachineCanHoldIsRefusedAtOnce) {
  for (const int32_t dataOrganisation : {1, 2}) {
    for (const int32_t nrOfTimePoints : {0x7fffffff, 0x7ffffff0}) {
      const std::string ctc = write(
          "run1.ctc", ctcBytes(1, dataOrganisation, 32767, nrOfTimePoints, 1000, std::string(160, '\1')));
      const HostRunResult result = run(answers(ctc));
      EXPECT_EQ(result.exitStatus, 1);
      EXPECT_EQ(result.messageBoxes().size(), 1u);
      EXPECT_THAT(names(), ElementsAre("run1.ctc"));
    }
  }
}

TEST_F(HostileRecording, NeedingMoreMemoryAndDiskThanThereIsGetsBothFigures) {
  // A file without blocks on the disk, but with every byte that its header promises: 12 TB.
  constexpr int nrOfChannels = 32767;
  constexpr int32_t nrOfTimePoints = 90000000;
  for (const int32_t dataOrganisation : {1, 2}) {
    const std::string ctc =
        write("run1.ctc", ctcBytes(1, dataOrganisation, nrOfChannels, nrOfTimePoints, 1000, ""));
    std::error_code tooLarge;
    std::filesystem::resize_file(ctc, 32 + uint64_t{4} * nrOfChannels * nrOfTimePoints, tooLarge);
    if (tooLarge) GTEST_SKIP() << "this disk takes no file of that length";
    const HostRunResult result = run(answers(ctc));
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(names(), ElementsAre("run1.ctc"));
    EXPECT_THAT(result.messageBoxes(),
                ElementsAre(testing::MatchesRegex(
                    "Not enough memory: [0-9]+ MB are needed, [0-9]+ MB are available.*"
                    "Not enough disk space beside .*run1.ctc: [0-9]+ MB are needed, [0-9]+ MB.*")));
  }
}

class TruncatedRecording : public HostileRecording {
protected:
  /// Writes the recording without its last bytes and returns the result of a run.
  HostRunResult runWithout(size_t nrOfBytes, const Recording& recording) const {
    const std::string bytes = recording.bytes();
    return run(answers(write("run1.ctc", bytes.substr(0, bytes.size() - nrOfBytes))));
  }
};

TEST_F(TruncatedRecording, IsCompletedWithZerosWhenLessThanHalfIsMissing) {
  Recording recording = shortNoise(2, 500);
  const HostRunResult result = runWithout(50 * 2 * 4, recording);
  EXPECT_EQ(result.exitStatus, 0);
  ExpectedCalls expected =
      ExpectedCalls::ofARun()
          .choosesOnly(path("run1.ctc"))
          .definesParameters()
          .logs("Input file ends early: 50 of 500 time points are missing and were set to 0.")
          .createsChunks();
  ASSERT_GE(result.transcript.size(), expected.calls().size());
  const std::vector<nlohmann::json> begin(
      result.transcript.begin(), result.transcript.begin() + static_cast<ptrdiff_t>(expected.calls().size()));
  EXPECT_EQ(differenceOf(begin, expected), "");

  const std::string output = readFile(path("run1_GRA.ctc"));
  for (std::vector<double>& channel : recording.samples) std::fill(channel.end() - 50, channel.end(), 0.0);
  ASSERT_EQ(run(answers(write(recording))).exitStatus, 0);
  EXPECT_TRUE(readFile(path("run1_GRA.ctc")) == output);
}

TEST_F(TruncatedRecording, KeepsTheSamplesOfATimePointThatIsNotComplete) {
  Recording recording = shortNoise(3, 500);
  const HostRunResult result = runWithout(6, recording); // one sample and half of another
  EXPECT_THAT(result.logLines(),
              testing::Contains("// EMEG artifacts > Input file ends early: 1 of 500 time points "
                                "are missing and were set to 0."));
  const std::string output = readFile(path("run1_GRA.ctc"));
  recording.samples[1].back() = 0;
  recording.samples[2].back() = 0;
  ASSERT_EQ(run(answers(write(recording))).exitStatus, 0);
  EXPECT_TRUE(readFile(path("run1_GRA.ctc")) == output);
}

TEST_F(TruncatedRecording, CountsWhatIsMissingWhereverItEnds) {
  for (const int missing : {1, 15, 16, 17, 100, 249, 250}) {
    const HostRunResult result = runWithout(static_cast<size_t>(missing) * 8, shortNoise(2, 500));
    EXPECT_EQ(result.exitStatus, 0) << missing;
    EXPECT_THAT(result.logLines(),
                testing::Contains("// EMEG artifacts > Input file ends early: " + std::to_string(missing) +
                                  " of 500 time points are missing and were set to 0."));
  }
}

TEST_F(TruncatedRecording, IsRefusedWhenMoreThanHalfIsMissing) {
  for (const size_t missing : {251, 300, 499, 500}) {
    const HostRunResult result = runWithout(missing * 8, shortNoise(2, 500));
    EXPECT_EQ(differenceOf(result.transcript, ExpectedCalls::ofARun()
                                                  .choosesOnly(path("run1.ctc"))
                                                  .definesParameters()
                                                  .shows(endsEarly)
                                                  .returns(false)),
              "");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(names(), ElementsAre("run1.ctc"));
  }
}

TEST_F(TruncatedRecording, IsRefusedWhenChannelsFollowEachOther) {
  Recording recording = shortNoise(2, 500);
  recording.dataOrganisation = 1;
  for (const size_t missing : {1, 4, 400, 2000, 3999}) {
    const HostRunResult result = runWithout(missing, recording);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.messageBoxes(), ElementsAre(endsEarly));
    EXPECT_THAT(names(), ElementsAre("run1.ctc"));
  }
}

TEST_F(TruncatedRecording, MayBeLongerThanItsHeaderSays) {
  const Recording recording = shortNoise(2, 500);
  ASSERT_EQ(run(answers(write(recording))).exitStatus, 0);
  const std::string output = readFile(path("run1_GRA.ctc"));
  ASSERT_EQ(run(answers(write("run1.ctc", recording.bytes() + std::string(12345, 'x')))).exitStatus, 0);
  EXPECT_TRUE(readFile(path("run1_GRA.ctc")) == output);
}

TEST_F(HostileRecording, MayHoldAnythingInItsFirstEightBytes) {
  const Recording recording = shortNoise();
  ASSERT_EQ(run(answers(write(recording))).exitStatus, 0);
  const std::string output = readFile(path("run1_GRA.ctc"));
  std::string bytes = recording.bytes();
  bytes.replace(0, 8, "\xff\x80 lies\x7f");
  ASSERT_EQ(run(answers(write("run1.ctc", bytes))).exitStatus, 0);
  EXPECT_TRUE(readFile(path("run1_GRA.ctc")) == output);
}

} // namespace
} // namespace emeg::test
