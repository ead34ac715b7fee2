#include "artifacts/gradient/timing/volumes/ScanDetection.h"

#include "tests/artifacts/gradient/timing/SimulatedScan.h"

#include <gtest/gtest.h>

#include <cmath>

namespace emeg {
namespace {

constexpr double largestDrift = 0.01; // samples over the whole scan

/// Counts are exact and no volume is further off than the first one by more than a hundredth of a sample.
void expectFound(const SimulatedScan& scan, const ScanSegment& found, const ScanTiming& truth) {
  EXPECT_EQ(found.nrOfVolumes, truth.nrOfVolumes);
  EXPECT_EQ(found.nrOfSlicesPerVolume, truth.nrOfSlicesPerVolume);
  EXPECT_TRUE(found.isCountIdentifiable);
  EXPECT_NEAR(found.volumeDuration * found.nrOfVolumes, truth.volumeDuration * scan.fs * found.nrOfVolumes,
              largestDrift);
  EXPECT_NEAR(found.sliceDuration, truth.sliceDuration * scan.fs, 0.01);
  // Where slices overlap, cutting costs least some time after the onset.
  EXPECT_NEAR(found.firstVolumeOnset, truth.firstVolumeOnset * scan.fs, 0.03 * scan.fs);
  EXPECT_FALSE(found.beginsInVolume);
  EXPECT_FALSE(found.endsInVolume);
}

void expectAllFound(const SimulatedScan& scan) {
  const std::vector<ScanSegment> found = detectScans(scan.recorded, scan.fs);
  ASSERT_EQ(found.size(), scan.timings.size());
  for (size_t i = 0; i < found.size(); i++) {
    SCOPED_TRACE(i);
    expectFound(scan, found[i], scan.timings[i]);
  }
}

TEST(ScanDetection, FindsScansWithVolumeGaps) {
  expectAllFound(simulateScan(Preset::Gap, 2000, 30));
}

TEST(ScanDetection, FindsContinuousScansAtEverySamplingRate) {
  for (const double fs : {1000.0, 2000.0, 5000.0}) {
    SCOPED_TRACE(fs);
    expectAllFound(simulateScan(Preset::Continuous, fs, 30));
  }
}

TEST(ScanDetection, NeedsNoQuietBetweenSlices) {
  expectAllFound(simulateScan(Preset::Fill, 2000, 30));
}

TEST(ScanDetection, NeedsNeitherQuietNorDeadTime) {
  for (const double fs : {1000.0, 2000.0}) {
    SCOPED_TRACE(fs);
    expectAllFound(simulateScan(Preset::Fill, fs, 40, [](auto& p) { p.gradient->gapDuration = 0; }));
  }
}

TEST(ScanDetection, EquallySpacedScansAreNotTheVolumesOfOne) {
  for (const uint64_t seed : {13u, 14u})
    expectAllFound(simulateScan(
        Preset::Gap, 1000, 40,
        [](auto& p) {
          p.gradient->nrOfScans = 3;
          p.gradient->nrOfVolumes = 4;
          p.gradient->pauseDuration = 3;
        },
        seed));
}

TEST(ScanDetection, CountsSlicesWithTwoBurstsOnce) {
  expectAllFound(simulateScan(Preset::TwoBursts, 2000, 30));
}

TEST(ScanDetection, TellsVolumesFromEquidistantSlicesByTheFirstSlice) {
  for (const double difference : {0.03, 0.15}) {
    SCOPED_TRACE(difference);
    expectAllFound(simulateScan(Preset::Equidistant, 2000, 40,
                                [&](auto& p) { p.gradient->firstSliceDifference = difference; }));
  }
}

TEST(ScanDetection, SaysThatNothingTellsAlikeSlicesApart) {
  const SimulatedScan scan =
      simulateScan(Preset::Equidistant, 2000, 40, [](auto& p) { p.gradient->firstSliceDifference = 0; });
  const std::vector<ScanSegment> found = detectScans(scan.recorded, scan.fs);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_FALSE(found[0].isCountIdentifiable);
  EXPECT_NEAR(found[0].sliceDuration, scan.timing().sliceDuration * scan.fs, 1e-4);
  EXPECT_NEAR(found[0].volumeDuration, found[0].nrOfSlicesPerVolume * found[0].sliceDuration, 1e-9);
  EXPECT_NEAR(found[0].firstVolumeOnset, scan.onsetOf(0), 0.025 * scan.fs);
}

TEST(ScanDetection, FindsShortVolumesOfMultibandSequences) {
  expectAllFound(simulateScan(Preset::Multiband, 2000, 30));
}

TEST(ScanDetection, FindsMoreThanAHundredSlices) {
  for (const int slices : {120, 180}) {
    SCOPED_TRACE(slices);
    expectAllFound(simulateScan(Preset::ManySlices, 1000, 40,
                                [&](auto& p) { p.gradient->nrOfSlicesPerVolume = slices; }));
  }
}

TEST(ScanDetection, FindsScansOfThreeVolumes) {
  expectAllFound(simulateScan(Preset::Continuous, 2000, 30, [](auto& p) { p.gradient->nrOfVolumes = 3; }));
}

TEST(ScanDetection, SpikesAndDropoutsSpoilNothing) {
  for (const uint64_t seed : {1, 2, 3}) {
    SCOPED_TRACE(seed);
    expectAllFound(simulateScan(
        Preset::Continuous, 1000, 40, [](auto& p) { p.disturbances.nrOfSpikes = 2; }, seed));
    expectAllFound(simulateScan(
        Preset::Continuous, 1000, 40, [](auto& p) { p.disturbances.nrOfDropouts = 1; }, seed));
  }
}

TEST(ScanDetection, ClippedVolumesAreNotGatheredIntoLargerOnes) {
  for (const double fs : {1000.0, 2000.0}) {
    SCOPED_TRACE(fs);
    expectAllFound(simulateScan(
        Preset::Continuous, fs, 40, [](auto& p) { p.disturbances.clipUv = 1500; }, 3));
  }
}

TEST(ScanDetection, FindsSmallArtifacts) {
  expectAllFound(simulateScan(Preset::Continuous, 2000, 40, [](auto& p) { p.gradient->peakUv = 150; }));
}

TEST(ScanDetection, FindsEachOfSeveralScans) {
  expectAllFound(simulateScan(Preset::Gap, 2000, 60, [](auto& p) {
    p.gradient->nrOfScans = 3;
    p.gradient->pauseDuration = 3;
  }));
}

TEST(ScanDetection, ToleratesVolumesThatComeEarlyOrLate) {
  const SimulatedScan scan =
      simulateScan(Preset::Continuous, 5000, 30, [](auto& p) { p.gradient->onsetJitterRms = 10e-6; });
  const std::vector<ScanSegment> found = detectScans(scan.recorded, scan.fs);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].nrOfVolumes, scan.timing().nrOfVolumes);
  EXPECT_EQ(found[0].nrOfSlicesPerVolume, scan.timing().nrOfSlicesPerVolume);
  // The jitter of the first and the last volumes tilts the line: 0.05 samples x sqrt(12 / 12 volumes).
  EXPECT_NEAR(found[0].volumeDuration * found[0].nrOfVolumes,
              scan.timing().volumeDuration * scan.fs * found[0].nrOfVolumes, 0.2);
}

TEST(ScanDetection, FollowsScansThatTheRecordingCuts) {
  const SimulatedScan scan = simulateScan(Preset::Continuous, 2000, 30, [](auto& p) {
    p.gradient->cutBefore = 0.9;
    p.gradient->endsInScan = true;
  });
  const std::vector<ScanSegment> found = detectScans(scan.recorded, scan.fs);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_TRUE(found[0].beginsInVolume);
  EXPECT_TRUE(found[0].endsInVolume);
  EXPECT_LT(found[0].begin, 0.03 * scan.fs);
  EXPECT_GT(found[0].end, (scan.seconds - 0.06) * scan.fs);
  EXPECT_NEAR(found[0].firstVolumeOnset, scan.onsetOf(1), 0.025 * scan.fs);
  EXPECT_EQ(found[0].nrOfSlicesPerVolume, 25);
}

TEST(ScanDetection, TheRecordingsEdgeIsNoFirstSlice) {
  const SimulatedScan scan = simulateScan(Preset::Equidistant, 2000, 40, [](auto& p) {
    p.gradient->cutBefore = 1.1;
    p.gradient->endsInScan = true;
  });
  const std::vector<ScanSegment> found = detectScans(scan.recorded, scan.fs);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_TRUE(found[0].isCountIdentifiable);
  EXPECT_NEAR(found[0].firstVolumeOnset, scan.onsetOf(1), 0.025 * scan.fs);
  EXPECT_EQ(found[0].nrOfSlicesPerVolume, 25);
}

TEST(ScanDetection, TakesAGivenTimingOnlyForAStart) {
  const SimulatedScan scan = simulateScan(Preset::Equidistant, 1000, 40);
  GivenTiming given;
  given.volumeDuration = 1.8; // 0.3 permille short
  given.nrOfSlicesPerVolume = 25;
  given.firstOnset = scan.timing().firstVolumeOnset;
  const std::vector<ScanSegment> found = detectScans(scan.recorded, scan.fs, given);
  ASSERT_EQ(found.size(), 1u);
  expectFound(scan, found[0], scan.timing());
  EXPECT_NEAR(found[0].firstVolumeOnset, scan.onsetOf(0), 1e-6);
}

TEST(ScanDetection, FindsNoScanWhereNobodyScans) {
  const auto none = [](auto& p) { p.gradient->peakUv = 0; };
  EXPECT_TRUE(detectScans(simulateScan(Preset::Gap, 1000, 40, none).recorded, 1000).empty());
  const auto mains = [](auto& p) {
    p.gradient->peakUv = 0;
    p.lineNoise = {50, 20};
  };
  EXPECT_TRUE(detectScans(simulateScan(Preset::Gap, 1000, 40, mains).recorded, 1000).empty());
}

TEST(ScanDetection, SequenceCountsPartsOfVolumes) {
  ScanSegment segment;
  segment.firstVolumeOnset = 1500;
  segment.volumeDuration = 2000;
  segment.sliceDuration = 100;
  segment.nrOfSlicesPerVolume = 18;
  segment.nrOfVolumes = 5;
  segment.beginsInVolume = true;
  const MRSequence sequence = sequenceOf(segment, 1000, 100);
  EXPECT_EQ(sequence.nrOfVolumes, 6);
  EXPECT_DOUBLE_EQ(sequence.firstTriggerTime, -0.6);
  EXPECT_DOUBLE_EQ(sequence.volumeDuration, 2);
  EXPECT_TRUE(sequence.hasVolumeGaps);
}

} // namespace
} // namespace emeg
