#pragma once

#include "artifacts/cardiac/model/BeatTimeBase.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// The model of a channel whose beats come in stretches (`base` as makeStretchTimeBase makes it): every beat
/// has an epoch, also the outer ones of a stretch. An epoch that the recording cuts has no part in the
/// components; its scores are fitted to what there is of it. `a` is the channel's warp parameter.
///
/// Replaces the `length` samples of the series (and one value behind them) by the estimate: 0 outside the
/// stretches, to which it falls over `fadeLength` samples at the outer ends of their reach.
void replaceByStretchEstimate(const BeatTimeBase& base, const std::vector<BeatStretch>& stretches,
                              int32_t fadeLength, double a, int nrOfComponents, std::vector<double>& series,
                              int64_t length);

} // namespace emeg
