#include "dsp/VectorKernels.h"

namespace emeg {

const VectorKernels& vectorKernelsBaseline();
const VectorKernels& vectorKernelsAvx2();
const VectorKernels& vectorKernelsAvx512();

const VectorKernels& vectorKernels(SimdLevel level) {
#if defined(EMEG_X86_SIMD_LEVELS)
  if (level == SimdLevel::Avx512) return vectorKernelsAvx512();
  if (level == SimdLevel::Avx2) return vectorKernelsAvx2();
#endif
  static_cast<void>(level);
  return vectorKernelsBaseline();
}

} // namespace emeg
