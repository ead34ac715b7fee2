#pragma once

namespace emeg {

/// What the vector units of a machine offer, in ascending order. Baseline is what every machine of the
/// architecture has (SSE2 on x86-64); other architectures have nothing else here.
enum class SimdLevel { Baseline, Avx2, Avx512 };

/// The highest level that this machine and its operating system support. Asked once per process.
SimdLevel bestSimdLevel();

} // namespace emeg
