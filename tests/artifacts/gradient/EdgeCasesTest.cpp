#include "artifacts/gradient/timing/pauses/BurstDelay.h"
#include "artifacts/gradient/timing/pauses/FirstTrigger.h"
#include "artifacts/gradient/timing/pauses/SequenceDetection.h"
#include "artifacts/gradient/timing/pauses/SliceCounts.h"
#include "dsp/FFTWorkspace.h"
#include "tests/artifacts/BurstTrain.h"
#include "tests/artifacts/gradient/SplinedRecording.h"
#include "tests/artifacts/reference/LiteralSequenceDetection.h"

#include <gtest/gtest.h>

#include <cmath>

namespace emeg {
namespace {

std::vector<std::string> logOfFailedDetection(const std::vector<double>& signal, double fs) {
  const SplinedRecording recording(signal);
  std::vector<std::string> log;
  FFTWorkspace workspace;
  const MRSequence sequence =
      detectMRSequence(recording.view(), fs, literalLog2Length(signal.size() + 10), workspace,
                       [&](const std::string& line) { log.push_back(line); });
  EXPECT_EQ(sequence.nrOfVolumes, 0);
  EXPECT_EQ(sequence.nrOfSlicesPerVolume, 0);
  EXPECT_EQ(sequence.sliceDuration, 0);
  EXPECT_EQ(sequence.volumeDuration, 0);
  EXPECT_EQ(sequence.firstTriggerTime, 0);
  return log;
}

} // namespace

TEST(SequenceDetection, FindsNothingInAFlatSignalAndSaysTheCounts) {
  EXPECT_EQ(
      logOfFailedDetection(std::vector<double>(5000, 0.0), 1000),
      (std::vector<std::string>{"Automatic detection of MR sequence parameters",
                                "No volumes gaps in this data set (continuous acquisition)",
                                "Number of volumes: 0", "Number of slices per volume: 0", "First slice: 0"}));
}

TEST(SequenceDetection, EndsOnSignalsOfAFewSamples) {
  for (size_t n = 1; n < 40; ++n) {
    std::vector<double> signal(n);
    for (size_t i = 0; i < n; ++i) signal[i] = std::sin(static_cast<double>(i * i));
    for (const double fs : {10.0, 250.0, 5000.0}) logOfFailedDetection(signal, fs);
  }
}

TEST(SequenceDetection, EndsOnHugeAndTinyAmplitudes) {
  BurstTrain train = BurstTrain::withGaps();
  for (const double scale : {1e-300, 1e-40, 1e30}) {
    std::vector<double> signal = train.recording();
    for (double& sample : signal) sample *= scale;
    const SplinedRecording recording(signal);
    FFTWorkspace workspace;
    detectMRSequence(recording.view(), train.samplingFrequency, literalLog2Length(signal.size() + 10),
                     workspace, [](const std::string&) {});
  }
}

TEST(FirstTrigger, IsTheFirstBurstWhereNoGapIsLeft) {
  BurstTrain train = BurstTrain::withGaps();
  train.nrOfVolumes = 12;
  std::vector<double> signal = train.recording();
  const SplinedRecording recording(signal);
  MRSequence sequence;
  sequence.nrOfVolumes = 1;
  sequence.nrOfSlicesPerVolume = 10;
  sequence.sliceDuration = train.sliceDuration;
  sequence.volumeDuration = 10 * train.sliceDuration;
  // No gap is left between volumes: the first trigger is where the first burst was seen.
  EXPECT_EQ(firstTriggerInVolumeGaps(recording.view(), sequence, 3236.0, 2000.0), 3236.0 / 2000.0);
}

// One interval is much shorter than all others: the threshold lies between it and the next one, and all
// others count as longer.
TEST(SliceCounts, TakeTheMeanOfTheFirstTwoIntervalsWhereTheLargestJumpIsTheFirst) {
  std::vector<double> signal(4000, 0.0);
  std::vector<QuietRun> runs;
  int64_t onset = 100;
  for (const int64_t interval : {100, 100, 60, 100, 100, 100, 100}) {
    for (int64_t t = 0; t < 40; ++t)
      signal[static_cast<size_t>(onset + t)] = std::sin(0.3 * static_cast<double>(t)) * 100;
    runs.push_back({onset - 20, 20});
    onset += interval;
  }
  QuietBands bands;
  bands.slice = {10, 30};
  const SplinedRecording recording(signal);
  const BurstDelay delays(recording.view(), runs, 2);
  std::vector<std::string> log;
  countContinuous(runs, bands, delays, 1000, [&](const std::string& line) { log.push_back(line); });
  ASSERT_EQ(log.size(), 5u);
  for (const std::string& line : log) EXPECT_NE(line.find(" / 0.0800000"), std::string::npos) << line;
}

TEST(BurstDelay, IsFoundToAThousandthOfASample) {
  BurstTrain train = BurstTrain::withGaps();
  train.noiseRms = 0.1;
  train.readoutFrequency = 100; // far below Nyquist, where the spline through the samples is exact enough
  const SplinedRecording recording(train.recording());
  // Quiet runs end where the bursts of slices 2, 3, 4 and 5 begin, to within a sample.
  std::vector<QuietRun> runs;
  for (int32_t s = 2; s <= 5; ++s)
    runs.push_back({0, static_cast<int64_t>(train.onset(1, s) * train.samplingFrequency)});
  const BurstDelay delays(recording.view(), runs, 2);
  EXPECT_NEAR(delays.measureBurstDelay(0, 1), train.sliceDuration * train.samplingFrequency, 2e-3);
  EXPECT_NEAR(delays.measureBurstDelay(0, 2), 2 * train.sliceDuration * train.samplingFrequency, 2e-3);
  EXPECT_NEAR(delays.measureBurstDelay(2, 0), -2 * train.sliceDuration * train.samplingFrequency, 2e-3);
}

TEST(BurstDelay, DoesNotExistBeforeTheFirstRunOrWithoutSamplesToCompare) {
  const SplinedRecording recording(std::vector<double>(100, 1.0));
  const std::vector<QuietRun> runs = {{0, 20}, {30, 20}, {60, 40}};
  const BurstDelay delays(recording.view(), runs, 1);
  EXPECT_TRUE(std::isnan(delays.measureBurstDelay(-1, 0)));
  EXPECT_TRUE(std::isnan(delays.measureBurstDelay(0, 2)));
  EXPECT_TRUE(std::isnan(delays.measureBurstDelay(0, 7)));
  EXPECT_FALSE(std::isnan(delays.measureBurstDelay(0, 1)));
}

TEST(BurstDelay, StaysInsideTheSignalAtItsEnds) {
  std::vector<double> signal(64);
  for (size_t i = 0; i < signal.size(); ++i) signal[i] = static_cast<double>(i * i);
  const SplinedRecording recording(signal);
  for (int64_t end = 1; end <= 64; ++end) {
    const std::vector<QuietRun> runs = {{0, end / 2}, {0, end}};
    for (const int32_t width : {1, 5, 10}) {
      const BurstDelay delays(recording.view(), runs, width);
      delays.measureBurstDelay(0, 1);
      delays.measureBurstDelay(1, 0);
    }
  }
}

} // namespace emeg
