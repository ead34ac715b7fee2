#include "engine/figures/ChannelQuality.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace emeg {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

ChannelQuality channelWith(double peakToPeak, double sliceToBackground) {
  ChannelQuality channel;
  channel.medianImagingArtifactBefore = peakToPeak;
  channel.before.medianSliceToBackground = sliceToBackground;
  return channel;
}

std::vector<size_t> witnesses(const std::vector<ChannelQuality>& channels) {
  return witnessesOf(channels, std::vector<bool>(channels.size(), true));
}

TEST(LooksLikeScan, WhereLinesStandOutInOneChannelAtLeast) {
  QualityFigures figures;
  figures.channels = {channelWith(50, 1.2), channelWith(3000, 500)};
  EXPECT_TRUE(looksLikeScan(TimingSource::QuietBetweenSlices, &figures));
  figures.channels[1] = channelWith(50, 9);
  EXPECT_FALSE(looksLikeScan(TimingSource::QuietBetweenSlices, &figures));
}

TEST(LooksLikeScan, WhereTheTimingWasConfirmedOtherwiseOrCannotBe) {
  QualityFigures figures;
  figures.channels = {channelWith(50, 1.2)};
  EXPECT_TRUE(looksLikeScan(TimingSource::SimilarVolumes, &figures));
  EXPECT_TRUE(looksLikeScan(TimingSource::QuietBetweenSlices, nullptr));
  EXPECT_FALSE(looksLikeScan(TimingSource::None, nullptr));
}

TEST(Witnesses, AreAllChannelsThatShowTheScan) {
  EXPECT_THAT(witnesses({channelWith(900, 300), channelWith(5000, 90000), channelWith(700, 20)}),
              ElementsAre(0, 1, 2));
}

TEST(Witnesses, AreNeitherFlatNorNoisyNorFullOfMains) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THAT(witnesses({channelWith(0, 0), channelWith(5000, 90000), channelWith(40000, 1.3),
                         channelWith(nan, nan), channelWith(5000, 2)}),
              ElementsAre(1));
}

TEST(Witnesses, AreChannelsThatAreNotExpectedToShowTheScanOnlyWhereNoOtherIsAlive) {
  std::vector<ChannelQuality> channels = {channelWith(9000, 300), channelWith(900, 300)};
  EXPECT_THAT(witnessesOf(channels, {false, true}), ElementsAre(1));
  channels[1] = channelWith(0, 0);
  EXPECT_THAT(witnessesOf(channels, {false, true}), ElementsAre(0));
  EXPECT_THAT(witnessesOf(channels, {}), ElementsAre(0));
}

TEST(Witnesses, AreAllThatAreAliveWhereNoneShowsTheScan) {
  EXPECT_THAT(witnesses({channelWith(90, 0.9), channelWith(0, 0), channelWith(90, 0)}), ElementsAre(0, 2));
  EXPECT_THAT(witnesses({}), IsEmpty());
}

TEST(ChannelQuality, TakesTheLargerOfBothMeasuresOfWhatIsLeft) {
  ChannelQuality quality;
  EXPECT_EQ(quality.remaining(), 0);
  quality.before.sliceHarmonics = 100;
  quality.after.sliceHarmonics = 3;
  quality.peaksAfter.rms = 5;
  EXPECT_EQ(quality.artifactBefore(), 100);
  EXPECT_EQ(quality.artifactAfter(), 5);
  EXPECT_DOUBLE_EQ(quality.remaining(), 0.05);
  EXPECT_FALSE(quality.isVisible());
  quality.peaksAfter.toBackground = 4;
  EXPECT_TRUE(quality.isVisible());
}

} // namespace
} // namespace emeg
