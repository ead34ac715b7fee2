#include "tests/artifacts/reference/LiteralHeartPeriod.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace emeg {
namespace {

using ::testing::ElementsAre;

constexpr double pi = 3.14159265358979323846;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// Zero but for unit impulses.
std::vector<double> impulses(int32_t length, const std::vector<int32_t>& positions) {
  std::vector<double> channel(static_cast<std::size_t>(length), 0.0);
  for (const int32_t p : positions) channel[static_cast<std::size_t>(p)] = 1.0;
  return channel;
}

TEST(LiteralHeartPeriod, FindsThePeriodOfACosine) {
  std::vector<double> channel;
  for (int i = 0; i < 15000; ++i) channel.push_back(std::cos(2 * pi * i / 250.0));
  const LiteralPeriod heart = literalHeartPeriod({channel}, 15000, 250.0F);
  EXPECT_EQ(heart.period, 250);
  EXPECT_EQ(heart.shortest, 177);
  EXPECT_EQ(heart.longest, 354);
  EXPECT_EQ(heart.beatsPerMinute, 60.0);
}

TEST(LiteralHeartPeriod, TakesTheSmallestLagAmongEqualSums) {
  // The lags 150, 200 and 350 occur once each.
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {1000, 1150, 1350}), 5000, 250.0F, 0), 150);
  EXPECT_EQ(literalHeartPeriod({impulses(5000, {})}, 5000, 250.0F).period, 107);
}

TEST(LiteralHeartPeriod, SearchesFrom140DownTo35BeatsPerMinute) {
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {1000, 1106, 1535}), 5000, 250.0F, 0), 429);
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {1000, 1106, 1536}), 5000, 250.0F, 0), 107);
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {1000, 1107, 1537}), 5000, 250.0F, 0), 107);
}

TEST(LiteralHeartPeriod, CorrelatesTheMiddleOfTheRecording) {
  // Samples 750 ... 4250 are each other's first partner.
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {749, 749 + 200}), 5000, 250.0F, 0), 107);
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {750, 750 + 200}), 5000, 250.0F, 0), 200);
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {4250, 4250 + 200}), 5000, 250.0F, 0), 200);
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {4251, 4251 + 200}), 5000, 250.0F, 0), 107);
}

TEST(LiteralHeartPeriod, ClipsTheSumsOfAShortRecordingAtItsEnd) {
  EXPECT_EQ(literalChannelPeriod(impulses(500, {100, 350}), 500, 250.0F, 0), 250);
}

TEST(LiteralHeartPeriod, GivesAnUnusableChannelThePeriodOfTheOneBefore) {
  const std::vector<double> unusable(5000, notANumber);
  const std::vector<double> good = impulses(5000, {1000, 1200});
  EXPECT_THAT(literalHeartPeriod({good, unusable}, 5000, 250.0F).channelPeriods, ElementsAre(200, 200));
  const LiteralPeriod none = literalHeartPeriod({unusable}, 5000, 250.0F);
  EXPECT_EQ(none.period, 0);
  EXPECT_EQ(none.shortest, 0);
  EXPECT_EQ(none.beatsPerMinute, 0.0);
}

TEST(LiteralHeartPeriod, IsTheUpperMedianOfTheChannelsAndLeavesThemSorted) {
  const std::vector<double> a = impulses(5000, {1000, 1300});
  const std::vector<double> b = impulses(5000, {1000, 1200});
  const std::vector<double> c = impulses(5000, {1000, 1250});
  EXPECT_EQ(literalHeartPeriod({a, b}, 5000, 250.0F).period, 300);
  const LiteralPeriod heart = literalHeartPeriod({a, b, c}, 5000, 250.0F);
  EXPECT_EQ(heart.period, 250);
  EXPECT_THAT(heart.channelPeriods, ElementsAre(200, 250, 300));
}

} // namespace
} // namespace emeg
