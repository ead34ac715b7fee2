#include "artifacts/cardiac/series/SteadyLines.h"

#include "artifacts/cardiac/series/ZeroPhaseBand.h"
#include "tests/artifacts/cardiac/SimulatedEcg.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace emeg {

namespace {

double rmsOf(const std::vector<double>& values) {
  double squares = 0;
  for (const double value : values) squares += value * value;
  return std::sqrt(squares / static_cast<double>(values.size()));
}

std::vector<double> difference(std::vector<double> a, const std::vector<double>& b) {
  for (size_t i = 0; i < a.size(); ++i) a[i] -= b[i];
  return a;
}

} // namespace

TEST(SteadyLines, ALineThatStandsOutIsCutDown) {
  const SimulatedEcg clean = simulateEcg({}, 1);
  const SimulatedEcg residue = simulateEcg({.residueUv = 800}, 1);
  const double before = rmsOf(difference(residue.samples, clean.samples));
  const double after = rmsOf(difference(withoutSteadyLines(residue.samples, 250, 32), clean.samples));
  EXPECT_GT(before, 500);
  EXPECT_LT(after, 100);
}

TEST(SteadyLines, AHeartsOwnLinesStay) {
  for (const double rmssd : {0.001, 0.03}) {
    const SimulatedEcg ecg = simulateEcg({.rmssd = rmssd}, 1);
    const double changed = rmsOf(difference(withoutSteadyLines(ecg.samples, 250, 32), ecg.samples));
    EXPECT_LT(changed, 0.5 * rmsOf(ecg.samples)) << rmssd;
  }
}

TEST(SteadyLines, ShortRecordingsComeBackAsTheyAre) {
  const std::vector<double> samples(2000, 3.0);
  EXPECT_EQ(withoutSteadyLines(samples, 250, 32), samples);
  EXPECT_TRUE(withoutSteadyLines({}, 250, 32).empty());
}

TEST(ZeroPhaseBand, PassesItsBandWithoutDelayAndStopsTheRest) {
  const auto wave = [](double hz) {
    std::vector<double> samples(5000);
    for (size_t i = 0; i < samples.size(); ++i)
      samples[i] = std::sin(2 * std::numbers::pi * hz * static_cast<double>(i) / 250);
    return samples;
  };
  const auto inside = bandOf(wave(13), 250, 8, 20);
  for (size_t i = 1000; i < 1100; ++i) EXPECT_NEAR(inside[i], wave(13)[i], 0.02);
  EXPECT_LT(rmsOf(bandOf(wave(3), 250, 8, 20)), 0.05);
  EXPECT_LT(rmsOf(bandOf(wave(40), 250, 8, 20)), 0.05);
}

TEST(ZeroPhaseBand, TheMeanIsCentred) {
  std::vector<double> impulse(100);
  impulse[50] = 9;
  const std::vector<double> mean = centredMean(impulse, 10, 0.8);
  for (size_t i = 0; i < 100; ++i) EXPECT_DOUBLE_EQ(mean[i], i >= 46 && i <= 54 ? 1 : 0) << i;
}

} // namespace emeg
