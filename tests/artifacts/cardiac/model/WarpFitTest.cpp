#include "artifacts/cardiac/model/WarpFit.h"

#include "tests/artifacts/cardiac/BeatTimeBases.h"
#include "tests/artifacts/reference/LiteralPulseModel.h"
#include "tests/dsp/SimdLevelTests.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace emeg {
namespace {

/// Pulses from the first sample on, and series of beats that have them.
struct Beats {
  std::vector<double> positions;
  BeatTimeBase base;
  int64_t length;

  Beats(int nrOfIntervals, unsigned seed, double first = 0)
      : positions(positionsOf(first, variedIntervals(nrOfIntervals, seed))),
        base(makeBeatTimeBase(positions, 245)), length(static_cast<int64_t>(positions.back()) + 1) {}

  std::vector<double> series(double bend, double noiseScale = 5) const {
    return stretchedBeats(positions, static_cast<std::size_t>(length), bend, noiseScale);
  }
  double fit(const std::vector<double>& series) const { return WarpFit(base).fit(series.data(), length); }
  double literalFit(const std::vector<double>& series) const {
    return literalWarpFit(series, positions, literalOf(base));
  }
  double score(const std::vector<double>& series, double a) const {
    return warpScore(series.data(), length, base, makeWarpTable(a, base));
  }
};

TEST(ResampleInterval, HasTheBitsOfThePlainResampling) {
  const Beats beats(20, 3);
  const std::vector<double> series = beats.series(0.4);
  for (const double a : {0.12, 0.31, 0.5, 0.83}) {
    const WarpTable table = makeWarpTable(a, beats.base);
    const Matrix literal =
        literalWarpedBeats(series, beats.positions, literalOf(beats.base), literalOf(table));
    for (std::size_t i = 0; i < 20; ++i) {
      EdgedArray values(literal[i].size(), 1);
      resampleInterval(series.data(), beats.length, beats.base, table, i, values.data());
      ASSERT_TRUE(sameBits(values.values(), literal[i])) << i;
    }
  }
}

TEST(ResampleInterval, TakesPulsesBetweenSamplesAtTheSampleInFront) {
  const std::vector<double> positions = {10.9, 250.1, 509.6, 745.5};
  const BeatTimeBase base = makeBeatTimeBase(positions, 245);
  const WarpTable table = makeWarpTable(0.4, base);
  std::vector<double> ramp;
  for (int i = 0; i < 800; ++i) ramp.push_back(i);
  std::vector<double> values(table.warpPosition.size());
  const double firsts[] = {10, 250, 509};
  const double lengths[] = {239, 259, 235};
  for (std::size_t i = 0; i < 3; ++i) {
    resampleInterval(ramp.data(), 799, base, table, i, values.data());
    EXPECT_EQ(values.front(), firsts[i]);
    EXPECT_EQ(values.back(), firsts[i] + lengths[i]);
    for (std::size_t j = 0; j < values.size(); ++j)
      EXPECT_NEAR(values[j], firsts[i] + lengths[i] * table.warpPosition[j] + table.warpOffset[j], 1e-9);
  }
}

TEST(ResampleInterval, APlaceOnASampleDoesNotReadTheOneInFront) {
  const BeatTimeBase base = timeBaseWith(16, 0.0, 17, {3, 19, 35});
  WarpTable even;
  for (int j = 0; j <= 16; ++j) {
    even.warpPosition.push_back(j / 16.0);
    even.warpOffset.push_back(0.0);
  }
  std::vector<double> series = noiseSeries(40, 1);
  series[10] = std::numeric_limits<double>::infinity();
  std::vector<double> values(17);
  resampleInterval(series.data(), 40, base, even, 0, values.data());
  for (std::size_t j = 0; j <= 16; ++j)
    if (j != 6 && j != 7) {
      EXPECT_EQ(values[j], series[3 + j]) << j;
    }
}

TEST(ResampleInterval, StaysInsideTheSeriesWhereverTheIntervalLies) {
  const std::vector<double> series = noiseSeries(300, 1);
  const EdgedArray samples(series, 0);
  for (const double start : {-1000.0, -250.0, -3.0, 60.0, 299.0, 300.0, 5000.0}) {
    const BeatTimeBase base = timeBaseWith(250, 0.05, 301, {start, start + 250, start + 490, start + 760});
    const WarpTable table = makeWarpTable(0.4, base);
    std::vector<double> values(301);
    for (std::size_t i = 0; i < 3; ++i) {
      resampleInterval(samples.data(), 300, base, table, i, values.data());
      for (const double value : values) ASSERT_TRUE(std::isfinite(value));
    }
    EXPECT_TRUE(std::isfinite(warpScore(samples.data(), 300, base, table)));
  }
}

TEST(WarpScore, AgreesWithThePlainVersionForEveryNumberOfIntervals) {
  for (int n = 2; n <= 26; ++n) {
    const Beats beats(n, static_cast<unsigned>(n));
    const std::vector<double> series = beats.series(0.4, 20);
    for (const double a : {0.3, 0.5, 0.66}) {
      const double literal = literalWarpScore(series, beats.positions, literalOf(beats.base), a);
      EXPECT_NEAR(beats.score(series, a), literal, 1e-12 * literal) << n;
    }
  }
}

TEST(WarpScore, IsTheSquaredNumberOfIntervalsWhereAllAreAlike) {
  const std::vector<double> positions = positionsOf(0, std::vector<double>(11, 250.0));
  const BeatTimeBase base = makeBeatTimeBase(positions, 245);
  std::vector<double> series;
  for (int i = 0; i <= 2750; ++i)
    series.push_back(std::sin(2 * M_PI * i / 250) + 0.3 * std::cos(6 * M_PI * i / 250));
  series.push_back(0.0);
  EXPECT_NEAR(warpScore(series.data(), 2751, base, makeWarpTable(0.5, base)), 121, 1e-9);
}

TEST(WarpScore, CountsEveryIntervalAlikeWhateverItsSize) {
  const Beats beats(9, 4);
  std::vector<double> series = beats.series(0.4);
  const double score = beats.score(series, 0.4);
  // No value of another interval takes part in this one's: its last place lies on the next one's first
  // sample.
  const auto first = static_cast<std::size_t>(beats.positions[3]);
  series[first] = series[static_cast<std::size_t>(beats.positions[4])] = 0;
  const double before = beats.score(series, 0.4);
  for (std::size_t i = first; i < static_cast<std::size_t>(beats.positions[4]); ++i) series[i] *= 1024;
  EXPECT_NEAR(beats.score(series, 0.4), before, 1e-9 * score);
}

TEST(WarpScore, LeavesOutIntervalsWithoutEnergy) {
  const Beats beats(5, 6);
  std::vector<double> series(static_cast<std::size_t>(beats.length) + 1, 0.0);
  EXPECT_EQ(beats.score(series, 0.5), 0.0);
  series[static_cast<std::size_t>(beats.positions[2]) + 100] = 3.0;
  EXPECT_NEAR(beats.score(series, 0.5), 1.0, 1e-12);
}

TEST(WarpScore, TakesPlacesThatDescendAsTheResamplingDoes) {
  // A table that goes back in the middle: the sample in front of a place never does.
  const Beats beats(6, 6);
  const std::vector<double> series = beats.series(0.4);
  WarpTable table = makeWarpTable(0.4, beats.base);
  for (std::size_t j = 0; j < table.warpOffset.size(); j += 7) table.warpOffset[j] -= 2.5;
  const auto size = static_cast<std::size_t>(beats.base.modelLength);
  std::vector<double> sum(size);
  for (const std::vector<double>& beat :
       literalWarpedBeats(series, beats.positions, literalOf(beats.base), literalOf(table))) {
    double energy = 0;
    for (const double value : beat) energy += value * value;
    for (std::size_t j = 0; j < size; ++j) sum[j] += beat[j] / std::sqrt(energy);
  }
  double score = 0;
  for (const double value : sum) score += value * value;
  EXPECT_NEAR(warpScore(series.data(), beats.length, beats.base, table), score, 1e-12 * score);
}

TEST(PlainWarpScore, IsTheScoreWithinRounding) {
  for (int n = 2; n <= 10; ++n) {
    const Beats beats(n, static_cast<unsigned>(n));
    const std::vector<double> series = beats.series(0.4, 20);
    const WarpTable table = makeWarpTable(0.3, beats.base);
    const double literal = literalWarpScore(series, beats.positions, literalOf(beats.base), 0.3);
    EXPECT_NEAR(plainWarpScore(series.data(), beats.length, beats.base, table), literal, 1e-13 * literal)
        << n;
  }
}

TEST(WarpFit, FindsTheParameterOfThePlainVersion) {
  for (unsigned seed = 1; seed <= 6; ++seed) {
    const Beats beats(8 + static_cast<int>(seed), seed, 10 * seed);
    for (const double bend : {0.0, 0.2, 0.5, 0.7, 1.0})
      for (const double noiseScale : {1.0, 30.0}) {
        const std::vector<double> series = beats.series(bend, noiseScale);
        const double a = beats.fit(series);
        EXPECT_EQ(a, beats.literalFit(series)) << seed << " " << bend << " " << noiseScale;
        EXPECT_GT(a, beats.base.warpMargin);
        EXPECT_LT(a, 1 - beats.base.warpMargin);
      }
  }
}

TEST(WarpFit, FollowsTheBendOfTheBeats) {
  const Beats beats(30, 9);
  double last = 0;
  for (const double bend : {0.25, 0.4, 0.55, 0.7}) {
    const double a = beats.fit(beats.series(bend, 0.1));
    EXPECT_GT(a, last + 0.05) << bend;
    last = a;
  }
}

TEST(WarpFit, EndsBetweenTheBestPointsOfItsRange) {
  const Beats beats(30, 9);
  const std::vector<double> series = beats.series(0.5, 0.1);
  const double a = beats.fit(series);
  double best = 0;
  for (double other = beats.base.warpMargin; other <= 1 - beats.base.warpMargin; other += 0.01)
    best = std::max(best, beats.score(series, other));
  EXPECT_GT(beats.score(series, a), best * (1 - 1e-4));
}

TEST(WarpFit, FitsEachChannelAsIfItWereTheOnlyOne) {
  const Beats beats(12, 5);
  WarpFit shared(beats.base);
  for (const double bend : {0.7, 0.2, 0.5, 0.7, 0.35}) {
    const std::vector<double> series = beats.series(bend);
    EXPECT_EQ(shared.fit(series.data(), beats.length), beats.fit(series)) << bend;
  }
}

TEST(WarpFit, LiesWithinItsMarginsWhateverTheSeries) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    const Beats beats(3, seed);
    const std::vector<double> series = noiseSeries(static_cast<std::size_t>(beats.length), seed);
    const double a = beats.fit(series);
    EXPECT_EQ(a, beats.literalFit(series)) << seed;
    EXPECT_GE(a, beats.base.warpMargin);
    EXPECT_LE(a, 1 - beats.base.warpMargin);
  }
}

TEST(WarpFit, GivesEqualScoresToTheFirstPoint) {
  // All scores of a silent channel are 0: the bracket moves to the lower end of the range, round by round.
  for (const int n : {2, 7, 8, 9}) {
    const Beats beats(n, 3);
    const std::vector<double> silent(static_cast<std::size_t>(beats.length) + 1, 0.0);
    double width = 1 - 2 * beats.base.warpMargin;
    for (double step = width / 4; step > 0.001; step /= 2) width /= 2;
    EXPECT_NEAR(beats.fit(silent), beats.base.warpMargin + width / 2, 1e-12) << n;
    EXPECT_EQ(beats.fit(silent), beats.literalFit(silent));
  }
}

TEST(WarpFit, LeavesScoresThatAgreeToRoundingToThePlainSums) {
  // One interval alone has energy: whatever the parameter, its score is 1 but for rounding.
  for (unsigned seed = 1; seed <= 10; ++seed) {
    const Beats beats(5, seed);
    std::vector<double> series(static_cast<std::size_t>(beats.length) + 1, 0.0);
    series[static_cast<std::size_t>(beats.positions[2]) + 100] = 3.0;
    EXPECT_EQ(beats.fit(series), beats.literalFit(series)) << seed;
  }
}

TEST(WarpFit, TakesTheMiddleWhenTheMarginsLeaveNoRoom) {
  for (const double margin : {0.4981, 0.5}) {
    const BeatTimeBase base = timeBaseWith(250, margin, 101, {0, 250, 500});
    const std::vector<double> series = noiseSeries(800, 1);
    EXPECT_EQ(WarpFit(base).fit(series.data(), 800), 0.5);
  }
}

TEST(WarpFit, HalvesTheBracketUntilItsPointsAreAThousandthApart) {
  // The range is 4 steps wide. A step of 0.001 or less ends the search; what is left is 4 steps wide too.
  for (const double margin : {0.49, 0.4, 0.1, 0.0}) {
    const BeatTimeBase base = timeBaseWith(250, margin, 101, {0, 240, 500, 760});
    const std::vector<double> silent(801, 0.0);
    double step = (1 - 2 * margin) / 4;
    while (step > 0.001) step /= 2;
    EXPECT_NEAR(WarpFit(base).fit(silent.data(), 800), margin + 2 * step, 1e-12);
  }
}

TEST(WarpFit, IsDeterminedByTheShapeAloneNotByTheScale) {
  const Beats beats(10, 8);
  const std::vector<double> series = beats.series(0.45);
  const double a = beats.fit(series);
  for (const double scale : {0x1p-300, 0x1p-20, 0x1p30, 0x1p300}) {
    std::vector<double> scaled = series;
    for (double& value : scaled) value *= scale;
    EXPECT_EQ(beats.fit(scaled), a) << scale;
  }
}

TEST(WarpFit, ComesToAnEndOnValuesThatAreNoNumbers) {
  const Beats beats(6, 8);
  std::vector<double> series = beats.series(0.45);
  series[500] = std::nan("");
  const double a = beats.fit(series);
  EXPECT_GE(a, beats.base.warpMargin);
  EXPECT_LE(a, 1 - beats.base.warpMargin);
}

} // namespace
} // namespace emeg
