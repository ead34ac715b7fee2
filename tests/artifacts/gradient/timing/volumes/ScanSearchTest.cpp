#include "artifacts/gradient/timing/volumes/ScanDetection.h"

#include "tests/artifacts/gradient/timing/SyntheticSlices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace emeg {
namespace {

constexpr double fs = 1000;

void expectScan(const ScanSegment& found, const SyntheticSlices& truth) {
  EXPECT_EQ(found.nrOfVolumes, truth.nrOfVolumes);
  EXPECT_EQ(found.nrOfSlicesPerVolume, truth.nrOfSlices);
  EXPECT_NEAR(found.volumeDuration, truth.volumeDuration * fs, 0.02);
  EXPECT_NEAR(found.begin, truth.begin * fs, 0.05 * fs);
  EXPECT_NEAR(found.end,
              (truth.begin + (truth.nrOfVolumes - 1) * truth.volumeDuration +
               truth.nrOfSlices * truth.sliceDuration) *
                  fs,
              0.05 * fs);
}

TEST(ScanSearch, LongSilentDelaysBelongToVolumesAlsoWhereTheirSlicesAreAlike) {
  // By itself every acquisition could be a scan of alike slices.
  const SyntheticSlices sparse{4, 9.0003, 6, 0.0871, 24, 0, 0, 1};
  const auto found = detectScans(syntheticRecording(fs, 60, {sparse}), fs);
  ASSERT_EQ(found.size(), 1u);
  expectScan(found[0], sparse);
}

TEST(ScanSearch, AScanWithSilentDelaysDoesNotSwallowTheNextOne) {
  const SyntheticSlices sparse{4, 8.0003, 4, 0.0871, 24, 0, 0, 1};
  const SyntheticSlices other{40, 1.6003, 12, 0.0699, 21, 0.05, 0, 2};
  const auto found = detectScans(syntheticRecording(fs, 64, {sparse, other}), fs);
  ASSERT_EQ(found.size(), 2u);
  expectScan(found[0], sparse);
  expectScan(found[1], other);
}

TEST(ScanSearch, APauseOfLessThanASecondPartsScansThatAreAlike) {
  const SyntheticSlices first{4, 2.0003, 9, 0.0666, 30, 0.01, 0, 3};
  SyntheticSlices second = first;
  second.begin = 4 + 9 * 2.0003 + 0.75;
  const auto found = detectScans(syntheticRecording(fs, 46, {first, second}), fs);
  ASSERT_EQ(found.size(), 2u);
  EXPECT_NEAR(found[0].end, 22.0 * fs, 0.05 * fs);
  EXPECT_NEAR(found[1].begin, second.begin * fs, 0.05 * fs);
  for (const ScanSegment& scan : found) EXPECT_NEAR(scan.sliceDuration, 66.6, 0.02);
}

TEST(ScanSearch, ADropoutPartsNoScan) {
  const SyntheticSlices scan{4, 2.0003, 15, 0.0631, 30, 0.03, 0, 4};
  std::vector<double> recording = syntheticRecording(fs, 42, {scan});
  std::fill(recording.begin() + 20000, recording.begin() + 20800, 0.0);
  const auto found = detectScans(recording, fs);
  ASSERT_EQ(found.size(), 1u);
  expectScan(found[0], scan);
}

TEST(ScanSearch, WhatComesTwiceIsNoScan) {
  const SyntheticSlices twice{4, 1.3, 2, 0.7, 1, 0, 0, 5};
  EXPECT_TRUE(detectScans(syntheticRecording(fs, 12, {twice}), fs).empty());
}

TEST(ScanSearch, NearlyAlikeSlicesMakeTheSmallestVolumeThatRepeats) {
  // Jitter makes some volumes that lie far apart more alike than neighbours.
  const SyntheticSlices scan{4, 2.00004, 28, 2.0 / 18, 18, 0.02, 20e-6, 6};
  const auto found = detectScans(syntheticRecording(fs, 66, {scan}), fs);
  ASSERT_EQ(found.size(), 1u);
  expectScan(found[0], scan);
  EXPECT_NEAR(found[0].firstVolumeOnset, scan.begin * fs, 0.03 * fs);
}

} // namespace
} // namespace emeg
