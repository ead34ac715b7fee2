#include "artifacts/gradient/timing/volumes/Repeats.h"
#include "artifacts/gradient/timing/volumes/TypicalRepeat.h"

#include <gtest/gtest.h>

#include <cmath>

namespace emeg {
namespace {

/// A waveform of length 1000.37 samples, repeated, that holds frequencies up to 0.3 of the sampling rate.
std::vector<double> repeated(double onset, double period, int count) {
  std::vector<double> signal(static_cast<size_t>((count + 1) * period), 0.0);
  for (size_t i = 0; i < signal.size(); i++) {
    const double t = static_cast<double>(i) - onset;
    if (t < 0 || t >= count * period) continue;
    const double u = std::fmod(t, period);
    const double window = std::exp(-0.5 * std::pow((u - 500) / 120, 2));
    signal[i] = window * (std::sin(0.9 * u) + 0.5 * std::sin(1.85 * u + 1));
  }
  return signal;
}

TEST(Repeats, LineIsExactFromAStartThatIsWrongByTenthsOfASample) {
  const std::vector<double> signal = repeated(200.6, 1000.37, 60);
  const FittedRepeats fit = fitRepeats(signal, {200.4, 1000.5}, {0, 58});
  EXPECT_NEAR(fit.line.period, 1000.37, 1e-5);
  EXPECT_NEAR(fit.similarity, 1, 1e-4);
}

TEST(Repeats, SpoiledRepeatsDoNotCount) {
  std::vector<double> signal = repeated(200.6, 1000.37, 60);
  for (size_t i = 20300; i < 20800; i++) signal[i] = std::sin(0.7 * static_cast<double>(i));
  const FittedRepeats fit = fitRepeats(signal, {200.4, 1000.5}, {0, 58});
  EXPECT_NEAR(fit.line.period, 1000.37, 1e-5);
  EXPECT_FALSE(fit.used[20]);
  EXPECT_TRUE(fit.used[40]);
}

TEST(Repeats, ComparisonMeasuresTheDelay) {
  const std::vector<double> signal = repeated(200, 1000, 4);
  const RepeatComparison comparison(averageRepeat(signal, {200, 1000}, {0, 2}, 1000));
  for (const double late : {-0.2, 0.0, 0.05, 0.3})
    EXPECT_NEAR(comparison.compare(signal, 1200 - late).delay, late, 0.02) << late;
}

TEST(Repeats, WhatSpoilsOneIsNotInTheTypicalOne) {
  std::vector<double> signal = repeated(200, 1000, 12);
  const std::vector<double> clean = averageRepeat(signal, {200, 1000}, {0, 9}, 1000);
  for (size_t i = 4400; i < 4410; i++) signal[i] += 300; // a spike
  for (size_t i = 7300; i < 7500; i++) signal[i] = 0;    // a dropout
  for (const bool all : {true, false}) {
    SCOPED_TRACE(all);
    const RepeatRange range{all ? 0 : 2, all ? 9 : 6};
    const std::vector<double> typical = typicalRepeat(signal, {200, 1000}, range, 1000, 20);
    ASSERT_EQ(typical.size(), clean.size());
    for (size_t i = 0; i < typical.size(); i++) EXPECT_NEAR(typical[i], clean[i], 1e-9);
  }
}

TEST(Repeats, OnlyWholeOnesCount) {
  EXPECT_EQ(wholeRepeats({100, 50}, 0, 1000).first, -2);
  EXPECT_EQ(wholeRepeats({100, 50}, 0, 1000).last, 17);
  EXPECT_EQ(wholeRepeats({100, 0}, 0, 1000).count(), 0);
}

} // namespace
} // namespace emeg
