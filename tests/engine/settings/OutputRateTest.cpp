#include "engine/settings/OutputRate.h"

#include <gtest/gtest.h>

#include <cmath>

namespace emeg {

TEST(OutputRate, IsDividedWithinRounding) {
  EXPECT_EQ(wholeDivisor(1000, 250), 4);
  EXPECT_EQ(wholeDivisor(1000, 333.333333), 3);
  EXPECT_EQ(wholeDivisor(1000, 1000), 1);
  EXPECT_EQ(wholeDivisor(1000, 333.3), 0);
  EXPECT_EQ(wholeDivisor(1000, 2000), 0);
  EXPECT_EQ(wholeDivisor(1000, 0.1), 0) << "more than the steepest ratio";
  EXPECT_EQ(wholeDivisor(1000, 0), 0);
  EXPECT_EQ(wholeDivisor(1000, std::nan("")), 0);
}

TEST(OutputRate, LiesUpToTenTimesAboveTheRecordedOne) {
  for (const double rate : {0.11, 256.0, 1000.0, 10000.0})
    EXPECT_FALSE(problemOfRate(1000, rate, stretchByStretch)) << rate;
  for (const double rate : {0.1, 0.0, -5.0, 10001.0, std::nan("")})
    EXPECT_TRUE(problemOfRate(1000, rate, stretchByStretch)) << rate;
  EXPECT_EQ(
      problemOfRate(1000, 10001, stretchByStretch, "--").value_or(""),
      "--rate 10001: from the recording's 1000 Hz, rates above 0.1 and up to 10000 Hz can be made; give "
      "one of these, in Hz.");
}

TEST(OutputRate, OfWholeChannelsIsOnlyDivided) {
  EXPECT_FALSE(problemOfRate(1000, 250, asThePluginDoes));
  EXPECT_EQ(
      problemOfRate(1000, 300, asThePluginDoes, "--").value_or(""),
      "--rate 300: with --as-plugin the recording's 1000 Hz can only be divided by whole numbers; 333.333 "
      "and 250 Hz are possible.");
}

} // namespace emeg
