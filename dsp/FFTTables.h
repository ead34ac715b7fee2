#pragma once

#include "dsp/CosineTable.h"
#include "dsp/FFTPlan.h"
#include "dsp/MadeOnce.h"
#include "dsp/RealFFTPlan.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
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

/// Tables and plans that transforms share. Each is made at its first use and is constant from then on; any
/// number of threads may ask at once. What a reference leads to lives as long as the tables.
class FFTTables {
public:
  FFTTables() = default;
  FFTTables(const FFTTables&) = delete;
  FFTTables& operator=(const FFTTables&) = delete;

  /// Makes sure that the cosine table serves transforms of up to 2^log2n points (log2n = 0 ... 31), and
  /// returns it. The table only grows: a longer one takes the place of a shorter one, which goes when nobody
  /// holds it any more. Nothing for any other size.
  std::shared_ptr<const CosineTable> makeCosineTable(int32_t log2n);

  /// Makes sure that there is a bit-reversal table for 2^log2m complex points (log2m = 0 ... 31) and that the
  /// cosine table covers 2^log2m. Does nothing for any other size.
  void prepareFFTSize(int32_t log2m);

  /// Bit reversals of 2^log2m points (log2m = 0 ... 31): entry i holds twice the reversal of i, the index of
  /// that point's real part.
  const std::vector<uint32_t>& bitReversalTable(int32_t log2m);

  /// Plans for 2^log2m complex points (log2m = 10 ... 31) and 2^log2n real values (log2n = 11 ... 31).
  const FFTPlan& fftPlan(int32_t log2m);
  const RealFFTPlan& realFFTPlan(int32_t log2n);

  /// Length of the longest transform that the cosine table serves; 0 as long as there is none.
  int64_t cosinePeriod() const;

  /// Bytes that all tables hold.
  std::size_t bytes() const;

private:
  mutable std::mutex cosinesMutex_;
  std::shared_ptr<const CosineTable> cosines_;

  template <class T>
  using PerSize = std::array<MadeOnce<T>, maxLog2FftSize + 1>;
  PerSize<std::vector<uint32_t>> bitReversals_;
  PerSize<FFTPlan> plans_;
  PerSize<RealFFTPlan> realPlans_;
};

/// The tables of the process. Nothing else is shared between threads.
FFTTables& fftTables();

/// Brings interleaved points, as many as the table has entries, into bit-reversed order and back.
void permuteToBitReversed(double* points, const std::vector<uint32_t>& bitReversals);

} // namespace emeg
