#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <filesystem>

namespace emeg::test {
namespace {

using testing::ElementsAre;

std::string littleEndian(uint64_t value, int nrOfBytes) {
  std::string bytes;
  for (int i = 0; i < nrOfBytes; ++i) bytes += static_cast<char>(value >> 8 * i & 0xff);
  return bytes;
}

std::string ofDouble(double value) {
  return littleEndian(std::bit_cast<uint64_t>(value), 8);
}

class OutputFiles : public PluginRun {
protected:
  void runHealthy(const nlohmann::json& answers) const {
    const HostRunResult result = run(answers);
    ASSERT_EQ(result.exitStatus, 0) << result.standardOutput << result.standardError;
  }

  /// Every sample a number, every channel close to what it was without the scanner.
  void expectCorrected(const ScannedRecording& made) const {
    const Recording corrected = readOutput(path("run1_GRA.ctc"));
    ASSERT_EQ(corrected.nrOfChannels(), made.recording.nrOfChannels());
    ASSERT_EQ(corrected.nrOfTimePoints(), made.recording.nrOfTimePoints());
    for (int c = 0; c < corrected.nrOfChannels(); ++c) {
      const std::vector<double>& samples = corrected.samples[static_cast<size_t>(c)];
      for (const double sample : samples) ASSERT_TRUE(std::isfinite(sample));
      const double reduction = 20 * std::log10(made.artifactRms(c) / made.residualRms(c, samples));
      EXPECT_GT(reduction, 33.0) << "dB in channel " << c;
    }
  }
};

TEST_F(OutputFiles, AreNamedAfterTheInputAndTheCorrectionAndNothingElseIsLeft) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  const std::string input = readFile(ctc);
  runHealthy(answers(ctc));
  EXPECT_THAT(names(),
              ElementsAre("run1.ctc", "run1_GRA.ccd", "run1_GRA.ctc", "run1_GRA_ArtifactsTriggers.prt"));
  EXPECT_EQ(readFile(ctc), input);
}

TEST_F(OutputFiles, IncludeTheProtocolWhenOneWasChosenAndLeaveAllInputsAsTheyWere) {
  write(scannedWithVolumeGaps().recording);
  const std::string ccd = write("run1.ccd", descriptionBytes("run1.ctc", "task.prt", 2));
  write("task.prt", protocolText("usec", {"Rest\r\n1\r\n0 500\r\nColor: 1 2 3"}));
  const std::map<std::string, std::string> before = contents();
  runHealthy(answers("", ccd));
  EXPECT_THAT(names(), ElementsAre("run1.ccd", "run1.ctc", "run1_GRA.ccd", "run1_GRA.ctc", "run1_GRA.prt",
                                   "run1_GRA_ArtifactsTriggers.prt", "task.prt"));
  for (const auto& [name, bytes] : before) EXPECT_EQ(readFile(path(name)), bytes) << name;
}

TEST_F(OutputFiles, HoldTheRecordingAsMultiplexedFloatsBehindAHeaderOf32Bytes) {
  const ScannedRecording made = scannedWithVolumeGaps();
  runHealthy(answers(write(made.recording)));
  const std::string bytes = readFile(path("run1_GRA.ctc"));
  const std::string header = littleEndian(1, 2) + std::string(6, '\0') + littleEndian(1, 4) +
                             littleEndian(2, 4) + littleEndian(2, 2) + littleEndian(0, 2) +
                             littleEndian(32000, 4) + littleEndian(std::bit_cast<uint32_t>(2000.0f), 4) +
                             littleEndian(0, 4);
  EXPECT_EQ(bytes.substr(0, 32), header);
  EXPECT_EQ(bytes.size(), 32u + 2 * 32000 * 4);
}

TEST_F(OutputFiles, HoldTheRecordingWithoutItsArtifactWhenCorrectedVolumeWise) {
  const ScannedRecording made = scannedWithVolumeGaps();
  runHealthy(answers(write(made.recording), "", "", true));
  expectCorrected(made);
}

TEST_F(OutputFiles, HoldTheRecordingWithoutItsArtifactWhenCorrectedSliceWise) {
  const ScannedRecording made = scannedWithVolumeGaps();
  runHealthy(answers(write(made.recording), "", "", false));
  expectCorrected(made);
}

TEST_F(OutputFiles, HoldAContinuousRecordingWithoutItsArtifactWhenCorrectedSliceWise) {
  const ScannedRecording made = scannedContinuously();
  runHealthy(answers(write(made.recording), "", "", false));
  const Recording corrected = readOutput(path("run1_GRA.ctc"));
  // The last volume is cut off and stays as it is.
  const auto usable = static_cast<size_t>(made.train.onset(21, 0) * made.train.samplingFrequency);
  ScannedRecording inside = made;
  for (int c = 0; c < 2; ++c) {
    inside.clean[static_cast<size_t>(c)].resize(usable);
    std::vector<double> samples = corrected.samples[static_cast<size_t>(c)];
    samples.resize(usable);
    EXPECT_GT(20 * std::log10(inside.artifactRms(c) / inside.residualRms(c, samples)), 33.0);
  }
}

TEST_F(OutputFiles, DescribeTheChannelsWithDefaultsWhenNoDescriptionWasChosen) {
  runHealthy(answers(write(scannedWithVolumeGaps().recording)));
  std::string header(584, '\0');
  putDescriptionName(header, ctcNameOffset, "run1_GRA.ctc");
  putUint16(header, channelCountOffset, 2);
  header[gradientFlagOffset] = 1;
  std::string expected = header;
  for (const std::string name : {"Channel_000", "Channel_001"}) {
    std::string record(420, '\0');
    record.replace(0, name.size(), name);
    // Not good, not processed, type 0.
    record.replace(350, 8, ofDouble(1.0));
    record.replace(360, 8, ofDouble(2000.0));
    record.replace(384, 8, ofDouble(-1.0));
    record.replace(416, 4, "\xff\xff\xff\x03");
    expected += record;
  }
  EXPECT_EQ(readFile(path("run1_GRA.ccd")), expected);
}

TEST_F(OutputFiles, CarryTheChosenDescriptionThroughButForNamesAndTheGradientFlag) {
  write(scannedWithVolumeGaps().recording);
  std::string description = descriptionBytes("run1.ctc", "run1.prt", 2, 3);
  description[581] = 1; // a cardiac correction of an earlier run stays recorded
  const std::string ccd = write("run1.ccd", description);
  write("run1.prt", protocolText("usec", {"Rest\r\n1\r\n0 500\r\nColor: 1 2 3"}));
  runHealthy(answers("", ccd));
  putDescriptionName(description, ctcNameOffset, "run1_GRA.ctc");
  putDescriptionName(description, prtNameOffset, "run1_GRA.prt");
  description[gradientFlagOffset] = 1;
  EXPECT_EQ(readFile(path("run1_GRA.ccd")), description);
}

TEST_F(OutputFiles, KeepTheNameOfAProtocolThatCouldNotBeLoaded) {
  write(scannedWithVolumeGaps().recording);
  std::string description = descriptionBytes("run1.ctc", "missing.prt", 2);
  const std::string ccd = write("run1.ccd", description);
  runHealthy(answers("", ccd));
  putDescriptionName(description, ctcNameOffset, "run1_GRA.ctc");
  description[gradientFlagOffset] = 1;
  EXPECT_EQ(readFile(path("run1_GRA.ccd")), description);
  EXPECT_FALSE(exists(path("run1_GRA.prt")));
}

/// Everything in front of the conditions.
std::string protocolHead(const std::string& resolution, const std::string& experiment, int nrOfConditions) {
  return "\r\nFileVersion:        2\r\n\r\nResolutionOfTime:   " + resolution +
         "\r\n\r\nExperiment:         " + experiment +
         "\r\n\r\nBackgroundColor:    0 0 0\r\nTextColor:          255 255 255\r\nTimeCourseColor:    192 "
         "192 192"
         "\r\nTimeCourseThick:    2\r\nReferenceFuncColor: 0 0 80\r\nReferenceFuncThick: 2\r\n"
         "\r\nNrOfConditions:     " +
         std::to_string(nrOfConditions);
}

TEST_F(OutputFiles, HoldTheProtocolCutToTheRecordingWithLabelsInTheirWrittenForm) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  const std::string prt =
      write("task.prt", "FileVersion: 2\nResolutionOfTime: usec\nExperiment: elsewhere\nNrOfConditions: 4\n\n"
                        "  Left hand\n2\n0 500000\n15900000 17000000\nColor: 10 20 30\n\n"
                        "Too late\n1\n16000001 16500000\nColor: 1 1 1\n\n"
                        "Code 12 b\n3\n100 200\n18000000 19000000\n3000000 3000000\nColor: 0 255 7\n\n"
                        "Nothing\n0\nColor: 9 9 9\n");
  runHealthy(answers(ctc, "", prt));
  EXPECT_EQ(readFile(path("run1_GRA.prt")), protocolHead("usec", ctc, 2) + "\r\n\r\nLeft_hand\r\n2"
                                                                           "\r\n         0        500000"
                                                                           "\r\n  15900000      16000000"
                                                                           "\r\nColor:              10 20 30"
                                                                           "\r\n\r\nCode12_b\r\n2"
                                                                           "\r\n       100           200"
                                                                           "\r\n   3000000       3000000"
                                                                           "\r\nColor:              0 255 7");
}

TEST_F(OutputFiles, GiveTheNumbersOfAProtocolInMillisecondsBack) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  const std::string prt =
      write("task.prt", protocolText("msec", {"A\r\n2\r\n250 1333\r\n15999 16000\r\nColor: 1 2 3"}));
  runHealthy(answers(ctc, "", prt));
  EXPECT_EQ(readFile(path("run1_GRA.prt")),
            protocolHead("msec", ctc, 1) +
                "\r\n\r\nA\r\n2\r\n       250          1333\r\n     15999         16000"
                "\r\nColor:              1 2 3");
}

TEST_F(OutputFiles, GiveTheNumbersOfAProtocolInVolumesBack) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  const std::string prt = write("task.prt", protocolText("Volumes", {"A\r\n1\r\n7 31999\r\nColor: 1 2 3"}));
  runHealthy(answers(ctc, "", prt));
  EXPECT_EQ(readFile(path("run1_GRA.prt")), protocolHead("Volumes", ctc, 1) +
                                                "\r\n\r\nA\r\n1\r\n         7         31999"
                                                "\r\nColor:              1 2 3");
}

/// Checks a trigger file byte for byte with markers at these times in microseconds, each right to within one.
void expectTriggers(const std::string& text, const std::string& ctc,
                    const std::vector<double>& microseconds) {
  std::string expected =
      protocolHead("usec", ctc, 1) + "\r\n\r\nMRGradientTriggers\r\n" + std::to_string(microseconds.size());
  // Line end, onset, offset.
  constexpr size_t markerLength = 2 + 10 + 14;
  const size_t firstMarker = expected.size();
  for (size_t i = 0; i < microseconds.size(); ++i) {
    const size_t onset = firstMarker + i * markerLength + 2;
    ASSERT_GE(text.size(), onset + 10);
    const double written = std::atof(text.substr(onset, 10).c_str());
    EXPECT_NEAR(written, microseconds[i], 1.0) << "marker " << i;
    char line[64];
    std::snprintf(line, sizeof line, "\r\n%10.0f%14.0f", written, written);
    expected += line;
  }
  EXPECT_EQ(text, expected + "\r\nColor:              64 64 255");
}

TEST_F(OutputFiles, MarkEverySliceWhereVolumesAreSeparatedByGaps) {
  const ScannedRecording made = scannedWithVolumeGaps();
  const std::string ctc = write(made.recording);
  const HostRunResult result = run(answers(ctc));
  const MeasuredNumbers found = withoutMeasuredNumbers(result.transcript);
  std::vector<double> markers;
  for (int v = 0; v < 12; ++v)
    for (int s = 0; s < 10; ++s)
      markers.push_back(1e6 * (v * found.volumeDurations.at(0) + found.firstTriggerTimes.at(0) +
                               s * found.sliceDurations.at(0)));
  expectTriggers(readFile(path("run1_GRA_ArtifactsTriggers.prt")), ctc, markers);
}

TEST_F(OutputFiles, MarkEveryVolumeInContinuousAcquisition) {
  const ScannedRecording made = scannedContinuously();
  const std::string ctc = write(made.recording);
  const HostRunResult result = run(answers(ctc));
  const MeasuredNumbers found = withoutMeasuredNumbers(result.transcript);
  std::vector<double> markers;
  for (int v = 0; v < 22; ++v)
    markers.push_back(1e6 * (v * found.volumeDurations.at(0) + found.firstTriggerTimes.at(0)));
  expectTriggers(readFile(path("run1_GRA_ArtifactsTriggers.prt")), ctc, markers);
}

TEST_F(OutputFiles, AreTheSameForEverySampleTypeAndOrganisationOfTheInput) {
  ScannedRecording made = scannedWithVolumeGaps();
  std::string expected;
  for (const int32_t dataType : {1, 2, 3}) {
    for (const int32_t dataOrganisation : {1, 2}) {
      made.recording.dataType = dataType;
      made.recording.dataOrganisation = dataOrganisation;
      runHealthy(answers(write(made.recording)));
      // Whole microvolts are exact in each of them, so nothing is left to rounding.
      const std::string output = readFile(path("run1_GRA.ctc"));
      if (expected.empty()) expected = output;
      EXPECT_TRUE(output == expected) << "type " << dataType << ", organisation " << dataOrganisation;
    }
  }
  expectCorrected(made);
}

} // namespace
} // namespace emeg::test
