#include "artifacts/gradient/timing/choice/TimingEvidence.h"

#include "artifacts/gradient/timing/volumes/SharpenedSignal.h"
#include "tests/artifacts/gradient/timing/SimulatedScan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace emeg {
namespace {

constexpr double fs = 1000;

/// Volumes of 100 samples, each with two inner slices alike and noise of the given variance.
std::vector<double> volumes(int count, double noise) {
  std::mt19937 generator(5);
  std::normal_distribution<double> normal;
  std::vector<double> signal;
  for (int v = 0; v < count; v++)
    for (int t = 0; t < 100; t++)
      signal.push_back(std::sin(2 * M_PI * (t % 25) / 5.0) + std::sqrt(noise) * normal(generator));
  return signal;
}

ScanSegment scanOf(int count) {
  ScanSegment scan;
  scan.begin = 0;
  scan.end = 100.0 * count;
  scan.volumeDuration = 100;
  scan.nrOfVolumes = count;
  scan.nrOfSlicesPerVolume = 4;
  scan.sliceDuration = 25;
  return scan;
}

TEST(TimingEvidence, NoiseIsUnlikeAndWaveformsAreAlike) {
  // Power 0.5 of the waveform, 0.125 of noise: a fifth is unlike.
  const TimingEvidence evidence = evidenceFor(volumes(200, 0.125), fs, {scanOf(200)});
  EXPECT_NEAR(evidence.unlikeVolumes, 0.2, 0.01);
  EXPECT_NEAR(evidence.unexplained, 0.2, 0.01);
  EXPECT_NEAR(evidence.unlikeSlices, 0.2, 0.02);
  EXPECT_FALSE(evidence.goesOnOutside);
}

TEST(TimingEvidence, PureNoiseHasNothingInCommon) {
  std::mt19937 generator(6);
  std::normal_distribution<double> normal;
  std::vector<double> noise(20000);
  for (double& value : noise) value = normal(generator);
  const TimingEvidence evidence = evidenceFor(noise, fs, {scanOf(200)});
  EXPECT_GT(evidence.unlikeVolumes, 0.95);
  EXPECT_GT(evidence.unexplained, 0.95);
}

TEST(TimingEvidence, WhatLiesOutsideIsUnexplainedAndSeen) {
  const std::vector<double> signal = volumes(40, 0);
  ScanSegment half = scanOf(20);
  const TimingEvidence evidence = evidenceFor(signal, fs, {half});
  EXPECT_NEAR(evidence.unexplained, 0.5, 0.01);
  EXPECT_NEAR(evidence.unlikeVolumes, 0, 0.001);
  EXPECT_TRUE(evidence.goesOnOutside);
  ScanSegment rest = half;
  rest.begin = rest.firstVolumeOnset = 2000;
  rest.end = 4000;
  EXPECT_FALSE(evidenceFor(signal, fs, {half, rest}).goesOnOutside);
}

TEST(TimingEvidence, AWrongVolumeDurationLeavesMore) {
  const SimulatedScan scan = simulateScan(Preset::Continuous, 2000, 30);
  const std::vector<double> sharpened = sharpenedSignal(scan.recorded, scan.fs);
  ScanSegment segment;
  segment.begin = scan.onsetOf(0);
  segment.firstVolumeOnset = scan.onsetOf(0);
  segment.volumeDuration = scan.timing().volumeDuration * scan.fs;
  segment.sliceDuration = scan.timing().sliceDuration * scan.fs;
  segment.nrOfVolumes = static_cast<int32_t>(scan.timing().nrOfVolumes);
  segment.nrOfSlicesPerVolume = scan.timing().nrOfSlicesPerVolume;
  segment.end = scan.timing().end() * scan.fs;
  const TimingEvidence right = evidenceFor(sharpened, scan.fs, {segment});
  EXPECT_LT(right.unlikeVolumes, 0.01);
  EXPECT_LT(right.unlikeSlices, 0.01);
  EXPECT_FALSE(right.goesOnOutside);
  segment.volumeDuration += 0.01;
  EXPECT_GT(evidenceFor(sharpened, scan.fs, {segment}).unlikeFar, 2 * right.unlikeFar);
  segment.volumeDuration += 0.49;
  EXPECT_GT(evidenceFor(sharpened, scan.fs, {segment}).unlikeVolumes, 10 * right.unlikeVolumes);
}

TEST(TimingEvidence, NothingToLookAt) {
  EXPECT_EQ(evidenceFor({}, fs, {scanOf(3)}).unexplained, 1);
  EXPECT_EQ(evidenceFor(std::vector<double>(1000, 0.0), fs, {scanOf(3)}).unexplained, 1);
  EXPECT_EQ(evidenceFor(volumes(3, 0), fs, {}).unexplained, 1);
}

} // namespace
} // namespace emeg
