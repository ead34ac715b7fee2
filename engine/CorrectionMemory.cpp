// What a correction will allocate, from its settings alone: before a sample is read nothing is known of
// scans.

#include "dsp/FirDesign.h"
#include "engine/Correction.h"
#include "engine/SaturatedChannels.h"
#include "engine/StretchCorrection.h"
#include "engine/store/CachedChannels.h"
#include "engine/timing/ScanTiming.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double seriesRate = 500; // Hz: the low rate of heart beats lies below twice 250 Hz

uint64_t bytesOf(double doubles) {
  return static_cast<uint64_t>(std::ceil(std::min(doubles, 1e17))) * sizeof(double);
}

/// Values of one channel at the low rate.
double seriesLength(const RecordingShape& shape) {
  const double seconds = static_cast<double>(shape.nrOfSamples) / shape.samplingFrequency;
  return seconds * std::min(seriesRate, shape.samplingFrequency) + 2;
}

double nrOfTaps(double transition, double rate) {
  constexpr double tapsPerTransition = 3.3; // Hamming window
  return tapsPerTransition / transition * rate + 1;
}

/// Taps of all filters together, of the one that templates are made behind, too.
double nrOfTaps(const CorrectionSettings& settings, double rate) {
  double taps = settings.gradient ? nrOfTaps(defaultHighPassTransition(1, rate), rate) : 0;
  if (settings.highPass > 0) taps += nrOfTaps(defaultHighPassTransition(settings.highPass, rate), rate);
  if (settings.lowPass > 0) taps += nrOfTaps(defaultLowPassTransition(settings.lowPass, rate), rate);
  for (const Notch& notch : settings.notches)
    taps += nrOfTaps(
        defaultBandStopTransition(notch.frequency - notch.width / 2, notch.frequency + notch.width / 2, rate),
        rate);
  return taps;
}

/// Samples on both sides of a stretch that its stages need, for scans of slices and volumes of usual length.
double contextOf(const CorrectionSettings& settings, double rate, double taps) {
  constexpr double sliceSeconds = 0.1, volumeSeconds = 3, lineSeconds = 16;
  constexpr double blocksAndTaps = 5; // a filter takes whole blocks
  double seconds = lineSeconds * static_cast<double>(settings.lineNoise.size());
  if (settings.gradient)
    seconds +=
        2 * (2 * std::hypot(settings.timing.windowSlices * sliceSeconds, volumeSeconds) + 3 * volumeSeconds);
  return seconds * rate + blocksAndTaps * taps;
}

uint64_t memoryOfStretches(const CorrectionSettings& settings, const RecordingShape& shape) {
  const double rate = shape.samplingFrequency;
  const auto n = static_cast<double>(shape.nrOfSamples);
  const auto channels = static_cast<double>(shape.roles.size());
  const double taps = nrOfTaps(settings, rate);
  const double context = contextOf(settings, rate, taps);
  const auto longest = static_cast<double>(StretchCorrection::longestFor(rate, shape.roles.size()));
  constexpr double withTheEnd = 1.25; // the last stretch takes what would be too short
  const double stretch = std::min(withTheEnd * std::max(longest, context + 1), n);
  const double outputs = stretch * std::max(settings.rate > 0 ? settings.rate / rate : 1.0, 1.0);
  const double input = std::min(stretch + context, n);

  constexpr double inputArrays = 9;     // samples, above 1 Hz, spline, estimates
  constexpr double outputArrays = 3;    // of a channel, the reference, what is measured
  constexpr double perTap = 12;         // taps, response, a block and its transform
  constexpr double resampler = 1 << 20; // its table
  constexpr double floatsAreHalf = 0.5;
  constexpr double figureSeconds = 20; // of every channel: volumes and spectra
  return bytesOf(inputArrays * input + outputArrays * outputs + perTap * taps + resampler +
                 2 * floatsAreHalf * outputs * channels + // two blocks on the way into the store
                 (settings.gradient ? figureSeconds * std::max(rate, settings.rate) * channels : 0));
}

/// As the plug-in's own estimate.
uint64_t memoryOfWholeChannels(const CorrectionSettings& settings, const RecordingShape& shape) {
  const auto n = static_cast<double>(shape.nrOfSamples);
  const auto channels = static_cast<double>(shape.roles.size());
  const double length = n + 10.0 * settings.decimation;
  const double transform = std::exp2(std::ceil(std::log2(length)));
  constexpr double arrays = 8;          // as stored, spline, estimate, reference
  constexpr double transformArrays = 4; // channel, its transform, tables, responses
  double doubles = arrays * n + transformArrays * transform;
  if (settings.heartBeats) {
    constexpr double restRate = 10; // Hz
    constexpr double modelArrays = 12;
    doubles += channels * (2 * seriesLength(shape) + n / shape.samplingFrequency * restRate + 2) +
               modelArrays * seriesLength(shape);
  }
  return bytesOf(doubles);
}

} // namespace

uint64_t Correction::memoryFor(const CorrectionSettings& settings, const RecordingShape& shape) {
  if (settings.method.wholeChannels) return memoryOfWholeChannels(settings, shape);
  uint64_t needed = memoryOfStretches(settings, shape);
  if (settings.gradient)
    needed = std::max(needed,
                      memoryForScanSearch(shape.nrOfSamples) + CachedChannels::memoryFor(shape.nrOfSamples));
  if (settings.repairSaturation) needed = std::max(needed, memoryForRepair(shape.nrOfSamples));
  if (!settings.heartBeats) return needed;
  constexpr double heartArrays = 2; // series and detection signal
  return needed + bytesOf(heartArrays * static_cast<double>(shape.roles.size()) * seriesLength(shape));
}

} // namespace emeg
