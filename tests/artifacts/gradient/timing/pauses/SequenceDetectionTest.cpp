#include "artifacts/gradient/timing/pauses/SequenceDetection.h"

#include "dsp/FFTWorkspace.h"
#include "tests/artifacts/BurstTrain.h"
#include "tests/artifacts/gradient/SplinedRecording.h"
#include "tests/artifacts/reference/LiteralSequenceDetection.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace emeg {
namespace {

struct Detection {
  MRSequence sequence;
  std::vector<std::string> log;
};

Detection detect(const std::vector<double>& signal, double samplingFrequency) {
  const SplinedRecording recording(signal);
  Detection detection;
  FFTWorkspace workspace;
  detection.sequence =
      detectMRSequence(recording.view(), samplingFrequency, literalLog2Length(signal.size() + 10), workspace,
                       [&](const std::string& line) { detection.log.push_back(line); });
  return detection;
}

/// Both implementations find the same, line by line and to rounding.
void expectAgreement(const std::vector<double>& signal, double samplingFrequency) {
  const LiteralDetection literal =
      literalDetectMRSequence(signal, samplingFrequency, literalLog2Length(signal.size() + 10));
  const Detection ours = detect(signal, samplingFrequency);
  EXPECT_EQ(ours.log, literal.log);
  EXPECT_EQ(ours.sequence.sliceDuration > 0, literal.found);
  EXPECT_EQ(ours.sequence.nrOfVolumes, literal.nrOfVolumes);
  EXPECT_EQ(ours.sequence.nrOfSlicesPerVolume, literal.nrOfSlicesPerVolume);
  EXPECT_NEAR(ours.sequence.volumeDuration, literal.volumeDuration, 1e-12);
  EXPECT_NEAR(ours.sequence.sliceDuration, literal.sliceDuration, 1e-12);
  EXPECT_NEAR(ours.sequence.firstTriggerTime, literal.firstTriggerTime, 1e-12);
  if (literal.found) {
    EXPECT_EQ(ours.sequence.hasVolumeGaps, literal.volumeGaps);
  }
}

} // namespace

TEST(SequenceDetection, FindsCountsAndDurationsInDataWithVolumeGaps) {
  for (const uint64_t seed : {1, 2, 3}) {
    BurstTrain train = BurstTrain::withGaps();
    train.seed = seed;
    const Detection found = detect(train.recording(), train.samplingFrequency);
    EXPECT_TRUE(found.sequence.hasVolumeGaps);
    EXPECT_EQ(found.sequence.nrOfVolumes, train.nrOfVolumes);
    EXPECT_EQ(found.sequence.nrOfSlicesPerVolume, train.nrOfSlicesPerVolume);
    EXPECT_NEAR(found.sequence.volumeDuration / train.volumeDuration, 1, 1e-6);
    EXPECT_NEAR(found.sequence.sliceDuration / train.sliceDuration, 1, 1e-5);
    EXPECT_NEAR(found.sequence.firstTriggerTime, train.firstOnset, 0.01);
  }
}

TEST(SequenceDetection, FindsCountsAndDurationsInContinuousAcquisition) {
  for (const uint64_t seed : {1, 2, 3}) {
    BurstTrain train = BurstTrain::continuous();
    train.seed = seed;
    const Detection found = detect(train.recording(), train.samplingFrequency);
    EXPECT_FALSE(found.sequence.hasVolumeGaps);
    EXPECT_EQ(found.sequence.nrOfVolumes, train.nrOfVolumes);
    EXPECT_EQ(found.sequence.nrOfSlicesPerVolume, train.nrOfSlicesPerVolume);
    EXPECT_NEAR(found.sequence.volumeDuration / train.volumeDuration, 1, 1e-6);
    EXPECT_NEAR(found.sequence.sliceDuration / train.sliceDuration, 1, 1e-5);
    EXPECT_NEAR(found.sequence.firstTriggerTime, train.firstOnset, 0.01);
  }
}

TEST(SequenceDetection, LogsContinuousAcquisitionButNotVolumeGaps) {
  const std::string line = "No volumes gaps in this data set (continuous acquisition)";
  const BurstTrain gaps = BurstTrain::withGaps();
  const BurstTrain continuous = BurstTrain::continuous();
  const Detection withGaps = detect(gaps.recording(), gaps.samplingFrequency);
  const Detection without = detect(continuous.recording(), continuous.samplingFrequency);
  EXPECT_EQ(std::count(withGaps.log.begin(), withGaps.log.end(), line), 0);
  EXPECT_EQ(std::count(without.log.begin(), without.log.end(), line), 1);
  EXPECT_EQ(without.log[1], line);
}

TEST(SequenceDetection, AgreesWithThePlainVersionOnVolumeGaps) {
  for (const double fs : {1000.0, 2000.0, 2048.0}) {
    for (const int32_t volumes : {1, 2, 3, 5, 12}) {
      BurstTrain train = BurstTrain::withGaps();
      train.samplingFrequency = fs;
      train.readoutFrequency = fs * 0.2;
      train.nrOfVolumes = volumes;
      train.seconds = 1.61803 + volumes * train.volumeDuration + 1.5;
      SCOPED_TRACE(testing::Message() << fs << " Hz, " << volumes << " volumes");
      expectAgreement(train.recording(), fs);
    }
  }
}

TEST(SequenceDetection, AgreesWithThePlainVersionOnContinuousAcquisition) {
  for (const double seconds : {4.5, 7.3, 13.0, 16.1, 20.0}) {
    const BurstTrain train = BurstTrain::continuousWithoutQuiet(seconds);
    SCOPED_TRACE(testing::Message() << seconds << " s");
    expectAgreement(train.recording(), train.samplingFrequency);
  }
  const BurstTrain train = BurstTrain::continuous();
  expectAgreement(train.recording(), train.samplingFrequency);
}

// The third volume's last burst only begins before the recording ends: there is nothing in it to align with.
TEST(SequenceDetection, LeavesOutABurstThatTheEndOfTheRecordingCutsOff) {
  const BurstTrain train = BurstTrain::continuousWithoutQuiet(3.0);
  const Detection found = detect(train.recording(), train.samplingFrequency);
  EXPECT_EQ(found.sequence.nrOfVolumes, 3);
  EXPECT_EQ(found.sequence.nrOfSlicesPerVolume, 14);
  EXPECT_NEAR(found.sequence.volumeDuration / train.volumeDuration, 1, 1e-5);
  EXPECT_NEAR(found.sequence.sliceDuration / train.sliceDuration, 1, 1e-5);
}

TEST(SequenceDetection, AgreesWithThePlainVersionOnFewSlices) {
  for (const int32_t slices : {2, 3, 4, 5}) {
    BurstTrain train = BurstTrain::withGaps();
    train.nrOfSlicesPerVolume = slices;
    SCOPED_TRACE(testing::Message() << slices << " slices");
    expectAgreement(train.recording(), train.samplingFrequency);
  }
}

TEST(SequenceDetection, AgreesWithThePlainVersionOnRecordingsCutInTheScan) {
  for (const double cut : {0.0, 0.9, 2.2, 3.6}) {
    BurstTrain train = BurstTrain::withGaps();
    std::vector<double> signal = train.recording();
    signal.erase(signal.begin(), signal.begin() + static_cast<int64_t>(cut * train.samplingFrequency));
    signal.resize(signal.size() - static_cast<size_t>((3.0 + cut) * train.samplingFrequency));
    SCOPED_TRACE(testing::Message() << cut << " s");
    expectAgreement(signal, train.samplingFrequency);
  }
}

// What looks like slices in noise is counted as in the plain version.
TEST(SequenceDetection, CountsInNoiseLikeThePlainVersion) {
  const auto upToTheCounts = [](std::vector<std::string> log) {
    const auto isLastCount = [](const std::string& line) { return line.rfind("First slice: ", 0) == 0; };
    log.erase(std::find_if(log.begin(), log.end(), isLastCount) + 1, log.end());
    return log;
  };
  for (const uint64_t seed : {1, 2, 3, 4}) {
    BurstTrain train = BurstTrain::withGaps();
    train.seed = seed;
    const LiteralDetection literal = literalDetectMRSequence(train.noise(), train.samplingFrequency,
                                                             literalLog2Length(train.nrOfTimePoints() + 10));
    EXPECT_EQ(upToTheCounts(detect(train.noise(), train.samplingFrequency).log), upToTheCounts(literal.log));
  }
}

} // namespace emeg
