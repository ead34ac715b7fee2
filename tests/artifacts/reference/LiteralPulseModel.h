#pragma once

#include "tests/artifacts/reference/LiteralWarpTable.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// A plain second implementation of the pulse model of one channel, step by step and without any
/// restructuring, to compare the real one with. Positions and intervals are in samples of the series; samples
/// outside it count as 0.

/// The run-wide values; `heartPeriod` in samples. Needs two pulses or more.
LiteralModelSetUp literalModelSetUp(const std::vector<double>& pulsePositions, int32_t heartPeriod);

/// The series over the interval of `interval` samples from `position` on, one value for each place of the
/// table.
std::vector<double> literalResampledInterval(const std::vector<double>& series, double position,
                                             double interval, const LiteralWarpTable& table);

/// One resampled interval per row.
std::vector<std::vector<double>> literalWarpedBeats(const std::vector<double>& series,
                                                    const std::vector<double>& pulsePositions,
                                                    const LiteralModelSetUp& setUp,
                                                    const LiteralWarpTable& table);

/// How alike the intervals are when resampled with warp parameter `a`: the energy of the sum of the resampled
/// intervals, each of unit energy.
double literalWarpScore(const std::vector<double>& series, const std::vector<double>& pulsePositions,
                        const LiteralModelSetUp& setUp, double a);

/// The warp parameter of the channel.
double literalWarpFit(const std::vector<double>& series, const std::vector<double>& pulsePositions,
                      const LiteralModelSetUp& setUp);

/// Moves the projection of `rows` on their first `count` principal components to `out`; the residuals stay.
void literalPrincipalComponentModel(int count, std::vector<std::vector<double>>& rows,
                                    std::vector<std::vector<double>>& out);

/// One epoch of 2 W + 1 values per junction of two successive beats.
std::vector<std::vector<double>> literalEpochs(const std::vector<std::vector<double>>& warpedBeats,
                                               const LiteralModelSetUp& setUp);

/// The beats put together again from the epochs; what no epoch covers keeps the warped beat's own data.
std::vector<std::vector<double>> literalReassembledBeats(const std::vector<std::vector<double>>& warpedBeats,
                                                         const std::vector<std::vector<double>>& modelEpochs,
                                                         const LiteralModelSetUp& setUp);

/// Undoes the warp: replaces the series over every interval by the modelled beat.
void literalWriteBack(std::vector<double>& series, const std::vector<double>& pulsePositions,
                      const LiteralModelSetUp& setUp, double a,
                      const std::vector<std::vector<double>>& modelledBeats);

/// Replaces the series by the estimate of its pulse artifact and returns the warp parameter. With fewer than
/// three pulses the estimate is 0 everywhere, and so is the value returned.
double literalPulseModel(std::vector<double>& series, const std::vector<double>& pulsePositions,
                         int32_t heartPeriod);

} // namespace emeg
