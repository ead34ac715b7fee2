#include "dsp/FilterFFT.h"

#include "dsp/FFTTables.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/RealFFT.h"
#include "tests/dsp/SimdLevelTests.h"
#include "tests/dsp/reference/SlowFourier.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace emeg {
namespace {

using reference::Wide;

std::size_t sizeOf(int32_t log2n) {
  return std::size_t{1} << log2n;
}

/// A gain of its own for every bin, some of them 0 or negative: a gain in the wrong place shows.
std::vector<float> unevenGains(int32_t log2n) {
  std::vector<float> gains(sizeOf(log2n));
  const std::vector<double> values = reference::random(gains.size(), 1);
  gains[0] = 0.75F;
  gains[1] = -1.5F;
  for (std::size_t k = 2; k < gains.size(); k += 2)
    gains[k] = gains[k + 1] = k % 22 == 0 ? 0.0F : static_cast<float>(values[k]);
  return gains;
}

std::vector<double> filtered(std::vector<double> signal, const BinGains& gains) {
  FFTWorkspace workspace;
  filterFFT(signal.data(), gains, workspace);
  return signal;
}

std::vector<double> filteredByPlainCalls(std::vector<double> signal, const std::vector<float>& gains,
                                         int32_t log2n) {
  FFTWorkspace workspace;
  realFFTForward(signal.data(), log2n, workspace);
  for (std::size_t k = 0; k < signal.size(); ++k) signal[k] *= static_cast<double>(gains[k]);
  realFFTInverse(signal.data(), log2n, workspace);
  return signal;
}

std::vector<Wide> asReference(const std::vector<double>& values) {
  return reference::asComplex(values);
}

class FilterFFTAtEveryLevel : public AtEveryLevel {
protected:
  FFTTables tables;
  FFTWorkspace workspace{tables};
};

TEST_P(FilterFFTAtEveryLevel, EqualsThePlainCallsToRounding) {
  for (int32_t log2n = 4; log2n <= 19; ++log2n) {
    const std::vector<float> gains = unevenGains(log2n);
    const std::vector<double> input = reference::random(sizeOf(log2n), 2);
    EXPECT_LT(reference::relativeError(filtered(input, BinGains(gains.data(), log2n, GetParam())),
                                       asReference(filteredByPlainCalls(input, gains, log2n))),
              reference::tolerance(log2n))
        << "2^" << log2n;
  }
}

TEST_P(FilterFFTAtEveryLevel, IsTheDefinitionsMultiplicationOfTheSpectrum) {
  for (const int32_t log2n : {10, 11, 12}) {
    const std::size_t n = sizeOf(log2n);
    const std::vector<float> gains = unevenGains(log2n);
    const std::vector<double> input = reference::random(n, 3);
    std::vector<Wide> spectrum = reference::directDFT(std::vector<Wide>(input.begin(), input.end()), -1);
    for (std::size_t k = 0; k < n; ++k) {
      const std::size_t bin = std::min(k, n - k);
      spectrum[k] *= static_cast<long double>(bin == 0 ? gains[0] : bin == n / 2 ? gains[1] : gains[2 * bin]);
    }
    std::vector<double> expected;
    for (const Wide& value : reference::directDFT(spectrum, 1))
      expected.push_back(static_cast<double>(value.real() / 2));
    EXPECT_LT(reference::relativeError(filtered(input, BinGains(gains.data(), log2n, GetParam())),
                                       asReference(expected)),
              reference::tolerance(log2n))
        << "2^" << log2n;
  }
}

TEST_P(FilterFFTAtEveryLevel, GivesEverySingleBinItsOwnGain) {
  const int32_t log2n = 11;
  const std::size_t n = sizeOf(log2n);
  const std::vector<float> gains = unevenGains(log2n);
  const BinGains binGains(gains.data(), log2n, GetParam());
  const std::vector<Wide> roots = reference::rootsOfUnity(n, 1);
  for (std::size_t bin = 0; bin <= n / 2; ++bin) {
    std::vector<double> wave(n);
    for (std::size_t j = 0; j < n; ++j)
      wave[j] = static_cast<double>(roots[j * bin % n].real() + roots[j * bin % n].imag());
    const double gain = static_cast<double>(bin == 0 ? gains[0] : bin == n / 2 ? gains[1] : gains[2 * bin]);
    const std::vector<double> result = filtered(wave, binGains);
    double worst = 0;
    for (std::size_t j = 0; j < n; ++j)
      worst = std::max(worst, std::fabs(result[j] - gain * wave[j] * static_cast<double>(n / 2)));
    ASSERT_LT(worst, 1e-11 * static_cast<double>(n / 2)) << "bin " << bin;
  }
}

TEST_P(FilterFFTAtEveryLevel, HasTheBitsOfTheBaseline) {
  for (int32_t log2n = 11; log2n <= 15; ++log2n) {
    const std::vector<float> gains = unevenGains(log2n);
    const std::vector<double> input = unevenNoise(sizeOf(log2n), 4);
    EXPECT_TRUE(sameBits(filtered(input, BinGains(gains.data(), log2n, GetParam())),
                         filtered(input, BinGains(gains.data(), log2n, SimdLevel::Baseline))))
        << "2^" << log2n;
  }
}

TEST_P(FilterFFTAtEveryLevel, TouchesNothingOutsideTheSignalWhateverItsAlignment) {
  for (int32_t log2n = 10; log2n <= 13; ++log2n)
    for (const std::size_t shift : {std::size_t{0}, std::size_t{1}, std::size_t{5}}) {
      const std::vector<double> input = reference::random(sizeOf(log2n), 5);
      const std::vector<float> gains = unevenGains(log2n);
      const BinGains binGains(gains.data(), log2n, GetParam());
      EdgedArray signal(input, shift);
      filterFFT(signal.data(), binGains, workspace);
      EXPECT_EQ(signal.values(), filtered(input, binGains));
    }
}

TEST_P(FilterFFTAtEveryLevel, SpreadsAValueThatIsNoNumberOverTheSignalAndNoFurther) {
  const int32_t log2n = 12;
  const BinGains gains(unevenGains(log2n).data(), log2n, GetParam());
  std::vector<double> bad = reference::random(sizeOf(log2n), 6);
  bad[77] = std::numeric_limits<double>::quiet_NaN();
  filterFFT(bad.data(), gains, workspace);
  EXPECT_TRUE(std::isnan(bad[0]));
  // Nothing of what is left in the workspace may reach the next signal.
  const std::vector<double> input = reference::random(sizeOf(log2n), 7);
  std::vector<double> after = input;
  filterFFT(after.data(), gains, workspace);
  EXPECT_EQ(after, filtered(input, gains));
}

INSTANTIATE_TEST_SUITE_P(AllLevels, FilterFFTAtEveryLevel, testing::ValuesIn(availableSimdLevels()),
                         AtEveryLevel::name);

TEST(FilterFFT, GainsOfNoLengthLeaveTheSignalAsItIs) {
  const std::vector<float> gains(8, 2.0F);
  std::vector<double> signal = reference::random(8, 8);
  const std::vector<double> before = signal;
  FFTWorkspace workspace;
  filterFFT(signal.data(), BinGains{}, workspace);
  for (const int32_t log2n : {std::numeric_limits<int32_t>::min(), -1, 0, 1, 2, 3, 32, 33}) {
    const BinGains none(gains.data(), log2n);
    EXPECT_EQ(none.log2n(), 0);
    filterFFT(signal.data(), none, workspace);
  }
  EXPECT_EQ(signal, before);
}

TEST(FilterFFT, ALongSignalsGainsTakeOneFloatPerBinAndTwoRowsMore) {
  const int32_t log2n = 16;
  const BinGains gains(unevenGains(log2n).data(), log2n);
  EXPECT_EQ(gains.ofPairs().size(), sizeOf(log2n) / 2);
  EXPECT_EQ(gains.ofFirstRow().size() + gains.ofMiddleRow().size(), 2 * std::size_t{128});
  EXPECT_TRUE(gains.packed().empty());
}

} // namespace
} // namespace emeg
