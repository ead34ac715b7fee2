#include "artifacts/cardiac/model/ResamplingKernels.h"

namespace emeg {

const ResamplingKernels& resamplingKernelsBaseline();
const ResamplingKernels& resamplingKernelsAvx2();
const ResamplingKernels& resamplingKernelsAvx512();

const ResamplingKernels& resamplingKernels(SimdLevel level) {
#if defined(EMEG_X86_SIMD_LEVELS)
  if (level == SimdLevel::Avx512) return resamplingKernelsAvx512();
  if (level == SimdLevel::Avx2) return resamplingKernelsAvx2();
#endif
  static_cast<void>(level);
  return resamplingKernelsBaseline();
}

} // namespace emeg
