#pragma once

#include "artifacts/cardiac/search/HeartPeriod.h"
#include "artifacts/cardiac/series/BcgSeries.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// A signal of `length` samples whose minima are the heart pulses: the median over channels of minus the
/// normalised, weighted correlation between the channel and its beat template centred on the sample. Empty
/// when there is no period, or no channel with any energy. Needs one 32-bit float per sample and channel.
std::vector<float> buildPulseDetectionSignal(const BcgSeries& series, const HeartPeriod& heart);

/// The signal of one channel. 0 within one period of either end, and where the channel is flat.
std::vector<float> channelDetectionSignal(const double* channel, int64_t length, int32_t period,
                                          const std::vector<double>& weights,
                                          const std::vector<double>& beatTemplate);

} // namespace emeg
