#include "dsp/VectorKernels.h"

#include "tests/dsp/SimdLevelTests.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace emeg {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
const double notANumber = std::numeric_limits<double>::quiet_NaN();

int64_t wide(std::size_t count) {
  return static_cast<int64_t>(count);
}

/// Inputs of the sliding kernels, each as long as the kernel may read it.
struct Sliding {
  std::vector<double> s;
  std::vector<double> f;
  std::vector<double> g;
  std::vector<double> w;
  std::size_t taps;
  std::size_t count;

  Sliding(std::size_t nrOfTaps, std::size_t nrOfOutputs, double decades = 6)
      : s(unevenNoise(nrOfOutputs == 0 || nrOfOutputs + nrOfTaps == 1 ? 0 : nrOfOutputs + nrOfTaps - 1, 1,
                      decades)),
        f(unevenNoise(nrOfOutputs, 2, decades)), g(unevenNoise(nrOfTaps, 3, decades)),
        w(unevenNoise(nrOfTaps, 4, decades)), taps(nrOfTaps), count(nrOfOutputs) {}
};

enum class Kind { Dot, Sum, WeightedSquares };
constexpr std::array allKinds = {Kind::Dot, Kind::Sum, Kind::WeightedSquares};

std::vector<double> plain(Kind kind, const Sliding& in) {
  std::vector<double> out(in.count);
  for (std::size_t p = 0; p < in.count; ++p) {
    double sum = 0;
    for (std::size_t i = 0; i < in.taps; ++i) {
      if (kind == Kind::Dot) {
        sum += in.s[p + i] * in.w[i];
      } else if (kind == Kind::Sum) {
        sum += in.s[p + i];
      } else {
        const double x = in.f[p] * in.s[p + i] + in.w[i];
        sum += in.g[i] * (x * x);
      }
    }
    out[p] = sum;
  }
  return out;
}

/// Runs a kernel on arrays that end where their memory ends, over outputs that hold something else.
std::vector<double> slid(SimdLevel level, Kind kind, const Sliding& in, std::size_t shift) {
  const VectorKernels& kernels = vectorKernels(level);
  const EdgedArray s(in.s, shift);
  const EdgedArray f(in.f, (shift + 1) % 4);
  const EdgedArray g(in.g, (shift + 2) % 4);
  const EdgedArray w(in.w, (shift + 3) % 4);
  EdgedArray out(in.count, shift % 3, -77.0);
  const int64_t taps = wide(in.taps);
  const int64_t count = wide(in.count);
  if (kind == Kind::Dot) kernels.slidingDot(s.data(), w.data(), taps, count, out.data());
  if (kind == Kind::Sum) kernels.slidingSum(s.data(), taps, count, out.data());
  if (kind == Kind::WeightedSquares)
    kernels.slidingWeightedSquares(s.data(), f.data(), g.data(), w.data(), taps, count, out.data());
  return out.values();
}

class VectorKernelsTest : public AtEveryLevel {};
INSTANTIATE_TEST_SUITE_P(Simd, VectorKernelsTest, testing::ValuesIn(availableSimdLevels()),
                         AtEveryLevel::name);

TEST_P(VectorKernelsTest, SlidingSumsHaveTheBitsOfThePlainLoopForEveryCount) {
  for (const Kind kind : allKinds)
    for (const std::size_t taps : {0, 1, 2, 3, 8, 17, 64})
      for (std::size_t count = 0; count <= 70; ++count) {
        const Sliding in(taps, count);
        ASSERT_TRUE(sameBits(slid(GetParam(), kind, in, count % 8), plain(kind, in)))
            << static_cast<int>(kind) << ", " << taps << " taps, " << count << " outputs";
      }
}

TEST_P(VectorKernelsTest, SlidingSumsHaveTheBitsOfThePlainLoopForManyTapsAndOutputs) {
  for (const Kind kind : allKinds)
    for (const std::size_t taps : {1, 63, 501})
      for (const std::size_t count : {127, 128, 129, 300, 511}) {
        const Sliding in(taps, count);
        ASSERT_TRUE(sameBits(slid(GetParam(), kind, in, 1), plain(kind, in)))
            << static_cast<int>(kind) << ", " << taps << " taps, " << count << " outputs";
      }
}

TEST_P(VectorKernelsTest, SlidingSumsHaveTheSameBitsAtEveryAlignment) {
  for (const Kind kind : allKinds)
    for (std::size_t shift = 0; shift < 8; ++shift) {
      const Sliding in(19, 93);
      ASSERT_TRUE(sameBits(slid(GetParam(), kind, in, shift), plain(kind, in))) << static_cast<int>(kind);
    }
}

TEST_P(VectorKernelsTest, SlidingSumsOfNoTapsAreZero) {
  for (const Kind kind : allKinds)
    EXPECT_TRUE(sameBits(slid(GetParam(), kind, Sliding(0, 37), 0), std::vector<double>(37, 0.0)));
}

TEST_P(VectorKernelsTest, SlidingSumsOverflowAndUnderflowAsThePlainLoopDoes) {
  for (const Kind kind : allKinds) {
    const Sliding in(9, 60, 160);
    const std::vector<double> expected = plain(kind, in);
    ASSERT_TRUE(sameBits(slid(GetParam(), kind, in, 3), expected));
  }
}

TEST_P(VectorKernelsTest, SlidingSumsPassOnWhatIsNotFiniteToTheOutputsThatSeeItAlone) {
  for (const Kind kind : allKinds)
    for (const double bad : {notANumber, infinity, -infinity})
      for (std::size_t place = 0; place < 73; place += 6) {
        Sliding in(9, 65, 1);
        in.s[place] = bad;
        const std::vector<double> out = slid(GetParam(), kind, in, place % 8);
        ASSERT_TRUE(sameBits(out, plain(kind, in)));
        for (std::size_t p = 0; p < 65; ++p)
          EXPECT_EQ(std::isfinite(out[p]), place < p || place >= p + 9) << p << " " << place;
      }
}

TEST_P(VectorKernelsTest, SlidingSumsPassOnANumberlessWeightToAllOutputs) {
  for (const Kind kind : {Kind::Dot, Kind::WeightedSquares}) {
    Sliding in(5, 43, 1);
    in.w[2] = notANumber;
    for (const double value : slid(GetParam(), kind, in, 0)) EXPECT_TRUE(std::isnan(value));
  }
}

/// Element i belongs to partial sum i mod 8; 4 + 4, 2 + 2 and 1 + 1 of them are added.
double plainDot(const double* a, const double* b, std::size_t count) {
  std::array<double, 8> partial{};
  for (std::size_t i = 0; i < count; ++i) partial[i % 8] += a[i] * b[i];
  return ((partial[0] + partial[4]) + (partial[2] + partial[6])) +
         ((partial[1] + partial[5]) + (partial[3] + partial[7]));
}

std::vector<std::size_t> rowLengths() {
  std::vector<std::size_t> lengths = {127, 128, 250, 333, 577};
  for (std::size_t count = 0; count <= 70; ++count) lengths.push_back(count);
  return lengths;
}

TEST_P(VectorKernelsTest, DotAddsEightPartialSumsPairwise) {
  for (const std::size_t count : rowLengths())
    for (std::size_t shift = 0; shift < 8; ++shift) {
      const EdgedArray a(unevenNoise(count, 5), shift);
      const EdgedArray b(unevenNoise(count, 6), (shift * 3) % 8);
      ASSERT_TRUE(sameBits(vectorKernels(GetParam()).dot(a.data(), b.data(), wide(count)),
                           plainDot(a.data(), b.data(), count)))
          << count;
    }
}

TEST_P(VectorKernelsTest, DotOfAnArrayWithItselfIsItsEnergy) {
  const EdgedArray a(std::vector<double>{3, 4, 12}, 1);
  EXPECT_EQ(vectorKernels(GetParam()).dot(a.data(), a.data(), 3), 169.0);
}

/// Four rows, the last of which ends where the memory ends.
struct FourRows {
  std::size_t count;
  std::size_t stride;
  EdgedArray rows;

  FourRows(std::size_t rowLength, std::size_t rowStride, std::size_t shift)
      : count(rowLength), stride(rowStride), rows(unevenNoise(3 * rowStride + rowLength, 7), shift) {}
  const double* row(std::size_t index) const { return rows.data() + index * stride; }
};

TEST_P(VectorKernelsTest, DotOfFourRowsIsTheDotOfEach) {
  for (const std::size_t count : rowLengths())
    for (const std::size_t gap : {std::size_t{0}, std::size_t{3}}) {
      const FourRows four(count, count + gap, count % 5);
      const EdgedArray b(unevenNoise(count, 8), count % 3);
      EdgedArray results(4, count % 2, -77.0);
      vectorKernels(GetParam())
          .dotFour(four.rows.data(), wide(four.stride), b.data(), wide(count), results.data());
      for (std::size_t r = 0; r < 4; ++r)
        ASSERT_TRUE(sameBits(results.data()[r], plainDot(four.row(r), b.data(), count))) << count << " " << r;
    }
}

TEST_P(VectorKernelsTest, DotPassesOnWhatIsNotFinite) {
  for (const double bad : {notANumber, infinity, -infinity})
    for (std::size_t place = 0; place < 21; ++place) {
      FourRows four(21, 24, 1);
      four.rows.data()[2 * four.stride + place] = bad;
      const EdgedArray b(21, 0, 2.0);
      EdgedArray results(4, 0);
      vectorKernels(GetParam()).dotFour(four.rows.data(), 24, b.data(), 21, results.data());
      for (std::size_t r = 0; r < 4; ++r) {
        EXPECT_EQ(std::isfinite(results.data()[r]), r != 2);
        EXPECT_TRUE(sameBits(vectorKernels(GetParam()).dot(four.row(r), b.data(), 21), results.data()[r]));
      }
      EXPECT_TRUE(sameBits(results.data()[2], bad));
    }
}

TEST_P(VectorKernelsTest, AddScaledAddsOneRoundedProductToEveryValue) {
  for (const std::size_t count : rowLengths())
    for (std::size_t shift = 0; shift < 8; ++shift) {
      const EdgedArray a(unevenNoise(count, 9), shift);
      EdgedArray out(unevenNoise(count, 10), (shift * 3) % 8);
      std::vector<double> expected = out.values();
      for (std::size_t i = 0; i < count; ++i) expected[i] += a.data()[i] * -1.7;
      vectorKernels(GetParam()).addScaled(a.data(), -1.7, wide(count), out.data());
      ASSERT_TRUE(sameBits(out.values(), expected)) << count;
    }
}

TEST_P(VectorKernelsTest, AddingFourScaledRowsIsAddingOneAfterTheOther) {
  for (const std::size_t count : rowLengths())
    for (const std::size_t gap : {std::size_t{0}, std::size_t{3}}) {
      const FourRows four(count, count + gap, count % 5);
      const EdgedArray factors(unevenNoise(4, 11), 1);
      EdgedArray out(unevenNoise(count, 12), count % 3);
      std::vector<double> expected = out.values();
      for (std::size_t r = 0; r < 4; ++r)
        for (std::size_t i = 0; i < count; ++i) expected[i] += four.row(r)[i] * factors.data()[r];
      vectorKernels(GetParam())
          .addScaledFour(four.rows.data(), wide(four.stride), factors.data(), wide(count), out.data());
      ASSERT_TRUE(sameBits(out.values(), expected)) << count;
    }
}

TEST_P(VectorKernelsTest, AddScaledPassesOnWhatIsNotFiniteAtItsPlaceAlone) {
  for (const double bad : {notANumber, infinity, -infinity})
    for (std::size_t place = 0; place < 21; ++place) {
      EdgedArray a(21, 1, 3.0);
      a.data()[place] = bad;
      EdgedArray out(21, 2, 5.0);
      vectorKernels(GetParam()).addScaled(a.data(), 2.0, 21, out.data());
      for (std::size_t i = 0; i < 21; ++i)
        EXPECT_TRUE(sameBits(out.data()[i], i == place ? bad : 11.0)) << i << " " << place;
    }
}

TEST(VectorKernels, AreThoseOfTheBestLevelUnlessAskedOtherwise) {
  EXPECT_EQ(&vectorKernels(), &vectorKernels(bestSimdLevel()));
  const std::vector<SimdLevel> levels = availableSimdLevels();
  for (std::size_t i = 1; i < levels.size(); ++i)
    EXPECT_NE(vectorKernels(levels[i]).dot, vectorKernels(levels[i - 1]).dot);
}

} // namespace
} // namespace emeg
