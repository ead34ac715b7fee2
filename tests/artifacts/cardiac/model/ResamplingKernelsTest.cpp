#include "artifacts/cardiac/model/ResamplingKernels.h"

#include "tests/artifacts/cardiac/BeatTimeBases.h"
#include "tests/artifacts/reference/LiteralPulseModel.h"
#include "tests/dsp/SimdLevelTests.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace emeg {
namespace {

constexpr std::size_t lockstep = nrOfLockstepEquations;

struct Places {
  std::vector<int32_t> samples;
  std::vector<double> fractions;
  bool ascend = true;
};

/// The search as it is meant, one place after the other; `lastSample` + 1 can still be read.
Places plainPlaces(double start, double length, const LiteralWarpTable& table, int32_t lastSample) {
  Places places;
  for (std::size_t j = 0; j < table.warpPosition.size(); ++j) {
    const double place = length * table.warpPosition[j] + start + table.warpOffset[j];
    auto sample = static_cast<int32_t>(std::clamp(start, 0.0, static_cast<double>(lastSample)));
    while (place >= sample + 1 && sample < lastSample) ++sample;
    if (j > 0 && sample < places.samples.back()) places.ascend = false;
    places.samples.push_back(sample);
    places.fractions.push_back(place - sample);
  }
  return places;
}

/// All arrays end where their memory ends.
Places foundPlaces(SimdLevel level, double start, double length, const LiteralWarpTable& table,
                   int32_t lastSample, std::size_t shift = 0) {
  const EdgedArray position(table.warpPosition, shift);
  const EdgedArray offset(table.warpOffset, (shift + 1) % 4);
  std::vector<int32_t> samples(position.size() + shift, -77);
  EdgedArray fractions(position.size(), (shift + 2) % 4, -77.0);
  Places places;
  places.ascend = resamplingKernels(level).findPlaces(start, length, position.data(), offset.data(),
                                                      static_cast<int64_t>(position.size()), lastSample,
                                                      samples.data() + shift, fractions.data());
  places.samples.assign(samples.begin() + static_cast<std::ptrdiff_t>(shift), samples.end());
  places.fractions = fractions.values();
  return places;
}

testing::AssertionResult arePlain(const Places& places, const Places& plain) {
  if (places.samples != plain.samples) return testing::AssertionFailure() << "other samples";
  if (places.ascend != plain.ascend) return testing::AssertionFailure() << "other order";
  return sameBits(places.fractions, plain.fractions);
}

struct Interpolated {
  std::vector<double> values;
  double energy = 0;
};

/// `series` ends with the value behind its last sample, and so does its memory.
Interpolated interpolated(SimdLevel level, const std::vector<double>& series, const Places& places,
                          std::size_t shift = 0) {
  const EdgedArray samples(series, shift);
  const EdgedArray fractions(places.fractions, (shift + 1) % 4);
  std::vector<int32_t> indices(shift, 0);
  indices.insert(indices.end(), places.samples.begin(), places.samples.end());
  EdgedArray values(places.samples.size(), shift % 3, -77.0);
  Interpolated result;
  result.energy = resamplingKernels(level).interpolate(
      samples.data(), static_cast<int32_t>(series.size()) - 2, indices.data() + shift, fractions.data(),
      static_cast<int64_t>(places.samples.size()), values.data());
  result.values = values.values();
  return result;
}

/// Element j belongs to partial sum j mod 8; 4 + 4, 2 + 2 and 1 + 1 of them are added.
double plainEnergy(const std::vector<double>& values) {
  std::array<double, 8> partial{};
  for (std::size_t j = 0; j < values.size(); ++j) partial[j % 8] += values[j] * values[j];
  return ((partial[0] + partial[4]) + (partial[2] + partial[6])) +
         ((partial[1] + partial[5]) + (partial[3] + partial[7]));
}

testing::AssertionResult isPlain(const Interpolated& result, const std::vector<double>& values) {
  if (!sameBits(result.energy, plainEnergy(values)))
    return testing::AssertionFailure() << "energy " << result.energy << " instead of " << plainEnergy(values);
  return sameBits(result.values, values);
}

std::vector<double> plainValues(const std::vector<double>& series, const Places& places) {
  std::vector<double> values;
  for (std::size_t j = 0; j < places.samples.size(); ++j) {
    const auto at = static_cast<std::size_t>(places.samples[j]);
    values.push_back((1.0 - places.fractions[j]) * series[at] + places.fractions[j] * series[at + 1]);
  }
  return values;
}

LiteralWarpTable tableOf(double a, int32_t length) {
  return literalWarpTable(a, setUpOf(250, 0.1, length));
}

struct Interval {
  double start;
  double length;
};

/// Intervals of a series of 3000 samples, among them one that starts with it, one that ends with it and one
/// that ends with the value behind it.
std::vector<Interval> intervalsOfSeries() {
  std::mt19937 random(4);
  std::vector<Interval> intervals = {{0, 250}, {2749, 250}, {2750, 250}, {2799, 200}, {0, 2999}, {0, 3000}};
  for (int i = 0; i < 8; ++i)
    intervals.push_back({static_cast<double>(random() % 2700), 200 + static_cast<double>(random() % 100)});
  return intervals;
}

class ResamplingKernelsTest : public AtEveryLevel {};
INSTANTIATE_TEST_SUITE_P(Simd, ResamplingKernelsTest, testing::ValuesIn(availableSimdLevels()),
                         AtEveryLevel::name);

TEST_P(ResamplingKernelsTest, EveryIntervalHasTheBitsOfThePlainResampling) {
  std::size_t shift = 0;
  for (const std::vector<double>& series : {noiseSeries(3000, 4, 50), unevenNoise(3001, 6)})
    for (const Interval& interval : intervalsOfSeries())
      for (const double a : {0.1, 0.27, 0.5, 0.9})
        for (const int32_t length : {3, 4, 31, 63, 64, 65, 100, 127, 128, 129, 613, 1001}) {
          const LiteralWarpTable table = tableOf(a, length);
          const Places places = foundPlaces(GetParam(), interval.start, interval.length, table, 2999, shift);
          ASSERT_TRUE(arePlain(places, plainPlaces(interval.start, interval.length, table, 2999)));
          ASSERT_TRUE(places.ascend);
          ASSERT_TRUE(isPlain(interpolated(GetParam(), series, places, shift),
                              literalResampledInterval(series, interval.start, interval.length, table)))
              << interval.start << " " << interval.length << " " << a << " " << length;
          shift = (shift + 1) % 8;
        }
}

TEST_P(ResamplingKernelsTest, APlaceOnASampleIsThatSample) {
  const std::vector<double> series = noiseSeries(600, 7);
  LiteralWarpTable even;
  for (int j = 0; j <= 256; ++j) {
    even.warpPosition.push_back(j / 256.0);
    even.warpOffset.push_back(0.0);
  }
  for (std::size_t start = 0; start < 300; start += 40) {
    const Places places = foundPlaces(GetParam(), static_cast<double>(start), 256, even, 599);
    const std::vector<double> values = interpolated(GetParam(), series, places).values;
    for (std::size_t j = 0; j <= 256; ++j) {
      ASSERT_EQ(places.samples[j], static_cast<int32_t>(start + j));
      ASSERT_EQ(values[j], series[start + j]);
    }
  }
}

TEST_P(ResamplingKernelsTest, TellsWhetherThePlacesAscend) {
  // One place that lies a sample in front of the one before it, anywhere.
  for (std::size_t count = 2; count <= 40; ++count)
    for (std::size_t back = 0; back < count; ++back) {
      LiteralWarpTable table;
      for (std::size_t j = 0; j < count; ++j) {
        table.warpPosition.push_back(static_cast<double>(j) / 64);
        table.warpOffset.push_back(j == back ? 17.0 : 20.0);
      }
      const Places places = foundPlaces(GetParam(), 10, 128, table, 2999);
      ASSERT_TRUE(arePlain(places, plainPlaces(10, 128, table, 2999)));
      EXPECT_EQ(places.ascend, back == 0) << count << " " << back;
    }
}

TEST_P(ResamplingKernelsTest, PlacesThatJumpToAndFroAreFoundEachByItself) {
  std::mt19937 random(3);
  LiteralWarpTable jumping;
  for (int j = 0; j < 150; ++j) {
    jumping.warpPosition.push_back(0.001 * static_cast<double>(random() % 1000));
    jumping.warpOffset.push_back(static_cast<double>(random() % 30) * 0.37 - 5);
  }
  for (const Interval& interval : intervalsOfSeries()) {
    const Places places = foundPlaces(GetParam(), interval.start, interval.length, jumping, 2999);
    EXPECT_FALSE(places.ascend);
    ASSERT_TRUE(arePlain(places, plainPlaces(interval.start, interval.length, jumping, 2999)));
  }
}

TEST_P(ResamplingKernelsTest, SamplesStayInsideTheSeriesWhereverTheIntervalLies) {
  const std::vector<double> series = noiseSeries(500, 9);
  for (const int32_t length : {201, 205})
    for (const Interval& interval : {Interval{-1, 250},
                                     {-300, 250},
                                     {-100000, 250},
                                     {499, 250},
                                     {500, 250},
                                     {501, 250},
                                     {100000, 250},
                                     {0, 100000},
                                     {300, 250}}) {
      const LiteralWarpTable table = tableOf(0.4, length);
      const Places places = foundPlaces(GetParam(), interval.start, interval.length, table, 499);
      ASSERT_TRUE(arePlain(places, plainPlaces(interval.start, interval.length, table, 499)))
          << interval.start;
      const std::vector<double> values = interpolated(GetParam(), series, places).values;
      const std::vector<double> literal =
          literalResampledInterval(series, interval.start, interval.length, table);
      for (std::size_t j = 0; j < values.size(); ++j) {
        const double place = interval.length * table.warpPosition[j] + interval.start + table.warpOffset[j];
        ASSERT_TRUE(std::isfinite(values[j]));
        if (place >= 0 && place < 500) {
          ASSERT_TRUE(sameBits(values[j], literal[j])) << interval.start << " " << j;
        }
      }
    }
}

TEST_P(ResamplingKernelsTest, ASeriesOfOneSampleIsEnough) {
  for (const Interval& interval : {Interval{0, 0}, {0, 1}, {1, 1}, {2, 2}, {-1, 3}}) {
    const LiteralWarpTable table = tableOf(0.4, 19);
    const Places places = foundPlaces(GetParam(), interval.start, interval.length, table, 0);
    EXPECT_EQ(places.samples, std::vector<int32_t>(19, 0));
    ASSERT_TRUE(isPlain(interpolated(GetParam(), {5.0, 0.0}, places), plainValues({5.0, 0.0}, places)));
  }
}

TEST_P(ResamplingKernelsTest, InterpolatesNeighboursHoweverFarApartTheyLie) {
  // Ascending samples whose steps are up to `widest`: eight of them span a few samples, or just so many that
  // they no longer lie in two registers, or hundreds. Some stand still.
  for (const std::size_t size : {18, 40, 300, 3000})
    for (const uint32_t widest : {0, 1, 2, 3, 4, 5, 40})
      for (std::size_t count = 0; count <= 70; ++count) {
        const std::vector<double> series = unevenNoise(size, 14);
        std::mt19937 random(static_cast<uint32_t>(count + 100 * widest));
        Places places;
        auto sample = static_cast<int32_t>(random() % 5);
        for (std::size_t j = 0; j < count; ++j) {
          places.samples.push_back(std::min(sample, static_cast<int32_t>(size) - 2));
          places.fractions.push_back(static_cast<double>(random() % 1000) / 1000);
          sample += static_cast<int32_t>(random() % (widest + 1));
        }
        ASSERT_TRUE(isPlain(interpolated(GetParam(), series, places, count % 8), plainValues(series, places)))
            << size << " " << widest << " " << count;
      }
}

TEST_P(ResamplingKernelsTest, NoPlacesHaveNoEnergy) {
  EXPECT_TRUE(foundPlaces(GetParam(), 5, 250, {}, 499).ascend);
  EXPECT_TRUE(sameBits(interpolated(GetParam(), noiseSeries(500, 5), {}).energy, 0.0));
}

TEST_P(ResamplingKernelsTest, WhatIsNotFiniteStaysAtItsPlace) {
  for (const double bad :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    std::vector<double> series = noiseSeries(3000, 10);
    series[600] = bad;
    const LiteralWarpTable table = tableOf(0.4, 251);
    const Places places = foundPlaces(GetParam(), 500, 250, table, 2999);
    const Interpolated result = interpolated(GetParam(), series, places);
    ASSERT_TRUE(isPlain(result, literalResampledInterval(series, 500, 250, table)));
    EXPECT_FALSE(std::isfinite(result.energy));
    for (std::size_t j = 0; j < 251; ++j) {
      EXPECT_EQ(std::isfinite(result.values[j]), places.samples[j] != 599 && places.samples[j] != 600) << j;
    }
  }
}

/// Roots of equation i for distances firstDistance, firstDistance + 1, ... by the plain Newton iteration;
/// none when it fails anywhere.
std::vector<double> newtonRoots(const WarpEquations& equations, std::size_t i, double firstDistance,
                                std::size_t count, int mostRounds = 100) {
  const double samples = equations.samples[i];
  const double bend = equations.medianBends[i];
  std::vector<double> roots;
  double x = 0;
  for (std::size_t k = 0; k < count; ++k) {
    bool settled = false;
    for (int round = 0; round < mostRounds && !settled; ++round) {
      const double slope = (3 * samples * x - 2 * bend) * x + bend;
      const double value = ((samples * x - bend) * x + bend) * x - (firstDistance + static_cast<double>(k));
      const double step = value / slope;
      if (slope == 0 || !std::isfinite(step)) return {};
      x -= step;
      settled = std::fabs(step) <= 1e-10;
    }
    if (!settled) return {};
    roots.push_back(x);
  }
  return roots;
}

/// Checks roots and failures of all equations; tells which failed.
int expectNewtonRoots(SimdLevel level, const WarpEquations& equations, double firstDistance,
                      std::size_t count) {
  EdgedArray roots(count * lockstep, count % 2, -77.0);
  const int failed = resamplingKernels(level).solveWarps(equations, firstDistance,
                                                         static_cast<int64_t>(count), roots.data());
  for (std::size_t i = 0; i < lockstep; ++i) {
    const std::vector<double> expected = newtonRoots(equations, i, firstDistance, count);
    EXPECT_EQ((failed >> i & 1) != 0, expected.size() < count) << i;
    for (std::size_t k = 0; k < expected.size(); ++k) {
      const double root = roots.data()[k * lockstep + i];
      EXPECT_TRUE(sameBits(root, expected[k])) << i << " " << k << ": " << root << " " << expected[k];
    }
  }
  EXPECT_EQ(failed >> lockstep, 0);
  return failed;
}

/// The part `share` in front of the bend of intervals of a median of 250 samples.
WarpEquations equationsOf(double share, double margin, const std::vector<double>& intervals) {
  WarpEquations equations;
  for (std::size_t i = 0; i < lockstep; ++i) {
    equations.samples[i] = (intervals[i] - 250) * 0.5 + 250 * share;
    equations.medianBends[i] = 250 * (3 * (share - margin));
  }
  return equations;
}

TEST_P(ResamplingKernelsTest, SolvesEveryWarpEquationAsIfItWereAlone) {
  for (unsigned seed = 1; seed <= 6; ++seed)
    for (const double share : {0.11, 0.3, 0.5, 0.89})
      for (const double firstDistance : {0.0, 1.0}) {
        const std::vector<double> intervals = variedIntervals(8, seed);
        const double shortest = *std::min_element(intervals.begin(), intervals.end());
        const auto count = static_cast<std::size_t>((shortest - 250) * 0.5 + 250 * share);
        EXPECT_EQ(expectNewtonRoots(GetParam(), equationsOf(share, 0.1, intervals), firstDistance, count), 0);
      }
}

TEST_P(ResamplingKernelsTest, AWarpEquationThatFailsLeavesTheOthersAlone) {
  const std::vector<double> intervals = variedIntervals(8, 3);
  for (std::size_t bad = 0; bad < lockstep; ++bad)
    for (const double samples : {0.0, 120.0, std::numeric_limits<double>::quiet_NaN()}) {
      WarpEquations equations = equationsOf(0.5, 0.1, intervals);
      equations.medianBends[bad] = 0; // flat where the iteration starts
      equations.samples[bad] = samples;
      EXPECT_EQ(expectNewtonRoots(GetParam(), equations, 1, 90), 1 << bad);
    }
}

TEST_P(ResamplingKernelsTest, TellsWhichWarpEquationsDoNotSettle) {
  // Intervals far shorter than the margin allows: their cubics fall in between, and some iterations never
  // leave the hollow.
  const WarpEquations equations = equationsOf(0.5, 0.0, {250, 210, 220, 200, 240, 180, 300, 170});
  const int failed = expectNewtonRoots(GetParam(), equations, 0, 126);
  EXPECT_NE(failed, 0);
  EXPECT_NE(failed, 255);
  EXPECT_EQ(failed & 1, 0); // flat at the bend, and settles
}

TEST_P(ResamplingKernelsTest, AWarpEquationMaySettleInTheHundredthRoundAndNoLater) {
  const WarpEquations equations = equationsOf(0.3, 0.0, {138, 230, 250, 250, 250, 250, 250, 250});
  ASSERT_TRUE(newtonRoots(equations, 0, 0, 60, 99).empty());
  ASSERT_FALSE(newtonRoots(equations, 0, 0, 60, 100).empty());
  ASSERT_TRUE(newtonRoots(equations, 1, 0, 71, 100).empty());
  ASSERT_FALSE(newtonRoots(equations, 1, 0, 71, 101).empty());
  EXPECT_EQ(expectNewtonRoots(GetParam(), equations, 0, 60), 0);
  EXPECT_EQ(expectNewtonRoots(GetParam(), equations, 0, 71) & 2, 2);
}

TEST_P(ResamplingKernelsTest, NoDistancesNeedNoRoots) {
  EXPECT_EQ(expectNewtonRoots(GetParam(), equationsOf(0.5, 0.1, variedIntervals(8, 3)), 0, 0), 0);
}

TEST(ResamplingKernels, AreThoseOfTheBestLevelUnlessAskedOtherwise) {
  EXPECT_EQ(&resamplingKernels(), &resamplingKernels(bestSimdLevel()));
  const std::vector<SimdLevel> levels = availableSimdLevels();
  for (std::size_t i = 1; i < levels.size(); ++i)
    EXPECT_NE(resamplingKernels(levels[i]).interpolate, resamplingKernels(levels[i - 1]).interpolate);
}

} // namespace
} // namespace emeg
