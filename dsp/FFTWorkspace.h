#pragma once

#include "dsp/CosineTable.h"
#include "dsp/FFTPlan.h"
#include "dsp/FFTTables.h"
#include "dsp/RealFFTPlan.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace emeg {

/// What transforms write beside their data, and their way to the tables. Every thread that transforms has one
/// of its own, as many threads as it likes at once; the tables are shared. It grows to what its longest
/// transform so far has needed: about 512 bytes times the square root of the length.
class FFTWorkspace {
public:
  /// `tables` must outlive the workspace.
  explicit FFTWorkspace(FFTTables& tables = fftTables()) : tables_(&tables) {}

  FFTWorkspace(FFTWorkspace&&) noexcept = default;
  FFTWorkspace& operator=(FFTWorkspace&&) noexcept = default;
  FFTWorkspace(const FFTWorkspace&) = delete;
  FFTWorkspace& operator=(const FFTWorkspace&) = delete;

  /// What a complex transform of 2^log2m points (log2m = 10 ... 31) needs. Valid until the next call.
  LongFFT longFFT(int32_t log2m);

  /// The plan for 2^log2n real values, log2n = 11 ... 31.
  const RealFFTPlan& realFFTPlan(int32_t log2n);

  /// A cosine table that serves 2^log2n points, log2n = 0 ... 31. Valid until the next call of any member.
  const CosineTable& cosines(int32_t log2n);

  /// Bytes of memory to work in.
  std::size_t bytes() const { return lines_.size() * sizeof(CacheLine); }

private:
  /// Memory without a type.
  struct alignas(64) CacheLine {
    std::array<std::byte, 64> bytes;
  };

  FFTTables* tables_;
  std::shared_ptr<const CosineTable> cosines_;
  std::vector<CacheLine> lines_;
};

} // namespace emeg
