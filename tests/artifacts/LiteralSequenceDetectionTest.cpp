#include "tests/artifacts/reference/LiteralSequenceDetection.h"

#include "tests/artifacts/BurstTrain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace emeg {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::Optional;
using ::testing::StartsWith;

LiteralDetection detectedIn(const std::vector<double>& signal, double fs) {
  return literalDetectMRSequence(signal, fs, literalLog2Length(signal.size() + 2));
}

void expectTiming(const LiteralDetection& detection, const BurstTrain& train, int32_t nrOfVolumes) {
  EXPECT_TRUE(detection.found);
  EXPECT_EQ(detection.nrOfVolumes, nrOfVolumes);
  EXPECT_EQ(detection.nrOfSlicesPerVolume, train.nrOfSlicesPerVolume);
  EXPECT_NEAR(detection.volumeDuration / train.volumeDuration, 1.0, 1e-6);
  EXPECT_NEAR(detection.sliceDuration / train.sliceDuration, 1.0, 1e-5);
  EXPECT_NEAR(detection.firstTriggerTime, train.firstOnset, 0.010);
}

TEST(LiteralSequenceDetection, FindsTheTimingOfDataWithVolumeGaps) {
  for (uint64_t seed = 1; seed <= 3; ++seed) {
    BurstTrain train = BurstTrain::withGaps();
    train.seed = seed;
    const LiteralDetection detection = detectedIn(train.recording(), train.samplingFrequency);
    EXPECT_TRUE(detection.volumeGaps);
    expectTiming(detection, train, train.nrOfVolumes);
  }
}

TEST(LiteralSequenceDetection, FindsTheTimingOfContinuousAcquisition) {
  for (uint64_t seed = 1; seed <= 3; ++seed) {
    BurstTrain train = BurstTrain::continuous();
    train.seed = seed;
    const LiteralDetection detection = detectedIn(train.recording(), train.samplingFrequency);
    EXPECT_FALSE(detection.volumeGaps);
    expectTiming(detection, train, train.nrOfVolumes);
  }
}

TEST(LiteralSequenceDetection, FindsTheTimingWithFewerThanTwoHundredDelays) {
  const BurstTrain train = BurstTrain::continuousWithoutQuiet(8.9); // 122 slices, 8 complete volumes
  const LiteralDetection detection = detectedIn(train.recording(), train.samplingFrequency);
  EXPECT_FALSE(detection.volumeGaps);
  expectTiming(detection, train, 8);
}

TEST(LiteralSequenceDetection, MeasuresThreeContinuousVolumesByTheFirstTwo) {
  const BurstTrain train = BurstTrain::continuousWithoutQuiet(3.7);
  const LiteralDetection detection = detectedIn(train.recording(), train.samplingFrequency);
  EXPECT_TRUE(detection.found);
  EXPECT_EQ(detection.nrOfVolumes, 3);
  EXPECT_NEAR(detection.volumeDuration / train.volumeDuration, 1.0, 1e-5);
}

TEST(LiteralSequenceDetection, TakesTheQuietAroundAShortContinuousScanForGaps) {
  // Up to 100 slices per quiet run of similar length (and one more) the rule for gaps holds.
  BurstTrain train = BurstTrain::continuous();
  train.nrOfVolumes = 8;
  train.seconds = 12.0;
  EXPECT_TRUE(detectedIn(train.recording(), train.samplingFrequency).volumeGaps);
}

TEST(LiteralSequenceDetection, FindsTheTimingAtOneKilohertz) {
  BurstTrain train = BurstTrain::withGaps();
  train.samplingFrequency = 1000.0;
  train.readoutFrequency = 230.0;
  expectTiming(detectedIn(train.recording(), train.samplingFrequency), train, train.nrOfVolumes);
}

TEST(LiteralSequenceDetection, LogsItsFindingsInOrder) {
  const BurstTrain gaps = BurstTrain::withGaps();
  EXPECT_THAT(detectedIn(gaps.recording(), gaps.samplingFrequency).log,
              ElementsAre("Automatic detection of MR sequence parameters", "Number of volumes: 12",
                          "Number of slices per volume: 10", "First slice: 0",
                          StartsWith("Volume duration (s): 1.00033"),
                          StartsWith("Slice duration (s): 0.07501"),
                          StartsWith("First trigger time (s): 1.6")));

  const BurstTrain train = BurstTrain::continuous();
  const std::vector<std::string> log = detectedIn(train.recording(), train.samplingFrequency).log;
  ASSERT_EQ(log.size(), 8U + 14U);
  EXPECT_EQ(log[1], "No volumes gaps in this data set (continuous acquisition)");
  // 200 delays of 14 slices hold 14 pauses, listed by duration.
  double previous = 0.0;
  for (std::size_t i = 2; i < log.size() - 6; ++i) {
    ASSERT_THAT(log[i], HasSubstr(" / 0.07")) << i;
    const double duration = std::stod(log[i].substr(log[i].find(" / ") + 3));
    EXPECT_NEAR(duration, train.sliceDuration + 0.0043, 1e-4);
    EXPECT_LE(previous, duration);
    previous = duration;
    EXPECT_EQ(std::stoi(log[i]) % 14, 13);
  }
  EXPECT_EQ(log[log.size() - 6], "Number of volumes: 24");
  EXPECT_EQ(log[log.size() - 5], "Number of slices per volume: 14");
  EXPECT_EQ(log[log.size() - 4], "First slice: 1");
  EXPECT_THAT(log.back(), StartsWith("First trigger time: 1.6"));
}

TEST(LiteralSequenceDetection, FindsNothingInAFlatSignal) {
  const LiteralDetection detection = detectedIn(std::vector<double>(4000, 0.0), 1000.0);
  EXPECT_FALSE(detection.found);
  EXPECT_EQ(detection.nrOfVolumes, 0);
  EXPECT_EQ(detection.nrOfSlicesPerVolume, 0);
  EXPECT_EQ(detection.sliceDuration, 0.0);
  EXPECT_EQ(detection.volumeDuration, 0.0);
  EXPECT_THAT(detection.log,
              ElementsAre("Automatic detection of MR sequence parameters",
                          "No volumes gaps in this data set (continuous acquisition)", "Number of volumes: 0",
                          "Number of slices per volume: 0", "First slice: 0"));
}

TEST(LiteralSequenceDetection, FindsNothingWithASingleLongInterval) {
  // Not quite two volumes: one pause among the delays.
  const BurstTrain train = BurstTrain::continuousWithoutQuiet(1.95);
  const LiteralDetection detection = detectedIn(train.recording(), train.samplingFrequency);
  EXPECT_FALSE(detection.found);
  EXPECT_EQ(detection.sliceDuration, 0.0);
  EXPECT_THAT(detection.log.back(), StartsWith("First slice: "));
  EXPECT_THAT(detection.log, Not(::testing::Contains(StartsWith("Slice duration"))));
}

TEST(LiteralSequenceDetection, TheThresholdIsHalfTheMeanOfTheTopDecile) {
  // 0.000, 0.001, ... 9.999: the upper tenth has the mean 9.5; the percentile lies one bin below its place.
  std::vector<double> ramp(10000);
  for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<double>(i) * 0.001;
  EXPECT_THAT(literalThreshold(ramp), Optional(::testing::DoubleNear(0.5 * 9.4995, 0.002)));
  EXPECT_EQ(literalThreshold(std::vector<double>(100, 0.0)), std::nullopt);
  EXPECT_EQ(literalThreshold({}), std::nullopt);
}

TEST(LiteralSequenceDetection, IsolatedSpikesMoveTheThresholdLittle) {
  std::vector<double> envelope(20000);
  for (std::size_t i = 0; i < envelope.size(); ++i) envelope[i] = i % 100 < 70 ? 1000.0 : 5.0;
  const double before = *literalThreshold(envelope);
  envelope[777] = envelope[4321] = 3000.0;
  EXPECT_NEAR(*literalThreshold(envelope) / before, 1.0, 0.01);
}

TEST(LiteralSequenceDetection, KeepsQuietRunsThatAreLongerThanTheMinimum) {
  std::vector<double> envelope(40, 9.0);
  for (std::size_t i = 0; i < 5; ++i) envelope[i] = 0.5;    // 5 samples
  for (std::size_t i = 10; i < 14; ++i) envelope[i] = -1.0; // 4 samples: not longer than the minimum
  for (std::size_t i = 20; i < 28; ++i) envelope[i] = 1.0;  // at the threshold itself
  for (std::size_t i = 34; i < 40; ++i) envelope[i] = 0.0;  // up to the end
  envelope[30] = -9.0;
  const std::vector<LiteralRun> runs = literalQuietRuns(envelope, 1.0, 4);
  ASSERT_EQ(runs.size(), 3U);
  EXPECT_EQ(runs[0].start, 0);
  EXPECT_EQ(runs[0].length, 5);
  EXPECT_EQ(runs[1].start, 20);
  EXPECT_EQ(runs[1].length, 8);
  EXPECT_EQ(runs[2].start, 34);
  EXPECT_EQ(runs[2].length, 6);
  EXPECT_TRUE(literalQuietRuns({}, 1.0, 4).empty());
}

std::vector<LiteralRun> runsOfLengths(const std::vector<int64_t>& lengths) {
  std::vector<LiteralRun> runs;
  int64_t start = 0;
  for (const int64_t length : lengths) {
    runs.push_back({start, length});
    start += length + 50;
  }
  return runs;
}

TEST(LiteralSequenceDetection, SortsLengthClassesByFrequency) {
  const auto classes = literalLengthClasses(runsOfLengths({1000, 50, 55, 300, 45, 310, 70, 71, 290}));
  ASSERT_EQ(classes.size(), 4U);
  EXPECT_EQ(classes[0].length, 50); // 50, 55, 45, 70: 70 is still within the factor 1.4
  EXPECT_EQ(classes[0].count, 4);
  EXPECT_EQ(classes[1].length, 300);
  EXPECT_EQ(classes[1].count, 3);
  EXPECT_EQ(classes[2].length, 1000); // ties keep their order
  EXPECT_EQ(classes[3].length, 71);
}

TEST(LiteralSequenceDetection, ARareClassIsNotTakenForVolumeGaps) {
  EXPECT_EQ(literalGapClass({{50, 100}, {300, 0}}), std::optional<std::size_t>(1));
  EXPECT_EQ(literalGapClass({{50, 101}, {300, 0}}), std::nullopt);
  EXPECT_EQ(literalGapClass({{50, 202}, {300, 1}}), std::nullopt);
  EXPECT_EQ(literalGapClass({{50, 200}, {300, 1}}), std::optional<std::size_t>(1));
  // Shorter than the slice gap; too frequent to be the gap between volumes; none at all.
  EXPECT_EQ(literalGapClass({{50, 100}, {30, 10}, {300, 9}}), std::optional<std::size_t>(2));
  EXPECT_EQ(literalGapClass({{50, 30}, {300, 19}}), std::nullopt);
  EXPECT_EQ(literalGapClass({{50, 31}, {300, 19}}), std::optional<std::size_t>(1));
  EXPECT_EQ(literalGapClass({{50, 30}}), std::nullopt);
  EXPECT_EQ(literalGapClass({}), std::nullopt);
}

TEST(LiteralSequenceDetection, RunsOutsideTheListFitNoBandAndEndWithTheRecording) {
  const LiteralRunList list{runsOfLengths({50, 60}), 999};
  const LiteralBand everything{0, 100000};
  EXPECT_TRUE(list.fits(0, everything));
  EXPECT_TRUE(list.fits(1, everything));
  EXPECT_FALSE(list.fits(-1, everything));
  EXPECT_FALSE(list.fits(2, everything));
  EXPECT_FALSE(list.fits(0, LiteralBand{51, 70}));
  EXPECT_EQ(list.end(1), 160);
  EXPECT_EQ(list.end(2), 999);
}

TEST(LiteralSequenceDetection, MeasuresADelayToAFewThousandthsOfASample) {
  const BurstTrain train = BurstTrain::withGaps();
  const double fs = train.samplingFrequency;
  const std::vector<double> signal = train.artifact();
  const LiteralSpline spline = literalSpline(signal);
  // Quiet runs made by hand around three slices, their ends a little off.
  const auto sampleOf = [&](int32_t slice) {
    return static_cast<int64_t>(std::floor(train.onset(0, slice) * fs));
  };
  LiteralRunList list;
  list.nrOfTimePoints = static_cast<int64_t>(signal.size());
  for (int32_t slice = 1; slice <= 4; ++slice) list.runs.push_back({sampleOf(slice) - 30, 30 + slice % 2});
  EXPECT_NEAR(literalBurstDelay(spline, list, 0, 1, 2), train.sliceDuration * fs, 3e-3);
  EXPECT_NEAR(literalBurstDelay(spline, list, 0, 2, 2), 2.0 * train.sliceDuration * fs, 3e-3);
  EXPECT_NEAR(literalBurstDelay(spline, list, 2, 0, 2), -2.0 * train.sliceDuration * fs, 3e-3);
  EXPECT_NEAR(literalBurstDelay(spline, list, 1, 1, 2), 0.0, 1e-5);
}

TEST(LiteralSequenceDetection, TheMismatchOfAStretchWithItselfIsZero) {
  const BurstTrain train = BurstTrain::withGaps();
  const LiteralSpline spline = literalSpline(train.recording());
  EXPECT_EQ(literalSplineMismatch(spline, 500, 500.0, 100), 0.0);
  EXPECT_GT(literalSplineMismatch(spline, 500, 500.3, 100), 0.0);
}

TEST(LiteralSequenceDetection, TheSplineDerivativeIsTheSlopeOfItsValue) {
  const LiteralSpline spline = literalSpline(BurstTrain::withGaps().noise());
  for (const double f : {0.1, 0.5, 0.9}) {
    const double step = 1e-5;
    const double slope =
        (literalSplineValue(spline, 40, f + step) - literalSplineValue(spline, 40, f - step)) / (2.0 * step);
    EXPECT_NEAR(literalSplineDerivative(spline, 40, f), slope, 1e-5);
  }
  EXPECT_EQ(literalSplineValue(spline, -1, 0.5), 0.0);
  EXPECT_EQ(literalSplineValue(spline, static_cast<int64_t>(spline.y.size()), 0.0), 0.0);
}

TEST(LiteralSequenceDetection, TheWindowIsRoundedUpToWholeSeconds) {
  LiteralTiming timing;
  timing.nrOfSlicesPerVolume = 20;
  timing.volumeDuration = 1.8003371;
  EXPECT_EQ(literalWindowHalfLength(150, timing), 14); // 13.5 s
  EXPECT_EQ(literalWindowHalfLength(1, timing), 1);
}

} // namespace
} // namespace emeg
