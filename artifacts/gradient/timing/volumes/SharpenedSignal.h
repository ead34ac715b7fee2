#pragma once

#include <span>
#include <vector>

namespace emeg {

/// The channel's second difference over about one millisecond, an even number of samples (at least two),
/// which is blind to the highest frequencies: what sampling folds back lies there, and makes a waveform look
/// different wherever the samples hit it. It lifts what gradients leave (some 50 Hz and more) above EEG and
/// movements, has no delay, and blurs nothing by more than a millisecond or two, so that beginnings and ends
/// stay where they are. Values that are not finite, or larger than 1e12, count as 0.
std::vector<double> sharpenedSignal(std::span<const double> channel, double samplingFrequency);

/// 1.5 times the level that hardly any tenth of a second exceeds (95th percentile of their largest values):
/// no spike counts for more than a gradient burst. 0 for a flat signal.
double levelOfBursts(std::span<const double> sharpened, double samplingFrequency);

/// Evens out the spectrum by a short prediction-error filter (linear prediction from the 16 samples before;
/// Makhoul: Linear prediction: a tutorial review, Proc. IEEE 63, 1975), so that the tone of a readout, alike
/// at every one of its periods, does not drown what differs from slice to slice. What is weaker than `floor`
/// times the mean power stays weak, as it may be noise.
void flattenSpectrum(std::span<double> signal, double floor);

/// Spikes, what exceeds +-level, become 0 with 10 ms (and at least 32 samples) around them, so that they
/// count as dropouts. Where that would be more than a hundredth of the signal, it is cut at the level
/// instead.
void blankSpikes(std::span<double> sharpened, double level, double samplingFrequency);

} // namespace emeg
