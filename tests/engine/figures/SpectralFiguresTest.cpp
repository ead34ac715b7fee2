#include "engine/figures/SpectralFigures.h"

#include "engine/figures/VolumeAverage.h"
#include "tests/engine/figures/SimulatedScan.h"

#include <gtest/gtest.h>

#include <limits>

namespace emeg {
namespace {

constexpr double fs = 1000;

PowerSpectrum spectrumOf(const std::vector<double>& channel, double from, double to) {
  const WelchWindows windows(from, to, 100, fs, static_cast<int64_t>(channel.size()));
  WelchSpectrum spectrum(windows);
  FigureWorkspace workspace;
  spectrum.add(channel, workspace);
  return spectrum.spectrum(1);
}

TEST(BandPowers, OfASinusoidLieInItsBand) {
  const std::vector<double> channel =
      sampled([](double s) { return 1000 + 10 * std::sin(twoPi * 10 * s); }, fs, 60);
  const BandPowers powers = bandPowersOf(spectrumOf(channel, 0, 60));
  EXPECT_NEAR(powers[2], 50, 1); // alpha: half the square of the amplitude
  for (const size_t other : {0u, 1u, 3u, 4u}) EXPECT_LT(powers[other], 0.5);
}

TEST(BandPowers, AreZeroWhereThereIsNoWindow) {
  const PowerSpectrum none = spectrumOf(std::vector<double>(1000, 1.0), 0, 1);
  EXPECT_EQ(bandPowersOf(none), BandPowers{});
  EXPECT_EQ(slicePeaksOf(none, scanOf30Volumes(), 1).rms, 0);
}

// An artifact whose amplitude changes sign from time to time: the average over volumes does not see it.
TEST(SlicePeaks, ShowAnArtifactWhoseAmplitudeDrifts) {
  const double sliceHz = 20 / scanOf30Volumes().volumeDuration;
  Signal noise = noiseOf(20);
  const std::vector<double> drifting = sampled(
      [&](double s) {
        return noise(s) + 10 * std::sin(twoPi * (s - 3) / 60) * std::sin(twoPi * sliceHz * (s - 3));
      },
      fs, 70);
  const SlicePeaks peaks = slicePeaksOf(spectrumOf(drifting, 3, 63), scanOf30Volumes(), 1);
  EXPECT_NEAR(peaks.rms, 5, 0.8);
  EXPECT_GT(peaks.toBackground, 1.5);
  const SlicePeaks ofNoise =
      slicePeaksOf(spectrumOf(sampled(noiseOf(20, 2), fs, 70), 3, 63), scanOf30Volumes(), 1);
  EXPECT_LT(ofNoise.rms, 2);
  EXPECT_NEAR(ofNoise.toBackground, 1, 0.2);

  const VolumeGrid grid(scanOf30Volumes(), fs, 70000, {});
  VolumeAverage average(grid, {}, 1, VolumeAverage::Drift::Ignored);
  average.add(drifting);
  EXPECT_LT(average.volumeLocked().artifact(), 2);
}

TEST(SlicePeaks, AreNoneOfATimingThatMakesNoSense) {
  const PowerSpectrum spectrum = spectrumOf(sampled(noiseOf(20), fs, 60), 0, 60);
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double bad : {0.0, -0.1, 1e9, infinity, std::numeric_limits<double>::quiet_NaN()}) {
    MRSequence sequence = scanOf30Volumes();
    sequence.sliceDuration = bad;
    EXPECT_EQ(slicePeaksOf(spectrum, sequence, 1).rms, 0) << bad;
  }
  for (const double bad : {0.0, -2.0, std::numeric_limits<double>::quiet_NaN()}) {
    MRSequence sequence = scanOf30Volumes();
    sequence.volumeDuration = bad;
    EXPECT_EQ(slicePeaksOf(spectrum, sequence, 1).rms, 0) << bad;
  }
}

} // namespace
} // namespace emeg
