#include "artifacts/cardiac/model/BeatReassembly.h"

#include "artifacts/cardiac/model/WarpFit.h"
#include "tests/artifacts/cardiac/BeatTimeBases.h"
#include "tests/artifacts/reference/LiteralPulseModel.h"
#include "tests/dsp/SimdLevelTests.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {
namespace {

constexpr int32_t modelLengths[] = {3, 5, 7, 9, 11, 13, 101, 103, 613};

/// A time base of intervals of the median length.
BeatTimeBase evenTimeBase(std::size_t nrOfIntervals, int32_t modelLength) {
  return timeBaseWith(250, 0.1, modelLength, positionsOf(20, std::vector<double>(nrOfIntervals, 250.0)));
}

RowMatrix epochsOf(const BeatTimeBase& base, const Matrix& beats) {
  RowMatrix epochs(base.nrOfEpochs(), static_cast<std::size_t>(base.epochLength()));
  for (std::size_t i = 0; i < beats.size(); ++i) cutIntoEpochs(base, i, beats[i], epochs);
  return epochs;
}

Matrix matrixOf(const RowMatrix& rows) {
  Matrix matrix;
  for (std::size_t i = 0; i < rows.nrOfRows(); ++i)
    matrix.emplace_back(rows.row(i), rows.row(i) + rows.length());
  return matrix;
}

Matrix reassembled(const BeatTimeBase& base, Matrix beats, const Matrix& epochs) {
  for (std::size_t i = 0; i < beats.size(); ++i)
    reassembleBeat(base, i > 0 ? epochs[i - 1].data() : nullptr,
                   i < epochs.size() ? epochs[i].data() : nullptr, beats[i]);
  return beats;
}

/// Beats whose values name their beat and their index.
Matrix namedBeats(std::size_t count, int32_t length) {
  Matrix beats(count, std::vector<double>(static_cast<std::size_t>(length)));
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t j = 0; j < beats[i].size(); ++j) beats[i][j] = static_cast<double>(1000 * i + j);
  return beats;
}

TEST(CutIntoEpochs, SpansTheJunctionOfSuccessiveBeatsWithoutTheFirstOnesLastValue) {
  const BeatTimeBase base = evenTimeBase(3, 11); // 7 values on either side of a pulse, and its own
  const Matrix epochs = matrixOf(epochsOf(base, namedBeats(3, 11)));
  ASSERT_EQ(epochs.size(), 2U);
  EXPECT_EQ(epochs[0],
            (std::vector<double>{3, 4, 5, 6, 7, 8, 9, 1000, 1001, 1002, 1003, 1004, 1005, 1006, 1007}));
  EXPECT_EQ(epochs[1], (std::vector<double>{1003, 1004, 1005, 1006, 1007, 1008, 1009, 2000, 2001, 2002, 2003,
                                            2004, 2005, 2006, 2007}));
}

TEST(CutIntoEpochs, AgreesWithThePlainVersion) {
  for (const int32_t length : modelLengths)
    for (const std::size_t count : {2, 3, 9}) {
      const BeatTimeBase base = evenTimeBase(count, length);
      const Matrix beats = noiseMatrix(count, static_cast<std::size_t>(length), 3);
      EXPECT_EQ(matrixOf(epochsOf(base, beats)), literalEpochs(beats, literalOf(base)))
          << length << " " << count;
    }
}

TEST(CutIntoEpochs, GivesTheSameEpochsInAnyOrderOfTheBeats) {
  const BeatTimeBase base = evenTimeBase(5, 101);
  const Matrix beats = noiseMatrix(5, 101, 4);
  RowMatrix epochs(4, static_cast<std::size_t>(base.epochLength()));
  for (const std::size_t i : {3, 0, 4, 2, 1}) cutIntoEpochs(base, i, beats[i], epochs);
  EXPECT_EQ(matrixOf(epochs), matrixOf(epochsOf(base, beats)));
}

TEST(ReassembleBeat, HasTheBitsOfThePlainVersion) {
  for (const int32_t length : modelLengths)
    for (const std::size_t count : {2, 3, 9}) {
      const BeatTimeBase base = evenTimeBase(count, length);
      const Matrix beats = noiseMatrix(count, static_cast<std::size_t>(length), 5);
      const Matrix epochs = noiseMatrix(count - 1, static_cast<std::size_t>(base.epochLength()), 6);
      const Matrix actual = reassembled(base, beats, epochs);
      const Matrix literal = literalReassembledBeats(beats, epochs, literalOf(base));
      for (std::size_t i = 0; i < count; ++i)
        ASSERT_TRUE(sameBits(actual[i], literal[i])) << length << " " << i;
    }
}

TEST(ReassembleBeat, FadesFromOneEpochToTheNext) {
  const BeatTimeBase base = evenTimeBase(3, 11);
  const Matrix epochs = {std::vector<double>(15, 4.0), std::vector<double>(15, 8.0)};
  const Matrix beats = reassembled(base, Matrix(3, std::vector<double>(11, 0.0)), epochs);
  EXPECT_EQ(beats[0], (std::vector<double>{0, 0, 0, 0, 1, 2, 3, 4, 4, 4, 4}));
  EXPECT_EQ(beats[1], (std::vector<double>{4, 4, 4, 4, 5, 6, 7, 8, 8, 8, 8}));
  EXPECT_EQ(beats[2], (std::vector<double>{8, 8, 8, 8, 6, 4, 2, 0, 0, 0, 0}));
}

TEST(ReassembleBeat, KeepsTheDataInTheFirstPartOfTheFirstAndTheLastPartOfTheLastBeat) {
  const BeatTimeBase base = evenTimeBase(3, 101);
  const Matrix data = noiseMatrix(3, 101, 7);
  const Matrix epochs(2, std::vector<double>(static_cast<std::size_t>(base.epochLength()), 100.0));
  const Matrix beats = reassembled(base, data, epochs);
  const auto half = static_cast<std::size_t>(base.epochHalfLength);
  const std::size_t fadeStart = 101 - half - 1;
  for (std::size_t j = 0; j < 101; ++j) {
    EXPECT_EQ(beats[0][j] == data[0][j], j <= fadeStart) << j;
    EXPECT_EQ(beats[2][j] == data[2][j], j >= half) << j;
    EXPECT_NEAR(beats[1][j], 100.0, 1e-12);
  }
}

TEST(ReassembleBeat, TakesNothingFromDataThatAreReplaced) {
  const BeatTimeBase base = evenTimeBase(3, 101);
  const Matrix epochs = noiseMatrix(2, static_cast<std::size_t>(base.epochLength()), 8);
  const auto half = static_cast<std::size_t>(base.epochHalfLength);
  Matrix data(3, std::vector<double>(101, std::nan("")));
  for (std::size_t j = 0; j < half; ++j) data[0][j] = 1.0;
  for (std::size_t j = 101 - half; j < 101; ++j) data[2][j] = 1.0;
  for (const std::vector<double>& beat : reassembled(base, data, epochs))
    for (const double value : beat) EXPECT_TRUE(std::isfinite(value));
}

TEST(ReassembleBeat, RestoresTheBeatsFromTheirOwnEpochs) {
  for (const int32_t length : modelLengths) {
    const BeatTimeBase base = evenTimeBase(4, length);
    const Matrix beats = namedBeats(4, length);
    const Matrix again = reassembled(base, beats, matrixOf(epochsOf(base, beats)));
    for (std::size_t i = 0; i < 4; ++i)
      for (std::size_t j = 0; j < beats[i].size(); ++j) {
        // The last value is the junction itself, which the epoch takes from the next beat.
        const bool junction = i < 3 && j + 1 == beats[i].size();
        EXPECT_NEAR(again[i][j], junction ? beats[i + 1][0] : beats[i][j], 1e-9);
      }
  }
}

/// `length` samples in memory that ends with them.
std::vector<double> writtenBack(const BeatTimeBase& base, double a, const Matrix& beats,
                                const std::vector<double>& series) {
  EdgedArray samples(series, 0);
  for (std::size_t i = 0; i < beats.size(); ++i)
    writeBeatBack(base, i, a, beats[i], samples.data(), static_cast<int64_t>(series.size()));
  return samples.values();
}

std::vector<double> literallyWrittenBack(const BeatTimeBase& base, double a, const Matrix& beats,
                                         std::vector<double> series) {
  literalWriteBack(series, base.pulsePositions, literalOf(base), a, beats);
  return series;
}

double largestDifference(const std::vector<double>& a, const std::vector<double>& b) {
  double largest = 0;
  for (std::size_t i = 0; i < a.size(); ++i) largest = std::max(largest, std::fabs(a[i] - b[i]));
  return largest;
}

TEST(WriteBeatBack, AgreesWithThePlainVersion) {
  for (unsigned seed = 1; seed <= 12; ++seed) {
    std::vector<double> intervals = variedIntervals(12, seed);
    if (seed % 3 == 0)
      for (double& interval : intervals) interval += 0.3;
    const BeatTimeBase base = makeBeatTimeBase(positionsOf(7, intervals), 245);
    const std::vector<double> series = noise(static_cast<std::size_t>(base.pulsePositions.back()) + 20, seed);
    const Matrix beats = noiseMatrix(12, static_cast<std::size_t>(base.modelLength), seed);
    const double range = 1 - 2 * base.warpMargin;
    for (const double part : {0.01, 0.3, 0.5, 0.8, 0.99}) {
      const double a = base.warpMargin + part * range;
      EXPECT_LT(largestDifference(writtenBack(base, a, beats, series),
                                  literallyWrittenBack(base, a, beats, series)),
                1e-9)
          << seed << " " << part;
    }
  }
}

TEST(WriteBeatBack, AgreesWithThePlainVersionForModelsOfAnyLength) {
  for (const int32_t length : modelLengths) {
    const BeatTimeBase base = timeBaseWith(250, 0.1, length, positionsOf(5, {250, 205, 287, 260, 400}));
    const Matrix beats = noiseMatrix(5, static_cast<std::size_t>(length), 8);
    const std::vector<double> series(1500, 77.0);
    EXPECT_LT(largestDifference(writtenBack(base, 0.4, beats, series),
                                literallyWrittenBack(base, 0.4, beats, series)),
              1e-9)
        << length;
  }
}

TEST(WriteBeatBack, AgreesWithThePlainVersionForEqualIntervalsWhereTheWarpIsFlatAtTheBend) {
  const BeatTimeBase base = makeBeatTimeBase(positionsOf(5, {250, 250, 250, 250}), 245);
  ASSERT_EQ(base.warpMargin, 0.0);
  const Matrix beats = noiseMatrix(4, static_cast<std::size_t>(base.modelLength), 8);
  const std::vector<double> series(1100, 77.0);
  for (const double a : {0.001, 0.25, 0.5, 0.73})
    EXPECT_LT(
        largestDifference(writtenBack(base, a, beats, series), literallyWrittenBack(base, a, beats, series)),
        1e-9)
        << a;
}

TEST(WriteBeatBack, UndoesTheResampling) {
  // A wave slow enough to be read twice between its samples.
  const std::vector<double> positions = positionsOf(0, variedIntervals(20, 6));
  const BeatTimeBase base = makeBeatTimeBase(positions, 245);
  const auto length = static_cast<int64_t>(positions.back()) + 1;
  std::vector<double> series;
  for (int64_t i = 0; i < length; ++i) series.push_back(std::sin(0.05 * static_cast<double>(i)));
  series.push_back(0.0);
  for (const double a : {0.2, 0.5, 0.8}) {
    const WarpTable table = makeWarpTable(a, base);
    Matrix beats(20, std::vector<double>(static_cast<std::size_t>(base.modelLength)));
    for (std::size_t i = 0; i < 20; ++i)
      resampleInterval(series.data(), length, base, table, i, beats[i].data());
    const std::vector<double> again = writtenBack(base, a, beats, series);
    EXPECT_LT(largestDifference(again, series), 4 * 0.05 * 0.05 / 8) << a;
  }
}

TEST(WriteBeatBack, RestoresARampOverAnIntervalOfTheMedianLengthWhateverTheParameter) {
  for (const double a : {0.1001, 0.25, 0.5, 0.75, 0.8999}) {
    const BeatTimeBase base = evenTimeBase(1, 251);
    Matrix ramp(1);
    for (int j = 0; j < 251; ++j) ramp[0].push_back(j);
    const std::vector<double> series = writtenBack(base, a, ramp, std::vector<double>(300, -1.0));
    for (std::size_t i = 0; i < 300; ++i)
      EXPECT_NEAR(series[i], i < 20 || i >= 270 ? -1.0 : static_cast<double>(i) - 20, 1e-7) << a;
  }
}

TEST(WriteBeatBack, WritesEverySampleOfTheIntervalAndNoOther) {
  const std::vector<double> positions = {100, 350, 590};
  const BeatTimeBase base = timeBaseWith(245, 0.02, 601, positions);
  const std::vector<double> series = noise(800, 2);
  for (const double a : {0.021, 0.4, 0.979}) {
    const std::vector<double> written =
        writtenBack(base, a, Matrix(2, std::vector<double>(601, 7.0)), series);
    for (std::size_t i = 0; i < series.size(); ++i) {
      if (i < 100 || i >= 590) {
        EXPECT_EQ(written[i], series[i]);
      } else {
        EXPECT_NEAR(written[i], 7.0, 1e-9);
      }
    }
  }
}

TEST(WriteBeatBack, WritesNothingBehindAnIntervalWhoseLastFractionOfASampleIsCutOff) {
  // The shortest interval lasts 200.99 samples, 200 of which count: for the largest parameters the bend lies
  // behind them.
  const std::vector<double> positions = {20, 270, 520, 720.99};
  const BeatTimeBase base = timeBaseWith(250, 0.5 * (1 - 200.99 / 250), 601, positions);
  const std::vector<double> series(800, 1.0);
  const std::vector<double> written =
      writtenBack(base, 1 - base.warpMargin - 0.001, Matrix(3, std::vector<double>(601, 7.0)), series);
  for (std::size_t i = 0; i < 800; ++i) EXPECT_NEAR(written[i], i < 20 || i >= 720 ? 1.0 : 7.0, 1e-9) << i;
}

TEST(WriteBeatBack, LeavesOutSamplesThatAreNotInTheSeries) {
  const Matrix beats(3, std::vector<double>(601, 7.0));
  for (const std::vector<double>& positions : {std::vector<double>{-20, 230, 480, 730},
                                               {-260, -10, 240, 490},
                                               {380, 630, 880, 1130},
                                               {-900, -650, 399, 640}}) {
    const BeatTimeBase base = timeBaseWith(250, 0.02, 601, positions);
    const std::vector<double> written = writtenBack(base, 0.4, beats, std::vector<double>(400, 1.0));
    for (std::size_t i = 0; i < 400; ++i) {
      const double place = static_cast<double>(i);
      EXPECT_NEAR(written[i], place >= positions.front() && place < positions.back() ? 7.0 : 1.0, 1e-9) << i;
    }
  }
}

TEST(WriteBeatBack, WritesOnlyItsOwnSamplesOfAnIntervalThatIsTooShortForTheMargin) {
  for (const double a : {0.1, 0.5, 0.9}) {
    const BeatTimeBase base = timeBaseWith(250, 0.1, 101, {300, 400});
    const std::vector<double> written =
        writtenBack(base, a, Matrix(1, std::vector<double>(101, 7.0)), std::vector<double>(700, 1.0));
    for (std::size_t i = 0; i < 700; ++i) EXPECT_NEAR(written[i], i < 300 || i >= 400 ? 1.0 : 7.0, 1e-9) << i;
  }
}

TEST(WriteBeatBack, TakesPlacesOutsideTheBeatAtItsEnds) {
  // Parameters that no fit leads to: the bend lies behind the interval's end, or in front of its start.
  const BeatTimeBase base = timeBaseWith(250, 0.1, 101, {3, 303});
  Matrix ramp(1);
  for (int j = 0; j < 101; ++j) ramp[0].push_back(j + 5);
  const std::vector<double> late = writtenBack(base, 1.3, ramp, std::vector<double>(310, -1.0));
  const std::vector<double> early = writtenBack(base, -0.3, ramp, std::vector<double>(310, -1.0));
  for (std::size_t i = 3; i < 303; ++i) {
    EXPECT_GE(std::min(early[i], late[i]), 5.0) << i;
    EXPECT_LE(std::max(early[i], late[i]), 105.0) << i;
  }
  EXPECT_EQ(*std::max_element(late.begin(), late.end()), 105.0);
  EXPECT_EQ(*std::min_element(early.begin() + 3, early.begin() + 303), 5.0);
}

TEST(WriteBeatBack, ReadsTheBeatNowhereOutsideItself) {
  // From intervals of no and one sample to one that is many times the median.
  for (const double interval : {0.0, 1.0, 2.0, 50.0, 250.0, 251.0, 20000.0})
    for (const double margin : {0.0, 0.1, 0.5})
      for (const double a : {margin, 0.5, 1 - margin})
        for (const int32_t length : {3, 101}) {
          const BeatTimeBase base = timeBaseWith(250, margin, length, {3, 3 + interval});
          const std::vector<double> beat(static_cast<std::size_t>(length), 7.0);
          EdgedArray samples(static_cast<std::size_t>(interval) + 10, 0, 7.0);
          writeBeatBack(base, 0, a, beat, samples.data(), static_cast<int64_t>(samples.size()));
          for (const double value : samples.values())
            ASSERT_NEAR(value, 7.0, 1e-9) << interval << " " << margin;
        }
}

} // namespace
} // namespace emeg
