#include "dsp/SimdLevel.h"

namespace emeg {

namespace {

SimdLevel askMachine() {
#if defined(EMEG_X86_SIMD_LEVELS)
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512f")) return SimdLevel::Avx512;
  if (__builtin_cpu_supports("avx2")) return SimdLevel::Avx2;
#endif
  return SimdLevel::Baseline;
}

} // namespace

SimdLevel bestSimdLevel() {
  static const SimdLevel level = askMachine();
  return level;
}

} // namespace emeg
