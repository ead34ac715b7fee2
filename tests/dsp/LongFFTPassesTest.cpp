#include "dsp/LongFFTPasses.h"

#include "dsp/FFTTables.h"
#include "dsp/FFTWorkspace.h"
#include "tests/dsp/SimdLevelTests.h"
#include "tests/dsp/reference/SlowFourier.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {
namespace {

using reference::Wide;

/// Matrices that are square and ones with twice as many rows as columns, on either side of the blocks that
/// are straight-line code.
constexpr int32_t leastLog2m = FFTPlan::leastLog2m;
constexpr int32_t mostLog2m = 17;

std::vector<double> complexForward(std::vector<double> points, int32_t log2m, SimdLevel level, bool inverse) {
  FFTWorkspace workspace;
  const LongFFT fft = workspace.longFFT(log2m);
  const LongFFTPasses& passes = longFFTPasses(level);
  passes.transformColumns(fft, points.data(), inverse);
  passes.transformRows(fft, points.data(), inverse);
  passes.toNaturalOrder(fft, points.data());
  return points;
}

class LongFFTPassesAtEveryLevel : public AtEveryLevel {
protected:
  FFTTables tables;
  FFTWorkspace workspace{tables};
};

TEST_P(LongFFTPassesAtEveryLevel, GiveTheDefinitionsTransformInBothDirections) {
  const std::size_t m = std::size_t{1} << leastLog2m;
  const std::vector<double> input = reference::random(2 * m, 1);
  for (const bool inverse : {false, true})
    EXPECT_LT(reference::relativeError(complexForward(input, leastLog2m, GetParam(), inverse),
                                       reference::directDFT(reference::asComplex(input), inverse ? 1 : -1)),
              reference::tolerance(leastLog2m));
}

TEST_P(LongFFTPassesAtEveryLevel, GiveTheTextbookTransformInBothDirections) {
  for (int32_t log2m = leastLog2m; log2m <= mostLog2m; ++log2m) {
    const std::vector<double> input = reference::random(std::size_t{2} << log2m, 2);
    for (const bool inverse : {false, true})
      EXPECT_LT(
          reference::relativeError(complexForward(input, log2m, GetParam(), inverse),
                                   reference::recursiveFFT(reference::asComplex(input), inverse ? 1 : -1)),
          reference::tolerance(log2m))
          << "2^" << log2m;
  }
}

TEST_P(LongFFTPassesAtEveryLevel, TransformAnImpulseAtAnyPlaceIntoOneTurningPoint) {
  const std::size_t m = std::size_t{1} << 11;
  const std::vector<Wide> roots = reference::rootsOfUnity(m, -1);
  for (const std::size_t place :
       {std::size_t{0}, std::size_t{1}, std::size_t{7}, std::size_t{8}, std::size_t{33}, m / 2 + 1, m - 1}) {
    std::vector<double> input(2 * m);
    input[2 * place] = 1;
    std::vector<Wide> expected(m);
    for (std::size_t k = 0; k < m; ++k) expected[k] = roots[k * place % m];
    EXPECT_LT(reference::relativeError(complexForward(input, 11, GetParam(), false), expected),
              reference::tolerance(11))
        << place;
  }
}

TEST_P(LongFFTPassesAtEveryLevel, HaveTheBitsOfTheBaseline) {
  for (int32_t log2m = leastLog2m; log2m <= 14; ++log2m) {
    const std::vector<double> input = unevenNoise(std::size_t{2} << log2m, 3);
    for (const bool inverse : {false, true})
      EXPECT_TRUE(sameBits(complexForward(input, log2m, GetParam(), inverse),
                           complexForward(input, log2m, SimdLevel::Baseline, inverse)))
          << "2^" << log2m;
  }
}

TEST_P(LongFFTPassesAtEveryLevel, SplitAndMergeSpectraLikeTheDefinition) {
  for (int32_t log2n = RealFFTPlan::leastLog2n; log2n <= 14; ++log2n) {
    const std::size_t m = std::size_t{1} << (log2n - 1);
    const std::vector<double> signal = reference::random(2 * m, 4);
    const std::vector<Wide> expected = reference::packedSpectrum(signal, false);

    std::vector<double> spectrum = complexForward(signal, log2n - 1, GetParam(), false);
    const std::vector<double> ofPoints = spectrum;
    longFFTPasses(GetParam()).splitSpectrum(workspace.realFFTPlan(log2n), spectrum.data());
    // DC and Nyquist are left to the caller.
    EXPECT_EQ(spectrum[0], ofPoints[0]);
    EXPECT_EQ(spectrum[1], ofPoints[1]);
    std::vector<double> whole = spectrum;
    whole[0] = ofPoints[0] + ofPoints[1];
    whole[1] = ofPoints[0] - ofPoints[1];
    EXPECT_LT(reference::relativeError(whole, expected), reference::tolerance(log2n)) << "2^" << log2n;

    longFFTPasses(GetParam()).mergeSpectrum(workspace.realFFTPlan(log2n), spectrum.data());
    EXPECT_LT(reference::relativeError(spectrum, reference::asComplex(ofPoints)), reference::tolerance(log2n))
        << "2^" << log2n;
  }
}

TEST_P(LongFFTPassesAtEveryLevel, SplitAndMergeWithTheBitsOfTheBaseline) {
  for (int32_t log2n = RealFFTPlan::leastLog2n; log2n <= 13; ++log2n) {
    std::vector<double> here = unevenNoise(std::size_t{1} << log2n, 5);
    std::vector<double> baseline = here;
    longFFTPasses(GetParam()).splitSpectrum(workspace.realFFTPlan(log2n), here.data());
    longFFTPasses(SimdLevel::Baseline).splitSpectrum(workspace.realFFTPlan(log2n), baseline.data());
    EXPECT_TRUE(sameBits(here, baseline)) << "2^" << log2n;
    longFFTPasses(GetParam()).mergeSpectrum(workspace.realFFTPlan(log2n), here.data());
    longFFTPasses(SimdLevel::Baseline).mergeSpectrum(workspace.realFFTPlan(log2n), baseline.data());
    EXPECT_TRUE(sameBits(here, baseline)) << "2^" << log2n;
  }
}

TEST_P(LongFFTPassesAtEveryLevel, TouchNothingOutsideTheirPointsWhateverTheAlignment) {
  for (int32_t log2m = leastLog2m; log2m <= 12; ++log2m)
    for (const std::size_t shift : {std::size_t{0}, std::size_t{1}, std::size_t{3}}) {
      const std::vector<double> input = reference::random(std::size_t{2} << log2m, 6);
      EdgedArray points(input, shift);
      const LongFFT fft = workspace.longFFT(log2m);
      const LongFFTPasses& passes = longFFTPasses(GetParam());
      passes.transformColumns(fft, points.data(), false);
      passes.transformRows(fft, points.data(), false);
      passes.toNaturalOrder(fft, points.data());
      EXPECT_EQ(points.values(), complexForward(input, log2m, GetParam(), false));
    }
}

INSTANTIATE_TEST_SUITE_P(AllLevels, LongFFTPassesAtEveryLevel, testing::ValuesIn(availableSimdLevels()),
                         AtEveryLevel::name);

} // namespace
} // namespace emeg
