#include "tests/artifacts/cardiac/TestRecordings.h"

#include "tests/artifacts/cardiac/SimulatedBcg.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace emeg {

namespace {

constexpr double pi = 3.14159265358979323846;

using Channels = std::vector<std::vector<double>>;

std::vector<double> noise(int32_t length, std::mt19937& random) {
  std::normal_distribution<double> gaussian;
  std::vector<double> channel;
  for (int32_t i = 0; i < length; ++i) channel.push_back(gaussian(random));
  return channel;
}

/// The same wave, of whole numbers, at every multiple of `period`.
std::vector<double> exactBeats(int32_t length, int32_t period, double sign = 1) {
  std::vector<double> channel;
  for (int32_t i = 0; i < length; ++i) {
    const int32_t phase = i % period;
    channel.push_back(sign * (phase < 20 ? phase * (20 - phase) : (phase < 30 ? -60 : 0)));
  }
  return channel;
}

/// Beats of two shapes in turn: half of them resemble the one half, half the other.
std::vector<double> twoShapes(int32_t length, int32_t period) {
  std::vector<double> channel;
  for (int32_t i = 0; i < length; ++i) {
    const int32_t phase = i % period;
    const bool even = (i / period) % 2 == 0;
    const double wave = std::sin(2 * pi * phase / period);
    channel.push_back(even ? wave : wave * std::abs(wave) + (phase < period / 3 ? 0.5 : -0.25));
  }
  return channel;
}

std::vector<double> cosines(int32_t length, double period) {
  std::vector<double> channel;
  for (int32_t i = 0; i < length; ++i)
    channel.push_back(std::cos(2 * pi * i / period) + 0.5 * std::cos(4 * pi * i / period + 1) +
                      0.25 * std::cos(6 * pi * i / period + 2));
  return channel;
}

Channels scaled(Channels channels, double factor) {
  for (std::vector<double>& channel : channels)
    for (double& x : channel) x *= factor;
  return channels;
}

Channels beatingChannels(int32_t length, int count, uint32_t seed) {
  Channels channels;
  for (int c = 0; c < count; ++c) channels.push_back(beatingChannel(length, seed + static_cast<uint32_t>(c)));
  return channels;
}

constexpr float slowRate = 50; // beats of 48 to 52 samples are then those of an ordinary heart

} // namespace

TestRecording makeRecording(std::string name, Channels channels, float rate) {
  TestRecording recording;
  recording.name = std::move(name);
  recording.length = static_cast<int32_t>(channels.front().size());
  recording.rate = rate;
  for (std::vector<double>& channel : channels) channel.insert(channel.end(), {9e9, -9e9, 9e9});
  recording.channels = std::move(channels);
  return recording;
}

TestRecording simulatedHeart(double beatsPerMinute, uint64_t seed, double seconds, int nrOfChannels,
                             double samplingFrequency) {
  SimulationParameters parameters = presetParameters(Preset::Bcg, samplingFrequency);
  parameters.seed = seed;
  parameters.seconds = seconds;
  parameters.nrOfChannels = nrOfChannels;
  parameters.eeg.alphaPeakUv = 0;
  parameters.heart->beatsPerMinute = beatsPerMinute;
  SimulatedBcg simulated = simulateBcg(parameters);
  for (std::vector<double>& channel : simulated.series) channel.resize(static_cast<size_t>(simulated.length));
  return makeRecording(std::to_string(beatsPerMinute) + " beats per minute at " +
                           std::to_string(samplingFrequency) + " Hz, seed " + std::to_string(seed),
                       std::move(simulated.series), simulated.rate);
}

std::vector<TestRecording> simulatedRecordings() {
  return {simulatedHeart(55, 1, 30, 2, 500),  simulatedHeart(65, 2, 30, 1, 250),
          simulatedHeart(75, 3, 30, 3, 333),  simulatedHeart(85, 4, 30, 8, 100),
          simulatedHeart(110, 5, 30, 4, 100), simulatedHeart(60, 6, 20, 2, 499),
          simulatedHeart(70, 7, 60, 5, 100)};
}

std::vector<TestRecording> noiseRecordings(uint32_t firstSeed, int count) {
  std::vector<TestRecording> recordings;
  for (int k = 0; k < count; ++k) {
    const uint32_t seed = firstSeed + static_cast<uint32_t>(k);
    std::mt19937 random(seed);
    const auto rate = static_cast<float>(5 + random() % 30);
    const auto length = static_cast<int32_t>(20 + random() % 900);
    const int nrOfChannels = 1 + static_cast<int>(random() % 5);
    Channels channels;
    for (int c = 0; c < nrOfChannels; ++c) channels.push_back(noise(length, random));
    recordings.push_back(makeRecording("noise, seed " + std::to_string(seed), std::move(channels), rate));
  }
  return recordings;
}

std::vector<TestRecording> tiedRecordings() {
  std::vector<TestRecording> recordings;
  recordings.push_back(makeRecording("cosines", {cosines(2000, 50), cosines(2000, 50.5)}, slowRate));
  recordings.push_back(makeRecording("cosines in step with the samples", {cosines(2000, 64)}, 64));
  recordings.push_back(makeRecording("exact beats", {exactBeats(2000, 50)}, slowRate));
  recordings.push_back(makeRecording("exact beats and their inverse",
                                     {exactBeats(2000, 50), exactBeats(2000, 50, -1)}, slowRate));
  const std::vector<double> beating = beatingChannel(2000, 11);
  recordings.push_back(makeRecording("identical channels", {beating, beating, beating, beating}, slowRate));
  recordings.push_back(makeRecording("beats of two shapes", {twoShapes(2000, 50)}, slowRate));
  recordings.push_back(makeRecording("beats of two shapes, in two channels",
                                     {twoShapes(2050, 50), twoShapes(2050, 45)}, slowRate));
  Channels quantised = beatingChannels(2000, 3, 20);
  for (std::vector<double>& channel : quantised)
    for (double& x : channel) x = std::round(x / 4);
  recordings.push_back(makeRecording("coarse quantisation", quantised, slowRate));
  return recordings;
}

std::vector<TestRecording> impairedRecordings() {
  const std::vector<double> dead(2000, 0.0);
  std::vector<double> deadAtFirst = beatingChannel(2000, 31);
  std::fill(deadAtFirst.begin(), deadAtFirst.begin() + 1000, 0.0);
  std::vector<double> deadAtLast = beatingChannel(2000, 32);
  std::fill(deadAtLast.begin() + 1000, deadAtLast.end(), 0.0);
  const std::vector<double> beating = beatingChannel(2000, 33);
  const std::vector<double> other = beatingChannel(2000, 34);
  return {makeRecording("a dead channel among good ones", {beating, dead, other}, slowRate),
          makeRecording("mostly dead channels", {dead, beating, dead, dead}, slowRate),
          makeRecording("dead channels", {dead, dead}, slowRate),
          makeRecording("dead for the second half", {deadAtLast}, slowRate),
          makeRecording("half-dead channels", {deadAtFirst, deadAtLast, dead}, slowRate),
          makeRecording("one sample in one of two channels", {impulses(2000, {1990}), beating}, slowRate)};
}

std::vector<TestRecording> stuckRecordings() {
  constexpr float rate = 5; // a heart beat in two to nine samples: ten thousand beats stay cheap
  std::vector<double> ramp;
  for (int i = 0; i < 150; ++i) ramp.push_back(i);
  std::vector<double> deadAtFirst = beatingChannel(300, 31);
  std::fill(deadAtFirst.begin(), deadAtFirst.begin() + 150, 0.0);
  return {makeRecording("a ramp", {ramp}, rate),
          makeRecording("a constant", {std::vector<double>(150, 3.0)}, rate),
          makeRecording("dead for the first half", {deadAtFirst}, rate),
          makeRecording("one sample", {impulses(200, {170})}, rate)};
}

std::vector<TestRecording> shortRecordings() {
  std::vector<TestRecording> recordings;
  for (int32_t length = 1; length < 600; length += 1 + length / 6)
    recordings.push_back(makeRecording(std::to_string(length) + " samples",
                                       beatingChannels(length, 2, static_cast<uint32_t>(40 + length)),
                                       slowRate));
  return recordings;
}

std::vector<TestRecording> extremeRecordings() {
  const Channels beating = beatingChannels(1500, 2, 50);
  std::vector<TestRecording> recordings;
  for (const double factor : {1e-200, 1e-145, 1e-100, 1e20, 1e100, 1e145, 1e150, 1e160})
    recordings.push_back(makeRecording("samples scaled by " + std::to_string(std::log10(factor)) + " decades",
                                       scaled(beating, factor), slowRate));
  recordings.push_back(makeRecording("one huge channel", {beating[0], scaled(beating, 1e150)[1]}, slowRate));
  return recordings;
}

std::vector<double> impulses(int32_t length, const std::vector<int32_t>& positions) {
  std::vector<double> channel(static_cast<size_t>(length), 0.0);
  for (const int32_t p : positions) channel[static_cast<size_t>(p)] = 1.0;
  return channel;
}

std::vector<double> beatingChannel(int32_t length, uint32_t seed) {
  std::mt19937 random(seed);
  std::vector<double> channel;
  for (int32_t i = 0; i < length; ++i) channel.push_back(0.004 * static_cast<double>(random() % 1000U) - 2);
  int32_t n = static_cast<int32_t>(seed % 7U);
  for (int32_t beat = 20; beat < length + 20; beat += 48 + 2 * (++n * 7 % 3))
    for (int32_t i = std::max(beat - 20, 0); i < std::min(beat + 20, length); ++i) {
      const double j = i - beat;
      channel[static_cast<size_t>(i)] += 4 * j * std::exp(-j * j / 50);
    }
  return channel;
}

HeartPeriod heartOf(const LiteralPeriod& literal) {
  return {literal.period, literal.shortest, literal.longest};
}

LiteralPeriod literalOf(const HeartPeriod& heart) {
  LiteralPeriod literal;
  literal.period = heart.period;
  literal.shortest = heart.shortest;
  literal.longest = heart.longest;
  return literal;
}

HeartPeriod heartOfPeriod(int32_t period) {
  return {period, static_cast<int32_t>(std::floor(period / std::sqrt(2.0) + 0.5)),
          static_cast<int32_t>(std::floor(period * std::sqrt(2.0) + 0.5))};
}

namespace {

template <typename T>
::testing::AssertionResult sameNumbers(const std::vector<T>& actual, const std::vector<T>& expected) {
  if (actual.size() != expected.size())
    return ::testing::AssertionFailure() << actual.size() << " values, not " << expected.size();
  for (size_t i = 0; i < actual.size(); ++i) {
    const bool bothUndefined = std::isnan(actual[i]) && std::isnan(expected[i]);
    if (actual[i] == expected[i] || bothUndefined) continue;
    return ::testing::AssertionFailure() << "value " << i << " is " << ::testing::PrintToString(actual[i])
                                         << ", not " << ::testing::PrintToString(expected[i]);
  }
  return ::testing::AssertionSuccess();
}

} // namespace

::testing::AssertionResult sameValues(const std::vector<float>& actual, const std::vector<float>& expected) {
  return sameNumbers(actual, expected);
}

::testing::AssertionResult sameValues(const std::vector<double>& actual,
                                      const std::vector<double>& expected) {
  return sameNumbers(actual, expected);
}

} // namespace emeg
