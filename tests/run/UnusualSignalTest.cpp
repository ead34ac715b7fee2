#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace emeg::test {
namespace {

using testing::Contains;
using testing::ElementsAre;

class UnusualSignal : public PluginRun {
protected:
  /// Every sample of the output is within `tolerance` of the recording.
  void expectUnchanged(const Recording& recording, double tolerance) const {
    const Recording output = readOutput(path("run1_GRA.ctc"));
    ASSERT_EQ(output.nrOfChannels(), recording.nrOfChannels());
    ASSERT_EQ(output.nrOfTimePoints(), recording.nrOfTimePoints());
    for (size_t c = 0; c < recording.samples.size(); ++c)
      for (size_t i = 0; i < recording.samples[c].size(); ++i)
        ASSERT_NEAR(output.samples[c][i], recording.samples[c][i], tolerance)
            << "channel " << c << ", sample " << i;
  }

  static Recording constant(double value, int nrOfChannels, int nrOfTimePoints) {
    Recording recording;
    recording.samplingFrequency = 1000;
    recording.samples.assign(static_cast<size_t>(nrOfChannels),
                             std::vector<double>(static_cast<size_t>(nrOfTimePoints), value));
    return recording;
  }
};

TEST_F(UnusualSignal, AFlatRecordingStaysAsItIsAndEveryChannelIsSearchedForASequence) {
  const Recording recording = constant(0.0, 2, 4000);
  const std::string ctc = write(recording);
  const HostRunResult result = run(answers(ctc));
  EXPECT_EQ(differenceOf(result.transcript, ExpectedCalls::ofARun()
                                                .choosesOnly(ctc)
                                                .definesParameters()
                                                .createsChunks()
                                                .logs("Processing channel #0")
                                                .findsNothing()
                                                .logs("Processing channel #1")
                                                .findsNothing()
                                                .writesEverything()
                                                .returns(true)),
            "");
  EXPECT_EQ(result.exitStatus, 0);
  expectUnchanged(recording, 0.0);
}

TEST_F(UnusualSignal, AFlatRecordingGetsATriggerFileWithoutMarkers) {
  ASSERT_EQ(run(answers(write(constant(0.0, 1, 4000)))).exitStatus, 0);
  EXPECT_THAT(readFile(path("run1_GRA_ArtifactsTriggers.prt")),
              testing::EndsWith("\r\nNrOfConditions:     0"));
}

TEST_F(UnusualSignal, AConstantOffsetIsKept) {
  const Recording recording = constant(12345.0, 1, 4000);
  ASSERT_EQ(run(answers(write(recording))).exitStatus, 0);
  expectUnchanged(recording, 0.01);
}

TEST_F(UnusualSignal, ASequenceThatTheFirstChannelDoesNotShowIsFoundOnTheSecond) {
  ScannedRecording made = scannedWithVolumeGaps();
  std::fill(made.recording.samples[0].begin(), made.recording.samples[0].end(), 0.0);
  const HostRunResult result = run(answers(write(made.recording)));
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(withoutMeasuredNumbers(result.transcript).volumeDurations.size(), 1u);
  EXPECT_THAT(result.logLines(), Contains("// EMEG artifacts > Number of volumes: 0"));
  EXPECT_THAT(result.logLines(), Contains("// EMEG artifacts > Number of volumes: 12"));
  const Recording output = readOutput(path("run1_GRA.ctc"));
  EXPECT_LT(made.residualRms(1, output.samples[1]), made.artifactRms(1) / 44); // 33 dB
}

TEST_F(UnusualSignal, NoiseWithoutAnySequenceIsProcessedToTheEnd) {
  for (const int nrOfTimePoints : {500, 4000, 20000}) {
    const Recording recording = shortNoise(2, nrOfTimePoints);
    const HostRunResult result = run(answers(write(recording)));
    EXPECT_EQ(result.exitStatus, 0) << result.standardOutput;
    for (const std::vector<double>& channel : readOutput(path("run1_GRA.ctc")).samples)
      for (const double sample : channel) ASSERT_TRUE(std::isfinite(sample));
    EXPECT_THAT(names(),
                ElementsAre("run1.ctc", "run1_GRA.ccd", "run1_GRA.ctc", "run1_GRA_ArtifactsTriggers.prt"));
  }
}

TEST_F(UnusualSignal, ARecordingOfAFewSamplesStaysAsItIs) {
  for (const int32_t dataOrganisation : {1, 2}) {
    for (const int nrOfTimePoints : {1, 2, 3, 4, 10, 31, 32, 33, 64, 65, 100}) {
      Recording recording = shortNoise(1, nrOfTimePoints);
      recording.dataOrganisation = dataOrganisation;
      const HostRunResult result = run(answers(write(recording)));
      EXPECT_EQ(result.exitStatus, 0) << nrOfTimePoints << " samples: " << result.standardOutput;
      EXPECT_THAT(result.logLines(), Contains("// EMEG artifacts > Creating chunk #32/32"));
      expectUnchanged(recording, 0.001);
      EXPECT_THAT(names(),
                  ElementsAre("run1.ctc", "run1_GRA.ccd", "run1_GRA.ctc", "run1_GRA_ArtifactsTriggers.prt"));
    }
  }
}

TEST_F(UnusualSignal, OneImpulseIsNoSequence) {
  Recording recording = constant(0.0, 1, 5000);
  recording.samples[0][2500] = 30000;
  EXPECT_EQ(run(answers(write(recording))).exitStatus, 0);
  expectUnchanged(recording, 0.05);
}

class SamplesThatAreNotNumbers : public UnusualSignal {
protected:
  static constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
  static constexpr double infinity = std::numeric_limits<double>::infinity();
};

TEST_F(SamplesThatAreNotNumbers, AreCountedInTheLogAndLeaveOtherChannelsAlone) {
  ScannedRecording made = scannedWithVolumeGaps();
  ASSERT_EQ(run(answers(write(made.recording))).exitStatus, 0);
  const Recording intact = readOutput(path("run1_GRA.ctc"));
  const double artifact = made.artifactRms(1);

  std::vector<double>& broken = made.recording.samples[1];
  broken[0] = notANumber;
  broken[20000] = infinity;
  broken[31999] = -infinity;
  const HostRunResult result = run(answers(write(made.recording)));
  EXPECT_EQ(result.exitStatus, 0);
  const std::vector<std::string> lines = result.logLines();
  const auto line = std::find(lines.begin(), lines.end(), "// EMEG artifacts > Processing channel #1");
  ASSERT_NE(line, lines.end());
  EXPECT_EQ(*(line + 1), "// EMEG artifacts > Channel #1: 3 samples that are not numbers were set to 0.");

  const Recording output = readOutput(path("run1_GRA.ctc"));
  EXPECT_TRUE(output.samples[0] == intact.samples[0]);
  for (const double sample : output.samples[1]) ASSERT_TRUE(std::isfinite(sample));
  EXPECT_LT(made.residualRms(1, output.samples[1]), artifact / 44); // 33 dB
}

TEST_F(SamplesThatAreNotNumbers, CountAsZero) {
  ScannedRecording made = scannedWithVolumeGaps();
  made.recording.samples[0][17000] = notANumber;
  ASSERT_EQ(run(answers(write(made.recording))).exitStatus, 0);
  const std::string output = readFile(path("run1_GRA.ctc"));
  made.recording.samples[0][17000] = 0;
  ASSERT_EQ(run(answers(write(made.recording))).exitStatus, 0);
  EXPECT_TRUE(readFile(path("run1_GRA.ctc")) == output);
}

TEST_F(SamplesThatAreNotNumbers, MayFillAWholeChannel) {
  Recording recording = shortNoise(2, 1000);
  recording.samples[0].assign(1000, notANumber);
  const HostRunResult result = run(answers(write(recording)));
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.logLines(),
              Contains("// EMEG artifacts > Channel #0: 1000 samples that are not numbers were set to 0."));
  EXPECT_THAT(readOutput(path("run1_GRA.ctc")).samples[0], testing::Each(0.0));
}

TEST_F(SamplesThatAreNotNumbers, IncludeDoublesBeyondTheRangeOfAFloat) {
  Recording recording = shortNoise(1, 1000);
  recording.dataType = 2;
  recording.samples[0][3] = 1e300;
  recording.samples[0][4] = -1e39;
  const HostRunResult result = run(answers(write(recording)));
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.logLines(),
              Contains("// EMEG artifacts > Channel #0: 2 samples that are not numbers were set to 0."));
}

TEST_F(SamplesThatAreNotNumbers, AreNotMadeOfTheLargestFloats) {
  constexpr double largest = static_cast<double>(std::numeric_limits<float>::max());
  Recording recording = shortNoise(1, 1000);
  for (size_t i = 0; i < 1000; ++i) recording.samples[0][i] = i % 2 == 0 ? largest / 2 : -largest / 2;
  EXPECT_EQ(run(answers(write(recording))).exitStatus, 0);
  expectUnchanged(recording, 1e-5 * largest);
}

} // namespace
} // namespace emeg::test
