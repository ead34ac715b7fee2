#pragma once

#include "dsp/FFTPlan.h"
#include "dsp/FFTTwiddles.h"
#include "dsp/RealFFTPlan.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace emeg {

/// Transforms of more than 2^31 points are not offered.
inline constexpr int32_t maxLog2FftSize = 31;

namespace detail {

template <typename Rule>
constexpr std::array<uint32_t, 32> tabulate(Rule rule) {
  std::array<uint32_t, 32> table{};
  for (uint32_t k = 0; k < 32; ++k) table[k] = rule(uint64_t{1} << k);
  return table;
}

} // namespace detail

/// 2^k.
inline constexpr auto powersOfTwo = detail::tabulate([](uint64_t p) { return static_cast<uint32_t>(p); });

/// 2^(k - 1), and 0 for k = 0.
inline constexpr auto halfSizes = detail::tabulate([](uint64_t p) { return static_cast<uint32_t>(p / 2); });

/// floor(2^k / 3): after k halvings the sub-transforms of a conjugate-pair split-radix transform are those of
/// the samples r, r + 2^k, r + 2 * 2^k ... for r = -c ... c with c = splitRadixCounts[k].
inline constexpr auto splitRadixCounts =
    detail::tabulate([](uint64_t p) { return static_cast<uint32_t>(p / 3); });

/// A plan, the bit reversals of its rows and columns, and room for plan.workspaceSize() doubles.
struct LongFFT {
  const FFTPlan& plan;
  const uint32_t* reversedRows;
  const uint32_t* reversedColumns;
  void* work;
};

/// Memory without a type.
struct alignas(64) CacheLine {
  std::array<std::byte, 64> bytes;
};

/// Tables that all transforms of the process share. They only grow.
struct FFTTables {
  bool initialised = false;

  /// Length Nc of the longest transform that the cosine table serves.
  int64_t cosinePeriod = 0;

  /// cos(2 pi k / Nc) for k < Nc/4. The sine of k is the entry Nc/4 - k.
  std::vector<double> cosines;

  /// Per log2m: entry i holds twice the bit reversal of i, the index of that complex point's real part; or
  /// empty.
  std::array<std::vector<uint32_t>, 32> bitReversals;

  /// Per log2m from 1024 points on, or nothing.
  std::array<std::unique_ptr<const FFTPlan>, 32> plans;

  /// Per log2n from 2048 values on, or nothing.
  std::array<std::unique_ptr<const RealFFTPlan>, 32> realPlans;

  /// What the passes of long transforms work in: a few rows and columns of the longest one so far.
  std::vector<CacheLine> workspace;
};

/// The one instance of the process.
FFTTables& fftTables();

/// Bit-reversal table for 2^log2m points (log2m = 0 ... 31), built at its first use.
const std::vector<uint32_t>& bitReversalTable(int32_t log2m);

/// Plans for 2^log2m complex points (log2m = 10 ... 31) and 2^log2n real values (log2n = 11 ... 31), made at
/// their first use.
const FFTPlan& fftPlan(int32_t log2m);
const RealFFTPlan& realFFTPlan(int32_t log2n);

/// What a complex transform of 2^log2m points (log2m = 10 ... 31) needs, made at its first use. Valid until
/// the next call for a longer one.
LongFFT longFFT(int32_t log2m);

/// Cosine and sine of 2 pi k / 2^log2N, 0 <= k < 2^log2N, from the cosine table, which must cover that
/// length.
Turn turnFromTable(int64_t k, int32_t log2N);

/// Brings interleaved points, as many as the table has entries, into bit-reversed order and back.
void permuteToBitReversed(double* points, const std::vector<uint32_t>& bitReversals);

} // namespace emeg
