// Scans whose waveform differs from channel to channel, and what goes wrong with channels.

#include "artifacts/gradient/timing/volumes/ScanDetection.h"

#include "tests/artifacts/gradient/timing/AxesScan.h"

#include <gtest/gtest.h>

#include <cmath>

namespace emeg {
namespace {

std::vector<ScanSegment> found(const std::vector<std::vector<double>>& channels, double fs) {
  return detectScansInChannels(
      [&](int channel, std::vector<double>& samples) { samples = channels[static_cast<size_t>(channel)]; },
      static_cast<int>(channels.size()), fs);
}

void expectFound(const AxesScan& scan, const std::vector<std::vector<double>>& channels,
                 double largestDrift = 0.02) {
  const std::vector<ScanSegment> scans = found(channels, scan.fs);
  ASSERT_EQ(scans.size(), 1u);
  EXPECT_EQ(scans[0].nrOfVolumes, scan.nrOfVolumes);
  EXPECT_EQ(scans[0].nrOfSlicesPerVolume, scan.nrOfSlices);
  EXPECT_TRUE(scans[0].isCountIdentifiable);
  EXPECT_NEAR(scans[0].firstVolumeOnset, scan.firstOnset * scan.fs, 0.02 * scan.fs);
  EXPECT_NEAR(scans[0].volumeDuration * scan.nrOfVolumes, scan.volumeDuration() * scan.fs * scan.nrOfVolumes,
              largestDrift);
}

TEST(DifferentWaveforms, ScansAreFoundAtEverySamplingRate) {
  for (const double fs : {1000.0, 2000.0, 5000.0}) {
    SCOPED_TRACE(fs);
    AxesScan scan;
    scan.fs = fs;
    scan.nrOfVolumes = 8;
    scan.seconds = 17;
    expectFound(scan, scan.channels(3));
  }
}

TEST(DifferentWaveforms, SamplingPhasesMakeNoLargerVolumes) {
  // The slice lasts 134.6, 88.5 or 74.7 samples: five, two or four of them take nearly whole samples.
  for (const double slice : {0.1346, 0.0885, 0.07475}) {
    SCOPED_TRACE(slice);
    AxesScan scan;
    scan.sliceDuration = slice;
    scan.deadTime = 0;
    scan.nrOfVolumes = static_cast<int>(33 / scan.volumeDuration());
    scan.firstSliceAddition = 0.15;
    expectFound(scan, scan.channels(3));
  }
}

TEST(DifferentWaveforms, ADeadAWeakAndANoisyChannelDoNotMatter) {
  AxesScan scan;
  std::vector<std::vector<double>> channels = scan.channels(6);
  AxesScan silent = scan;
  silent.peakUv = 0;
  AxesScan weak = scan;
  weak.peakUv = 10;
  channels[0].assign(channels[0].size(), 0.0);
  channels[1] = silent.channels(1).front();
  channels[2] = weak.channels(1).front();
  expectFound(scan, channels);
}

TEST(DifferentWaveforms, ChangingAmplitudesAndEarlyOrLateVolumesDoNotMatter) {
  AxesScan scan;
  scan.amplitudeDrift = 0.3;
  scan.jitter = 10e-6;
  // The jitter tilts the line by some 0.01 samples x sqrt(12 / 20 volumes); several times that is unlikely.
  expectFound(scan, scan.channels(3), 0.04);
}

TEST(DifferentWaveforms, ClocksMayDiffer) {
  AxesScan scan;
  const std::vector<std::vector<double>> channels = scan.channels(3);
  GivenTiming given; // by the scanner's clock, which is 100 ppm off
  given.volumeDuration = scan.volumeDuration() * (1 + 100e-6);
  given.nrOfSlicesPerVolume = scan.nrOfSlices;
  const std::vector<ScanSegment> scans = detectScans(channels[0], scan.fs, given);
  ASSERT_EQ(scans.size(), 1u);
  EXPECT_NEAR(scans[0].volumeDuration * scan.nrOfVolumes, scan.volumeDuration() * scan.fs * scan.nrOfVolumes,
              0.02);
}

TEST(DifferentWaveforms, SingleExcitationsAreSlicesThatNothingTellsApart) {
  AxesScan scan;
  scan.nrOfSlices = 1;
  scan.deadTime = 0;
  scan.firstSliceAddition = 0;
  scan.nrOfVolumes = 500;
  const std::vector<ScanSegment> scans = found(scan.channels(3), scan.fs);
  ASSERT_EQ(scans.size(), 1u);
  EXPECT_NEAR(scans[0].sliceDuration, scan.sliceDuration * scan.fs, 1e-3);
  EXPECT_NEAR(scans[0].begin, scan.firstOnset * scan.fs, 0.02 * scan.fs);
  EXPECT_NEAR(scans[0].end, scan.end() * scan.fs, scan.sliceDuration * scan.fs);
  EXPECT_FALSE(scans[0].isCountIdentifiable);
}

} // namespace
} // namespace emeg
