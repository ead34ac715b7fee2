#include "artifacts/gradient/timing/ScanDetection.h"

#include "tests/artifacts/gradient/timing/SimulatedScan.h"

#include <gtest/gtest.h>

namespace emeg {
namespace {

ScanSegment scanOf(int32_t volumes, int32_t slices, double begin = 1000) {
  ScanSegment scan;
  scan.begin = begin;
  scan.end = begin + 20000;
  scan.firstVolumeOnset = begin;
  scan.volumeDuration = 2000;
  scan.nrOfVolumes = volumes;
  scan.nrOfSlicesPerVolume = slices;
  scan.isCountIdentifiable = true;
  scan.explainedByVolume = 0.9;
  return scan;
}

TEST(ScanVote, MostChannelsDecide) {
  const auto elected = voteOnScans({{scanOf(10, 20)}, {scanOf(10, 40)}, {scanOf(10, 20)}, {}});
  ASSERT_EQ(elected.size(), 1u);
  EXPECT_EQ(elected[0].nrOfSlicesPerVolume, 20);
  EXPECT_EQ(elected[0].nrOfChannelsAgreeing, 2);
  EXPECT_EQ(elected[0].nrOfChannelsAsked, 4);
}

TEST(ScanVote, ScansAtDifferentTimesDoNotCompete) {
  const auto elected = voteOnScans({{scanOf(10, 20), scanOf(10, 30, 50000)}, {scanOf(10, 30, 50010)}});
  ASSERT_EQ(elected.size(), 2u);
  EXPECT_EQ(elected[0].nrOfSlicesPerVolume, 20);
  EXPECT_DOUBLE_EQ(elected[1].begin, 50005);
}

TEST(ScanVote, WhatOneOfManyChannelsSeesIsNoScan) {
  EXPECT_TRUE(voteOnScans({{scanOf(10, 20)}, {}, {}, {}}).empty());
  EXPECT_TRUE(voteOnScans({}).empty());
}

TEST(ScanVote, ChannelsAreReadOneByOneAndEvenlySpread) {
  std::vector<int> asked;
  detectScansInChannels(
      [&](int channel, std::vector<double>& samples) {
        asked.push_back(channel);
        samples.assign(100, 0.0);
        samples[50] = 1;
      },
      32, 1000, {}, 4);
  EXPECT_EQ(asked, (std::vector<int>{4, 12, 20, 28}));
}

TEST(ScanVote, FlatChannelsAreReplacedByTheNextOnes) {
  std::vector<int> asked;
  detectScansInChannels(
      [&](int channel, std::vector<double>& samples) {
        asked.push_back(channel);
        samples.assign(100, 7.0);
        if (channel != 4 && channel != 5) samples[50] = 8;
      },
      32, 1000, {}, 4);
  EXPECT_EQ(asked, (std::vector<int>{4, 5, 6, 12, 20, 28}));
}

} // namespace
} // namespace emeg
