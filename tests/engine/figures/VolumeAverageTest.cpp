#include "engine/figures/VolumeAverage.h"

#include "engine/figures/VolumeLines.h"
#include "tests/engine/figures/PlainFigures.h"
#include "tests/engine/figures/SimulatedScan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

namespace emeg {
namespace {

constexpr double fs = 1000;

/// One channel and the average over the volumes of a scan.
struct Averaged {
  Averaged(const std::vector<double>& values, double samplingFrequency, const MRSequence& sequence,
           std::vector<FoundScan> corrected = {}, FrequencyRange range = {}, double factor = 1)
      : grid(sequence, samplingFrequency, static_cast<int64_t>(values.size()), corrected),
        average(grid, range, factor, VolumeAverage::Drift::Measured) {
    average.add(values);
  }
  VolumeGrid grid;
  VolumeAverage average;
};

std::unique_ptr<Averaged> averageOf(const Signal& signal, double seconds = 70) {
  return std::make_unique<Averaged>(sampled(signal, fs, seconds), fs, scanOf30Volumes());
}

VolumeLockedPart volumeLocked(const Signal& signal) {
  return averageOf(signal)->average.volumeLocked();
}

void expectSameBits(const VolumeAverage& a, const VolumeAverage& b) {
  EXPECT_EQ(a.volumeLocked().sliceHarmonics, b.volumeLocked().sliceHarmonics);
  EXPECT_EQ(a.volumeLocked().volumeHarmonics, b.volumeLocked().volumeHarmonics);
  EXPECT_EQ(a.volumeLocked().background, b.volumeLocked().background);
  EXPECT_EQ(a.volumeLocked().medianSliceToBackground, b.volumeLocked().medianSliceToBackground);
  EXPECT_EQ(a.medianImagingArtifact(), b.medianImagingArtifact());
  EXPECT_EQ(a.artifactSecondsOutside(), b.artifactSecondsOutside());
  EXPECT_EQ(a.drift(), b.drift());
}

/// Slices with some noise, which go on behind the 30 volumes.
std::vector<double> noisyScan(double samplingFrequency, double seconds, uint32_t seed) {
  const Signal slices = slicesOf(scanOf30Volumes(), 300, 3, 74);
  Signal noise = noiseOf(20, seed);
  return sampled([&](double s) { return slices(s) + noise(s); }, samplingFrequency, seconds);
}

TEST(VolumeAverage, FindsTheAmplitudeOfSliceAndVolumeHarmonics) {
  const double volumeHz = 1 / scanOf30Volumes().volumeDuration;
  const auto slices = volumeLocked(lineAt(20 * volumeHz, 10));
  EXPECT_NEAR(slices.sliceHarmonics, 10 / std::sqrt(2), 0.1);
  EXPECT_LT(slices.volumeHarmonics, 0.1);
  const auto volumes = volumeLocked(lineAt(27 * volumeHz, 10));
  EXPECT_NEAR(volumes.volumeHarmonics, 10 / std::sqrt(2), 0.1);
  EXPECT_LT(volumes.sliceHarmonics, 0.1);
}

TEST(VolumeAverage, NoiseHasAsMuchPowerOnTheLinesAsBetweenThem) {
  const auto part = volumeLocked(noiseOf(20));
  EXPECT_NEAR(part.lineToBackground, 1, 0.35);
  EXPECT_LT(part.artifact(), 2);
}

TEST(VolumeAverage, TellsASmallArtifactFromTheEegAroundIt) {
  Signal noise = noiseOf(20);
  const Signal line = lineAt(20 / scanOf30Volumes().volumeDuration, 10);
  const auto part = volumeLocked([&](double s) { return noise(s) + line(s); });
  EXPECT_NEAR(part.artifact(), 10 / std::sqrt(2), 0.7);
  EXPECT_GT(part.lineToBackground, 3);
}

// The mains may happen to be a multiple of the slice frequency.
TEST(VolumeAverage, ASingleLineIsNoScan) {
  Signal noise = noiseOf(20);
  const Signal mains = lineAt(100 / scanOf30Volumes().volumeDuration, 200);
  const auto part = volumeLocked([&](double s) { return noise(s) + mains(s); });
  EXPECT_GT(part.lineToBackground, 100);
  EXPECT_NEAR(part.medianSliceToBackground, 1, 0.9);
}

TEST(VolumeAverage, TheMedianImagingArtifactIsThatOfTheVolumes) {
  const auto measured =
      averageOf([](double seconds) { return seconds < 3 || seconds > 63 ? 0 : 50 * std::sin(30 * seconds); });
  EXPECT_NEAR(measured->average.medianImagingArtifact(), 100, 0.5);
  EXPECT_EQ(measured->average.artifactSecondsOutside(), 0);
}

TEST(VolumeAverage, SeesArtifactOutsideTheCountedVolumes) {
  const auto measured = averageOf([](double seconds) { return 50 * std::sin(30 * seconds); }, 80);
  EXPECT_GT(measured->average.artifactSecondsOutside(), 10);
}

TEST(VolumeAverage, DoesNotCountOtherCorrectedScansAsOutside) {
  const std::vector<double> values = sampled([](double s) { return 50 * std::sin(30 * s); }, fs, 80);
  const Averaged measured(values, fs, scanOf30Volumes(), {{scanOf30Volumes(), 0, 80}});
  EXPECT_EQ(measured.average.artifactSecondsOutside(), 0);
}

TEST(VolumeAverage, MeasuresADriftOfTheVolumes) {
  // Artifacts that come a millisecond later from the middle of the scan on.
  const auto burst = [](double seconds, double delay) {
    const double duration = scanOf30Volumes().volumeDuration;
    const double inVolume = std::fmod(seconds - 3 - delay + 20 * duration, duration);
    return 100 * std::exp(-std::pow((inVolume - 0.5) / 0.02, 2));
  };
  const auto steady = averageOf([&](double s) { return burst(s, 0); });
  EXPECT_NEAR(steady->average.drift(), 0, 5e-5);
  const auto late = averageOf([&](double s) { return burst(s, s > 45 ? 0.001 : 0); });
  EXPECT_NEAR(late->average.drift(), 0.001, 2e-4);
}

// With few volumes the samples of a third of the scan lie at nearly the same places between two phases.
TEST(VolumeAverage, VolumesOfNoWholeNumberOfSamplesDoNotSeemToDrift) {
  MRSequence sequence = scanOf30Volumes();
  sequence.nrOfVolumes = 20;
  sequence.volumeDuration = 2.38105;
  const auto burst = [&](double seconds) {
    const double place = std::fmod(seconds - 3 + 10 * sequence.volumeDuration, sequence.volumeDuration);
    return 100 * std::exp(-std::pow((place - 0.5) / 0.01, 2));
  };
  EXPECT_NEAR(Averaged(sampled(burst, fs, 60), fs, sequence).average.drift(), 0, 1e-4);
}

TEST(VolumeAverage, AgreesWithTheDefinition) {
  for (const double rate : {250.0, 1000.0, 2170.5}) {
    const std::vector<double> values = noisyScan(rate, 80, 7);
    const std::vector<FoundScan> corrected = {{scanOf30Volumes(), 2.9, 63.1}, {scanOf30Volumes(), 71, 75}};
    const Averaged measured(values, rate, scanOf30Volumes(), corrected, {2, 90});
    const VolumeLockedPart part = measured.average.volumeLocked();
    const plain::VolumeFigures plain =
        plain::volumeFigures(values, rate, scanOf30Volumes(), corrected, {2, 90});
    EXPECT_NEAR(part.sliceHarmonics, plain.sliceHarmonics, 1e-9 * plain.sliceHarmonics);
    EXPECT_NEAR(part.volumeHarmonics, plain.volumeHarmonics, 1e-9 * plain.volumeHarmonics);
    EXPECT_NEAR(part.background, plain.background, 1e-9 * plain.background);
    EXPECT_NEAR(part.lineToBackground, plain.lineToBackground, 1e-8 * plain.lineToBackground);
    EXPECT_NEAR(part.medianSliceToBackground, plain.medianSliceToBackground,
                1e-8 * plain.medianSliceToBackground);
    EXPECT_NEAR(measured.average.medianImagingArtifact(), plain.medianImagingArtifact, 1e-3);
    EXPECT_EQ(measured.average.artifactSecondsOutside(), plain.artifactSecondsOutside);
    EXPECT_GT(measured.average.artifactSecondsOutside(), 0);
    EXPECT_NEAR(measured.average.drift(), plain.drift, 1e-9);
  }
}

TEST(VolumeAverage, DoesNotDependOnHowTheChannelIsCut) {
  const std::vector<double> values = noisyScan(fs, 80, 3);
  const Averaged whole(values, fs, scanOf30Volumes());
  for (const size_t longest : {1u, 100u, 2500u, 30000u}) {
    VolumeAverage cut(whole.grid, {}, 1, VolumeAverage::Drift::Measured);
    inStretches(values, longest, 1, [&](std::span<const double> stretch) { cut.add(stretch); });
    expectSameBits(cut, whole.average);
  }
}

TEST(VolumeAverage, CountsSamplesThatAreNotFiniteAsZero) {
  std::vector<double> bad = noisyScan(fs, 80, 3);
  std::vector<double> zero = bad;
  const std::vector<double> notFinite = {std::numeric_limits<double>::quiet_NaN(),
                                         std::numeric_limits<double>::infinity(),
                                         -std::numeric_limits<double>::infinity()};
  for (size_t t = 0; t < bad.size(); t += 997) {
    bad[t] = notFinite[t % 3];
    zero[t] = 0;
  }
  expectSameBits(Averaged(bad, fs, scanOf30Volumes()).average, Averaged(zero, fs, scanOf30Volumes()).average);
}

TEST(VolumeAverage, TakesScalingBack) {
  std::vector<double> values = noisyScan(fs, 80, 3);
  const Averaged plain(values, fs, scanOf30Volumes());
  for (double& value : values) value *= 1024;
  const Averaged scaled(values, fs, scanOf30Volumes(), {}, {}, 1.0 / 1024);
  expectSameBits(scaled.average, plain.average);
}

TEST(VolumeAverage, AScanThatTheRecordingCutsIsMeasuredAsFarAsItGoes) {
  const std::vector<double> values = noisyScan(fs, 40, 3);
  const Averaged measured(values, fs, scanOf30Volumes());
  const auto plain = plain::volumeFigures(values, fs, scanOf30Volumes(), {}, {});
  EXPECT_NEAR(measured.average.volumeLocked().lineToBackground, plain.lineToBackground,
              1e-8 * plain.lineToBackground);
  EXPECT_NEAR(measured.average.medianImagingArtifact(), plain.medianImagingArtifact, 1e-3);
}

TEST(VolumeGrid, EndsVolumesWhereTheNextOneBegins) {
  for (const double rate : {250.0, 1000.0, 2170.5}) {
    const VolumeGrid grid(scanOf30Volumes(), rate, static_cast<int64_t>(80 * rate), {});
    for (int64_t position = 0; position < static_cast<int64_t>(80 * rate); position += 137) {
      const int64_t end = grid.endOfVolumeAt(position);
      EXPECT_EQ(grid.volumeAt(end - 1), grid.volumeAt(position));
      EXPECT_GT(grid.volumeAt(end), grid.volumeAt(position));
    }
  }
}

TEST(VolumeGrid, TooFewVolumesCannotBeMeasured) {
  MRSequence sequence = scanOf30Volumes();
  sequence.nrOfVolumes = 3;
  EXPECT_FALSE(VolumeGrid(sequence, fs, 70000, {}).isMeasurable());
  EXPECT_FALSE(VolumeGrid(scanOf30Volumes(), fs, 11000, {}).isMeasurable());
  EXPECT_TRUE(VolumeGrid(scanOf30Volumes(), fs, 11002, {}).isMeasurable());
}

TEST(VolumeGrid, ATimingThatMakesNoSenseCannotBeMeasured) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double bad : {0.0, -1.0, 1e-9, 1e300, nan, std::numeric_limits<double>::infinity()}) {
    MRSequence sequence = scanOf30Volumes();
    sequence.volumeDuration = bad;
    Averaged measured(std::vector<double>(70000, 1.0), fs, sequence);
    EXPECT_FALSE(measured.grid.isMeasurable()) << bad;
    EXPECT_EQ(measured.average.volumeLocked().lineToBackground, 0);
    EXPECT_FALSE(VolumeGrid(scanOf30Volumes(), bad, 70000, {}).isMeasurable()) << bad;
  }
  for (const double bad : {nan, 1e300, -1e300, -std::numeric_limits<double>::infinity()}) {
    MRSequence sequence = scanOf30Volumes();
    sequence.firstTriggerTime = bad;
    EXPECT_FALSE(VolumeGrid(sequence, fs, 70000, {}).isMeasurable()) << bad;
  }
}

TEST(VolumeLines, WithoutSlicesAllLinesAreTheVolumes) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double bad : {0.0, -1.0, nan, std::numeric_limits<double>::infinity()}) {
    MRSequence sequence = scanOf30Volumes();
    sequence.sliceDuration = bad;
    const auto part = Averaged(noisyScan(fs, 80, 3), fs, sequence).average.volumeLocked();
    EXPECT_EQ(part.sliceHarmonics, 0);
    EXPECT_EQ(part.medianSliceToBackground, 0);
    EXPECT_GT(part.volumeHarmonics, 10);
  }
}

TEST(LagBetween, IsFoundToAFractionOfAValue) {
  const auto bumpAt = [](double place) {
    std::vector<double> period(200, 5.0);
    for (size_t i = 0; i < period.size(); ++i)
      period[i] += std::exp(-std::pow(std::remainder(static_cast<double>(i) - place, 200) / 8, 2));
    return period;
  };
  const std::vector<double> one = bumpAt(196);
  const std::vector<double> two = bumpAt(200.6);
  EXPECT_NEAR(lagBetween(one, two, 10), 4.6, 0.02); // around the end
  EXPECT_EQ(lagBetween({}, {}, 10), 0);
}

} // namespace
} // namespace emeg
