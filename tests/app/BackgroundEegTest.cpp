#include "app/simulation/BackgroundEeg.h"
#include "app/simulation/Electrodes.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/RealFFT.h"

#include <cmath>
#include <gtest/gtest.h>
#include <set>

namespace emeg {

namespace {

constexpr double fs = 500;

std::vector<double> eeg(const EegParameters& parameters, uint64_t seed, int nrOfChannels, int64_t count) {
  BackgroundEeg background(parameters, seed, nrOfChannels, fs);
  std::vector<double> samples(static_cast<size_t>(nrOfChannels * count));
  background.next(count, samples);
  return samples;
}

double rms(const double* samples, int64_t count) {
  double squares = 0;
  for (int64_t i = 0; i < count; i++) squares += samples[i] * samples[i];
  return std::sqrt(squares / static_cast<double>(count));
}

/// Power between two frequencies, averaged over seeds.
std::vector<double> bandPowers(const EegParameters& parameters,
                               const std::vector<std::pair<double, double>>& bands) {
  constexpr int32_t log2n = 15;
  constexpr size_t n = size_t{1} << log2n;
  FFTWorkspace workspace;
  std::vector<double> powers(bands.size());
  for (uint64_t seed = 1; seed <= 8; seed++) {
    std::vector<double> spectrum = eeg(parameters, seed, 1, n);
    realFFTForward(spectrum.data(), log2n, workspace);
    for (size_t b = 0; b < bands.size(); b++)
      for (size_t k = 1; k < n / 2; k++) {
        const double hz = static_cast<double>(k) * fs / n;
        if (hz >= bands[b].first && hz < bands[b].second)
          powers[b] += spectrum[2 * k] * spectrum[2 * k] + spectrum[2 * k + 1] * spectrum[2 * k + 1];
      }
  }
  return powers;
}

TEST(BackgroundEeg, HasTheWantedRms) {
  EegParameters parameters;
  parameters.alphaPeakUv = 0;
  constexpr int64_t count = 100000;
  constexpr int nrOfChannels = 8;
  const std::vector<double> samples = eeg(parameters, 1, nrOfChannels, count);
  double squares = 0;
  for (int c = 0; c < nrOfChannels; c++) {
    const double channelRms = rms(samples.data() + c * count, count);
    EXPECT_NEAR(channelRms, 15, 3) << c;
    squares += channelRms * channelRms;
  }
  EXPECT_NEAR(std::sqrt(squares / nrOfChannels), 15, 0.75);
}

TEST(BackgroundEeg, EveryOctaveHoldsAboutTheSamePower) {
  EegParameters parameters;
  parameters.alphaPeakUv = 0;
  const std::vector<double> octaves = bandPowers(parameters, {{1, 2}, {2, 4}, {4, 8}, {8, 16}, {16, 32}});
  for (size_t i = 1; i < octaves.size(); i++) {
    EXPECT_GT(octaves[i], octaves[0] / 1.7) << i;
    EXPECT_LT(octaves[i], octaves[0] * 1.7) << i;
  }
}

TEST(BackgroundEeg, AlphaRhythmLiesNearTenHertz) {
  EegParameters parameters;
  parameters.backgroundRmsUv = 0;
  parameters.sensorNoiseRmsUv = 0.01;
  const std::vector<double> bands = bandPowers(parameters, {{1, 8}, {8, 12}, {12, 250}});
  EXPECT_GT(bands[1], 20 * (bands[0] + bands[2]));
}

TEST(BackgroundEeg, AlphaRhythmWaxesAndWanesBelowItsLargestAmplitude) {
  EegParameters parameters;
  parameters.backgroundRmsUv = 0;
  parameters.sensorNoiseRmsUv = 0.01;
  constexpr int64_t count = 60 * 500;
  constexpr int occipital = 8;
  ASSERT_EQ(electrodeName(occipital), "O1");
  const std::vector<double> samples = eeg(parameters, 4, occipital + 1, count);
  double largest = 0;
  double smallestSecond = 1000;
  for (int64_t second = 0; second < 60; second++) {
    double peak = 0;
    for (int64_t t = 0; t < 500; t++)
      peak = std::max(peak, std::abs(samples[static_cast<size_t>(occipital * count + second * 500 + t)]));
    largest = std::max(largest, peak);
    smallestSecond = std::min(smallestSecond, peak);
  }
  EXPECT_LT(largest, 30.1);
  EXPECT_GT(largest, 20);
  EXPECT_LT(smallestSecond, 10);
}

TEST(BackgroundEeg, ChannelsArePartlyCorrelated) {
  constexpr int64_t count = 60000;
  constexpr int nrOfChannels = 6;
  const std::vector<double> samples = eeg(EegParameters(), 2, nrOfChannels, count);
  double sum = 0;
  int pairs = 0;
  for (int a = 0; a < nrOfChannels; a++) {
    for (int b = a + 1; b < nrOfChannels; b++) {
      double product = 0;
      const double* x = samples.data() + a * count;
      const double* y = samples.data() + b * count;
      for (int64_t t = 0; t < count; t++) product += x[t] * y[t];
      const double correlation = product / (static_cast<double>(count) * rms(x, count) * rms(y, count));
      EXPECT_LT(std::abs(correlation), 0.9);
      sum += std::abs(correlation);
      pairs++;
    }
  }
  EXPECT_GT(sum / pairs, 0.1);
}

TEST(BackgroundEeg, SensorNoiseIsThereWithoutAnyEeg) {
  EegParameters parameters;
  parameters.backgroundRmsUv = 0;
  parameters.alphaPeakUv = 0;
  const std::vector<double> samples = eeg(parameters, 1, 1, 50000);
  EXPECT_NEAR(rms(samples.data(), 50000), 0.7, 0.02);
}

TEST(Electrodes, NamesAreDistinctAndOfTheTenTwentySystem) {
  std::set<std::string> names;
  for (int c = 0; c < 256; c++) names.insert(electrodeName(c));
  EXPECT_EQ(names.size(), 256u);
  EXPECT_EQ(electrodeName(0), "Fp1");
  EXPECT_EQ(electrodeName(9), "O2");
  EXPECT_EQ(electrodeName(64), "Ch065");
  EXPECT_EQ(electrodeName(255), "Ch256");
}

TEST(Electrodes, TheBackOfTheHeadSeesMoreAlphaThanTheForehead) {
  EXPECT_EQ(alphaWeightOf("O1"), 1);
  EXPECT_EQ(alphaWeightOf("POz"), 1);
  EXPECT_EQ(alphaWeightOf("Fp2"), 0.3);
  EXPECT_EQ(alphaWeightOf("Cz"), 0.6);
  EXPECT_GT(leftShareOf("O1"), leftShareOf("Oz"));
  EXPECT_GT(leftShareOf("Oz"), leftShareOf("TP10"));
}

} // namespace

} // namespace emeg
