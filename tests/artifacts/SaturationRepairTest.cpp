#include "artifacts/SaturationRepair.h"

#include "artifacts/CubicSplines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace emeg {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

const SaturationLimits sixteenBit{-32766.0, 32765.0};

struct Repair {
  std::vector<double> channel;
  SaturationResult result = SaturationResult::NothingDone;
  int nrOfReports = 0;
};

// Every array is exactly as long as promised, so that a sanitizer sees a step outside.
Repair repair(std::vector<double> channel, const SaturationLimits& limits = sixteenBit,
              double stale = std::numeric_limits<double>::quiet_NaN()) {
  Repair outcome{std::move(channel)};
  const std::size_t n = outcome.channel.size();
  std::vector<double> scratch(n, stale), b(n, stale), c(n, stale), d(n, stale);
  outcome.result = repairSaturations(outcome.channel.data(), static_cast<int64_t>(n), limits, scratch.data(),
                                     b.data(), c.data(), d.data(), [&] { ++outcome.nrOfReports; });
  return outcome;
}

// The same by its meaning: list the usable samples with their places, spline, evaluate sample by sample.
std::vector<double> repairedSlowly(const std::vector<double>& channel, const SaturationLimits& limits) {
  std::vector<double> values;
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < channel.size(); ++i) {
    if (limits.lower < channel[i] && channel[i] < limits.upper) {
      values.push_back(channel[i]);
      places.push_back(i);
    }
  }
  const std::size_t v = values.size();
  std::vector<double> h(v), b(v), c(v), d(v);
  for (std::size_t k = 0; k < v; ++k) {
    h[k] = static_cast<double>((k + 1 < v ? places[k + 1] : channel.size()) - places[k]);
  }
  computeSpacedSplineCoefficients(h.data(), values.data(), b.data(), c.data(), d.data(),
                                  static_cast<int64_t>(v));
  std::vector<double> result = channel;
  std::size_t k = 0;
  for (std::size_t i = places.front(); i < channel.size(); ++i) {
    if (k + 1 < v && places[k + 1] == i) ++k;
    const double t = static_cast<double>(i - places[k]);
    result[i] = values[k] + b[k] * t + c[k] * t * t + d[k] * t * t * t;
  }
  return result;
}

std::vector<double> sine(std::size_t n, double amplitude) {
  std::vector<double> signal(n);
  for (std::size_t i = 0; i < n; ++i) {
    signal[i] =
        amplitude * std::sin(0.21 * static_cast<double>(i)) + 300.0 * std::cos(1.3 * static_cast<double>(i));
  }
  return signal;
}

std::vector<double> clipped(std::vector<double> signal) {
  for (double& x : signal) x = x > 32765.0 ? 32765.0 : (x < -32766.0 ? -32766.0 : x);
  return signal;
}

TEST(SaturationRepair, OnlyTwoSampleFormatsHaveLimits) {
  for (int code = 0; code < 256; ++code) {
    const auto limits = saturationLimitsOf(static_cast<uint8_t>(code));
    EXPECT_EQ(limits.has_value(), code == 1 || code == 3) << code;
  }
  EXPECT_EQ(saturationLimitsOf(1)->lower, -32766.0);
  EXPECT_EQ(saturationLimitsOf(1)->upper, 32765.0);
  EXPECT_EQ(saturationLimitsOf(3)->lower, 2147483650.0);
  EXPECT_EQ(saturationLimitsOf(3)->upper, 2147483645.0);
}

TEST(SaturationRepair, AChannelWithoutSaturatedSamplesComesBackAsOnes) {
  const Repair outcome = repair(sine(50, 1000.0));
  EXPECT_EQ(outcome.result, SaturationResult::NoSaturation);
  EXPECT_THAT(outcome.channel, Each(1.0));
  EXPECT_EQ(outcome.nrOfReports, 0);
}

TEST(SaturationRepair, ClippedPeaksAreReplacedByTheSplineThroughTheOtherSamples) {
  const std::vector<double> channel = clipped(sine(300, 34000.0));
  const std::vector<double> expected = repairedSlowly(channel, sixteenBit);
  const Repair outcome = repair(channel);
  ASSERT_EQ(outcome.result, SaturationResult::Repaired);
  EXPECT_EQ(outcome.nrOfReports, 1);
  int nrOfReplaced = 0;
  for (std::size_t i = 0; i < channel.size(); ++i) {
    EXPECT_NEAR(outcome.channel[i], expected[i], 1e-7) << i;
    if (channel[i] >= 32765.0 || channel[i] <= -32766.0) {
      ++nrOfReplaced;
    } else {
      EXPECT_EQ(outcome.channel[i], channel[i]) << i;
    }
  }
  EXPECT_GT(nrOfReplaced, 30);
}

TEST(SaturationRepair, TheLimitsThemselvesAreNotUsable) {
  const Repair outcome = repair({0, 1, 2, 32765.0, 4, 5, -32766.0, 7, 8});
  ASSERT_EQ(outcome.result, SaturationResult::Repaired);
  for (std::size_t i = 0; i < outcome.channel.size(); ++i) {
    EXPECT_NEAR(outcome.channel[i], static_cast<double>(i), 1e-9);
  }
  EXPECT_EQ(repair({0, 32764.99, -32765.99, 0}).result, SaturationResult::NoSaturation);
}

TEST(SaturationRepair, SaturatedSamplesAtTheEndContinueTheSplineFromTheLastUsableOne) {
  std::vector<double> channel = sine(40, 2000.0);
  for (std::size_t i = 36; i < 40; ++i) channel[i] = 32767.0;
  const Repair outcome = repair(channel);
  ASSERT_EQ(outcome.result, SaturationResult::Repaired);

  const std::vector<double> h(36, 1.0);
  std::vector<double> b(36), c(36), d(36);
  computeSpacedSplineCoefficients(h.data(), channel.data(), b.data(), c.data(), d.data(), 36);
  EXPECT_EQ(outcome.channel[35], channel[35]);
  for (int t = 1; t <= 4; ++t) {
    EXPECT_NEAR(outcome.channel[static_cast<std::size_t>(35 + t)], channel[35] + b[35] * t + c[35] * t * t,
                1e-9);
  }
}

TEST(SaturationRepair, TheResultDoesNotDependOnWhatTheWorkArraysHeld) {
  std::vector<double> channel = clipped(sine(120, 34000.0));
  channel[118] = channel[119] = 32767.0;
  EXPECT_EQ(repair(channel, sixteenBit, 0.0).channel, repair(channel, sixteenBit, -8.5e9).channel);
}

TEST(SaturationRepair, LeadingSaturatedSamplesAreNotRepairedAndNoMemoryOutsideIsTouched) {
  // Four usable samples behind three saturated ones, one of them followed by a saturated sample: what is left
  // in front are the first spacings.
  const Repair outcome = repair({40000, 40000, 40000, 10, 20, 40000, 40, 50});
  EXPECT_EQ(outcome.result, SaturationResult::Repaired);
  EXPECT_EQ(outcome.nrOfReports, 1);
  ASSERT_EQ(outcome.channel.size(), 8U);
  EXPECT_EQ(outcome.channel[0], 1.0);
  EXPECT_EQ(outcome.channel[1], 2.0);
  EXPECT_EQ(outcome.channel[2], 1.0);
  EXPECT_NEAR(outcome.channel[3], 10.0, 1e-9);
  EXPECT_NEAR(outcome.channel[4], 20.0, 1e-9);
  EXPECT_NEAR(outcome.channel[5], 30.0, 1e-9);
  EXPECT_NEAR(outcome.channel[6], 40.0, 1e-9);
  EXPECT_NEAR(outcome.channel[7], 50.0, 1e-9);
}

TEST(SaturationRepair, MoreLeadingSaturatedThanUsableSamplesLeavesTheRestInFrontAsItWas) {
  EXPECT_THAT(repair({40000, 40001, 40002, 40003, 7, 8}).channel, ElementsAre(1.0, 1.0, 40002, 40003, 7, 8));
}

TEST(SaturationRepair, AChannelWithoutAnyUsableSampleStaysAsItIs) {
  const std::vector<double> channel = {40000, -40000, 32765, -32766, 50000};
  const Repair outcome = repair(channel);
  EXPECT_EQ(outcome.result, SaturationResult::NothingDone);
  EXPECT_EQ(outcome.channel, channel);
  EXPECT_EQ(outcome.nrOfReports, 1);
}

TEST(SaturationRepair, WithFormatCodeThreeEverySampleCountsAsSaturated) {
  const std::vector<double> channel = {0, 5, -7, 2147483647.0, 2147483647.5, 2147483649.0, 3e9};
  const Repair outcome = repair(channel, *saturationLimitsOf(3));
  EXPECT_EQ(outcome.result, SaturationResult::NothingDone);
  EXPECT_EQ(outcome.channel, channel);
}

TEST(SaturationRepair, OneUsableSampleFillsTheRestWithItsValue) {
  EXPECT_THAT(repair({12, 40000, 40000}).channel, ElementsAre(12, 12, 12));
  EXPECT_THAT(repair({40000, 12, 40000}).channel, ElementsAre(2.0, 12, 12));
}

TEST(SaturationRepair, TwoUsableSamplesGiveAStraightLine) {
  EXPECT_THAT(repair({10, 40000, 40000, 40, 40000}).channel, ElementsAre(10, 20, 30, 40, 50));
}

TEST(SaturationRepair, SamplesThatAreNotNumbersCountAsSaturated) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  const Repair outcome = repair({0, 1, nan, 3, 4, infinity, 6, -infinity, 8});
  for (std::size_t i = 0; i < outcome.channel.size(); ++i) {
    EXPECT_NEAR(outcome.channel[i], static_cast<double>(i), 1e-9);
  }
}

TEST(SaturationRepair, NoSamplesMeanNothingToDo) {
  EXPECT_EQ(repairSaturations(nullptr, 0, sixteenBit, nullptr, nullptr, nullptr, nullptr, {}),
            SaturationResult::NothingDone);
  EXPECT_EQ(repairSaturations(nullptr, -5, sixteenBit, nullptr, nullptr, nullptr, nullptr, {}),
            SaturationResult::NothingDone);
}

TEST(SaturationRepair, WorksWithoutAListenerForTheReport) {
  std::vector<double> channel = {0, 1, 2, 40000, 4};
  std::vector<double> scratch(5), b(5), c(5), d(5);
  EXPECT_EQ(
      repairSaturations(channel.data(), 5, sixteenBit, scratch.data(), b.data(), c.data(), d.data(), {}),
      SaturationResult::Repaired);
  EXPECT_NEAR(channel[3], 3.0, 1e-9);
}

} // namespace
} // namespace emeg
