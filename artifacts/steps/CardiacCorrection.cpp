#include "artifacts/cardiac/DetectionSignal.h"
#include "artifacts/cardiac/HeartPeriod.h"
#include "artifacts/cardiac/PulseModel.h"
#include "artifacts/cardiac/PulseSelection.h"
#include "converter/Converter.h"
#include "converter/steps/MachineResources.h"
#include "files/formats/TriggerMarkers.h"

namespace emeg {

namespace {

BcgSeries bcgSeriesOf(const CorrectionBuffers& buffers) {
  return {buffers.bcgSeries, buffers.bcgLength, buffers.bcgRate};
}

} // namespace

bool LMTRPluginEMEGFileConverter::detectHeartPulses() {
  if (!estimateHeartPeriod() || !buildPulseDetectionSignal()) return false;
  const HeartPulses pulses =
      selectHeartPulses(cardiac.pulseDetectionSignal, buffers.bcgRate, cardiac.candidatesPerSecond,
                        cardiac.period, cardiac.pulseCapacity);
  cardiac.pulsePositions = pulses.positions;

  log.logProgress("Writing heart pulse triggers");
  const double sampleIntervalUs = static_cast<double>(buffers.bcgInterval) * protocolList.timeFactor;
  // Markers count from the start of the recording; the protocol writer subtracts the same value again.
  const float intervalStartUs = values.intervalStartMs * 1000.0f;
  addHeartPulseMarkers(protocolList.current(), pulses.positions, sampleIntervalUs,
                       static_cast<double>(intervalStartUs));
  if (pulses.listIsFull) {
    log.logProgress("The heart pulse list is full: behind the last pulse all signal below 35 Hz is removed.");
  }
  if (pulses.candidatesAreFull) {
    log.logProgress("The list of heart pulse candidates is full: behind the last pulse all signal below "
                    "35 Hz is removed.");
  }
  return checkPulseModelIsPossible();
}

/// A very regular heart with a few beats missing asks for a very fine model.
bool LMTRPluginEMEGFileConverter::checkPulseModelIsPossible() {
  MachineResources needed;
  needed.memory = PulseModel::memoryFor(cardiac.pulsePositions, cardiac.period.period);
  const std::string shortage =
      describeShortage(needed, availableResources(inputPathBuffer.path()), inputPathBuffer.path());
  return shortage.empty() || showError(shortage);
}

bool LMTRPluginEMEGFileConverter::estimateHeartPeriod() {
  cardiac.period = emeg::estimateHeartPeriod(bcgSeriesOf(buffers));
  log.logProgress("Heart pulsations per minute: %.2f", cardiac.period.beatsPerMinute(buffers.bcgRate));
  return true;
}

bool LMTRPluginEMEGFileConverter::buildPulseDetectionSignal() {
  cardiac.pulseDetectionSignal = emeg::buildPulseDetectionSignal(bcgSeriesOf(buffers), cardiac.period);
  return true;
}

void LMTRPluginEMEGFileConverter::buildPulseModel(int32_t pulseChannel) {
  if (pulseChannel == 0) {
    cardiac.pulseModel = std::make_unique<PulseModel>(cardiac.pulsePositions, cardiac.period.period);
  }
  PulseModel& model = *cardiac.pulseModel;
  model.replaceByEstimate(buffers.bcgSeries[static_cast<size_t>(pulseChannel)], buffers.bcgLength);
  const auto nrOfPulseChannels = static_cast<int32_t>(buffers.bcgSeries.size());
  if (pulseChannel + 1 < nrOfPulseChannels) return;
  log.logProgress("PulseModel: %d channels X %lld timepoints", nrOfPulseChannels,
                  static_cast<long long>(buffers.bcgLength));
  log.logProgress("TimeCorrectedPulses: %d channels X %d pulses X %d timepoints", nrOfPulseChannels,
                  model.nrOfEpochs(), model.epochLength());
  cardiac.pulseModel.reset();
}

} // namespace emeg
