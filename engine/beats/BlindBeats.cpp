#include "engine/beats/BlindBeats.h"

namespace emeg {

BlindBeats::BlindBeats(const Method& method, int nrOfPulseChannels)
    : method_(method), nrOfPulseChannels_(nrOfPulseChannels) {}

void BlindBeats::find(const BcgSeries& series, const std::vector<double>&, Observer& observer) {
  BeatSearchSettings settings;
  settings.capacity = method_.mostBeats;
  settings.candidatesPerSecond = method_.mostCandidatesPerSecond;
  FoundBeats found = findBeats(series, settings);
  period_ = found.period;
  observer.heartPeriodFound(period_.beatsPerMinute(series.rate));
  observer.beatsFound(found, series.rate);
  // A very regular heart with a few beats missing asks for a very fine model.
  observer.memoryNeeded(PulseModel::memoryFor(found.positions, period_.period));
  positions_ = std::move(found.positions);
}

void BlindBeats::replaceByEstimate(int pulseChannel, std::vector<double>& series, int64_t length,
                                   Observer& observer) {
  if (pulseChannel == 0) model_ = std::make_unique<PulseModel>(positions_, period_.period);
  model_->replaceByEstimate(series, length);
  if (pulseChannel + 1 < nrOfPulseChannels_) return;
  observer.beatModelsMade(nrOfPulseChannels_, length, model_->nrOfEpochs(), model_->epochLength());
  model_.reset();
}

} // namespace emeg
