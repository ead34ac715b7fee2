#include "engine/beats/BlindBeats.h"

#include "artifacts/cardiac/DetectionSignal.h"
#include "artifacts/cardiac/PulseSelection.h"

namespace emeg {

BlindBeats::BlindBeats(const Method& method, int nrOfPulseChannels)
    : method_(method), nrOfPulseChannels_(nrOfPulseChannels) {}

FoundBeats BlindBeats::find(const BcgSeries& series, const std::vector<double>&, Observer& observer) {
  found_ = FoundBeats();
  found_.rate = series.rate;
  found_.period = estimateHeartPeriod(series);
  observer.heartPeriodFound(found_.period.beatsPerMinute(series.rate));
  const std::vector<float> signal = buildPulseDetectionSignal(series, found_.period);
  HeartPulses pulses = selectHeartPulses(signal, series.rate, method_.mostCandidatesPerSecond, found_.period,
                                         method_.mostBeats);
  found_.positions = std::move(pulses.positions);
  found_.listIsFull = pulses.listIsFull;
  found_.candidatesAreFull = pulses.candidatesAreFull;
  observer.beatsFound(found_);
  // A very regular heart with a few beats missing asks for a very fine model.
  observer.memoryNeeded(PulseModel::memoryFor(found_.positions, found_.period.period));
  return found_;
}

void BlindBeats::replaceByEstimate(int pulseChannel, std::vector<double>& series, int64_t length,
                                   Observer& observer) {
  if (pulseChannel == 0) model_ = std::make_unique<PulseModel>(found_.positions, found_.period.period);
  model_->replaceByEstimate(series, length);
  if (pulseChannel + 1 < nrOfPulseChannels_) return;
  observer.beatModelsMade(nrOfPulseChannels_, length, model_->nrOfEpochs(), model_->epochLength());
  model_.reset();
}

} // namespace emeg
