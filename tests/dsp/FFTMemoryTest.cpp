// What transforms allocate. The program counts every allocation, so these tests stand in a program of their
// own.

#include "dsp/FFTTables.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/FilterFFT.h"
#include "dsp/RealFFT.h"
#include "tests/dsp/CountedAllocations.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {
namespace {

TEST(FFTMemory, NothingIsAllocatedAfterTheFirstTransformOfASize) {
  FFTWorkspace workspace;
  for (int32_t log2n = 4; log2n <= 20; ++log2n) {
    const std::size_t n = std::size_t{1} << log2n;
    std::vector<double> signal(n, 1.0);
    const std::vector<float> packed(n, 2.0F / static_cast<float>(n));
    const BinGains gains(packed.data(), log2n);
    const auto transformAll = [&] {
      realFFTForward(signal.data(), log2n, workspace);
      realFFTInverse(signal.data(), log2n, workspace);
      filterFFT(signal.data(), gains, workspace);
    };
    transformAll();
    const std::size_t before = allocations().count;
    transformAll();
    EXPECT_EQ(allocations().count, before) << "2^" << log2n;
  }
}

TEST(FFTMemory, AnotherWorkspaceAllocatesNothingButItself) {
  for (const int32_t log2n : {4, 10, 12, 16, 20}) {
    const std::size_t n = std::size_t{1} << log2n;
    std::vector<double> signal(n, 1.0);
    FFTWorkspace first;
    realFFTForward(signal.data(), log2n, first);
    const std::size_t before = allocations().bytes;
    FFTWorkspace second;
    realFFTForward(signal.data(), log2n, second);
    EXPECT_EQ(allocations().bytes - before, second.bytes()) << "2^" << log2n;
  }
}

TEST(FFTMemory, TheTablesOfASizeAreSmallerThanItsSignal) {
  for (int32_t log2n = 11; log2n <= 22; ++log2n) {
    FFTTables tables;
    FFTWorkspace workspace(tables);
    const std::size_t n = std::size_t{1} << log2n;
    std::vector<double> signal(n, 1.0);
    realFFTForward(signal.data(), log2n, workspace);
    EXPECT_LT(tables.bytes(), n * sizeof(double)) << "2^" << log2n;
  }
}

TEST(FFTMemory, TheFirstTransformAllocatesTablesAndWorkspaceAlone) {
  for (const int32_t log2n : {12, 16, 20}) {
    FFTTables tables;
    FFTWorkspace workspace(tables);
    const std::size_t n = std::size_t{1} << log2n;
    std::vector<double> signal(n, 1.0);
    const std::size_t before = allocations().bytes;
    realFFTForward(signal.data(), log2n, workspace);
    const std::size_t worked = workspace.bytes();
    // What is needed while the tables are made stays within as much again.
    EXPECT_LT(allocations().bytes - before, 2 * tables.bytes() + worked + 4096) << "2^" << log2n;
    // At most 32 points of every row; there are no more rows than the square root of the values.
    EXPECT_LE(worked, std::size_t{512} * (std::size_t{1} << (log2n / 2))) << "2^" << log2n;
  }
}

} // namespace
} // namespace emeg
