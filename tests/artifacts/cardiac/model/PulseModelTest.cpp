#include "artifacts/cardiac/model/PulseModel.h"

#include "tests/artifacts/cardiac/BeatTimeBases.h"
#include "tests/artifacts/cardiac/SimulatedBcg.h"
#include "tests/artifacts/reference/LiteralPulseModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace emeg {
namespace {

struct Estimate {
  std::vector<double> series; ///< with the value behind the last sample
  double a = 0;
};

Estimate estimated(const std::vector<double>& series, const std::vector<double>& pulses,
                   int32_t heartPeriod = 245) {
  PulseModel model(pulses, heartPeriod);
  Estimate estimate;
  estimate.series = series;
  estimate.a = model.replaceByEstimate(estimate.series, static_cast<int64_t>(series.size()) - 1);
  return estimate;
}

Estimate literallyEstimated(const std::vector<double>& series, const std::vector<double>& pulses,
                            int32_t heartPeriod = 245) {
  Estimate estimate;
  estimate.series.assign(series.begin(), series.end() - 1);
  estimate.a = literalPulseModel(estimate.series, pulses, heartPeriod);
  estimate.series.push_back(0.0);
  return estimate;
}

double largestOf(const std::vector<double>& series) {
  double largest = 0;
  for (const double value : series) largest = std::max(largest, std::fabs(value));
  return largest;
}

/// The same parameter, and values within 1e-9 (of a series of some hundred uV).
void expectLiteral(const std::vector<double>& series, const std::vector<double>& pulses,
                   int32_t heartPeriod = 245, double tolerance = 1e-9) {
  const Estimate actual = estimated(series, pulses, heartPeriod);
  const Estimate literal = literallyEstimated(series, pulses, heartPeriod);
  EXPECT_EQ(actual.a, literal.a);
  ASSERT_EQ(actual.series.size(), literal.series.size());
  double worst = 0;
  for (std::size_t i = 0; i < actual.series.size(); ++i) {
    ASSERT_TRUE(std::isfinite(actual.series[i])) << i;
    worst = std::max(worst, std::fabs(actual.series[i] - literal.series[i]));
  }
  EXPECT_LE(worst, tolerance);
}

std::vector<double> constantSeries(std::size_t length, double value) {
  std::vector<double> series(length, value);
  series.push_back(0.0);
  return series;
}

/// Pulses with some variety and a series of beats with noise.
struct Train {
  std::vector<double> pulses;
  std::vector<double> series;

  Train(int nrOfIntervals, unsigned seed, double first = 40, std::size_t behind = 60)
      : pulses(positionsOf(first, variedIntervals(nrOfIntervals, seed))),
        series(stretchedBeats(pulses, static_cast<std::size_t>(pulses.back()) + behind, 0.4, 15)) {}
};

TEST(PulseModel, AgreesWithThePlainVersionOnSimulatedRecordings) {
  for (const double beatsPerMinute : {55.0, 85.0}) {
    SimulationParameters parameters = healthyHeart(beatsPerMinute, 3);
    parameters.nrOfChannels = 3;
    parameters.seconds = 30;
    const SimulatedBcg recording = simulateBcg(parameters);
    std::vector<double> pulses;
    for (const double beat : recording.beats) pulses.push_back(std::round(beat) + 20);
    while (pulses.back() > static_cast<double>(recording.length - 1)) pulses.pop_back();
    ASSERT_GT(pulses.size(), 20U);
    const auto period = static_cast<int32_t>(60 * 250 / beatsPerMinute);
    for (const std::vector<double>& series : recording.series) {
      ASSERT_GT(largestOf(series), 50);
      expectLiteral(series, pulses, period);
    }
  }
}

TEST(PulseModel, AgreesWithThePlainVersionWherePulsesLieBetweenSamples) {
  SimulationParameters parameters = healthyHeart(70, 5);
  parameters.nrOfChannels = 1;
  parameters.seconds = 30;
  const SimulatedBcg recording = simulateBcg(parameters);
  expectLiteral(recording.series[0], recording.beats, 214);
}

TEST(PulseModel, AgreesWithThePlainVersionOnTrainsOfBeats) {
  for (unsigned seed = 1; seed <= 8; ++seed) {
    const Train train(static_cast<int>(3 + 3 * seed), seed);
    expectLiteral(train.series, train.pulses);
  }
}

TEST(PulseModel, AgreesWithThePlainVersionOnNoise) {
  for (unsigned seed = 1; seed <= 6; ++seed) {
    const Train train(12, seed);
    expectLiteral(noiseSeries(train.series.size() - 1, seed, 30), train.pulses);
  }
}

TEST(PulseModel, KeepsWhatMostBeatsHaveInCommonAndDropsTheRest) {
  const Train train(60, 4);
  const std::vector<double> clean = stretchedBeats(train.pulses, train.series.size() - 1, 0.4, 0.0);
  const Estimate estimate = estimated(train.series, train.pulses);
  double error = 0;
  double noiseEnergy = 0;
  for (auto i = static_cast<std::size_t>(train.pulses[1]); i < static_cast<std::size_t>(train.pulses[59]);
       ++i) {
    error += (estimate.series[i] - clean[i]) * (estimate.series[i] - clean[i]);
    noiseEnergy += (train.series[i] - clean[i]) * (train.series[i] - clean[i]);
  }
  EXPECT_LT(error, 0.2 * noiseEnergy);
}

TEST(PulseModel, TheEstimateIsZeroEverywhereWithFewerThanThreePulses) {
  for (const std::vector<double>& pulses : {std::vector<double>{}, {100}, {100, 350}}) {
    PulseModel model(pulses, 245);
    std::vector<double> series = noiseSeries(700, 3);
    model.replaceByEstimate(series, 700);
    EXPECT_EQ(series, std::vector<double>(701, 0.0));
    EXPECT_EQ(model.nrOfEpochs(), 0);
    EXPECT_EQ(model.epochLength(), 0);
  }
}

TEST(PulseModel, ThreePulsesHaveOneEpochThatIsTakenWhole) {
  const std::vector<double> pulses = {50, 300, 530};
  const std::vector<double> series = noiseSeries(600, 21, 30);
  expectLiteral(series, pulses);

  // One junction has one component: what comes back is the resampling alone.
  const Estimate estimate = estimated(series, pulses);
  const LiteralModelSetUp setUp = literalModelSetUp(pulses, 245);
  std::vector<double> again = series;
  literalWriteBack(again, pulses, setUp, estimate.a,
                   literalWarpedBeats(series, pulses, setUp, literalWarpTable(estimate.a, setUp)));
  for (std::size_t i = 0; i < 600; ++i) EXPECT_NEAR(estimate.series[i], again[i], 1e-9) << i;
}

TEST(PulseModel, FewerThanThreeEpochsAreTakenWhole) {
  for (int nrOfIntervals = 2; nrOfIntervals <= 4; ++nrOfIntervals) {
    const std::vector<double> pulses = positionsOf(50, variedIntervals(nrOfIntervals, 2));
    const std::vector<double> series = noiseSeries(static_cast<std::size_t>(pulses.back()) + 30, 9, 30);
    expectLiteral(series, pulses);
    const Estimate estimate = estimated(series, pulses);
    const LiteralModelSetUp setUp = literalModelSetUp(pulses, 245);
    std::vector<double> again = series;
    literalWriteBack(again, pulses, setUp, estimate.a,
                     literalWarpedBeats(series, pulses, setUp, literalWarpTable(estimate.a, setUp)));
    for (std::size_t i = 0; i + 1 < series.size(); ++i) {
      ASSERT_NEAR(estimate.series[i], again[i], 1e-9) << i;
    }
  }
}

TEST(PulseModel, TellsTheNumberOfEpochsAndTheirLength) {
  PulseModel model(positionsOf(0, {250, 250, 250, 250}), 245);
  EXPECT_EQ(model.nrOfEpochs(), 3);
  EXPECT_EQ(model.epochLength(), 2 * 295 + 1); // 491 values of an interval, 6 tenths of which are 294.6
  const PulseModel three({0, 250, 500}, 245);
  EXPECT_EQ(three.nrOfEpochs(), 1);
}

TEST(PulseModel, EqualIntervalsAgreeWithThePlainVersion) {
  for (const double interval : {250.0, 251.0, 200.0}) {
    const std::vector<double> pulses = positionsOf(10, std::vector<double>(14, interval));
    const auto length = static_cast<std::size_t>(pulses.back()) + 30;
    expectLiteral(stretchedBeats(pulses, length, 0.4, 10), pulses);
    expectLiteral(noiseSeries(length, 3, 30), pulses);
  }
}

TEST(PulseModel, NearlyEqualIntervalsAgreeWithThePlainVersion) {
  std::vector<double> intervals(14, 250.0);
  intervals[4] = 249.7;
  intervals[7] = 250.4;
  const std::vector<double> pulses = positionsOf(10, intervals);
  expectLiteral(stretchedBeats(pulses, 3600, 0.4, 10), pulses);
}

TEST(PulseModel, VeryUnequalIntervalsAgreeWithThePlainVersion) {
  const std::vector<double> pulses = positionsOf(10, {250, 90, 400, 251, 240, 700, 180, 260, 249, 245});
  expectLiteral(noiseSeries(static_cast<std::size_t>(pulses.back()) + 1, 3, 30), pulses);
}

TEST(PulseModel, OneVeryLongIntervalAgreesWithThePlainVersionInTheLongestModel) {
  const std::vector<double> pulses = positionsOf(3, {250, 249, 2500, 250, 250, 250, 250, 250});
  ASSERT_EQ(makeBeatTimeBase(pulses, 245).modelLength, 100001);
  // Two values of this model lie a 400th of a sample apart: a search with fewer turns would do, but takes
  // longer.
  expectLiteral(noiseSeries(static_cast<std::size_t>(pulses.back()) + 1, 3, 30), pulses, 245, 1e-8);
}

TEST(PulseModel, TheShortestModelAgreesWithThePlainVersion) {
  const Train train(8, 2);
  for (const int32_t period : {0, 1, 2})
    expectLiteral(train.series, positionsOf(40, std::vector<double>(8, 240.0)), period);
}

TEST(PulseModel, PulsesAtTheFirstAndTheLastSampleAgreeWithThePlainVersion) {
  const Train train(12, 6, 0, 1);
  ASSERT_EQ(train.pulses.front(), 0);
  ASSERT_EQ(train.pulses.back(), static_cast<double>(train.series.size() - 2));
  expectLiteral(train.series, train.pulses);
}

TEST(PulseModel, AnIntervalThatEndsBehindTheLastSampleReadsTheZeroThere) {
  const Train train(12, 6, 0, 1);
  std::vector<double> series(train.series.begin(), train.series.end() - 2);
  series.push_back(0.0);
  ASSERT_EQ(train.pulses.back(), static_cast<double>(series.size() - 1));
  expectLiteral(series, train.pulses);
}

TEST(PulseModel, LeavesTheValueBehindTheLastSampleAtZero) {
  const Train train(12, 6, 0, 1);
  EXPECT_EQ(estimated(train.series, train.pulses).series.back(), 0.0);
  std::vector<double> shorter(train.series.begin(), train.series.end() - 41);
  shorter.push_back(0.0);
  EXPECT_EQ(estimated(shorter, train.pulses).series.back(), 0.0);
}

TEST(PulseModel, PulsesOutsideTheSeriesTouchNothingOutsideIt) {
  for (const double first : {-600.0, -100.0, -1.0, 900.0, 1e6, -1e6}) {
    const std::vector<double> pulses = positionsOf(first, {250, 220, 260, 240, 251});
    std::vector<double> series = noiseSeries(1000, 3);
    series.shrink_to_fit();
    const Estimate estimate = estimated(series, pulses);
    for (std::size_t i = 0; i < 1000; ++i) {
      ASSERT_TRUE(std::isfinite(estimate.series[i]));
      if (static_cast<double>(i) < pulses.front() || static_cast<double>(i) >= pulses.back()) {
        EXPECT_EQ(estimate.series[i], series[i]) << i;
      }
    }
  }
}

TEST(PulseModel, WhatLiesBeforeTheFirstAndBehindTheLastPulseStaysAsItIs) {
  const Train train(20, 8);
  const Estimate estimate = estimated(train.series, train.pulses);
  std::size_t changed = 0;
  for (std::size_t i = 0; i < train.series.size(); ++i) {
    const auto place = static_cast<double>(i);
    if (place < train.pulses.front() || place >= train.pulses.back()) {
      EXPECT_EQ(estimate.series[i], train.series[i]) << i;
    } else if (estimate.series[i] != train.series[i]) {
      ++changed;
    }
  }
  EXPECT_GT(static_cast<double>(changed), 0.9 * (train.pulses.back() - train.pulses.front()));
}

TEST(PulseModel, TheFirstPartOfTheFirstAndTheLastPartOfTheLastIntervalAreNotModelled) {
  // Slow enough for two linear interpolations, and out of step with the beats.
  const std::vector<double> pulses = positionsOf(30, variedIntervals(30, 8));
  std::vector<double> series;
  for (std::size_t i = 0; i < static_cast<std::size_t>(pulses.back()) + 50; ++i)
    series.push_back(std::sin(0.0713 * static_cast<double>(i)));
  series.push_back(0.0);
  const Estimate estimate = estimated(series, pulses);
  double outside = 0;
  double inside = 0;
  for (std::size_t i = 0; i + 1 < series.size(); ++i) {
    double& largest = i < 90 || i + 110 > series.size() ? outside : inside;
    largest = std::max(largest, std::fabs(estimate.series[i] - series[i]));
  }
  EXPECT_LT(outside, 0.003);
  EXPECT_GT(inside, 0.1);
}

TEST(PulseModel, ASilentChannelHasASilentEstimate) {
  const Train train(10, 3);
  const std::vector<double> silent = constantSeries(train.series.size() - 1, 0.0);
  EXPECT_EQ(estimated(silent, train.pulses).series, silent);
  expectLiteral(silent, train.pulses);
}

TEST(PulseModel, AChannelThatIsSilentForSomeBeatsAgreesWithThePlainVersion) {
  Train train(12, 3);
  std::fill(train.series.begin() + 700, train.series.begin() + 1900, 0.0);
  expectLiteral(train.series, train.pulses);
}

TEST(PulseModel, AConstantChannelIsItsOwnEstimate) {
  for (const double value : {1.0, -250.0, 1e-6}) {
    const Train train(10, 3);
    const std::vector<double> series = constantSeries(train.series.size() - 1, value);
    const Estimate estimate = estimated(series, train.pulses);
    for (std::size_t i = 0; i + 1 < series.size(); ++i)
      ASSERT_NEAR(estimate.series[i], value, 1e-9 * std::fabs(value)) << i;
    EXPECT_GE(estimate.a, 0);
    EXPECT_LE(estimate.a, 1);
  }
}

TEST(PulseModel, ScalesWithTheSeries) {
  const Train train(12, 7);
  const Estimate estimate = estimated(train.series, train.pulses);
  for (const double scale : {0x1p-200, 0x1p-40, 0x1p40, 0x1p200}) {
    std::vector<double> series = train.series;
    for (double& value : series) value *= scale;
    const Estimate scaled = estimated(series, train.pulses);
    EXPECT_EQ(scaled.a, estimate.a) << scale;
    for (std::size_t i = 0; i < series.size(); ++i)
      ASSERT_NEAR(scaled.series[i] / scale, estimate.series[i], 1e-9) << i;
  }
}

TEST(PulseModel, HugeAndTinySeriesAgreeWithThePlainVersion) {
  const Train train(12, 7);
  for (const double scale :
       {1e-310, 1e-200, 1e-165, 1e-158, 1e-100, 1e6, 1e100, 1e147, 1e152, 1e200, 1e300}) {
    SCOPED_TRACE(scale);
    std::vector<double> series = train.series;
    for (double& value : series) value *= scale;
    expectLiteral(series, train.pulses, 245, 1e-9 * scale + 1e-320);
  }
}

TEST(PulseModel, ValuesThatAreNoNumbersComeToAnEndWithoutHarm) {
  for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    Train train(6, 7);
    train.series[500] = bad;
    const Estimate estimate = estimated(train.series, train.pulses);
    EXPECT_GE(estimate.a, 0);
    EXPECT_LE(estimate.a, 1);
    for (std::size_t i = 0; i < 40; ++i) EXPECT_EQ(estimate.series[i], train.series[i]);
  }
}

TEST(PulseModel, ModelsEachChannelAsIfItWereTheOnlyOne) {
  const Train train(12, 7);
  PulseModel shared(train.pulses, 245);
  std::vector<double> warps;
  for (const double bend : {0.7, 0.2, 0.5, 0.7}) {
    const std::vector<double> series = stretchedBeats(train.pulses, train.series.size() - 1, bend, 5);
    std::vector<double> estimate = series;
    warps.push_back(shared.replaceByEstimate(estimate, static_cast<int64_t>(series.size()) - 1));
    const Estimate alone = estimated(series, train.pulses);
    EXPECT_EQ(estimate, alone.series);
    EXPECT_EQ(warps.back(), alone.a);
  }
  EXPECT_LT(warps[1], warps[0]);
}

TEST(PulseModel, TheWarpParametersLieWithinTheirMargins) {
  for (unsigned seed = 1; seed <= 10; ++seed) {
    const Train train(8, seed);
    const BeatTimeBase base = makeBeatTimeBase(train.pulses, 245);
    const double a = estimated(noiseSeries(train.series.size() - 1, seed), train.pulses).a;
    EXPECT_GE(a, base.warpMargin);
    EXPECT_LE(a, 1 - base.warpMargin);
  }
}

TEST(PulseModel, PulsesThatCoincideDoNoHarm) {
  const std::vector<double> series = noiseSeries(1200, 7);
  for (const std::vector<double>& pulses :
       {positionsOf(10, {250, 0, 250, 250}), positionsOf(10, {250, 1, 250, 250}),
        positionsOf(10, {0.4, 250, 251})})
    expectLiteral(series, pulses);
  for (const double value : estimated(series, {100, 100, 100}).series) ASSERT_TRUE(std::isfinite(value));
}

TEST(PulseModel, KnowsItsMemoryBeforeItIsBuilt) {
  EXPECT_EQ(PulseModel::memoryFor({100, 350}, 250), 0U);
  // Intervals of 249 to 251 samples and one of 500 ask for the finest model: 60001 + 60001 + 1 values per
  // epoch.
  std::vector<double> pulses{0};
  for (int i = 0; i < 2999; ++i) pulses.push_back(pulses.back() + (i == 1500 ? 500 : 249 + i % 3));
  const uint64_t bytes = PulseModel::memoryFor(pulses, 250);
  EXPECT_GT(bytes, uint64_t{2998} * 120000 * sizeof(double));
  EXPECT_LT(bytes, uint64_t{3100} * 121000 * sizeof(double));
}

} // namespace
} // namespace emeg
