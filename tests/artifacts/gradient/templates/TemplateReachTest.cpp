#include "artifacts/gradient/templates/TemplateRemoval.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace emeg {
namespace {

/// 40 volumes of 20 slices of 0.1 s, 2.1 s from one volume to the next.
MRSequence sequenceOf40Volumes() {
  MRSequence sequence;
  sequence.nrOfVolumes = 40;
  sequence.nrOfSlicesPerVolume = 20;
  sequence.volumeDuration = 2.1;
  sequence.sliceDuration = 0.1;
  sequence.firstTriggerTime = 3;
  return sequence;
}

TEST(WindowSeconds, AreTheDurationOfSoManySlicesWhereTheyAreMany) {
  const MRSequence sequence = sequenceOf40Volumes();
  const double perSlice = 2.1 / 20;
  EXPECT_NEAR(windowSecondsOf(sequence, 150, true), std::hypot(150 * perSlice, 2.1), 1e-12);
  EXPECT_NEAR(windowSecondsOf(sequence, 150, true), 150 * perSlice, 0.15);
  // Every fourth slice is averaged with its like.
  EXPECT_NEAR(windowSecondsOf(sequence, 150, false), std::hypot(150 * perSlice, 0.4), 1e-12);
}

TEST(WindowSeconds, AreNeverLessThanTheWayToTheNearestNeighbour) {
  const MRSequence sequence = sequenceOf40Volumes();
  EXPECT_GE(windowSecondsOf(sequence, 1, true), 2.1);
  EXPECT_LT(windowSecondsOf(sequence, 1, true), 2.11);
  EXPECT_GE(windowSecondsOf(sequence, 1, false), 0.4);
  EXPECT_LT(windowSecondsOf(sequence, 1, false), 0.42);
}

TEST(WindowSeconds, GrowWithEverySlice) {
  const MRSequence sequence = sequenceOf40Volumes();
  for (const bool volumeWise : {false, true})
    for (int slices = 1; slices < 300; ++slices)
      ASSERT_GT(windowSecondsOf(sequence, slices + 1, volumeWise),
                windowSecondsOf(sequence, slices, volumeWise));
}

TEST(WindowSeconds, LeaveTheEdgeSlicesOfLongVolumesAWeight) {
  MRSequence sequence = sequenceOf40Volumes();
  sequence.volumeDuration = 60; // slices at its beginning, and a long pause
  EXPECT_GE(windowSecondsOf(sequence, 1, false), 0.04 * 60);
}

TEST(TemplateReach, IsAllThatAVolumesTemplatesAreMadeOf) {
  constexpr double fs = 500;
  MRSequence sequence = sequenceOf40Volumes();
  std::mt19937 generator(1);
  std::normal_distribution<double> normal;
  constexpr size_t n = 90 * 500;
  std::vector<double> signal(n), b(n, 0.0), c(n, 0.0), d(n, 0.0);
  for (double& sample : signal) sample = normal(generator);
  for (const bool volumeWise : {false, true})
    for (const int slices : {1, 30, 100}) {
      sequence.windowHalfLength = windowSecondsOf(sequence, slices, volumeWise);
      const auto estimateOf = [&](const std::vector<double>& a) {
        std::vector<double> estimate(n, 0.0);
        estimateGradientArtifact({a.data(), b.data(), c.data(), d.data(), static_cast<int64_t>(n)}, sequence,
                                 fs, volumeWise, {20, 21}, estimate.data());
        return estimate;
      };
      const double reach = templateReachOf(sequence);
      std::vector<double> cut = signal;
      for (size_t t = 0; t < n; ++t) {
        const double seconds = static_cast<double>(t) / fs;
        if (seconds < sequence.onsetOf(20, 0, 1) - reach || seconds > sequence.onsetOf(21, 0, 1) + reach)
          cut[t] = 1e6;
      }
      EXPECT_EQ(estimateOf(cut), estimateOf(signal)) << volumeWise << " " << slices;
    }
}

} // namespace
} // namespace emeg
