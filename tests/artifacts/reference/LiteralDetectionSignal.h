#pragma once

#include "tests/artifacts/reference/LiteralHeartPeriod.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// A plain second implementation of the heart beat detection signal, sum by sum, to compare the real one
/// with. Every intermediate result can be asked for on its own. All positions and lengths are in samples of
/// the series; P stands for the heart period.

/// 2P + 1 Gaussian weights, centred at index P.
std::vector<double> literalGaussianWeights(int32_t period);

/// Sum of the squares of the 2P + 1 samples around `position`.
double literalSegmentEnergy(const std::vector<double>& channel, int32_t length, int32_t position,
                            int32_t period);
/// Scales that segment to unit energy; 0 when it has none.
double literalNormFactor(const std::vector<double>& channel, int32_t length, int32_t position,
                         int32_t period);
bool literalHasEnergy(const std::vector<double>& channel, int32_t length);

/// What the tracking knows of one channel: 4P + 1 values each, centred on the beats at index 2P.
struct LiteralTrackedChannel {
  std::vector<double> runningTemplate;
  std::vector<double> slopeVotes;
  bool hasEnergy = false;
};

void literalAddBeat(LiteralTrackedChannel& tracked, const std::vector<double>& channel, int32_t length,
                    int32_t beat, int32_t period);
/// q(d) for d = shortest ... longest.
std::vector<double> literalTrackingScores(const LiteralTrackedChannel& tracked,
                                          const std::vector<double>& channel, int32_t length,
                                          int32_t lastBeat, const LiteralPeriod& heart);
/// The interval of the highest interior local maximum; `previous` when there is none.
int32_t literalIntervalChoice(const std::vector<double>& scores, int32_t shortest, int32_t previous);
/// cost(sigma) for sigma = -P ... P.
std::vector<double> literalAlignmentCosts(const LiteralTrackedChannel& tracked, int32_t nrOfBeats,
                                          int32_t period);
/// The sigma of the smallest cost, the first of equals.
int32_t literalAlignmentChoice(const std::vector<double>& costs, int32_t period);

struct LiteralTracking {
  std::vector<int32_t> beats;
  std::vector<int32_t> intervals; ///< the median choice, one for each beat after the first
  std::vector<int32_t> shifts; ///< subtracted from all beats of the list, one for each beat after the first
  std::vector<LiteralTrackedChannel> channels;
};

/// Nothing at all for a period of 0.
LiteralTracking literalTracking(const std::vector<std::vector<double>>& series, int32_t length,
                                const LiteralPeriod& heart);
std::vector<int32_t> literalTrackBeats(const std::vector<std::vector<double>>& series, int32_t length,
                                       const LiteralPeriod& heart);

struct LiteralBeatTemplate {
  std::vector<double>
      resemblance; ///< r, one for each beat; the lower, the more the beat resembles the others
  double threshold = 0;
  std::vector<bool> selected;  ///< one for each beat
  std::vector<double> samples; ///< 2P + 1
};

LiteralBeatTemplate literalBeatTemplate(const std::vector<double>& channel, int32_t length,
                                        const std::vector<int32_t>& beats, int32_t period);

/// `length` values, the first and the last P of them 0.
std::vector<float> literalChannelSignal(const std::vector<double>& channel, int32_t length,
                                        const std::vector<double>& beatTemplate, int32_t period);

/// Per sample, the median over the channels' signals.
std::vector<float> literalMedianSignal(const std::vector<std::vector<float>>& channelSignals, int32_t length);

/// All of the above. Empty, and with it no pulses, for a period of 0 or when no channel has energy.
std::vector<float> literalDetectionSignal(const std::vector<std::vector<double>>& series, int32_t length,
                                          const LiteralPeriod& heart);

} // namespace emeg
