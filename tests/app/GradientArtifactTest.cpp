#include "app/simulation/GradientArtifact.h"
#include "app/simulation/BurstWaveform.h"

#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <numbers>

namespace emeg {

namespace {

using Slice = BurstWaveform::Slice;

constexpr double microsecond = 1e-6;

SimulationParameters parametersFor(Preset preset, double fs, uint64_t seed = 1) {
  SimulationParameters parameters = presetParameters(preset, fs);
  parameters.seed = seed;
  parameters.nrOfChannels = 32;
  parameters.seconds = 60;
  return parameters;
}

struct Shape {
  double integral = 0; ///< microvolt seconds
  double size = 0;     ///< integral of the absolute value
  double peak = 0;
  double squares = 0;
};

Shape shapeOf(const BurstWaveform& waveform, Slice slice, double duration) {
  Shape shape;
  for (double t = 0; t <= duration; t += microsecond) {
    const double v = waveform.value(slice, t);
    shape.integral += v * microsecond;
    shape.size += std::abs(v) * microsecond;
    shape.peak = std::max(shape.peak, std::abs(v));
    shape.squares += v * v * microsecond;
  }
  return shape;
}

/// Bound on the amplitude of everything at and above a frequency: twice the integral of the spectrum's
/// magnitude.
double amplitudeAbove(const BurstWaveform& waveform, Slice slice, double duration, double fromHz) {
  constexpr double step = 0.00002;
  constexpr double stepHz = 5;
  double amplitude = 0;
  for (double hz = fromHz; hz < 8000; hz += stepHz) {
    std::complex<double> sum = 0;
    for (double t = 0; t <= duration; t += step)
      sum += waveform.value(slice, t) * std::polar(step, -2 * std::numbers::pi * hz * t);
    amplitude += 2 * std::abs(sum) * stepHz;
  }
  return amplitude;
}

class BurstAtRate : public testing::TestWithParam<double> {};

TEST_P(BurstAtRate, PeaksAtTheWantedVoltage) {
  const GradientParameters gradient = *presetParameters(Preset::Gap, GetParam()).gradient;
  const BurstWaveform waveform(gradient, GetParam());
  EXPECT_NEAR(shapeOf(waveform, Slice::Ordinary, gradient.burstDuration).peak, 2500, 1);
}

TEST_P(BurstAtRate, IntegratesToZero) {
  const GradientParameters gradient = *presetParameters(Preset::Gap, GetParam()).gradient;
  const BurstWaveform waveform(gradient, GetParam());
  for (const Slice slice : {Slice::Ordinary, Slice::First}) {
    const Shape shape = shapeOf(waveform, slice, gradient.burstDuration);
    EXPECT_GT(shape.size, 10); // microvolt seconds: the test would notice
    EXPECT_LT(std::abs(shape.integral), 1e-5 * shape.size);
  }
}

TEST_P(BurstAtRate, IsZeroOutsideItsDurationAndStartsSmoothly) {
  const GradientParameters gradient = *presetParameters(Preset::Gap, GetParam()).gradient;
  const BurstWaveform waveform(gradient, GetParam());
  EXPECT_EQ(waveform.value(Slice::Ordinary, -microsecond), 0);
  EXPECT_EQ(waveform.value(Slice::Ordinary, gradient.burstDuration + microsecond), 0);
  EXPECT_LT(std::abs(waveform.value(Slice::Ordinary, 0)), 0.1);
  EXPECT_LT(std::abs(waveform.value(Slice::Ordinary, gradient.burstDuration)), 0.1);
}

TEST_P(BurstAtRate, HoldsNothingAboveTheUsableBand) {
  const GradientParameters gradient = *presetParameters(Preset::Gap, GetParam()).gradient;
  const BurstWaveform waveform(gradient, GetParam());
  for (const Slice slice : {Slice::Ordinary, Slice::First})
    EXPECT_LT(amplitudeAbove(waveform, slice, gradient.burstDuration, 0.45 * GetParam()), 2500 * 1e-4);
}

TEST_P(BurstAtRate, ShowsTheReadout) {
  const GradientParameters gradient = *presetParameters(Preset::Gap, GetParam()).gradient;
  const BurstWaveform waveform(gradient, GetParam());
  const auto magnitude = [&](double hz) {
    std::complex<double> sum = 0;
    for (double t = 0; t <= gradient.burstDuration; t += 1e-5)
      sum += waveform.value(Slice::Ordinary, t) * std::polar(1e-5, -2 * std::numbers::pi * hz * t);
    return std::abs(sum);
  };
  EXPECT_GT(magnitude(gradient.readoutHz), 5 * magnitude(gradient.readoutHz - 70));
  EXPECT_GT(magnitude(gradient.readoutHz), 5 * magnitude(gradient.readoutHz + 70));
}

TEST_P(BurstAtRate, FirstSliceDiffersByFifteenPercent) {
  const GradientParameters gradient = *presetParameters(Preset::Gap, GetParam()).gradient;
  const BurstWaveform waveform(gradient, GetParam());
  double squares = 0;
  for (double t = 0; t <= gradient.burstDuration; t += microsecond) {
    const double difference = waveform.value(Slice::First, t) - waveform.value(Slice::Ordinary, t);
    squares += difference * difference * microsecond;
  }
  const double ordinary = shapeOf(waveform, Slice::Ordinary, gradient.burstDuration).squares;
  EXPECT_NEAR(std::sqrt(squares / ordinary), 0.15, 1e-4);
}

INSTANTIATE_TEST_SUITE_P(BurstWaveform, BurstAtRate, testing::Values(2000.0, 5000.0));

TEST(GradientArtifact, PresetsHaveTheReferenceTiming) {
  const ScanTiming gap = GradientArtifact(parametersFor(Preset::Gap, 5000)).timing();
  EXPECT_EQ(gap.nrOfSlicesPerVolume, 20);
  EXPECT_NEAR(gap.volumeDuration, 1.8003371, 1e-12);
  EXPECT_EQ(gap.sliceDuration, 0.0750142);
  const ScanTiming continuous = GradientArtifact(parametersFor(Preset::Continuous, 5000)).timing();
  EXPECT_EQ(continuous.nrOfSlicesPerVolume, 25);
  EXPECT_NEAR(continuous.volumeDuration, 25 * 0.0720227 + 0.0043, 1e-12);
  EXPECT_EQ(continuous.sliceDuration, 0.0720227);
  EXPECT_EQ(nameOf(Preset::Both), "both");
  EXPECT_NEAR(GradientArtifact(parametersFor(Preset::Both, 5000)).timing().volumeDuration, 1.8003371, 1e-12);
}

TEST(GradientArtifact, EveryBurstBeginsAtItsExactTimeOffTheRasterOfTheSamples) {
  for (const Preset preset : {Preset::Gap, Preset::Continuous}) {
    const SimulationParameters parameters = parametersFor(preset, 2000);
    const GradientArtifact artifact(parameters);
    const BurstWaveform waveform(*parameters.gradient, 2000);
    const ScanTiming& timing = artifact.timing();
    int offRaster = 0;
    int onsets = 0;
    for (int64_t v = 0; v < timing.nrOfVolumes; v++) {
      for (int s = 0; s < timing.nrOfSlicesPerVolume; s++) {
        const double onset = timing.sliceOnset(v, s);
        const Slice slice = s == 0 ? Slice::First : Slice::Ordinary;
        for (const double t : {0.009, 0.0235, 0.0378}) {
          const double expected = waveform.value(slice, t) * artifact.driftFactor(onset + t);
          ASSERT_NEAR(artifact.value(onset + t), expected, 1e-4) << v << " " << s;
        }
        for (double t = 0.0481; t < timing.sliceDuration - 1e-4; t += 0.002)
          ASSERT_EQ(artifact.value(onset + t), 0);
        const double sample = onset * 2000;
        if (std::abs(sample - std::round(sample)) > 1e-3) offRaster++;
        onsets++;
      }
    }
    EXPECT_GT(onsets, 500);
    EXPECT_GT(offRaster, onsets * 99 / 100);
  }
}

TEST(GradientArtifact, IsQuietBeforeAndAfterTheScanAndInTheGap) {
  const SimulationParameters parameters = parametersFor(Preset::Gap, 2000);
  const GradientArtifact artifact(parameters);
  const ScanTiming& timing = artifact.timing();
  EXPECT_GE(timing.firstVolumeOnset, 3);
  EXPECT_LE(timing.end(), parameters.seconds - 5);
  EXPECT_GT(timing.end() + timing.volumeDuration, parameters.seconds - 5 - 0.02);
  for (double t = 0; t < timing.firstVolumeOnset; t += 0.0005) ASSERT_EQ(artifact.value(t), 0);
  for (double t = timing.end(); t < parameters.seconds; t += 0.0005) ASSERT_EQ(artifact.value(t), 0);
  const double gapStart = timing.sliceOnset(3, timing.nrOfSlicesPerVolume);
  for (double t = gapStart; t < timing.volumeOnset(4); t += 0.0005) ASSERT_EQ(artifact.value(t), 0);
}

TEST(GradientArtifact, DriftsByOnePercentRmsBelowFourKilohertzOnly) {
  for (uint64_t seed = 1; seed <= 3; seed++) {
    const GradientArtifact artifact(parametersFor(Preset::Gap, 2000, seed));
    const double start = artifact.timing().firstVolumeOnset;
    const double duration = artifact.timing().end() - start;
    double sum = 0;
    double squares = 0;
    constexpr int n = 5000;
    for (int i = 0; i < n; i++) {
      const double drift = artifact.driftFactor(start + duration * (i + 0.5) / n) - 1;
      sum += drift;
      squares += drift * drift;
    }
    EXPECT_NEAR(sum / n, 0, 1e-5);
    EXPECT_NEAR(std::sqrt(squares / n), 0.01, 1e-5);
    // Smooth: half a second changes next to nothing.
    for (double t = start; t < start + duration; t += 0.5)
      EXPECT_NEAR(artifact.driftFactor(t), artifact.driftFactor(t + 0.5), 0.005);
  }
  EXPECT_EQ(GradientArtifact(parametersFor(Preset::Gap, 5000)).driftFactor(20), 1);
}

TEST(GradientArtifact, ChannelsHaveGainsOfEitherPolarity) {
  const GradientArtifact artifact(parametersFor(Preset::Gap, 2000));
  int negative = 0;
  for (const double gain : artifact.gains()) {
    EXPECT_GE(std::abs(gain), 0.6);
    EXPECT_LT(std::abs(gain), 1.2);
    if (gain < 0) negative++;
  }
  EXPECT_GT(negative, 5);
  EXPECT_LT(negative, 27);
}

TEST(SimulationParameters, PassBandFollowsTheSamplingFrequency) {
  const GradientParameters slow = *presetParameters(Preset::Gap, 2000).gradient;
  EXPECT_EQ(slow.lowPassHz, 560);
  EXPECT_EQ(slow.readoutHz, 500);
  EXPECT_EQ(slow.driftRms, 0.01);
  const GradientParameters fast = *presetParameters(Preset::Gap, 5000).gradient;
  EXPECT_EQ(fast.lowPassHz, 250);
  EXPECT_EQ(fast.readoutHz, 220);
  EXPECT_EQ(fast.driftRms, 0);
}

TEST(SimulationParameters, AScanThatDoesNotFitIsRefused) {
  SimulationParameters parameters = parametersFor(Preset::Gap, 2000);
  EXPECT_EQ(problemWith(parameters), "");
  parameters.gradient->nrOfVolumes = 28;
  EXPECT_EQ(problemWith(parameters), "");
  parameters.gradient->nrOfVolumes = 29;
  EXPECT_NE(problemWith(parameters), "");
  parameters.gradient->nrOfVolumes.reset();
  parameters.seconds = 9.8;
  EXPECT_NE(problemWith(parameters), "");
  parameters.seconds = 9.9;
  EXPECT_EQ(problemWith(parameters), "");
}

} // namespace

} // namespace emeg
