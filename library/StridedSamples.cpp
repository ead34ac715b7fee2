#include "library/StridedSamples.h"

#include "library/Guarded.h"

#include <cmath>

namespace emeg {

namespace {

/// Calls `each(index in the caller's array, index in the block, unit)` for every sample of a block.
template <class Each>
void forEachSample(const emeg_layout& layout, int64_t first, int64_t count, const std::vector<bool>& isRaw,
                   Each each) {
  for (size_t c = 0; c < isRaw.size(); ++c) {
    const double unit = isRaw[c] ? 1 : layout.microvolts;
    const ptrdiff_t channel = static_cast<ptrdiff_t>(c) * layout.channel_stride;
    const size_t block = c * static_cast<size_t>(count);
    for (int64_t t = 0; t < count; ++t)
      each(channel + static_cast<ptrdiff_t>(first + t) * layout.sample_stride, block + static_cast<size_t>(t),
           unit);
  }
}

} // namespace

void checkLayout(const emeg_layout& layout) {
  if (layout.type != EMEG_FLOAT && layout.type != EMEG_DOUBLE)
    throw Refusal(EMEG_BAD_ARGUMENT, "The layout's type is none of emeg_sample_type.");
  if (!std::isfinite(layout.microvolts) || layout.microvolts == 0)
    throw Refusal(EMEG_BAD_ARGUMENT, "The layout does not say how many microvolts one unit is.");
  if (layout.sample_stride == 0)
    throw Refusal(EMEG_BAD_ARGUMENT, "The layout's sample_stride is 0: all time points would be one.");
}

void gather(const void* samples, const emeg_layout& layout, int64_t first, int64_t count,
            const std::vector<bool>& isRaw, std::span<double> microvolts) {
  if (layout.type == EMEG_FLOAT) {
    const auto* const values = static_cast<const float*>(samples);
    forEachSample(layout, first, count, isRaw, [&](ptrdiff_t from, size_t to, double unit) {
      microvolts[to] = static_cast<double>(values[from]) * unit;
    });
  } else {
    const auto* const values = static_cast<const double*>(samples);
    forEachSample(layout, first, count, isRaw,
                  [&](ptrdiff_t from, size_t to, double unit) { microvolts[to] = values[from] * unit; });
  }
}

void scatter(std::span<const double> microvolts, int64_t first, int64_t count, const std::vector<bool>& isRaw,
             const emeg_layout& layout, void* samples) {
  if (layout.type == EMEG_FLOAT) {
    auto* const values = static_cast<float*>(samples);
    forEachSample(layout, first, count, isRaw, [&](ptrdiff_t to, size_t from, double unit) {
      values[to] = static_cast<float>(microvolts[from] / unit);
    });
  } else {
    auto* const values = static_cast<double*>(samples);
    forEachSample(layout, first, count, isRaw,
                  [&](ptrdiff_t to, size_t from, double unit) { values[to] = microvolts[from] / unit; });
  }
}

} // namespace emeg
