#include "artifacts/steps/CorrectionDriver.h"

#include "files/formats/TriggerMarkers.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

namespace emeg {

namespace {

constexpr double artifactHighPassHz = 1.0;
constexpr double splitOrder = 3.0;
constexpr double restSeconds = 0.1; // between two values of the low-frequency rest
constexpr double bcgTargetRate = 250.0;

FilterResponse singleEdge(EdgeKind kind, double hz, double samplingInterval, int32_t log2FftLength) {
  FilterStageList stages;
  stages.addFilterStage(kind, hz * 2.0 * samplingInterval, splitOrder);
  return makeFilterResponse(stages, log2FftLength);
}

/// Rounded down; beyond any recording's length the exact value does not matter.
int64_t wholeSamples(double count) {
  return static_cast<int64_t>(std::min(std::floor(count), 4e18));
}

} // namespace

bool LMTRPluginEMEGFileConverter::processChannels() {
  return CorrectionDriver(*this).run();
}

CorrectionDriver::CorrectionDriver(LMTRPluginEMEGFileConverter& converter)
    : c_(converter), buffers_(converter.buffers), samples_(converter.span.nrOfIntervalTimePoints),
      processed_(converter.span.nrOfProcessedTimePoints()) {}

bool CorrectionDriver::run() {
  if (!c_.switches.correctionNeeded) return true;
  orderChannels();
  buildFilters();
  allocateBuffers();
  if (c_.switches.correctGradient || c_.switches.correctBCG) {
    c_.protocolList.timeFactor = microsecondsPerSecond;
    c_.protocolList.append(makeTriggerProtocol());
  }
  if (c_.switches.removeLineSinusoids)
    c_.sinusoidTables =
        prepareSinusoidTables(c_.filters.notchFrequencies, c_.values.samplingInterval, samples_);

  if (c_.switches.correctBCG) {
    if (!correctInTwoPasses()) return false;
  } else {
    for (const int32_t channel : order_)
      if (!correctInOnePass(channel)) return false;
  }

  // Every writer describes the decimated data.
  c_.values.samplingFrequency /= c_.filters.decimationFactor;
  c_.values.samplingInterval *= c_.filters.decimationFactor;
  if (c_.switches.useAverageReference && !subtractReference()) return false;
  buffers_ = CorrectionBuffers();
  return true;
}

/// The scanner's timing is found before it is needed: channels that cannot show it come last.
void CorrectionDriver::orderChannels() {
  order_.resize(static_cast<size_t>(c_.selection.nrOfSelectedChannels));
  std::iota(order_.begin(), order_.end(), 0);
  std::stable_partition(order_.begin(), order_.end(),
                        [this](int32_t channel) { return c_.roleOf(channel).showsSequence; });
  if (!c_.switches.correctBCG) return;
  std::copy_if(order_.begin(), order_.end(), std::back_inserter(pulseChannels_),
               [this](int32_t channel) { return c_.roleOf(channel).takesPartInPulses; });
}

void CorrectionDriver::buildFilters() {
  const int32_t log2FftLength = c_.span.log2FftLength;
  const double dt = c_.values.samplingInterval;
  if (c_.switches.filteringNeeded) outputFilter_ = makeFilterResponse(c_.filters.stages, log2FftLength);
  if (c_.switches.anyArtifactCorrection)
    artifactHighPassFilter_ = singleEdge(EdgeKind::HighPass, artifactHighPassHz, dt, log2FftLength);
  if (c_.switches.correctBCG) {
    buffers_.bcgLowPassHz = 35.0f;
    bcgLowPassFilter_ =
        singleEdge(EdgeKind::LowPass, static_cast<double>(buffers_.bcgLowPassHz), dt, log2FftLength);
  }
}

void CorrectionDriver::allocateBuffers() {
  const double fs = c_.values.samplingFrequency;
  const auto nrOfChannels = static_cast<size_t>(c_.selection.nrOfSelectedChannels);
  buffers_.chunkBuffer.assign(static_cast<size_t>(processed_), 0.0f);
  buffers_.allocateChannelSignal(std::max(c_.span.fftLength, samples_));
  signal_ = buffers_.channelSignal();

  int64_t longestKnotRow = samples_;
  if (c_.switches.anyArtifactCorrection) {
    buffers_.restStep = wholeSamples(fs * restSeconds);
    buffers_.restLength = (samples_ - 1) / buffers_.restStep + 1;
  }
  if (c_.switches.correctBCG) {
    buffers_.lowFrequencyRest.assign(nrOfChannels,
                                     std::vector<double>(static_cast<size_t>(buffers_.restLength)));
    buffers_.bcgStep = std::max<int64_t>(wholeSamples(fs / bcgTargetRate), 1);
    buffers_.bcgLength = (samples_ - 1) / buffers_.bcgStep + 1;
    buffers_.bcgRate = static_cast<float>(fs / static_cast<double>(buffers_.bcgStep));
    buffers_.bcgInterval = 1 / buffers_.bcgRate;
    buffers_.bcgSeries.assign(pulseChannels_.size(),
                              std::vector<double>(static_cast<size_t>(buffers_.bcgLength) + 1));
    longestKnotRow = std::max(longestKnotRow, buffers_.bcgLength + 1);
  }
  for (std::vector<double>* array :
       {&buffers_.splineScratch, &buffers_.splineB, &buffers_.splineC, &buffers_.splineD})
    array->assign(static_cast<size_t>(longestKnotRow) + 1, 0.0);
  if (c_.switches.correctGradient) buffers_.artifactEstimate.assign(static_cast<size_t>(samples_), 0.0);
  if (c_.switches.useAverageReference || c_.switches.correctBCG)
    buffers_.referenceSum.assign(static_cast<size_t>(c_.span.nrOfOutputTimePoints), 0.0f);
}

bool CorrectionDriver::correctInOnePass(int32_t channel) {
  const StageSwitches& stages = c_.switches;
  c_.log.logProgress("Processing channel #%d", numberOf(channel));
  if (!readChannel(channel)) return false;
  zeroSamplesThatAreNotNumbers(channel);
  if (stages.correctSaturations) repairChannelSaturations();
  if (stages.anyArtifactCorrection) {
    filterSignalFFT(signal_, samples_, artifactHighPassFilter_, buffers_.fftWorkspace);
    subtractHighPassedSignal();
  }
  if (stages.correctGradient && !removeGradientArtifact(channel)) return false;
  if (stages.removeLineSinusoids) removeLineSinusoids();
  if (stages.correctBCG && c_.roleOf(channel).showsHeartBeats) keepElectrocardiogram();
  if (stages.correctOcular && !removeOcularArtifact()) return false;
  if (stages.anyArtifactCorrection) addFullRateRest();
  return finishChannel(channel);
}

bool CorrectionDriver::correctInTwoPasses() {
  int32_t pulseChannel = 0;
  for (const int32_t channel : order_) {
    const bool hasPulses = c_.roleOf(channel).takesPartInPulses;
    if (!(hasPulses ? preprocess(channel, pulseChannel++) : correctInOnePass(channel))) return false;
  }
  if (pulseChannels_.empty()) return true;
  c_.log.logProgress("Automatic detection of heart pulses");
  if (!c_.detectHeartPulses()) return false;
  for (size_t k = 0; k < pulseChannels_.size(); ++k)
    if (!removePulses(pulseChannels_[k], static_cast<int32_t>(k))) return false;
  return true;
}

bool CorrectionDriver::preprocess(int32_t channel, int32_t pulseChannel) {
  const StageSwitches& stages = c_.switches;
  c_.log.logProgress("Pre-processing channel #%d", numberOf(channel));
  if (!readChannel(channel)) return false;
  zeroSamplesThatAreNotNumbers(channel);
  if (stages.correctSaturations) repairChannelSaturations();
  filterSignalFFT(signal_, samples_, artifactHighPassFilter_, buffers_.fftWorkspace);
  keepLowFrequencyRest(channel);
  if (stages.correctGradient && !removeGradientArtifact(channel)) return false;
  if (stages.removeLineSinusoids) removeLineSinusoids();

  const int64_t margin = c_.span.firstTimePoint - c_.span.firstProcessedTimePoint;
  for (int64_t i = 0; i < samples_; ++i)
    buffers_.chunkBuffer[static_cast<size_t>(margin + i)] = static_cast<float>(signal_[i]);
  if (!writeChannel(channel, processed_)) return false;
  fillBcgSeries(pulseChannel);
  return true;
}

bool CorrectionDriver::removePulses(int32_t channel, int32_t pulseChannel) {
  const StageSwitches& stages = c_.switches;
  c_.log.logProgress("Removing heart pulse artifacts from channel #%d", numberOf(channel));
  if (!readChannel(channel)) return false;
  c_.buildPulseModel(pulseChannel);
  std::vector<double>& estimate = buffers_.bcgSeries[static_cast<size_t>(pulseChannel)];
  estimate[static_cast<size_t>(buffers_.bcgLength)] = 0.0;
  combineWithSpline(estimate, buffers_.bcgLength + 1, buffers_.bcgStep, -1);
  if (stages.correctOcular && !removeOcularArtifact()) return false;
  if (stages.anyArtifactCorrection) {
    combineWithSpline(buffers_.lowFrequencyRest[static_cast<size_t>(channel)], buffers_.restLength,
                      buffers_.restStep, 1);
  }
  return finishChannel(channel);
}

} // namespace emeg
