#include "dsp/FFTTables.h"

#include "dsp/FFTTwiddles.h"
#include "dsp/RealFFT.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace emeg {
namespace {

long double exactCosine(int64_t k, int32_t log2N) {
  constexpr long double twoPi = 6.283185307179586476925286766559005768394L;
  const auto n = static_cast<long double>(int64_t{1} << log2N);
  const auto position = static_cast<long double>(k);
  return 8 * position <= n ? std::cos(twoPi * position / n) : std::sin(twoPi * (n / 4 - position) / n);
}

void expectWithinOneUlp(int64_t k, int32_t log2N) {
  const double value = cosineOfTurn(k, log2N);
  const double ulp = std::nextafter(value, 2.0) - value;
  EXPECT_LE(std::fabs(static_cast<long double>(value) - exactCosine(k, log2N)), static_cast<long double>(ulp))
      << k << " of 2^" << log2N;
}

class FFTTablesTest : public testing::Test {
protected:
  FFTTables tables;
};

TEST_F(FFTTablesTest, CosinesAreRightToOneUnitInTheLastPlace) {
  for (int32_t log2N = 2; log2N <= 16; ++log2N)
    for (int64_t k = 0; k <= (int64_t{1} << log2N) / 4; ++k) expectWithinOneUlp(k, log2N);
  std::mt19937_64 generator(1);
  for (int i = 0; i < 10000; ++i)
    expectWithinOneUlp(static_cast<int64_t>(generator() % (uint64_t{1} << 29)), 31);
}

TEST_F(FFTTablesTest, CosinesDependOnTheFractionAlone) {
  for (int64_t k = 0; k <= 256; ++k)
    for (int32_t more = 1; more <= 21; ++more)
      EXPECT_EQ(cosineOfTurn(k, 10), cosineOfTurn(k << more, 10 + more));
}

TEST_F(FFTTablesTest, OddCosinesOfEightToSixtyFourPointsStandInOneRow) {
  std::size_t entry = 0;
  for (int32_t log2L = 3; log2L <= 6; ++log2L)
    for (int64_t j = 1; j < (int64_t{1} << log2L) / 4; j += 2)
      EXPECT_EQ(oddCosines.at(entry++), cosineOfTurn(j, log2L));
  EXPECT_EQ(entry, oddCosines.size());
  EXPECT_EQ(oddCosines[0], 0.7071067811865476);
}

TEST_F(FFTTablesTest, KernelConstantsAreTheTablesCosines) {
  EXPECT_EQ((kernelCosine<512, 0>()), 1.0);
  EXPECT_EQ((kernelCosine<512, 128>()), 0.0);
  EXPECT_EQ((kernelCosine<512, 37>()), cosineOfTurn(37, 9));
  EXPECT_EQ((kernelCosine<512, 40>()), cosineOfTurn(40, 9));
  EXPECT_EQ((kernelCosine<16, 1>()), cosineOfTurn(1, 4));
  EXPECT_EQ((kernelCosine<16, 3>()), cosineOfTurn(3, 4));
  EXPECT_EQ((kernelCosine<64, 15>()), cosineOfTurn(15, 6));
}

TEST_F(FFTTablesTest, IntegerTablesHoldPowersHalvesAndThirds) {
  for (uint32_t k = 0; k < 32; ++k) {
    EXPECT_EQ(powersOfTwo[k], uint32_t{1} << k);
    EXPECT_EQ(halfSizes[k], k == 0 ? 0 : uint32_t{1} << (k - 1));
    EXPECT_EQ(splitRadixCounts[k], (uint32_t{1} << k) / 3);
  }
  EXPECT_EQ(powersOfTwo[31], static_cast<uint32_t>(std::numeric_limits<int32_t>::min()));
  EXPECT_EQ(splitRadixCounts[10], 341U);
}

TEST_F(FFTTablesTest, SetUpHappensOnce) {
  initFFTTables();
  const FFTTables* const first = &fftTables();
  const std::vector<uint32_t>& table = fftTables().bitReversalTable(7);
  initFFTTables();
  EXPECT_EQ(&fftTables(), first);
  EXPECT_EQ(&fftTables().bitReversalTable(7), &table);
}

TEST_F(FFTTablesTest, TheCosineTableHoldsAQuarterPeriodAndOnlyGrows) {
  EXPECT_EQ(tables.cosinePeriod(), 0);
  ASSERT_EQ(tables.makeCosineTable(6)->quarter().size(), 16U);
  tables.makeCosineTable(10);
  EXPECT_EQ(tables.cosinePeriod(), 1024);
  const std::vector<double>& cosines = tables.makeCosineTable(6)->quarter();
  EXPECT_EQ(tables.cosinePeriod(), 1024);
  ASSERT_EQ(cosines.size(), 256U);
  for (std::size_t k = 0; k < 256; ++k) EXPECT_EQ(cosines[k], cosineOfTurn(static_cast<int64_t>(k), 10));
}

TEST_F(FFTTablesTest, ACosineTableStaysAsItIsWhileSomebodyHoldsIt) {
  const std::shared_ptr<const CosineTable> held = tables.makeCosineTable(6);
  const std::vector<double> before = held->quarter();
  EXPECT_NE(tables.makeCosineTable(12), held);
  EXPECT_EQ(held->quarter(), before);
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(FFTTablesTest, TurnsHaveTheSameBitsInATableOfAnyLength) {
  const CosineTable own(8);
  const CosineTable longer(15);
  for (int64_t k = 0; k < 256; ++k) {
    EXPECT_EQ(own.turn(k, 8).cosine, longer.turn(k, 8).cosine);
    EXPECT_EQ(own.turn(k, 8).sine, longer.turn(k, 8).sine);
  }
}

TEST_F(FFTTablesTest, EightPointsReverseToTheKnownOrder) {
  tables.prepareFFTSize(3);
  EXPECT_EQ(tables.cosinePeriod(), 8);
  EXPECT_EQ(tables.bitReversalTable(3), (std::vector<uint32_t>{0, 8, 4, 12, 2, 10, 6, 14}));
}

TEST_F(FFTTablesTest, BitReversalIsItsOwnInverse) {
  for (int32_t log2m = 0; log2m <= 16; ++log2m) {
    const std::vector<uint32_t>& table = tables.bitReversalTable(log2m);
    ASSERT_EQ(table.size(), std::size_t{1} << log2m);
    for (std::size_t i = 0; i < table.size(); ++i) {
      ASSERT_EQ(table[table[i] / 2], 2 * i);
      for (int32_t bit = 0; bit < log2m; ++bit)
        ASSERT_EQ((table[i] >> (log2m - bit)) & 1U, (i >> bit) & 1U) << i << " of 2^" << log2m;
    }
  }
}

TEST_F(FFTTablesTest, WhatWasMadeStaysWhereItIs) {
  const FFTPlan& plan = tables.fftPlan(10);
  const RealFFTPlan& realPlan = tables.realFFTPlan(11);
  const std::vector<uint32_t>& reversals = tables.bitReversalTable(5);
  for (int32_t log2m = 0; log2m <= 14; ++log2m) tables.prepareFFTSize(log2m);
  tables.realFFTPlan(15);
  EXPECT_EQ(&tables.fftPlan(10), &plan);
  EXPECT_EQ(&tables.realFFTPlan(11), &realPlan);
  EXPECT_EQ(&tables.bitReversalTable(5), &reversals);
}

TEST_F(FFTTablesTest, SizesThatAreNotOfferedChangeNoTable) {
  for (const int32_t size :
       {-1, 32, 64, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
    EXPECT_EQ(tables.makeCosineTable(size), nullptr);
    tables.prepareFFTSize(size);
  }
  EXPECT_EQ(tables.bytes(), 0U);
}

} // namespace
} // namespace emeg
