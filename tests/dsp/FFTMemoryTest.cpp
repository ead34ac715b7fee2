// What transforms allocate. The program counts every allocation, so these tests stand in a program of their
// own.

#include "dsp/FFTTables.h"
#include "dsp/FilterFFT.h"
#include "dsp/RealFFT.h"
#include "tests/dsp/CountedAllocations.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {
namespace {

/// Bytes held by the tables that a transform leaves behind.
std::size_t tableBytes() {
  const FFTTables& tables = fftTables();
  std::size_t bytes = tables.cosines.size() * sizeof(double);
  for (const auto& table : tables.bitReversals) bytes += table.size() * sizeof(uint32_t);
  for (const auto& plan : tables.plans)
    if (plan != nullptr) bytes += plan->tableBytes();
  for (const auto& plan : tables.realPlans)
    if (plan != nullptr) bytes += plan->tableBytes();
  return bytes;
}

TEST(FFTMemory, NothingIsAllocatedAfterTheFirstTransformOfASize) {
  for (int32_t log2n = 4; log2n <= 20; ++log2n) {
    const std::size_t n = std::size_t{1} << log2n;
    std::vector<double> signal(n, 1.0);
    const std::vector<float> packed(n, 2.0F / static_cast<float>(n));
    const BinGains gains(packed.data(), log2n);
    const auto transformAll = [&] {
      realFFTForward(signal.data(), log2n);
      realFFTInverse(signal.data(), log2n);
      filterFFT(signal.data(), gains);
    };
    transformAll();
    const std::size_t before = allocations().count;
    transformAll();
    EXPECT_EQ(allocations().count, before) << "2^" << log2n;
  }
}

TEST(FFTMemory, TheTablesOfASizeAreSmallerThanItsSignal) {
  for (int32_t log2n = 11; log2n <= 22; ++log2n) {
    fftTables() = FFTTables{};
    const std::size_t n = std::size_t{1} << log2n;
    std::vector<double> signal(n, 1.0);
    realFFTForward(signal.data(), log2n);
    EXPECT_LT(tableBytes(), n * sizeof(double)) << "2^" << log2n;
  }
}

TEST(FFTMemory, TheFirstTransformAllocatesTablesAndWorkspaceAlone) {
  for (const int32_t log2n : {12, 16, 20}) {
    fftTables() = FFTTables{};
    const std::size_t n = std::size_t{1} << log2n;
    std::vector<double> signal(n, 1.0);
    const std::size_t before = allocations().bytes;
    realFFTForward(signal.data(), log2n);
    const std::size_t workspace = fftTables().workspace.size() * sizeof(CacheLine);
    // What is needed while the tables are made stays within as much again.
    EXPECT_LT(allocations().bytes - before, 2 * tableBytes() + workspace + 4096) << "2^" << log2n;
    // At most 32 points of every row; there are no more rows than the square root of the values.
    EXPECT_LE(workspace, std::size_t{512} * (std::size_t{1} << (log2n / 2))) << "2^" << log2n;
  }
}

} // namespace
} // namespace emeg
