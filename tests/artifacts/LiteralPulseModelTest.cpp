#include "tests/artifacts/reference/LiteralPulseModel.h"

#include "dsp/Medians.h"
#include "tests/artifacts/PulseModelSamples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace emeg {
namespace {

/// Place in [0, 1] of the model that lies `t` samples behind the start of an interval, by halving.
double modelPlace(double t, double interval, double a, double b, double median) {
  const auto timeAndPlace = [&](double x, double part, double c) {
    const double y = c * (x - x * x) + part * x * x * x;
    return std::pair<double, double>(0.5 * x * x * x * (interval - median) + median * y, y);
  };
  const bool first = t <= 0.5 * (interval - median) + median * a;
  const double part = first ? a : 1 - a;
  const double c = 3 * (part - b);
  const double goal = first ? t : interval - t;
  double low = 0;
  double high = 1;
  while ((low + high) / 2 > low && (low + high) / 2 < high) {
    const double middle = (low + high) / 2;
    (timeAndPlace(middle, part, c).first < goal ? low : high) = middle;
  }
  const double y = timeAndPlace(low, part, c).second;
  return first ? y : 1 - y;
}

/// One smooth wave per beat, 0 at both ends.
double beatShape(double place) {
  const double envelope = std::sin(M_PI * place);
  return 60 * envelope * envelope * (std::sin(2 * M_PI * 3 * place) + 0.5 * std::cos(2 * M_PI * 2 * place));
}

/// A series in which every interval holds the same beat, warped with parameter `a`; 0 elsewhere.
std::vector<double> beatTrain(const std::vector<double>& positions, const LiteralModelSetUp& setUp, double a,
                              std::size_t length) {
  std::vector<double> series(length, 0.0);
  for (std::size_t i = 0; i + 1 < positions.size(); ++i) {
    const double interval = positions[i + 1] - positions[i];
    for (double t = 0; t < interval; t += 1)
      series[static_cast<std::size_t>(positions[i] + t)] =
          beatShape(modelPlace(t, interval, a, setUp.warpMargin, setUp.medianPulseInterval));
  }
  return series;
}

TEST(LiteralModelSetUp, FollowsTheIntervals) {
  const std::vector<double> intervals = variedIntervals(40, 3);
  const LiteralModelSetUp setUp = literalModelSetUp(positionsOf(17, intervals), 245);
  EXPECT_EQ(setUp.pulseIntervals, intervals);
  const double median = histogramMedian(intervals.data(), 40);
  const double shortest = *std::min_element(intervals.begin(), intervals.end());
  const double longest = *std::max_element(intervals.begin(), intervals.end());
  EXPECT_DOUBLE_EQ(setUp.medianPulseInterval, median);
  const double quotient = (longest - shortest) / (median - shortest);
  EXPECT_EQ(setUp.modelLength, 2 * std::lround(245 * quotient) + 1);
  EXPECT_DOUBLE_EQ(setUp.warpStep * (setUp.modelLength - 1), 1.0);
  EXPECT_NEAR(setUp.warpMargin, (median - shortest) / (2 * median), 1e-15);
  EXPECT_GE(setUp.epochHalfLength, 0.6 * setUp.modelLength - 1e-9);
  EXPECT_LT(setUp.epochHalfLength, 0.6 * setUp.modelLength + 1);
}

TEST(LiteralModelSetUp, TakesTwiceThePeriodWhenTheShortestIntervalIsTheMedianOne) {
  const LiteralModelSetUp equal = literalModelSetUp(positionsOf(0, {250, 250, 250}), 240);
  EXPECT_EQ(equal.modelLength, 481);
  EXPECT_EQ(equal.warpMargin, 0.0);
  EXPECT_EQ(equal.epochHalfLength, 289);

  const LiteralModelSetUp nearly = literalModelSetUp(positionsOf(0, {249.7, 250, 250, 250, 280}), 240);
  ASSERT_GT(nearly.medianPulseInterval, 249.7);
  EXPECT_EQ(nearly.modelLength, 481);
  EXPECT_GT(nearly.warpMargin, 0.0);
}

TEST(LiteralModelSetUp, CountsANegativeMarginAsZero) {
  const std::vector<double> positions = positionsOf(0, {250, 250, 250, 250, 250, 250, 300});
  const LiteralModelSetUp setUp = literalModelSetUp(positions, 240);
  ASSERT_LT(setUp.medianPulseInterval, 250); // the histogram's centre lies below every interval
  EXPECT_EQ(setUp.warpMargin, 0.0);
  EXPECT_EQ(setUp.modelLength, 481);
}

TEST(LiteralModelSetUp, KeepsTheModelLengthWithinItsBounds) {
  const std::vector<double> positions = positionsOf(0, {250, 250, 250});
  EXPECT_EQ(literalModelSetUp(positions, 0).modelLength, 3);
  EXPECT_EQ(literalModelSetUp(positions, 2000000000).modelLength, 100001);
}

/// Largest difference to the series after resampling and writing back, over the pulses' span.
double inversionError(const std::vector<double>& series, const std::vector<double>& positions,
                      const LiteralModelSetUp& setUp, double a) {
  std::vector<double> copy = series;
  literalWriteBack(copy, positions, setUp, a,
                   literalWarpedBeats(series, positions, setUp, literalWarpTable(a, setUp)));
  double worst = 0;
  for (std::size_t i = 0; i < series.size(); ++i) worst = std::max(worst, std::fabs(copy[i] - series[i]));
  return worst;
}

TEST(LiteralWriteBack, InvertsTheWarpOfARampBetterTheFinerTheModel) {
  const std::vector<double> positions = positionsOf(20, {250, 201, 290, 250, 233});
  std::vector<double> ramp(1300);
  for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<double>(i);
  for (const double a : {0.13, 0.3, 0.5, 0.8}) {
    double coarser = 0;
    for (const int32_t length : {251, 1001, 4001}) {
      LiteralModelSetUp setUp = setUpOf(250, 0.1, length);
      setUp.pulseIntervals = {250, 201, 290, 250, 233};
      const double error = inversionError(ramp, positions, setUp, a);
      if (coarser > 0) {
        EXPECT_LT(error, coarser / 8); // one sixteenth, but where the warp bends sharply
      }
      EXPECT_LT(error, 0.1);
      coarser = error;
    }
    EXPECT_LT(coarser, 1e-3);
  }
}

TEST(LiteralWriteBack, RestoresARampExactlyOverAnIntervalOfTheMedianLength) {
  std::vector<double> ramp(600);
  for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<double>(i);
  LiteralModelSetUp setUp = setUpOf(250, 0.1, 333);
  setUp.pulseIntervals = {250, 250};
  for (const double a : {0.1001, 0.25, 0.5, 0.75, 0.8999})
    EXPECT_LT(inversionError(ramp, {40, 290, 540}, setUp, a), 1e-7) << a;
}

TEST(LiteralWriteBack, InvertsTheResamplingOfASmoothSeries) {
  const std::vector<double> intervals = variedIntervals(30, 8);
  const std::vector<double> positions = positionsOf(30, intervals);
  const LiteralModelSetUp setUp = literalModelSetUp(positions, 245);
  std::vector<double> series(static_cast<std::size_t>(positions.back()) + 50);
  for (std::size_t i = 0; i < series.size(); ++i)
    series[i] = std::sin(0.08 * static_cast<double>(i)) + std::cos(0.05 * static_cast<double>(i));
  for (const double a : {setUp.warpMargin + 0.002, 0.35, 0.5, 0.7}) {
    // Twice a linear interpolation: a sample apart, then less than a model value apart.
    EXPECT_LT(inversionError(series, positions, setUp, a), 4 * (0.08 * 0.08 + 0.05 * 0.05) / 8) << a;
  }
}

TEST(LiteralWriteBack, InterpolatesTheBeatAtThePlaceOfEverySample) {
  LiteralModelSetUp setUp = setUpOf(250, 0.1, 401);
  setUp.pulseIntervals = {250, 205, 287};
  const std::vector<double> positions = positionsOf(3, setUp.pulseIntervals);
  const Matrix beats = noiseMatrix(3, 401, 17);
  for (const double a : {0.15, 0.5, 0.85}) {
    std::vector<double> series(760, 0.0);
    literalWriteBack(series, positions, setUp, a, beats);
    for (std::size_t i = 0; i < 3; ++i) {
      for (double t = 0; t < setUp.pulseIntervals[i]; ++t) {
        const double place = 400 * modelPlace(t, setUp.pulseIntervals[i], a, 0.1, 250);
        const std::size_t index = static_cast<std::size_t>(place);
        const double f = place - std::floor(place);
        EXPECT_NEAR(series[static_cast<std::size_t>(positions[i] + t)],
                    (1 - f) * beats[i][index] + f * beats[i][index + 1], 1e-6);
      }
    }
  }
}

TEST(LiteralWriteBack, LeavesWhatLiesOutsideTheIntervals) {
  const std::vector<double> positions = {100, 350, 590};
  LiteralModelSetUp setUp = setUpOf(245, 0.02, 601);
  setUp.pulseIntervals = {250, 240};
  const std::vector<double> series = noise(800, 2);
  std::vector<double> written = series;
  literalWriteBack(written, positions, setUp, 0.4, Matrix(2, std::vector<double>(601, 7.0)));
  for (std::size_t i = 0; i < series.size(); ++i) {
    if (i < 100 || i >= 590) {
      EXPECT_EQ(written[i], series[i]);
    } else {
      EXPECT_NEAR(written[i], 7.0, 1e-9);
    }
  }
}

TEST(LiteralWriteBack, StaysInsideASeriesThatIsShorterThanThePulsesSay) {
  LiteralModelSetUp setUp = setUpOf(250, 0.02, 601);
  setUp.pulseIntervals = {250, 250};
  std::vector<double> series(400, 1.0);
  literalWriteBack(series, {-20, 230, 480}, setUp, 0.4, Matrix(2, std::vector<double>(601, 7.0)));
  for (const double value : series) EXPECT_NEAR(value, 7.0, 1e-9);
}

TEST(LiteralWarpScore, IsTheSquaredNumberOfBeatsForEqualBeats) {
  const std::vector<double> intervals = variedIntervals(25, 4);
  const std::vector<double> positions = positionsOf(40, intervals);
  const LiteralModelSetUp setUp = literalModelSetUp(positions, 245);
  const std::vector<double> series =
      beatTrain(positions, setUp, 0.3, static_cast<std::size_t>(positions.back()) + 40);
  const double score = literalWarpScore(series, positions, setUp, 0.3);
  EXPECT_LE(score, 625 * (1 + 1e-12));
  // Where the shortest intervals bend most, two samples lie many model values apart.
  EXPECT_GT(score, 625 * 0.997);
  EXPECT_LT(literalWarpScore(series, positions, setUp, 0.29), score);
  EXPECT_LT(literalWarpScore(series, positions, setUp, 0.31), score);
  EXPECT_LT(literalWarpScore(series, positions, setUp, 0.6), 625 * 0.98);
}

TEST(LiteralWarpScore, LeavesOutBeatsWithoutEnergy) {
  const std::vector<double> positions = positionsOf(0, {250, 220, 280, 250});
  const LiteralModelSetUp setUp = literalModelSetUp(positions, 245);
  EXPECT_EQ(literalWarpScore(std::vector<double>(1000, 0.0), positions, setUp, 0.5), 0.0);
  std::vector<double> one(1000, 0.0);
  one[100] = 3.0;
  EXPECT_NEAR(literalWarpScore(one, positions, setUp, 0.5), 1.0, 1e-12);
}

TEST(LiteralWarpFit, FindsTheWarpThatMadeTheBeats) {
  for (const double a : {0.25, 0.4, 0.55, 0.7}) {
    const std::vector<double> positions = positionsOf(40, variedIntervals(30, 6));
    const LiteralModelSetUp setUp = literalModelSetUp(positions, 245);
    const std::vector<double> series =
        beatTrain(positions, setUp, a, static_cast<std::size_t>(positions.back()) + 40);
    const double fitted = literalWarpFit(series, positions, setUp);
    EXPECT_NEAR(fitted, a, 0.01);
    double best = 0;
    for (double other = setUp.warpMargin; other <= 1 - setUp.warpMargin; other += 0.01)
      best = std::max(best, literalWarpScore(series, positions, setUp, other));
    EXPECT_GT(literalWarpScore(series, positions, setUp, fitted), best * (1 - 1e-4));
  }
}

TEST(LiteralWarpFit, GivesEqualScoresToTheFirstPoint) {
  // All scores of a silent channel are 0: the bracket moves towards its lower end.
  const std::vector<double> positions = positionsOf(0, {250, 220, 280, 250});
  const LiteralModelSetUp setUp = literalModelSetUp(positions, 245);
  const double a = literalWarpFit(std::vector<double>(1000, 0.0), positions, setUp);
  EXPECT_GT(a, setUp.warpMargin);
  EXPECT_LT(a, setUp.warpMargin + 0.003);
}

TEST(LiteralWarpFit, TakesTheMiddleWhenTheMarginsLeaveNoRoom) {
  LiteralModelSetUp setUp = setUpOf(250, 0.499, 101);
  setUp.pulseIntervals = {250, 250};
  EXPECT_EQ(literalWarpFit(noise(800, 1), {0, 250, 500}, setUp), 0.5);
}

/// Beats whose values name their beat and their index.
Matrix namedBeats(std::size_t count, int32_t length) {
  Matrix beats(count, std::vector<double>(static_cast<std::size_t>(length)));
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t j = 0; j < beats[i].size(); ++j) beats[i][j] = static_cast<double>(1000 * i + j);
  return beats;
}

TEST(LiteralEpochs, SpanTheJunctions) {
  const LiteralModelSetUp setUp = setUpOf(250, 0.1, 11); // W = 7
  const Matrix epochs = literalEpochs(namedBeats(3, 11), setUp);
  ASSERT_EQ(epochs.size(), 2U);
  EXPECT_EQ(epochs[0],
            (std::vector<double>{3, 4, 5, 6, 7, 8, 9, 1000, 1001, 1002, 1003, 1004, 1005, 1006, 1007}));
  EXPECT_EQ(epochs[1][0], 1003);
  EXPECT_EQ(epochs[1][14], 2007);
}

TEST(LiteralReassembledBeats, RestoreTheBeatsFromTheirOwnEpochs) {
  for (const int32_t length : {3, 5, 11, 102, 613}) {
    for (const std::size_t count : {std::size_t{2}, std::size_t{3}, std::size_t{6}}) {
      const LiteralModelSetUp setUp = setUpOf(250, 0.1, length);
      const Matrix beats = namedBeats(count, length);
      const Matrix again = literalReassembledBeats(beats, literalEpochs(beats, setUp), setUp);
      for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t j = 0; j < beats[i].size(); ++j) {
          // The last value is the junction itself, which the epoch takes from the next beat.
          const bool junction = i + 1 < count && j + 1 == beats[i].size();
          EXPECT_NEAR(again[i][j], junction ? beats[i + 1][0] : beats[i][j], 1e-9);
        }
      }
    }
  }
}

TEST(LiteralReassembledBeats, FadeFromOneEpochToTheNext) {
  const LiteralModelSetUp setUp = setUpOf(250, 0.1, 11); // W = 7, e0 = 3
  const Matrix silent(3, std::vector<double>(11, 0.0));
  const Matrix epochs = {std::vector<double>(15, 4.0), std::vector<double>(15, 8.0)};
  const Matrix beats = literalReassembledBeats(silent, epochs, setUp);
  EXPECT_EQ(beats[0], (std::vector<double>{0, 0, 0, 0, 1, 2, 3, 4, 4, 4, 4}));
  EXPECT_EQ(beats[1], (std::vector<double>{4, 4, 4, 4, 5, 6, 7, 8, 8, 8, 8}));
  EXPECT_EQ(beats[2], (std::vector<double>{8, 8, 8, 8, 6, 4, 2, 0, 0, 0, 0}));
}

TEST(LiteralPulseModel, KeepsATrainOfEqualBeats) {
  const std::vector<double> positions = positionsOf(40, variedIntervals(40, 12));
  const LiteralModelSetUp setUp = literalModelSetUp(positions, 245);
  const std::size_t length = static_cast<std::size_t>(positions.back()) + 60;
  const std::vector<double> series = beatTrain(positions, setUp, 0.4, length);
  std::vector<double> estimate = series;
  EXPECT_NEAR(literalPulseModel(estimate, positions, 245), 0.4, 0.01);
  double error = 0;
  double energy = 0;
  for (std::size_t i = 0; i < length; ++i) {
    error += (estimate[i] - series[i]) * (estimate[i] - series[i]);
    energy += series[i] * series[i];
  }
  EXPECT_LT(error, 1e-4 * energy);
}

TEST(LiteralPulseModel, FindsTheBeatsUnderNoise) {
  const std::vector<double> positions = positionsOf(40, variedIntervals(120, 13));
  const LiteralModelSetUp setUp = literalModelSetUp(positions, 245);
  const std::size_t length = static_cast<std::size_t>(positions.back()) + 60;
  const std::vector<double> beats = beatTrain(positions, setUp, 0.4, length);
  const std::vector<double> other = noise(length, 14);
  std::vector<double> series = beats;
  for (std::size_t i = 0; i < length; ++i) series[i] += 15 * other[i];
  std::vector<double> estimate = series;
  literalPulseModel(estimate, positions, 245);

  // Without the outer halves of the outer beats, which keep the signal.
  double error = 0;
  double noiseEnergy = 0;
  for (std::size_t i = static_cast<std::size_t>(positions[1]); i < static_cast<std::size_t>(positions[119]);
       ++i) {
    error += (estimate[i] - beats[i]) * (estimate[i] - beats[i]);
    noiseEnergy += (series[i] - beats[i]) * (series[i] - beats[i]);
  }
  EXPECT_LT(error, 0.1 * noiseEnergy);
  for (std::size_t i = 0; i < 40; ++i) EXPECT_EQ(estimate[i], series[i]);
  for (std::size_t i = static_cast<std::size_t>(positions.back()); i < length; ++i)
    EXPECT_EQ(estimate[i], series[i]);
}

/// Part of the energy that the model leaves when `count` shapes of equal energy vary freely from beat to
/// beat.
double shareNotModelled(int count) {
  const std::vector<double> positions = positionsOf(20, std::vector<double>(60, 250.0));
  // The iteration starts from the epochs' first values, which must not all be silent.
  std::vector<double> series = noise(static_cast<std::size_t>(positions.back()) + 20, 99);
  for (double& value : series) value *= 1e-3;
  for (int shape = 1; shape <= count; ++shape) {
    const std::vector<double> amplitudes = noise(60, static_cast<unsigned>(shape));
    // Early in the beat, where one epoch alone sees it.
    for (std::size_t i = 0; i < 60; ++i)
      for (std::size_t t = 0; t < 90; ++t)
        series[static_cast<std::size_t>(positions[i]) + t] +=
            amplitudes[i] * std::sin(M_PI * shape * static_cast<double>(t) / 90);
  }
  std::vector<double> estimate = series;
  literalPulseModel(estimate, positions, 245);
  double left = 0;
  double energy = 0;
  for (std::size_t i = 0; i < series.size(); ++i) {
    left += (series[i] - estimate[i]) * (series[i] - estimate[i]);
    energy += series[i] * series[i];
  }
  return left / energy;
}

TEST(LiteralPulseModel, FollowsThreeFreeShapesAndNoFourth) {
  EXPECT_LT(shareNotModelled(1), 1e-3);
  EXPECT_LT(shareNotModelled(3), 1e-3);
  EXPECT_GT(shareNotModelled(4), 0.1);
}

TEST(LiteralPulseModel, KeepsTheSignalAtTheOuterEndsOfTheOuterBeats) {
  const std::vector<double> positions = positionsOf(30, variedIntervals(30, 8));
  std::vector<double> series(static_cast<std::size_t>(positions.back()) + 50);
  for (std::size_t i = 0; i < series.size(); ++i) series[i] = std::sin(0.0713 * static_cast<double>(i));
  std::vector<double> estimate = series;
  literalPulseModel(estimate, positions, 245);
  double changed = 0;
  for (std::size_t i = 0; i < series.size(); ++i) {
    const double difference = std::fabs(estimate[i] - series[i]);
    if (i < 90 || i + 110 > series.size()) {
      EXPECT_LT(difference, 0.003) << i;
    }
    changed = std::max(changed, difference);
  }
  EXPECT_GT(changed, 0.1); // a sine out of step with the beats is no artifact
}

TEST(LiteralPulseModel, IsSilentWithFewerThanThreePulses) {
  for (const std::vector<double>& positions :
       {std::vector<double>{}, std::vector<double>{100}, std::vector<double>{100, 350}}) {
    std::vector<double> series = noise(700, 3);
    literalPulseModel(series, positions, 245);
    EXPECT_EQ(series, std::vector<double>(700, 0.0));
  }
}

TEST(LiteralPulseModel, TakesAllOfThreePulses) {
  // One junction has one component: what comes back is the resampling alone.
  const std::vector<double> positions = {50, 300, 530};
  const std::vector<double> series = noise(600, 21);
  std::vector<double> estimate = series;
  const double a = literalPulseModel(estimate, positions, 245);
  const LiteralModelSetUp setUp = literalModelSetUp(positions, 245);
  std::vector<double> resampled = series;
  literalWriteBack(resampled, positions, setUp, a,
                   literalWarpedBeats(series, positions, setUp, literalWarpTable(a, setUp)));
  for (std::size_t i = 0; i < series.size(); ++i) EXPECT_NEAR(estimate[i], resampled[i], 1e-9) << i;
}

TEST(LiteralPulseModel, StaysFiniteOnDegenerateInput) {
  const std::vector<std::vector<double>> trains = {positionsOf(0, {250, 250, 250, 250, 250, 250, 300}),
                                                   positionsOf(0, {250, 250, 250}), positionsOf(0, {0, 0, 0}),
                                                   positionsOf(0.5, {249.9, 251.3, 260.2, 240.7}),
                                                   positionsOf(10, {250, 1, 250, 250})};
  for (const std::vector<double>& positions : trains) {
    for (const int32_t period : {0, 245}) {
      for (const double scale : {0.0, 1e-200, 1.0}) {
        std::vector<double> series = noise(900, 7);
        for (double& value : series) value *= scale;
        const double a = literalPulseModel(series, positions, period);
        EXPECT_TRUE(a >= 0 && a <= 1) << a;
        for (const double value : series) ASSERT_TRUE(std::isfinite(value));
      }
    }
  }
}

} // namespace
} // namespace emeg
