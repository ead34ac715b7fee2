#include "artifacts/gradient/timing/slices/SlicesInARow.h"

#include "tests/artifacts/gradient/timing/SyntheticSlices.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <vector>

namespace emeg {
namespace {

constexpr double fs = 1000;

Autocorrelation correlationOf(const SyntheticSlices& scan) {
  return {syntheticRecording(fs, scan.nrOfVolumes * scan.volumeDuration, {scan}), 15000};
}

TEST(SlicesInARow, MakeTheVolumeAtWhoseMultiplesTheyStandOut) {
  const SyntheticSlices scan{0, 1.8, 25, 0.0900, 20, 0.02, 10e-6, 1};
  const SlicesInARow slices(correlationOf(scan), 90);
  ASSERT_TRUE(slices.areNearlyAlike());
  const std::optional<Period> volume = slices.volume();
  ASSERT_TRUE(volume);
  EXPECT_NEAR(volume->samples, 1800, 0.05);
  EXPECT_NEAR(volume->slice, 90, 0.005);
}

TEST(SlicesInARow, MakeNoVolumeWhereAllAreAlike) {
  const SyntheticSlices scan{0, 1.8, 25, 0.0900, 20, 0, 10e-6, 2};
  const SlicesInARow slices(correlationOf(scan), 90);
  ASSERT_TRUE(slices.areNearlyAlike());
  EXPECT_FALSE(slices.volume());
}

TEST(SlicesInARow, MayBeALittleLongerOrShorterThanTheFirstLagSays) {
  // After ten volumes their count times this slice is off by a tenth of a slice.
  const SyntheticSlices scan{0, 1.8, 25, 0.0900, 20, 0.02, 0, 3};
  const SlicesInARow slices(correlationOf(scan), 90.05);
  EXPECT_TRUE(slices.make(14 * 90));
  EXPECT_TRUE(slices.make(9000));
  EXPECT_FALSE(slices.make(9045));
  EXPECT_FALSE(slices.make(90));
  ASSERT_TRUE(slices.volume());
  EXPECT_NEAR(slices.volume()->samples, 1800, 0.05);
}

TEST(SlicesInARow, AreNoneWhereAGapBreaksThem) {
  const SyntheticSlices scan{0, 1.8, 25, 0.0700, 20, 0.02, 0, 4};
  EXPECT_FALSE(SlicesInARow(correlationOf(scan), 70).areNearlyAlike());
}

TEST(SlicesInARow, TheSamplesPhaseMakesNoVolume) {
  // Every third slice is hit at the same phase; frequencies near half of the sampling frequency show it.
  const SyntheticSlices scan{0, 20 * 86.0 / 900, 25, 86.0 / 900, 20, 0, 0, 6};
  const std::vector<double> recording = syntheticRecording(375, 25 * 20 * 86.0 / 900, {scan});
  const SlicesInARow slices(Autocorrelation(recording, 6000), 375 * 86.0 / 900);
  EXPECT_FALSE(slices.volume());
}

TEST(SlicesInARow, ASpikeMakesNoVolume) {
  // It is in the overlap up to some lag, and nothing is as alike as without it.
  const SyntheticSlices scan{0, 1.8, 15, 0.0900, 20, 0, 10e-6, 5};
  std::vector<double> recording = syntheticRecording(fs, 27, {scan});
  for (size_t i = 12000; i < 12040; i++) recording[i] += i % 2 == 0 ? 600 : -600;
  const SlicesInARow slices(Autocorrelation(recording, 18000), 90);
  EXPECT_TRUE(slices.areNearlyAlike());
  EXPECT_FALSE(slices.volume());
}

TEST(SlicesInARow, OfNothingAreNone) {
  const std::vector<double> nothing(1000, 0.0);
  for (const double slice : {0.0, 1.0, 20.0, 1e9, std::nan("")}) {
    const SlicesInARow slices(Autocorrelation(nothing, 500), slice);
    EXPECT_FALSE(slices.volume());
    EXPECT_FALSE(slices.make(100));
  }
}

} // namespace
} // namespace emeg
