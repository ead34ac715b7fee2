#include "app/simulation/PulseArtifact.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/RealFFT.h"

#include <cmath>
#include <gtest/gtest.h>

namespace emeg {

namespace {

SimulationParameters heartParameters(uint64_t seed, double seconds = 120, double fs = 500) {
  SimulationParameters parameters = presetParameters(Preset::Bcg, fs);
  parameters.seed = seed;
  parameters.seconds = seconds;
  parameters.nrOfChannels = 16;
  return parameters;
}

TEST(HeartBeats, HaveTheWantedRateAndVariability) {
  for (const double rate : {50.0, 65.0, 90.0}) {
    for (uint64_t seed = 1; seed <= 3; seed++) {
      HeartParameters parameters;
      parameters.beatsPerMinute = rate;
      constexpr double seconds = 1200;
      const HeartBeats beats = HeartBeats::draw(parameters, seed, seconds);
      double beatsInside = 0;
      double squares = 0;
      double deviations = 0;
      for (size_t i = 1; i < beats.times.size(); i++) {
        if (beats.times[i] >= 0 && beats.times[i] < seconds) beatsInside++;
        squares += std::pow(beats.intervals[i] - beats.intervals[i - 1], 2);
        deviations += std::pow(beats.intervals[i] - 60 / rate, 2);
      }
      const auto n = static_cast<double>(beats.times.size() - 1);
      EXPECT_NEAR(beatsInside, rate * seconds / 60, 0.015 * rate * seconds / 60);
      EXPECT_NEAR(std::sqrt(squares / n), 0.030, 0.003);
      EXPECT_NEAR(std::sqrt(deviations / n), 0.038, 0.010);
    }
  }
}

TEST(HeartBeats, CoverTheRecordingFromBeforeItsStartToItsEnd) {
  const HeartBeats beats = HeartBeats::draw(HeartParameters(), 5, 30);
  EXPECT_LT(beats.times.front(), -2);
  EXPECT_GE(beats.times.back(), 30);
  for (size_t i = 1; i < beats.times.size(); i++)
    EXPECT_NEAR(beats.times[i] - beats.times[i - 1], beats.intervals[i], 1e-12);
}

TEST(HeartBeats, IntervalsFollowTheBreath) {
  HeartParameters parameters;
  const HeartBeats beats = HeartBeats::draw(parameters, 2, 1200);
  double cosine = 0;
  double sine = 0;
  for (size_t i = 1; i < beats.times.size(); i++) {
    const double deviation = beats.intervals[i] - 60 / parameters.beatsPerMinute;
    cosine += deviation * std::cos(breathPhase(beats.times[i - 1]));
    sine += deviation * std::sin(breathPhase(beats.times[i - 1]));
  }
  const double amplitude = 2 * std::hypot(cosine, sine) / static_cast<double>(beats.times.size() - 1);
  EXPECT_NEAR(amplitude, 0.021, 0.007);
}

TEST(HeartBeats, EctopicOnesComeEarlyAndArePaidBackByThePauseBehindThem) {
  HeartParameters parameters;
  constexpr double seconds = 1800;
  const HeartBeats regular = HeartBeats::draw(parameters, 3, seconds);
  EXPECT_TRUE(regular.ectopic.empty());
  for (const double share : {0.05, 0.10, 0.30}) {
    parameters.ectopicShare = share;
    const HeartBeats beats = HeartBeats::draw(parameters, 3, seconds);
    ASSERT_EQ(beats.times.size(), regular.times.size());
    const auto n = static_cast<double>(beats.times.size());
    EXPECT_NEAR(static_cast<double>(beats.ectopic.size()), share * n, 0.2 * share * n);
    size_t next = 0;
    for (size_t i = 0; i < beats.times.size(); i++) {
      if (i > 0) {
        ASSERT_NEAR(beats.times[i] - beats.times[i - 1], beats.intervals[i], 1e-9);
      }
      if (next < beats.ectopic.size() && beats.ectopic[next] == i) {
        const double advance = regular.times[i] - beats.times[i];
        ASSERT_GE(advance, 0.2499 * regular.intervals[i]);
        ASSERT_LE(advance, 0.3501 * regular.intervals[i]);
        ASSERT_NEAR(beats.intervals[i] + advance, regular.intervals[i], 1e-9);
        ASSERT_NEAR(beats.intervals[i + 1] - advance, regular.intervals[i + 1], 1e-9);
        next++;
        ASSERT_TRUE(next == beats.ectopic.size() || beats.ectopic[next] > i + 1);
      } else {
        ASSERT_EQ(beats.times[i], regular.times[i]);
      }
    }
    EXPECT_EQ(next, beats.ectopic.size());
  }
}

TEST(PulseArtifact, IsSmallerByTheFactorInAWeakStretch) {
  SimulationParameters parameters = heartParameters(1, 30);
  const int64_t count = parameters.nrOfTimePoints();
  std::vector<double> ordinary(static_cast<size_t>(parameters.nrOfChannels * count));
  PulseArtifact(parameters).fill(0, count, ordinary);
  parameters.heart->weak = WeakStretch{10, 8, 0.2};
  PulseArtifact artifact(parameters);
  std::vector<double> weak(ordinary.size());
  artifact.fill(0, count, weak);

  // The artifact of one beat lasts for less than a second; it belongs to the stretch when its onset does.
  double largest = 0;
  for (int c = 0; c < parameters.nrOfChannels; c++) {
    for (int64_t t = 0; t < count; t++) {
      const double time = static_cast<double>(t) / 500;
      const auto index = static_cast<size_t>(c * count + t);
      if (time < 9.8 || time > 19) {
        ASSERT_EQ(weak[index], ordinary[index]) << time;
      }
      if (time > 11.2 && time < 17.8) {
        ASSERT_NEAR(weak[index], 0.2 * ordinary[index], 1e-9) << time;
        largest = std::max(largest, std::abs(weak[index]));
      }
    }
  }
  EXPECT_GT(largest, 12);
}

TEST(PulseArtifact, PeaksBetweenSixtyAndAHundredMicrovoltsInEitherPolarity) {
  const SimulationParameters parameters = heartParameters(1);
  PulseArtifact artifact(parameters);
  const int64_t count = parameters.nrOfTimePoints();
  std::vector<double> samples(static_cast<size_t>(parameters.nrOfChannels * count));
  artifact.fill(0, count, samples);
  int negative = 0;
  for (int c = 0; c < parameters.nrOfChannels; c++) {
    EXPECT_GE(artifact.peak(c), 60);
    EXPECT_LE(artifact.peak(c), 100);
    double largest = 0;
    for (int64_t t = 0; t < count; t++) {
      const double value = samples[static_cast<size_t>(c * count + t)];
      if (std::abs(value) > std::abs(largest)) largest = value;
    }
    // Single beats exceed the mean one by the jitter of their sizes.
    EXPECT_NEAR(std::abs(largest), artifact.peak(c), 0.35 * artifact.peak(c));
    if (largest < 0) negative++;
  }
  EXPECT_GT(negative, 2);
  EXPECT_LT(negative, 14);
}

TEST(PulseArtifact, FollowsEachBeatByTheDelay) {
  SimulationParameters parameters = heartParameters(3, 20);
  parameters.heart->beatsPerMinute = 40;
  PulseArtifact artifact(parameters);
  const int64_t count = parameters.nrOfTimePoints();
  std::vector<double> samples(static_cast<size_t>(parameters.nrOfChannels * count));
  artifact.fill(0, count, samples);
  int beatsSeen = 0;
  for (size_t beat = 0; beat < artifact.beats().times.size(); beat++) {
    const double onset = artifact.onset(beat);
    EXPECT_NEAR(onset - artifact.beats().times[beat], 0.2, 1e-12);
    if (onset < 1 || onset > 18) continue;
    const auto largestBetween = [&](double from, double to) {
      double largest = 0;
      for (auto t = static_cast<int64_t>(from * 500); t < static_cast<int64_t>(to * 500); t++)
        largest = std::max(largest, std::abs(samples[static_cast<size_t>(t)]));
      return largest;
    };
    EXPECT_LT(largestBetween(onset - 0.2, onset - 0.02), 1);
    EXPECT_GT(largestBetween(onset, onset + 0.4), 0.7 * artifact.peak(0));
    EXPECT_LT(largestBetween(onset + 0.75, onset + 0.85), 1);
    beatsSeen++;
  }
  EXPECT_GT(beatsSeen, 8);
}

TEST(PulseArtifact, BeatsDifferInSizeByAFewPercent) {
  SimulationParameters parameters = heartParameters(3, 120);
  parameters.nrOfChannels = 1;
  PulseArtifact artifact(parameters);
  const int64_t count = parameters.nrOfTimePoints();
  std::vector<double> samples(static_cast<size_t>(count));
  artifact.fill(0, count, samples);
  double sum = 0;
  double squares = 0;
  int n = 0;
  for (size_t beat = 0; beat < artifact.beats().times.size(); beat++) {
    const double onset = artifact.onset(beat);
    if (onset < 0 || onset > 119) continue;
    double peak = 0;
    for (auto t = static_cast<int64_t>(onset * 500); t < static_cast<int64_t>((onset + 0.5) * 500); t++)
      peak = std::max(peak, std::abs(samples[static_cast<size_t>(t)]));
    sum += peak;
    squares += peak * peak;
    n++;
  }
  const double mean = sum / n;
  const double spread = std::sqrt(squares / n - mean * mean) / mean;
  EXPECT_GT(spread, 0.02);
  EXPECT_LT(spread, 0.15);
}

TEST(PulseArtifact, LiesBelowFifteenHertz) {
  constexpr int32_t log2n = 15;
  constexpr size_t n = size_t{1} << log2n;
  SimulationParameters parameters = heartParameters(1, n / 500.0);
  parameters.nrOfChannels = 1;
  PulseArtifact artifact(parameters);
  std::vector<double> spectrum(n);
  artifact.fill(0, n, spectrum);
  FFTWorkspace workspace;
  realFFTForward(spectrum.data(), log2n, workspace);
  double below = 0;
  double above = 0;
  for (size_t k = 1; k < n / 2; k++) {
    const double power = spectrum[2 * k] * spectrum[2 * k] + spectrum[2 * k + 1] * spectrum[2 * k + 1];
    (static_cast<double>(k) * 500 / n < 15 ? below : above) += power;
  }
  EXPECT_LT(above, 0.02 * below);
}

} // namespace

} // namespace emeg
