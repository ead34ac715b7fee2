#pragma once

#include <emeg/emeg.h>

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// Throws Refusal where a layout makes no sense.
void checkLayout(const emeg_layout& layout);

/// Copies `count` time points from `first` on out of a caller's array: microvolts[c x count + t]. The unit
/// does not count for channels of which `isRaw` is true.
void gather(const void* samples, const emeg_layout& layout, int64_t first, int64_t count,
            const std::vector<bool>& isRaw, std::span<double> microvolts);

/// The way back.
void scatter(std::span<const double> microvolts, int64_t first, int64_t count, const std::vector<bool>& isRaw,
             const emeg_layout& layout, void* samples);

} // namespace emeg
