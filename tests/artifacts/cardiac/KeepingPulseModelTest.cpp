#include "artifacts/cardiac/model/PulseModel.h"
#include "tests/artifacts/cardiac/BeatTimeBases.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <thread>
#include <vector>

/// The model with the settings that keep the EEG where there are no beats.
namespace emeg {
namespace {

constexpr float rate = 250;
constexpr int32_t period = 245;

/// Whole intervals of 248 to 252 samples.
std::vector<double> regularPulses(int count, unsigned seed, double first = 300) {
  std::vector<double> intervals = variedIntervals(count - 1, seed);
  for (double& interval : intervals) interval = 248 + std::fmod(interval, 5);
  return positionsOf(first, intervals);
}

/// A wave around every pulse, over before the next one.
std::vector<double> artifactOf(const std::vector<double>& pulses, std::size_t length) {
  std::vector<double> artifact(length, 0.0);
  for (const double pulse : pulses) {
    for (int j = -100; j <= 100; ++j) {
      const auto at = static_cast<int64_t>(pulse) + j;
      if (at < 0 || at >= static_cast<int64_t>(length)) continue;
      artifact[static_cast<std::size_t>(at)] += 60 * std::sin(0.08 * j) * std::exp(-j * j / 1500.0);
    }
  }
  return artifact;
}

struct Recording {
  std::vector<double> artifact;
  std::vector<double> series; ///< with noise, and the value behind the last sample
  int64_t length = 0;

  Recording(const std::vector<double>& pulses, std::size_t count, unsigned seed)
      : artifact(artifactOf(pulses, count)), series(noiseSeries(count, seed, 10)),
        length(static_cast<int64_t>(count)) {
    for (std::size_t i = 0; i < count; ++i) series[i] += artifact[i];
  }
};

std::vector<double> estimateOf(const PulseModel& model, const Recording& recording) {
  std::vector<double> estimate = recording.series;
  model.replaceByEstimate(estimate, recording.length);
  return estimate;
}

double errorOf(const Recording& recording, const std::vector<double>& estimate, int64_t begin, int64_t end) {
  double error = 0;
  for (auto i = static_cast<std::size_t>(begin); i < static_cast<std::size_t>(end); ++i)
    error += (estimate[i] - recording.artifact[i]) * (estimate[i] - recording.artifact[i]);
  return error;
}

TEST(KeepingPulseModel, TheEstimateIsZeroOutsideTheStretchesThatItNames) {
  std::vector<double> pulses = regularPulses(40, 1, 1000);
  const auto length = static_cast<std::size_t>(pulses.back()) + 1000;
  pulses.erase(pulses.begin() + 20);
  const PulseModel model(pulses, period, keepingBeatModel(rate));
  const Recording recording(pulses, length, 5);
  const std::vector<double> estimate = estimateOf(model, recording);
  const std::vector<PositionRange> stretches = model.modelledStretches(recording.length);
  ASSERT_EQ(stretches.size(), 2U);
  std::vector<bool> isModelled(length + 1, false);
  for (const PositionRange& stretch : stretches)
    std::fill(isModelled.begin() + stretch.begin, isModelled.begin() + stretch.end, true);
  int64_t nrOfZeros = 0;
  for (std::size_t i = 0; i < estimate.size(); ++i) {
    if (isModelled[i]) {
      nrOfZeros += estimate[i] == 0 ? 1 : 0;
    } else {
      EXPECT_EQ(estimate[i], 0) << i;
    }
  }
  EXPECT_LE(nrOfZeros, 4); // at the ends of the fades
  EXPECT_GT(stretches[0].begin, 800);
  EXPECT_LT(stretches[0].end, stretches[1].begin);
}

TEST(KeepingPulseModel, NoStepIsLeftAtTheOuterEnds) {
  // A large offset makes every step visible.
  std::vector<double> pulses = regularPulses(30, 2, 1000);
  const auto length = static_cast<std::size_t>(pulses.back()) + 1000;
  pulses.erase(pulses.begin() + 12);
  const std::vector<double> series(length + 1, 1000.0);
  const auto largestStep = [&](int32_t fadeLength) {
    BeatModelSettings settings = keepingBeatModel(rate);
    settings.fadeLength = fadeLength;
    std::vector<double> estimate = series;
    PulseModel(pulses, period, settings).replaceByEstimate(estimate, static_cast<int64_t>(length));
    double largest = 0;
    for (std::size_t i = 1; i + 1 < estimate.size(); ++i)
      largest = std::max(largest, std::fabs(estimate[i] - estimate[i - 1]));
    return largest;
  };
  const int32_t fadeLength = keepingBeatModel(rate).fadeLength;
  EXPECT_EQ(fadeLength, 19); // 75 ms
  EXPECT_LT(largestStep(fadeLength), 1000 * 1.6 / fadeLength);
  EXPECT_GT(largestStep(0), 900); // what it is there for
}

TEST(KeepingPulseModel, TheFirstAndTheLastBeatAreModelledAsTheOthersAre) {
  const std::vector<double> pulses = regularPulses(60, 3, 400);
  const Recording recording(pulses, static_cast<std::size_t>(pulses.back()) + 400, 6);
  const std::vector<double> estimate =
      estimateOf(PulseModel(pulses, period, keepingBeatModel(rate)), recording);
  const auto errorAround = [&](double pulse) {
    return errorOf(recording, estimate, static_cast<int64_t>(pulse) - 140, static_cast<int64_t>(pulse) + 140);
  };
  double ofOthers = 0;
  for (std::size_t i = 1; i + 1 < pulses.size(); ++i) ofOthers += errorAround(pulses[i]) / 58;
  EXPECT_LT(errorAround(pulses.front()), 3 * ofOthers);
  EXPECT_LT(errorAround(pulses.back()), 3 * ofOthers);
  double energy = 0;
  for (int64_t i = 260; i < 540; ++i) energy += std::pow(recording.artifact[static_cast<std::size_t>(i)], 2);
  EXPECT_LT(errorAround(pulses.front()), 0.1 * energy);
}

TEST(KeepingPulseModel, ABeatThatTheRecordingCutsIsModelledAsFarAsItGoes) {
  for (const double first : {0.0, 3.0, 40.0, 120.0}) {
    const std::vector<double> pulses = regularPulses(60, 4, first);
    const Recording recording(pulses, static_cast<std::size_t>(pulses.back() + first) + 1, 7);
    const std::vector<double> estimate =
        estimateOf(PulseModel(pulses, period, keepingBeatModel(rate)), recording);
    const auto end = static_cast<int64_t>(first) + 100;
    double energy = 0;
    for (int64_t i = 0; i < end; ++i) energy += std::pow(recording.artifact[static_cast<std::size_t>(i)], 2);
    EXPECT_LT(errorOf(recording, estimate, 0, end), 0.2 * energy) << first;
    for (const double value : estimate) ASSERT_TRUE(std::isfinite(value));
  }
}

TEST(KeepingPulseModel, AMissedBeatChangesNeitherLengthNorMemoryNorTheErrorElsewhere) {
  const std::vector<double> all = regularPulses(600, 5);
  std::vector<double> missing = all;
  missing.erase(missing.begin() + 300);
  const Recording recording(all, static_cast<std::size_t>(all.back()) + 300, 8);
  const BeatModelSettings settings = keepingBeatModel(rate);
  const PulseModel whole(all, period, settings);
  const PulseModel gapped(missing, period, settings);
  EXPECT_EQ(gapped.modelLength(), whole.modelLength());
  EXPECT_LT(gapped.modelLength(), 600);
  EXPECT_GT(PulseModel(missing, period).modelLength(), 50 * gapped.modelLength()); // the plug-in's rule
  const auto bytes = static_cast<double>(PulseModel::memoryFor(all, period, settings));
  EXPECT_NEAR(static_cast<double>(PulseModel::memoryFor(missing, period, settings)), bytes, 0.01 * bytes);

  const std::vector<double> before = estimateOf(whole, recording);
  const std::vector<double> after = estimateOf(gapped, recording);
  const auto gapBegin = static_cast<int64_t>(missing[299]);
  const auto gapEnd = static_cast<int64_t>(missing[300]);
  const double errorBefore =
      errorOf(recording, before, 0, gapBegin) + errorOf(recording, before, gapEnd, recording.length);
  const double errorAfter =
      errorOf(recording, after, 0, gapBegin) + errorOf(recording, after, gapEnd, recording.length);
  EXPECT_NEAR(errorAfter, errorBefore, 0.03 * errorBefore);
  // The beats beside the gap keep what is theirs of it, and the rest of the EEG stays.
  EXPECT_LT(errorOf(recording, after, gapBegin, gapBegin + 120), 3 * 120.0 * 100 / 10);
  EXPECT_EQ(errorOf(recording, after, gapBegin + 160, gapEnd - 160),
            errorOf(recording, std::vector<double>(after.size(), 0.0), gapBegin + 160, gapEnd - 160));
  EXPECT_EQ(whole.nrOfEpochs(), 600);
  EXPECT_EQ(gapped.nrOfEpochs(), 599);
}

TEST(KeepingPulseModel, ThreadsMayShareOneModel) {
  const std::vector<double> pulses = regularPulses(40, 6);
  const PulseModel model(pulses, period, keepingBeatModel(rate));
  std::vector<Recording> recordings;
  std::vector<std::vector<double>> alone;
  for (unsigned seed = 1; seed <= 4; ++seed) {
    recordings.emplace_back(pulses, static_cast<std::size_t>(pulses.back()) + 300, seed);
    alone.push_back(estimateOf(model, recordings.back()));
  }
  std::vector<std::vector<double>> together(recordings.size());
  std::vector<std::thread> threads;
  for (std::size_t c = 0; c < recordings.size(); ++c)
    threads.emplace_back([&, c] { together[c] = estimateOf(model, recordings[c]); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(together, alone);
}

TEST(KeepingPulseModel, PositionsAreRoundedToWholeSamples) {
  const std::vector<double> pulses = regularPulses(20, 7);
  std::vector<double> between = pulses;
  for (double& pulse : between) pulse += 0.3;
  const Recording recording(pulses, static_cast<std::size_t>(pulses.back()) + 300, 2);
  const BeatModelSettings settings = keepingBeatModel(rate);
  EXPECT_EQ(estimateOf(PulseModel(between, period, settings), recording),
            estimateOf(PulseModel(pulses, period, settings), recording));
}

TEST(KeepingPulseModel, StrangePositionsDoNoHarm) {
  const double bad = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> varied = regularPulses(12, 8);
  std::vector<std::vector<double>> lists = {{100, 100, 100},        {100, 101, 102}, {100, 5000, 9000},
                                            {-400, -100, 150, 400}, {1, 2, 1e5},     {bad, 300, 600, 850}};
  lists.push_back(varied);
  lists.back().push_back(1e6);
  for (const std::vector<double>& pulses : lists) {
    const Recording recording(varied, 3000, 3);
    for (const double value : estimateOf(PulseModel(pulses, period, keepingBeatModel(rate)), recording))
      ASSERT_TRUE(std::isfinite(value));
    for (const PositionRange& stretch :
         PulseModel(pulses, period, keepingBeatModel(rate)).modelledStretches(recording.length)) {
      EXPECT_GE(stretch.begin, 0);
      EXPECT_LE(stretch.begin, stretch.end);
      EXPECT_LE(stretch.end, recording.length);
    }
  }
}

TEST(KeepingPulseModel, FewerThanThreePulsesModelNothing) {
  const PulseModel model({300, 550}, period, keepingBeatModel(rate));
  const Recording recording({300, 550}, 900, 4);
  EXPECT_EQ(estimateOf(model, recording), std::vector<double>(901, 0.0));
  EXPECT_TRUE(model.modelledStretches(recording.length).empty());
}

TEST(KeepingPulseModel, ThePluginsRuleReachesFromTheFirstPulseToTheLast) {
  const PulseModel model({300, 550, 801.5}, period);
  EXPECT_EQ(model.modelledStretches(2000), (std::vector<PositionRange>{{300, 801}}));
  EXPECT_EQ(model.modelledStretches(700), (std::vector<PositionRange>{{300, 700}}));
}

} // namespace
} // namespace emeg
