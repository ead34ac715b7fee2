#include "artifacts/CubicSplines.h"
#include "artifacts/gradient/TemplateRemoval.h"
#include "artifacts/steps/CorrectionDriver.h"
#include "converter/Converter.h"
#include "converter/messages/Text.h"
#include "files/formats/TriggerMarkers.h"
#include "plugin/bridge/HostFunctions.h"

#include <algorithm>

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
  const SplinedSignal splined = splinedSignal(signal_, buffers_, samples_);
  const bool isToBeFound = c_.sequence.sliceDuration == 0 && c_.roleOf(channel).showsSequence;
  if (isToBeFound && !c_.detectSequence(splined)) return false;
  if (c_.sequence.sliceDuration == 0) return true;

  c_.estimateGradient(splined);
  for (int64_t i = 0; i < samples_; ++i) signal_[i] -= estimate[static_cast<size_t>(i)];
  return true;
}

bool LMTRPluginEMEGFileConverter::detectSequence(const SplinedSignal& channel) {
  sequence = detectMRSequence(channel, values.samplingFrequency, span.log2FftLength, buffers.fftWorkspace,
                              [this](const std::string& line) { log.logProgress("%s", line.c_str()); });
  if (sequence.sliceDuration == 0) return true;
  addGradientTriggers();
  return askWindow();
}

void LMTRPluginEMEGFileConverter::addGradientTriggers() {
  log.logProgress("Writing MR gradient triggers");
  const GradientMarkerTiming timing{sequence.nrOfVolumes,      sequence.nrOfSlicesPerVolume,
                                    sequence.volumeDuration,   sequence.sliceDuration,
                                    sequence.firstTriggerTime, sequence.hasVolumeGaps};
  // Markers count from the start of the recording; the protocol writer subtracts the same value again.
  const float intervalStartUs = values.intervalStartMs * 1000.0f;
  addGradientMarkers(protocolList.current(), timing, protocolList.timeFactor,
                     static_cast<double>(intervalStartUs));
}

bool LMTRPluginEMEGFileConverter::askWindow() {
  const double rate = sequence.nrOfSlicesPerVolume / sequence.volumeDuration;
  int answer = host::dialogIntegerParameter(0);
  if (answer < 0) {
    const std::string prompt = formatText("Window half-length in slices (%.2f slices/s):", rate);
    answer = host::integerInput(prompt.c_str(), defaultWindow, 1, longestWindow);
  }
  if (answer <= 0) return abortRun(log);
  sequence.windowHalfLength = windowHalfLengthOf(sequence, answer);
  return true;
}

void LMTRPluginEMEGFileConverter::estimateGradient(const SplinedSignal& channel) {
  estimateGradientArtifact(channel, sequence, values.samplingFrequency, switches.volumeWise != 0,
                           buffers.artifactEstimate.data());
}

} // namespace emeg
