#include "dsp/FFTKernels.h"

#include "dsp/FFTTables.h"
#include "tests/dsp/reference/SlowFourier.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace emeg {
namespace {

using reference::Wide;

struct Kernel {
  const char* name;
  void (*run)(double*);
  int32_t log2m;
  int sign;
};

void PrintTo(const Kernel& kernel, std::ostream* out) {
  *out << kernel.name;
}

std::string nameOf(const testing::TestParamInfo<Kernel>& info) {
  return info.param.name;
}

/// Impulses at every place, a constant, an alternating signal, single bins and noise.
std::vector<std::vector<double>> inputs(std::size_t m) {
  std::vector<std::vector<double>> result;
  for (std::size_t place = 0; place < m; place += (m > 64 ? m / 8 - 1 : 1)) {
    result.emplace_back(2 * m, 0.0);
    result.back()[2 * place] = 1;
    result.back()[2 * place + 1] = -0.5;
  }
  std::vector<double> constant(2 * m);
  std::vector<double> alternating(2 * m);
  for (std::size_t j = 0; j < m; ++j) {
    constant[2 * j] = 3;
    constant[2 * j + 1] = 2;
    alternating[2 * j] = j % 2 == 0 ? 1 : -1;
  }
  result.push_back(constant);
  result.push_back(alternating);
  const std::vector<Wide> roots = reference::rootsOfUnity(m, 1);
  for (const std::size_t bin : {std::size_t{1}, m / 4, m / 2 - 1, m - 1}) {
    std::vector<double> single(2 * m);
    for (std::size_t j = 0; j < m; ++j) {
      single[2 * j] = static_cast<double>(roots[j * bin % m].real());
      single[2 * j + 1] = static_cast<double>(roots[j * bin % m].imag());
    }
    result.push_back(single);
  }
  for (uint32_t seed = 1; seed <= 3; ++seed) result.push_back(reference::random(2 * m, seed));
  return result;
}

class WholeKernel : public testing::TestWithParam<Kernel> {};

TEST_P(WholeKernel, AgreesWithTheDefinition) {
  const Kernel kernel = GetParam();
  for (const std::vector<double>& input : inputs(std::size_t{1} << kernel.log2m)) {
    std::vector<double> points = input;
    kernel.run(points.data());
    const std::vector<Wide> expected = reference::directDFT(reference::asComplex(input), kernel.sign);
    EXPECT_LT(reference::relativeError(points, expected), reference::tolerance(kernel.log2m));
  }
}

INSTANTIATE_TEST_SUITE_P(
    AllSizes, WholeKernel,
    testing::Values(Kernel{"fftForward8", fftForward8, 3, -1}, Kernel{"fftForward16", fftForward16, 4, -1},
                    Kernel{"fftForward32", fftForward32, 5, -1}, Kernel{"fftForward64", fftForward64, 6, -1},
                    Kernel{"fftForward128", fftForward128, 7, -1},
                    Kernel{"fftForward256", fftForward256, 8, -1},
                    Kernel{"fftForward512", fftForward512, 9, -1}, Kernel{"fftInverse8", fftInverse8, 3, 1},
                    Kernel{"fftInverse16", fftInverse16, 4, 1}, Kernel{"fftInverse32", fftInverse32, 5, 1},
                    Kernel{"fftInverse64", fftInverse64, 6, 1}, Kernel{"fftInverse128", fftInverse128, 7, 1},
                    Kernel{"fftInverse256", fftInverse256, 8, 1},
                    Kernel{"fftInverse512", fftInverse512, 9, 1}),
    nameOf);

/// A leaf block, and by how many places its input is delayed.
struct Leaf {
  Kernel kernel;
  std::size_t delay;
};

std::string leafName(const testing::TestParamInfo<Leaf>& info) {
  return info.param.kernel.name;
}

class LeafBlock : public testing::TestWithParam<Leaf> {};

TEST_P(LeafBlock, TransformsBitReversedInputOfItsKind) {
  const auto [kernel, delay] = GetParam();
  const std::size_t m = std::size_t{1} << kernel.log2m;
  const std::vector<uint32_t>& bitReversals = fftTables().bitReversalTable(kernel.log2m);
  for (const std::vector<double>& input : inputs(m)) {
    std::vector<double> points(2 * m);
    for (std::size_t j = 0; j < m; ++j) {
      const std::size_t place = bitReversals[(j + m - delay) % m];
      points[place] = input[2 * j];
      points[place + 1] = input[2 * j + 1];
    }
    kernel.run(points.data());
    const std::vector<Wide> expected = reference::directDFT(reference::asComplex(input), kernel.sign);
    EXPECT_LT(reference::relativeError(points, expected), reference::tolerance(kernel.log2m));
  }
}

INSTANTIATE_TEST_SUITE_P(AllSizes, LeafBlock,
                         testing::Values(Leaf{{"fftForwardBlock16A", fftForwardBlock16A, 4, -1}, 0},
                                         Leaf{{"fftForwardBlock16B", fftForwardBlock16B, 4, -1}, 1},
                                         Leaf{{"fftForwardBlock32A", fftForwardBlock32A, 5, -1}, 0},
                                         Leaf{{"fftForwardBlock32B", fftForwardBlock32B, 5, -1}, 1},
                                         Leaf{{"fftForwardBlock64A", fftForwardBlock64A, 6, -1}, 0},
                                         Leaf{{"fftForwardBlock64B", fftForwardBlock64B, 6, -1}, 1},
                                         Leaf{{"fftInverseBlock16A", fftInverseBlock16A, 4, 1}, 0},
                                         Leaf{{"fftInverseBlock16B", fftInverseBlock16B, 4, 1}, 1},
                                         Leaf{{"fftInverseBlock32A", fftInverseBlock32A, 5, 1}, 0},
                                         Leaf{{"fftInverseBlock32B", fftInverseBlock32B, 5, 1}, 1},
                                         Leaf{{"fftInverseBlock64A", fftInverseBlock64A, 6, 1}, 0},
                                         Leaf{{"fftInverseBlock64B", fftInverseBlock64B, 6, 1}, 1}),
                         leafName);

TEST(FFTKernels, FourPointsAreLeftAsTheyAre) {
  std::vector<double> points = reference::random(8, 4);
  const std::vector<double> before = points;
  fft4(points.data());
  EXPECT_EQ(points, before);
}

} // namespace
} // namespace emeg
