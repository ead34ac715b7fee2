#pragma once

#include <span>
#include <vector>

namespace emeg {

/// Positions (samples, between samples too) of the R peaks in an electrocardiogram at `rate` Hz that has been
/// low-passed at 35 Hz: what `bcgSeries` holds of the channel. Of either polarity, in any unit.
///
/// The energy of slopes in the band of the QRS complex finds the beats, as Pan and Tompkins do (A real-time
/// QRS detection algorithm, IEEE Trans. Biomed. Eng. 32 (1985)), in the band of Elgendi, Jonkman and De Boer
/// (Frequency bands effects on QRS detection, BIOSIGNALS 2010), above which no T wave has much, however large
/// the magnetic field makes it. Heights count by their ranks among neighbours, not by running means: spikes
/// and dropouts leave the thresholds alone. Then the recording's own average complex is the matched filter
/// that finds the beats once more, in what the gradient correction left behind too; beats of another shape
/// (ectopic ones) are looked for where one is missing. Every beat's position is that of the average complex
/// in it.
///
/// Empty when nothing stands out: a flat channel, or less than a few seconds.
std::vector<double> findRPeaks(std::span<const double> ecg, double rate);

} // namespace emeg
