#include "artifacts/gradient/timing/volumes/ScanDetection.h"

#include "tests/artifacts/gradient/timing/SimulatedScan.h"

#include <gtest/gtest.h>

namespace emeg {
namespace {

ScanSegment scanOf(int32_t volumes, int32_t slices, double begin = 1000, double length = 20000) {
  ScanSegment scan;
  scan.begin = begin;
  scan.end = begin + length;
  scan.firstVolumeOnset = begin;
  scan.volumeDuration = 2000;
  scan.nrOfVolumes = volumes;
  scan.nrOfSlicesPerVolume = slices;
  scan.sliceDuration = 2000.0 / slices;
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

TEST(ScanVote, AChannelThatFindsManyScansHasOneVoteInEach) {
  // Two channels take every volume for a scan; they are not ten against three.
  const std::vector<ScanSegment> volumes = {scanOf(2, 5, 1000, 4000), scanOf(2, 5, 5000, 4000),
                                            scanOf(2, 5, 9000, 4000), scanOf(2, 5, 13000, 4000),
                                            scanOf(2, 5, 17000, 4000)};
  const auto elected = voteOnScans({{scanOf(10, 20)}, {scanOf(10, 20)}, {scanOf(10, 20)}, volumes, volumes});
  ASSERT_EQ(elected.size(), 1u);
  EXPECT_EQ(elected[0].nrOfVolumes, 10);
  EXPECT_EQ(elected[0].nrOfChannelsAgreeing, 3);
}

TEST(ScanVote, WhatMostChannelsSeeApartStaysApart) {
  const std::vector<ScanSegment> apart = {scanOf(3, 20, 1000, 6000), scanOf(3, 20, 8000, 6000),
                                          scanOf(3, 20, 15000, 6000)};
  const auto elected = voteOnScans({apart, {scanOf(10, 30)}, apart, {scanOf(10, 30)}, apart});
  ASSERT_EQ(elected.size(), 3u);
  for (size_t i = 0; i < 3; i++) {
    EXPECT_DOUBLE_EQ(elected[i].begin, apart[i].begin);
    EXPECT_EQ(elected[i].nrOfChannelsAgreeing, 3);
  }
}

TEST(ScanVote, TheOnsetIsOneThatWasFound) {
  std::vector<std::vector<ScanSegment>> scans(6, {scanOf(10, 20)});
  for (const size_t channel : {0, 3, 4}) scans[channel][0].firstVolumeOnset += 1000;
  for (const size_t channel : {1, 4}) scans[channel][0].firstVolumeOnset += 2;
  const auto elected = voteOnScans(scans);
  ASSERT_EQ(elected.size(), 1u);
  EXPECT_EQ(elected[0].nrOfChannelsAgreeing, 6);
  EXPECT_DOUBLE_EQ(elected[0].firstVolumeOnset, 1000);
}

TEST(ScanVote, TheOnsetIsTheOneThatMostFound) {
  std::vector<std::vector<ScanSegment>> scans(7, {scanOf(10, 20)});
  for (const size_t channel : {0, 1}) scans[channel][0].firstVolumeOnset += 700;
  for (const size_t channel : {2, 3, 6}) scans[channel][0].firstVolumeOnset += 1300;
  const auto elected = voteOnScans(scans);
  ASSERT_EQ(elected.size(), 1u);
  EXPECT_DOUBLE_EQ(elected[0].firstVolumeOnset, 2300);
}

TEST(ScanVote, ChannelsThatLoseAVolumeAgreeOnTheOthers) {
  const auto elected =
      voteOnScans({{scanOf(10, 20)}, {scanOf(9, 20)}, {scanOf(10, 20)}, {scanOf(10, 40)}, {scanOf(10, 40)}});
  ASSERT_EQ(elected.size(), 1u);
  EXPECT_EQ(elected[0].nrOfSlicesPerVolume, 20);
  EXPECT_EQ(elected[0].nrOfVolumes, 10);
  EXPECT_EQ(elected[0].nrOfChannelsAgreeing, 2);
}

TEST(ScanVote, AlikeSlicesNeedNotBeCountedAlike) {
  std::vector<std::vector<ScanSegment>> scans = {
      {scanOf(10, 20)}, {scanOf(5, 40)}, {scanOf(8, 25)}, {scanOf(4, 50)}};
  for (auto& channel : scans) {
    channel[0].isCountIdentifiable = false;
    channel[0].sliceDuration = 100;
    channel[0].volumeDuration = 100 * channel[0].nrOfSlicesPerVolume;
  }
  const auto elected = voteOnScans(scans);
  ASSERT_EQ(elected.size(), 1u);
  EXPECT_DOUBLE_EQ(elected[0].sliceDuration, 100);
  EXPECT_DOUBLE_EQ(elected[0].volumeDuration, 100 * elected[0].nrOfSlicesPerVolume);
}

TEST(ScanVote, WhereChannelsAgreeOnSlicesOnlyNothingTellsTheVolumes) {
  std::vector<std::vector<ScanSegment>> scans = {
      {scanOf(10, 20)}, {scanOf(5, 40)}, {scanOf(8, 25)}, {scanOf(4, 50)}};
  for (auto& channel : scans) {
    channel[0].sliceDuration = 100;
    channel[0].volumeDuration = 100 * channel[0].nrOfSlicesPerVolume;
  }
  const auto elected = voteOnScans(scans);
  ASSERT_EQ(elected.size(), 1u);
  EXPECT_FALSE(elected[0].isCountIdentifiable);
  EXPECT_DOUBLE_EQ(elected[0].volumeDuration, 100 * elected[0].nrOfSlicesPerVolume);
}

TEST(ScanVote, WhereEveryChannelFindsSomethingElseThereIsNoScan) {
  std::vector<std::vector<ScanSegment>> scans = {
      {scanOf(10, 20)}, {scanOf(10, 7)}, {scanOf(10, 31)}, {scanOf(10, 3)}};
  for (size_t i = 0; i < scans.size(); i++) scans[i][0].volumeDuration += 100 * static_cast<double>(i);
  EXPECT_TRUE(voteOnScans(scans).empty());
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
