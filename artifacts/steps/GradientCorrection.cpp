#include "artifacts/CubicSplines.h"
#include "artifacts/gradient/TemplateRemoval.h"
#include "artifacts/steps/CorrectionDriver.h"
#include "converter/messages/Text.h"
#include "files/formats/TriggerMarkers.h"
#include "plugin/bridge/HostFunctions.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace emeg {

namespace {

constexpr int defaultWindow = 150; // slices
constexpr int longestWindow = 1000;

SplinedSignal splinedSignal(const double* signal, const CorrectionBuffers& buffers, int64_t nrOfSamples) {
  return {signal, buffers.splineB.data(), buffers.splineC.data(), buffers.splineD.data(), nrOfSamples};
}

} // namespace

/// Removes the gradient artifact from the current channel. The timing is found once, on the first channel
/// that shows it; a channel without any known timing stays as it is.
bool CorrectionDriver::removeGradientArtifact(int32_t channel) {
  std::vector<double>& estimate = buffers_.artifactEstimate;
  std::fill(estimate.begin(), estimate.end(), 0.0);
  computeSplineCoefficients(signal_, buffers_.splineB.data(), buffers_.splineC.data(),
                            buffers_.splineD.data(), samples_);
  const bool isToBeFound = c_.sequence.sliceDuration == 0 && c_.roleOf(channel).showsSequence;
  if (isToBeFound && !detectSequence()) return false;
  if (c_.sequence.sliceDuration == 0) return true;

  estimateGradientArtifact(splinedSignal(signal_, buffers_, samples_), c_.sequence,
                           c_.values.samplingFrequency, c_.switches.volumeWise != 0, estimate.data());
  for (int64_t i = 0; i < samples_; ++i) signal_[i] -= estimate[static_cast<size_t>(i)];
  return true;
}

/// True also when nothing was found; false when the user cancelled.
bool CorrectionDriver::detectSequence() {
  c_.sequence = detectMRSequence(splinedSignal(signal_, buffers_, samples_), c_.values.samplingFrequency,
                                 c_.span.log2FftLength,
                                 [this](const std::string& line) { c_.log.logProgress("%s", line.c_str()); });
  if (c_.sequence.sliceDuration == 0) return true;
  addGradientTriggers();
  return askWindow();
}

void CorrectionDriver::addGradientTriggers() {
  c_.log.logProgress("Writing MR gradient triggers");
  const MRSequence& sequence = c_.sequence;
  const GradientMarkerTiming timing{sequence.nrOfVolumes,      sequence.nrOfSlicesPerVolume,
                                    sequence.volumeDuration,   sequence.sliceDuration,
                                    sequence.firstTriggerTime, sequence.hasVolumeGaps};
  // Markers count from the start of the recording; the protocol writer subtracts the same value again.
  const float intervalStartUs = c_.values.intervalStartMs * 1000.0f;
  addGradientMarkers(c_.protocolList.current(), timing, c_.protocolList.timeFactor,
                     static_cast<double>(intervalStartUs));
}

bool CorrectionDriver::askWindow() {
  const double rate = c_.sequence.nrOfSlicesPerVolume / c_.sequence.volumeDuration;
  int answer = host::dialogIntegerParameter(0);
  if (answer < 0) {
    const std::string prompt = formatText("Window half-length in slices (%.2f slices/s):", rate);
    answer = host::integerInput(prompt.c_str(), defaultWindow, 1, longestWindow);
  }
  if (answer <= 0) return abortRun(c_.log);
  c_.sequence.windowHalfLength = static_cast<int32_t>(
      std::min(std::ceil(answer / rate), static_cast<double>(std::numeric_limits<int32_t>::max())));
  return true;
}

} // namespace emeg
