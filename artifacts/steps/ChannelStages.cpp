#include "artifacts/CubicSplines.h"
#include "artifacts/SaturationRepair.h"
#include "artifacts/SinusoidRemoval.h"
#include "artifacts/steps/CorrectionDriver.h"

#include <algorithm>
#include <cmath>

namespace emeg {

bool CorrectionDriver::readChannel(int32_t channel) {
  if (!c_.chunkFiles.readChannel(channel, processed_, buffers_.chunkBuffer.data()))
    return reportFileError("Error reading file: ");
  const int64_t margin = c_.span.firstTimePoint - c_.span.firstProcessedTimePoint;
  for (int64_t i = 0; i < samples_; ++i)
    signal_[i] = static_cast<double>(buffers_.chunkBuffer[static_cast<size_t>(margin + i)]);
  return true;
}

/// One sample that is not a number would spread over the whole channel in the first transform.
void CorrectionDriver::zeroSamplesThatAreNotNumbers(int32_t channel) {
  int count = 0;
  const int64_t margin = c_.span.firstTimePoint - c_.span.firstProcessedTimePoint;
  for (int64_t i = 0; i < processed_; ++i) {
    float& sample = buffers_.chunkBuffer[static_cast<size_t>(i)];
    if (std::isfinite(sample)) continue;
    sample = 0;
    if (i >= margin && i < margin + samples_) signal_[i - margin] = 0;
    ++count;
  }
  if (count > 0) {
    c_.log.logProgress("Channel #%d: %d samples that are not numbers were set to 0.", numberOf(channel),
                       count);
  }
}

void CorrectionDriver::repairChannelSaturations() {
  const auto limits = saturationLimitsOf(static_cast<uint8_t>(c_.input.inputSampleFormat));
  if (!limits) return;
  repairSaturations(signal_, samples_, *limits, buffers_.splineScratch.data(), buffers_.splineB.data(),
                    buffers_.splineC.data(), buffers_.splineD.data(),
                    [this] { c_.log.logProgress("Saturations were detected and are being corrected."); });
}

/// The part below 1 Hz at ten values a second. It is read from the buffer's first sample on, not from the
/// interval's: the alignment that the second pass expects.
void CorrectionDriver::keepLowFrequencyRest(int32_t channel) {
  std::vector<double>& rest = buffers_.lowFrequencyRest[static_cast<size_t>(channel)];
  for (int64_t k = 0, j = 0; j < samples_; ++k, j += buffers_.restStep)
    rest[static_cast<size_t>(k)] =
        static_cast<double>(buffers_.chunkBuffer[static_cast<size_t>(j)]) - signal_[j];
}

/// Leaves the part below 1 Hz in the chunk buffer, from its first sample on.
void CorrectionDriver::subtractHighPassedSignal() {
  for (int64_t i = 0; i < samples_; ++i) {
    float& sample = buffers_.chunkBuffer[static_cast<size_t>(i)];
    sample = static_cast<float>(static_cast<double>(sample) - signal_[i]);
  }
}

void CorrectionDriver::addFullRateRest() {
  for (int64_t i = 0; i < samples_; ++i)
    signal_[i] += static_cast<double>(buffers_.chunkBuffer[static_cast<size_t>(i)]);
}

void CorrectionDriver::removeLineSinusoids() {
  removeSinusoids(signal_, samples_, c_.filters.notchFrequencies, c_.values.samplingInterval,
                  c_.sinusoidTables.notchSpanLengths);
}

void CorrectionDriver::fillBcgSeries(int32_t pulseChannel) {
  reduceForPulses(buffers_.bcgSeries[static_cast<size_t>(pulseChannel)]);
}

/// Before the output filter and the decimation, which may leave nothing of its peaks.
void CorrectionDriver::keepElectrocardiogram() {
  std::copy(signal_, signal_ + samples_, buffers_.splineScratch.begin());
  buffers_.ecgSeries.assign(static_cast<size_t>(buffers_.bcgLength), 0.0);
  reduceForPulses(buffers_.ecgSeries);
  std::copy_n(buffers_.splineScratch.begin(), samples_, signal_);
}

/// Leaves the current channel low-passed.
void CorrectionDriver::reduceForPulses(std::vector<double>& series) {
  filterSignalFFT(signal_, samples_, bcgLowPassFilter_, buffers_.fftWorkspace);
  for (int64_t k = 0, j = 0; j < samples_; ++k, j += buffers_.bcgStep)
    series[static_cast<size_t>(k)] = static_cast<double>(static_cast<float>(signal_[j]));
}

/// Adds sign x the spline through the knots, `samplesPerKnot` samples from one knot to the next. The fraction
/// is accumulated, not computed from the sample's index.
void CorrectionDriver::combineWithSpline(const std::vector<double>& knots, int64_t nrOfKnots,
                                         int64_t samplesPerKnot, double sign) {
  const double* const a = knots.data();
  double* const b = buffers_.splineB.data();
  double* const c = buffers_.splineC.data();
  double* const d = buffers_.splineD.data();
  computeSplineCoefficients(a, b, c, d, nrOfKnots);
  const double s = 1.0 / static_cast<double>(samplesPerKnot);
  double t = 0;
  int64_t k = 0;
  for (int64_t i = 0; i < samples_; ++i) {
    signal_[i] += sign * (((d[k] * t + c[k]) * t + b[k]) * t + a[k]);
    if (t + s > 0.99999) {
      t = 0;
      k = std::min(k + 1, nrOfKnots - 1);
    } else {
      t += s;
    }
  }
}

/// Output filter, decimation, reference sum, and back into the chunk files.
bool CorrectionDriver::finishChannel(int32_t channel) {
  if (c_.switches.filteringNeeded) filterSignalFFT(signal_, samples_, outputFilter_, buffers_.fftWorkspace);
  const int64_t outputs = c_.span.nrOfOutputTimePoints;
  for (int64_t k = 0, j = 0; j < samples_; ++k, j += c_.filters.decimationFactor)
    buffers_.chunkBuffer[static_cast<size_t>(k)] = static_cast<float>(signal_[j]);
  if (c_.switches.useAverageReference && c_.roleOf(channel).takesPartInReference) {
    const double weight = c_.averageReferenceWeights[static_cast<size_t>(channel)];
    for (int64_t i = 0; weight != 0.0 && i < outputs; ++i) {
      float& sum = buffers_.referenceSum[static_cast<size_t>(i)];
      const double sample = static_cast<double>(buffers_.chunkBuffer[static_cast<size_t>(i)]);
      sum = static_cast<float>(sample * weight + static_cast<double>(sum));
    }
  }
  return writeChannel(channel, outputs);
}

bool CorrectionDriver::subtractReference() {
  const int64_t outputs = c_.span.nrOfOutputTimePoints;
  for (int32_t channel = 0; channel < c_.selection.nrOfSelectedChannels; ++channel) {
    if (!c_.roleOf(channel).takesPartInReference) continue;
    if (!c_.chunkFiles.readChannel(channel, outputs, buffers_.chunkBuffer.data()))
      return reportFileError("Error reading file: ");
    for (int64_t i = 0; i < outputs; ++i)
      buffers_.chunkBuffer[static_cast<size_t>(i)] -= buffers_.referenceSum[static_cast<size_t>(i)];
    if (!writeChannel(channel, outputs)) return false;
  }
  return true;
}

bool CorrectionDriver::writeChannel(int32_t channel, int64_t nrOfSamples) {
  return c_.chunkFiles.writeChannel(channel, nrOfSamples, buffers_.chunkBuffer.data()) ||
         reportFileError("Error writing file: ");
}

} // namespace emeg
