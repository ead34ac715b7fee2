#include "dsp/RealFFT.h"

#include "dsp/FFTTables.h"
#include "dsp/FFTWorkspace.h"
#include "tests/dsp/reference/SlowFourier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace emeg {
namespace {

using reference::Wide;

std::size_t sizeOf(int32_t log2n) {
  return std::size_t{1} << log2n;
}

std::vector<std::vector<double>> realInputs(std::size_t n) {
  std::vector<double> impulse(n);
  impulse[3] = 1;
  std::vector<double> constant(n, 2.5);
  std::vector<double> alternating(n);
  std::vector<double> single(n);
  const std::vector<Wide> roots = reference::rootsOfUnity(n, 1);
  for (std::size_t j = 0; j < n; ++j) {
    alternating[j] = j % 2 == 0 ? 1 : -1;
    single[j] = static_cast<double>(roots[3 * j % n].imag());
  }
  return {impulse, constant, alternating, single, reference::random(n, 5)};
}

class RealFFT : public testing::Test {
protected:
  FFTTables tables;
  FFTWorkspace workspace{tables};
};

TEST_F(RealFFT, ForwardAgreesWithTheDefinitionFrom16To4096Points) {
  for (int32_t log2n = 4; log2n <= 12; ++log2n)
    for (const std::vector<double>& input : realInputs(sizeOf(log2n))) {
      std::vector<double> spectrum = input;
      realFFTForward(spectrum.data(), log2n, workspace);
      EXPECT_LT(reference::relativeError(spectrum, reference::packedSpectrum(input, true)),
                reference::tolerance(log2n))
          << "2^" << log2n;
    }
}

TEST_F(RealFFT, ForwardAgreesWithTheTextbookTransformOnLongSignals) {
  for (int32_t log2n = 11; log2n <= 20; ++log2n) {
    const std::vector<double> input = reference::random(sizeOf(log2n), 6);
    std::vector<double> spectrum = input;
    realFFTForward(spectrum.data(), log2n, workspace);
    EXPECT_LT(reference::relativeError(spectrum, reference::packedSpectrum(input, false)),
              reference::tolerance(log2n))
        << "2^" << log2n;
  }
}

TEST_F(RealFFT, ComplexTransformsAgreeWithTheTextbookTransformInBothDirections) {
  for (int32_t log2m = 3; log2m <= 17; ++log2m) {
    const std::vector<double> input = reference::random(2 * sizeOf(log2m), 7);
    std::vector<double> forward = input;
    complexFFTForward(forward.data(), log2m, workspace);
    EXPECT_LT(reference::relativeError(forward, reference::recursiveFFT(reference::asComplex(input), -1)),
              reference::tolerance(log2m))
        << "2^" << log2m;
    std::vector<double> inverse = input;
    complexFFTInverse(inverse.data(), log2m, workspace);
    EXPECT_LT(reference::relativeError(inverse, reference::recursiveFFT(reference::asComplex(input), 1)),
              reference::tolerance(log2m))
        << "2^" << log2m;
  }
}

TEST_F(RealFFT, ForwardAndInverseGiveHalfTheLengthTimesTheSignal) {
  for (int32_t log2n = 4; log2n <= 20; ++log2n) {
    const std::vector<double> input = reference::random(sizeOf(log2n), 8);
    std::vector<double> signal = input;
    realFFTForward(signal.data(), log2n, workspace);
    realFFTInverse(signal.data(), log2n, workspace);
    const double half = static_cast<double>(sizeOf(log2n) / 2);
    double worst = 0;
    for (std::size_t j = 0; j < input.size(); ++j)
      worst = std::fmax(worst, std::fabs(signal[j] / half - input[j]));
    EXPECT_LT(worst, 1e-14) << "2^" << log2n;
  }
}

TEST_F(RealFFT, AConstantHasOnlyADCTerm) {
  for (int32_t log2n = 4; log2n <= 16; ++log2n) {
    std::vector<double> signal(sizeOf(log2n), 0.75);
    realFFTForward(signal.data(), log2n, workspace);
    EXPECT_EQ(signal[0], 0.75 * static_cast<double>(signal.size()));
    for (std::size_t k = 1; k < signal.size(); ++k) ASSERT_EQ(signal[k], 0.0) << k << " of 2^" << log2n;
  }
}

TEST_F(RealFFT, AnAlternatingSignalHasOnlyANyquistTerm) {
  for (int32_t log2n = 4; log2n <= 16; ++log2n) {
    std::vector<double> signal(sizeOf(log2n));
    for (std::size_t j = 0; j < signal.size(); ++j) signal[j] = j % 2 == 0 ? 1 : -1;
    realFFTForward(signal.data(), log2n, workspace);
    EXPECT_EQ(signal[1], static_cast<double>(signal.size()));
    signal[1] = 0;
    for (std::size_t k = 0; k < signal.size(); ++k) ASSERT_EQ(signal[k], 0.0) << k << " of 2^" << log2n;
  }
}

TEST_F(RealFFT, AShortTransformAfterALongOneGivesTheSameAsWithItsOwnTable) {
  for (int32_t log2n = 3; log2n <= 14; ++log2n) {
    const std::vector<double> input = reference::random(sizeOf(log2n), 9);
    FFTTables fresh;
    FFTWorkspace first(fresh);
    std::vector<double> own = input;
    realFFTForward(own.data(), log2n, first);
    EXPECT_EQ(fresh.cosinePeriod(), int64_t{1} << log2n);
    std::vector<double> longer = reference::random(sizeOf(17), 10);
    realFFTForward(longer.data(), 17, first);
    EXPECT_EQ(fresh.cosinePeriod(), int64_t{1} << 17);
    std::vector<double> shared = input;
    realFFTForward(shared.data(), log2n, first);
    EXPECT_EQ(fresh.cosinePeriod(), int64_t{1} << 17);
    EXPECT_EQ(own, shared) << "2^" << log2n;
  }
}

TEST_F(RealFFT, AnInverseBeforeAnyForwardTransformMakesItsTables) {
  for (int32_t log2n = 3; log2n <= 13; ++log2n) {
    const std::vector<double> input = reference::random(sizeOf(log2n), 11);
    FFTTables fresh;
    FFTWorkspace own(fresh);
    std::vector<double> first = input;
    realFFTInverse(first.data(), log2n, own);
    std::vector<double> prepared = input;
    realFFTForward(prepared.data(), log2n, workspace);
    prepared = input;
    realFFTInverse(prepared.data(), log2n, workspace);
    EXPECT_EQ(first, prepared) << "2^" << log2n;
  }
}

TEST_F(RealFFT, AWorkspaceThatWasMovedFromMayBeUsedAgain) {
  for (const int32_t log2n : {6, 12}) {
    const std::vector<double> input = reference::random(sizeOf(log2n), 12);
    std::vector<double> before = input;
    realFFTForward(before.data(), log2n, workspace);
    FFTWorkspace moved = std::move(workspace);
    std::vector<double> there = input;
    realFFTForward(there.data(), log2n, moved);
    std::vector<double> here = input;
    realFFTForward(here.data(), log2n, workspace);
    EXPECT_EQ(there, before) << "2^" << log2n;
    EXPECT_EQ(here, before) << "2^" << log2n;
  }
}

TEST_F(RealFFT, EightPointsOnlyPassTheSplitStep) {
  const std::vector<double> x = reference::random(8, 13);
  const double c = 0.7071067811865476;
  std::vector<double> forward = x;
  realFFTForward(forward.data(), 3, workspace);
  const double evenRe = (x[2] + x[6]) / 2, evenIm = (x[3] - x[7]) / 2;
  const double oddRe = (x[3] + x[7]) / 2, oddIm = (x[6] - x[2]) / 2;
  const std::vector<double> expected = {
      x[0] + x[1], x[0] - x[1], evenRe + c * oddRe + c * oddIm, evenIm + c * oddIm - c * oddRe,
      x[4],        -x[5],       evenRe - c * oddRe - c * oddIm, c * oddIm - c * oddRe - evenIm};
  for (std::size_t k = 0; k < 8; ++k) EXPECT_NEAR(forward[k], expected[k], 1e-15) << k;

  // The split step and its inverse undo each other: no factor of n/2 without the complex stage.
  realFFTInverse(forward.data(), 3, workspace);
  for (std::size_t k = 0; k < 8; ++k) EXPECT_NEAR(forward[k], x[k], 1e-15) << k;
}

TEST_F(RealFFT, AFourPointComplexStageLeavesItsDataUnchanged) {
  std::vector<double> points = reference::random(8, 14);
  const std::vector<double> before = points;
  complexFFTForward(points.data(), 2, workspace);
  complexFFTInverse(points.data(), 2, workspace);
  EXPECT_EQ(points, before);
}

TEST_F(RealFFT, SizesThatAreNotOfferedLeaveTheDataAsTheyAre) {
  std::vector<double> values = reference::random(8, 15);
  const std::vector<double> before = values;
  for (const int32_t size :
       {-1, 0, 1, 2, 32, 33, 100, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
    realFFTForward(values.data(), size, workspace);
    realFFTInverse(values.data(), size, workspace);
    complexFFTForward(values.data(), size, workspace);
    complexFFTInverse(values.data(), size, workspace);
  }
  EXPECT_EQ(values, before);
  EXPECT_EQ(tables.cosinePeriod(), 0);
}

TEST_F(RealFFT, TransformsTouchNothingBehindTheirData) {
  // The vectors are exactly as long as the data: a sanitizer sees any access behind them. The guard values
  // show it without one.
  for (int32_t log2n = 3; log2n <= 13; ++log2n) {
    std::vector<double> guarded = reference::random(sizeOf(log2n) + 16, 16);
    const std::vector<double> before = guarded;
    realFFTForward(guarded.data() + 8, log2n, workspace);
    realFFTInverse(guarded.data() + 8, log2n, workspace);
    for (std::size_t j = 0; j < 8; ++j) {
      EXPECT_EQ(guarded[j], before[j]);
      EXPECT_EQ(guarded[sizeOf(log2n) + 8 + j], before[sizeOf(log2n) + 8 + j]);
    }
  }
}

TEST_F(RealFFT, ValuesThatAreNotNumbersDoNoHarm) {
  std::vector<double> signal = reference::random(sizeOf(12), 17);
  signal[100] = std::numeric_limits<double>::quiet_NaN();
  signal[200] = std::numeric_limits<double>::infinity();
  realFFTForward(signal.data(), 12, workspace);
  EXPECT_TRUE(std::isnan(signal[5]));
}

} // namespace
} // namespace emeg
