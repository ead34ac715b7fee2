#include "dsp/FFTWorkspace.h"

namespace emeg {

LongFFT FFTWorkspace::longFFT(int32_t log2m) {
  // Making a plan may need a longer cosine table. The shorter one goes first.
  cosines_.reset();
  const FFTPlan& plan = tables_->fftPlan(log2m);
  const std::size_t lines = plan.workspaceSize() * sizeof(double) / sizeof(CacheLine);
  if (lines_.size() < lines) {
    std::vector<CacheLine>().swap(lines_);
    lines_.resize(lines);
  }
  return {plan, tables_->bitReversalTable(plan.log2Rows()).data(),
          tables_->bitReversalTable(plan.log2Columns()).data(), lines_.data()};
}

const RealFFTPlan& FFTWorkspace::realFFTPlan(int32_t log2n) {
  cosines_.reset();
  return tables_->realFFTPlan(log2n);
}

const CosineTable& FFTWorkspace::cosines(int32_t log2n) {
  if (cosines_ == nullptr || cosines_->period() < int64_t{1} << log2n) {
    cosines_.reset();
    cosines_ = tables_->makeCosineTable(log2n);
  }
  return *cosines_;
}

} // namespace emeg
