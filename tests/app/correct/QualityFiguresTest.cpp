#include "app/correct/QualityFigures.h"

#include "app/correct/PulseFigures.h"
#include "tests/app/correct/MemoryRecording.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

namespace emeg {

namespace {

constexpr double fs = 1000;
constexpr double twoPi = 2 * std::numbers::pi;

/// 30 volumes of 2.0003 s from 3 s on, slices of 0.1 s.
MRSequence scan() {
  MRSequence sequence;
  sequence.nrOfVolumes = 30;
  sequence.nrOfSlicesPerVolume = 20;
  sequence.volumeDuration = 2.0003;
  sequence.sliceDuration = 0.100015;
  sequence.firstTriggerTime = 3;
  return sequence;
}

using Signal = std::function<double(double seconds)>;

VolumeAverage averageOf(const Signal& signal, double seconds = 70) {
  VolumeAverage average(scan(), fs, 1);
  std::vector<double> values;
  for (int64_t t = 0; t < static_cast<int64_t>(seconds * fs); ++t)
    values.push_back(signal(static_cast<double>(t) / fs));
  average.add(static_cast<int64_t>(values.size()), values);
  return average;
}

Signal noiseOf(double rms) {
  auto generator = std::make_shared<std::mt19937>(1);
  auto normal = std::make_shared<std::normal_distribution<double>>(0, rms);
  return [generator, normal](double) { return (*normal)(*generator); };
}

Signal lineAt(double hz, double amplitude) {
  return [hz, amplitude](double seconds) { return amplitude * std::sin(twoPi * hz * (seconds - 3)); };
}

} // namespace

TEST(VolumeAverage, FindsTheAmplitudeOfSliceAndVolumeHarmonics) {
  const double volumeHz = 1 / scan().volumeDuration;
  const auto slices = averageOf(lineAt(20 * volumeHz, 10)).partOf(0, {1, 100});
  EXPECT_NEAR(slices.sliceHarmonics, 10 / std::sqrt(2), 0.1);
  EXPECT_LT(slices.volumeHarmonics, 0.1);
  const auto volumes = averageOf(lineAt(27 * volumeHz, 10)).partOf(0, {1, 100});
  EXPECT_NEAR(volumes.volumeHarmonics, 10 / std::sqrt(2), 0.1);
  EXPECT_LT(volumes.sliceHarmonics, 0.1);
}

TEST(VolumeAverage, NoiseHasAsMuchPowerOnTheLinesAsBetweenThem) {
  const auto part = averageOf(noiseOf(20)).partOf(0, {1, 100});
  EXPECT_NEAR(part.lineToBackground, 1, 0.35);
  EXPECT_LT(part.artifact(), 2);
}

TEST(VolumeAverage, TellsASmallArtifactFromTheEegAroundIt) {
  const Signal noise = noiseOf(20);
  const Signal line = lineAt(20 / scan().volumeDuration, 10);
  const auto part = averageOf([&](double s) { return noise(s) + line(s); }).partOf(0, {1, 100});
  EXPECT_NEAR(part.artifact(), 10 / std::sqrt(2), 0.7);
  EXPECT_GT(part.lineToBackground, 3);
}

// The mains may happen to be a multiple of the slice frequency.
TEST(VolumeAverage, ASingleLineIsNoScan) {
  const Signal noise = noiseOf(20);
  const Signal mains = lineAt(100 / scan().volumeDuration, 200);
  const auto part = averageOf([&](double s) { return noise(s) + mains(s); }).partOf(0, {1, 100});
  EXPECT_GT(part.lineToBackground, 100);
  EXPECT_NEAR(part.medianSliceToBackground, 1, 0.9);
}

TEST(VolumeAverage, TheMedianImagingArtifactIsThatOfTheVolumes) {
  const auto average =
      averageOf([](double seconds) { return seconds < 3 || seconds > 63 ? 0 : 50 * std::sin(30 * seconds); });
  EXPECT_NEAR(average.medianImagingArtifact(0), 100, 0.5);
  EXPECT_EQ(average.artifactSecondsOutside(0), 0);
}

TEST(VolumeAverage, ArtifactOutsideTheCountedVolumesIsSeen) {
  const auto average = averageOf([](double seconds) { return 50 * std::sin(30 * seconds); }, 80);
  EXPECT_GT(average.artifactSecondsOutside(0), 10);
}

TEST(VolumeAverage, ADriftOfTheVolumesIsMeasured) {
  // Artifacts that come a millisecond later from the middle of the scan on.
  const auto burst = [](double seconds, double delay) {
    const double inVolume =
        std::fmod(seconds - 3 - delay + 20 * scan().volumeDuration, scan().volumeDuration);
    return 100 * std::exp(-std::pow((inVolume - 0.5) / 0.02, 2));
  };
  const auto steady = averageOf([&](double s) { return burst(s, 0); });
  EXPECT_NEAR(steady.drift(0), 0, 5e-5);
  const auto late = averageOf([&](double s) { return burst(s, s > 45 ? 0.001 : 0); });
  EXPECT_NEAR(late.drift(0), 0.001, 2e-4);
}

// With few volumes the samples of a third of the scan lie at nearly the same places between two phases.
TEST(VolumeAverage, VolumesOfNoWholeNumberOfSamplesDoNotSeemToDrift) {
  MRSequence sequence = scan();
  sequence.nrOfVolumes = 20;
  sequence.volumeDuration = 2.38105;
  VolumeAverage average(sequence, fs, 1);
  std::vector<double> values;
  for (int64_t t = 0; t < 60000; ++t) {
    const double place =
        std::fmod(static_cast<double>(t) / fs - 3 + 10 * sequence.volumeDuration, sequence.volumeDuration);
    values.push_back(100 * std::exp(-std::pow((place - 0.5) / 0.01, 2)));
  }
  average.add(60000, values);
  EXPECT_NEAR(average.drift(0), 0, 1e-4);
}

TEST(VolumeAverage, TooFewVolumesCannotBeMeasured) {
  MRSequence sequence = scan();
  sequence.nrOfVolumes = 3;
  EXPECT_FALSE(VolumeAverage(sequence, fs, 1).isMeasurable());
}

TEST(BandPowers, OfASinusoidLieInItsBand) {
  MemoryRecording recording;
  recording.editableHeader().samplingFrequency = fs;
  recording.editableHeader().nrOfTimePoints = 60000;
  recording.addChannel("Cz", ChannelKind::Eeg, [](int64_t t) {
    return 1000 + 10 * std::sin(twoPi * 10 * static_cast<double>(t) / fs);
  });
  const BandPowers powers = bandPowersOf(measureSpectra(recording, 0, 60, 100, [](double) {})[0]);
  EXPECT_NEAR(powers[2], 50, 1); // alpha: half the square of the amplitude
  for (const size_t other : {0u, 1u, 3u, 4u}) EXPECT_LT(powers[other], 0.5);
}

TEST(BandPowers, AreZeroWhereThereIsNoWindow) {
  MemoryRecording recording;
  recording.editableHeader().samplingFrequency = fs;
  recording.editableHeader().nrOfTimePoints = 1000;
  recording.addChannel("Cz", ChannelKind::Eeg, [](int64_t) { return 1; });
  const PowerSpectrum none = measureSpectra(recording, 0, 1, 100, [](double) {})[0];
  EXPECT_EQ(bandPowersOf(none), BandPowers{});
  EXPECT_EQ(slicePeaksOf(none, scan(), 1).rms, 0);
}

// An artifact whose amplitude changes sign from time to time: the average over volumes does not see it.
TEST(SlicePeaks, ShowAnArtifactWhoseAmplitudeDrifts) {
  const double sliceHz = 20 / scan().volumeDuration;
  const Signal noise = noiseOf(20);
  const auto drifting = [&](double s) {
    return noise(s) + 10 * std::sin(twoPi * (s - 3) / 60) * std::sin(twoPi * sliceHz * (s - 3));
  };
  MemoryRecording recording;
  recording.editableHeader().samplingFrequency = fs;
  recording.editableHeader().nrOfTimePoints = 70000;
  recording.addChannel("Cz", ChannelKind::Eeg,
                       [&](int64_t t) { return drifting(static_cast<double>(t) / fs); });
  recording.addChannel("Pz", ChannelKind::Eeg, [&](int64_t t) { return noise(static_cast<double>(t)); });
  const auto spectra = measureSpectra(recording, 3, 63, 100, [](double) {});
  const SlicePeaks peaks = slicePeaksOf(spectra[0], scan(), 1);
  EXPECT_NEAR(peaks.rms, 5, 0.8);
  EXPECT_GT(peaks.toBackground, 1.5);
  EXPECT_LT(slicePeaksOf(spectra[1], scan(), 1).rms, 2);
  EXPECT_NEAR(slicePeaksOf(spectra[1], scan(), 1).toBackground, 1, 0.2);
  EXPECT_LT(averageOf(drifting).partOf(0, {1, 100}).artifact(), 2);
}

TEST(PulseFigures, SeeWhatIsLockedToTheBeats) {
  std::vector<double> series(2501);
  std::vector<double> pulses;
  for (int i = 0; i <= 10; ++i) pulses.push_back(250.0 * i);
  for (size_t i = 0; i < 2500; ++i) series[i] = 8 * std::sin(twoPi * static_cast<double>(i) / 250);
  const PulseChannelFigures figures =
      measurePulseFigures(series, std::vector<double>(2501, 0.0), pulses, 2500);
  EXPECT_NEAR(figures.rmsBefore, 8 / std::sqrt(2), 0.01);
  EXPECT_NEAR(figures.beatRmsBefore, 8 / std::sqrt(2), 0.01);
  EXPECT_NEAR(figures.beatRmsAfter, 8 / std::sqrt(2), 0.01);
  EXPECT_NEAR(measurePulseFigures(series, series, pulses, 2500).beatRmsAfter, 0, 1e-12);
}

} // namespace emeg
