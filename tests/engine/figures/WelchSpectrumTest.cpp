#include "engine/figures/WelchSpectrum.h"

#include "tests/engine/figures/PlainFigures.h"
#include "tests/engine/figures/SimulatedScan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace emeg {
namespace {

constexpr double fs = 250; // windows of 2048 samples

PowerSpectrum spectrumOf(const std::vector<double>& channel, const WelchWindows& windows) {
  WelchSpectrum spectrum(windows);
  FigureWorkspace workspace;
  spectrum.add(channel, workspace);
  return spectrum.spectrum(1);
}

WelchWindows windowsIn(const std::vector<double>& channel, double from, double to) {
  return {from, to, 100, fs, static_cast<int64_t>(channel.size())};
}

TEST(WelchSpectrum, AgreesWithTheDefinition) {
  const std::vector<double> channel = sampled(noiseOf(20), fs, 100);
  const WelchWindows windows = windowsIn(channel, 7.5, 93);
  ASSERT_EQ(windows.log2Length(), 11);
  const PowerSpectrum spectrum = spectrumOf(channel, windows);
  const std::vector<double> plain = plain::welch(channel, 1875, 23250, 11, spectrum.powers.size());
  ASSERT_EQ(spectrum.powers.size(), 820u);
  for (size_t k = 0; k < plain.size(); ++k) EXPECT_NEAR(spectrum.powers[k], plain[k], 1e-10) << k;
}

TEST(WelchSpectrum, HoldsTheMeanSquareOfASinusoid) {
  const std::vector<double> channel =
      sampled([](double s) { return 1000 + 10 * std::sin(twoPi * 10 * s); }, fs, 60);
  double sum = 0;
  for (const double power : spectrumOf(channel, windowsIn(channel, 0, 60)).powers) sum += power;
  EXPECT_NEAR(sum, 50, 0.01);
}

TEST(WelchSpectrum, DoesNotDependOnHowTheChannelIsCut) {
  const std::vector<double> channel = sampled(noiseOf(20), fs, 600);
  // Windows that overlap by half; one hundred windows with gaps between them; one window.
  for (const double end : {40.0, 590.0, 15.0}) {
    const WelchWindows windows = windowsIn(channel, 3, end);
    const PowerSpectrum whole = spectrumOf(channel, windows);
    for (const size_t longest : {1u, 700u, 2048u, 5000u, 100000u}) {
      for (uint32_t seed = 1; seed <= 5; ++seed) {
        WelchSpectrum cut(windows);
        FigureWorkspace workspace;
        inStretches(channel, longest, seed,
                    [&](std::span<const double> stretch) { cut.add(stretch, workspace); });
        EXPECT_EQ(cut.spectrum(1).powers, whole.powers) << end << " " << longest;
      }
    }
  }
}

TEST(WelchSpectrum, TakesWhatIsNotFiniteAsTheMean) {
  std::vector<double> channel = sampled(noiseOf(20), fs, 60);
  channel[4000] = std::numeric_limits<double>::quiet_NaN();
  channel[5000] = std::numeric_limits<double>::infinity();
  channel[6000] = -1e300; // no float
  const WelchWindows windows = windowsIn(channel, 0, 60);
  const PowerSpectrum spectrum = spectrumOf(channel, windows);
  channel[6000] = channel[4000];
  const std::vector<double> plain = plain::welch(channel, 0, 15000, 11, spectrum.powers.size());
  for (size_t k = 0; k < plain.size(); ++k) EXPECT_NEAR(spectrum.powers[k], plain[k], 1e-10) << k;
}

TEST(WelchWindows, TwoNeighboursOverlapAndNoMore) {
  for (const int64_t samples : {2048, 3000, 4097, 9999, 60001, 200000, 1234567}) {
    const WelchWindows windows(0, 1e9, 100, fs, samples);
    ASSERT_GE(windows.count(), 1);
    ASSERT_LE(windows.count(), 100);
    EXPECT_EQ(windows.startOf(0), 0);
    if (windows.count() > 1) {
      EXPECT_EQ(windows.startOf(windows.count() - 1) + windows.length(), samples);
    }
    for (int64_t w = 2; w < windows.count(); ++w)
      EXPECT_GE(windows.startOf(w), windows.startOf(w - 2) + windows.length());
  }
}

TEST(WelchWindows, AreNoneWhereTheStretchIsTooShortOrMakesNoSense) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(WelchWindows(0, 1, 100, fs, 15000).count(), 0);
  EXPECT_EQ(WelchWindows(50, 40, 100, fs, 15000).count(), 0);
  EXPECT_EQ(WelchWindows(0, 60, 100, fs, 100).count(), 0);
  EXPECT_EQ(WelchWindows(0, 60, 100, fs, -5).count(), 0);
  EXPECT_EQ(WelchWindows(1e300, 60, 100, fs, 15000).count(), 0);
  EXPECT_EQ(WelchWindows(0, nan, 100, fs, 15000).count(), 0);
  for (const double bad : {0.0, -1.0, nan, infinity})
    EXPECT_EQ(WelchWindows(0, 60, 100, bad, 15000).count(), 0) << bad;
  EXPECT_EQ(WelchWindows(-infinity, infinity, 100, fs, 15000).count(), 13);
  const WelchWindows none(0, 1, 100, fs, 15000);
  EXPECT_TRUE(spectrumOf(std::vector<double>(15000, 1.0), none).powers.empty());
}

TEST(WelchWindows, ReachNoFurtherThanHalfTheRate) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(WelchWindows(0, 60, infinity, fs, 15000).nrOfBins(), 1024u);
  EXPECT_EQ(WelchWindows(0, 60, -3, fs, 15000).nrOfBins(), 1u);
  EXPECT_EQ(WelchWindows(0, 60, 30, fs, 15000).nrOfBins(), 246u);
}

} // namespace
} // namespace emeg
