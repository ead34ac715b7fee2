#include "dsp/LongFFTPasses.h"

namespace emeg {

const LongFFTPasses& longFFTPassesBaseline();
const LongFFTPasses& longFFTPassesAvx2();
const LongFFTPasses& longFFTPassesAvx512();

const LongFFTPasses& longFFTPasses(SimdLevel level) {
#if defined(EMEG_X86_SIMD_LEVELS)
  if (level == SimdLevel::Avx512) return longFFTPassesAvx512();
  if (level == SimdLevel::Avx2) return longFFTPassesAvx2();
#endif
  static_cast<void>(level);
  return longFFTPassesBaseline();
}

} // namespace emeg
