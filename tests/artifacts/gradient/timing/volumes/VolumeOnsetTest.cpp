#include "artifacts/gradient/timing/volumes/VolumeOnset.h"

#include <gtest/gtest.h>

#include <cmath>

namespace emeg {
namespace {

constexpr double slice = 100;
constexpr double volume = 1000;
constexpr int64_t firstOfSlice = 20; // samples of every slice from the volume's start at which it is active

/// Two volumes of ten slices, each active for `active` samples.
std::vector<double> twoVolumes(int64_t active) {
  std::vector<double> values(2001, 0.0);
  for (size_t t = 0; t < values.size(); t++) {
    const int64_t inSlice = (static_cast<int64_t>(t) + 100 - firstOfSlice) % 100;
    if (inSlice < active) values[t] = std::sin(1.1 * static_cast<double>(inSlice));
  }
  return values;
}

SliceStructure slicesFrom(double onset) {
  SliceStructure slices;
  slices.nrOfSlices = 10;
  slices.sliceDuration = slice;
  slices.onset = onset;
  slices.isOnsetKnown = slices.isOnsetCertain = true;
  return slices;
}

TEST(VolumeOnset, AScanBeginsWithItsFirstSlice) {
  const RepeatLine line{5000, volume};
  for (const double wrong : {-100.0, -30.0, 0.0, 60.0, 100.0}) {
    SCOPED_TRACE(wrong);
    EXPECT_NEAR(volumeOnset(twoVolumes(60), line, slicesFrom(firstOfSlice + wrong), 4020), 4020, 1);
  }
}

TEST(VolumeOnset, ABeginThatIsClearlyAnotherSlicesDoesNotCount) {
  // The third slice is the first one that was recorded: the volume begins two slices earlier.
  const double onset = volumeOnset(twoVolumes(60), {5000, volume}, slicesFrom(firstOfSlice), 4220);
  EXPECT_NEAR(std::remainder(onset - 4020, volume), 0, 1);
}

TEST(VolumeOnset, IsWhatTheVolumeShowsWhereNoBeginWasSeen) {
  EXPECT_NEAR(volumeOnset(twoVolumes(60), {5000, volume}, slicesFrom(firstOfSlice), std::nullopt), 5020, 1);
}

TEST(VolumeOnset, LiesSomewhatBehindTheBeginWhereThereIsNoQuiet) {
  const double onset = volumeOnset(twoVolumes(100), {5000, volume}, slicesFrom(firstOfSlice), 4020);
  EXPECT_GT(onset, 4025);
  EXPECT_LE(onset, 4040);
}

} // namespace
} // namespace emeg
