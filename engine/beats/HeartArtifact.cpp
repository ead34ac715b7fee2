#include "engine/beats/HeartArtifact.h"

#include "artifacts/cardiac/known/PulseDelay.h"
#include "artifacts/cardiac/model/PulseModel.h"
#include "artifacts/cardiac/search/BeatSearch.h"
#include "engine/beats/KnownBeats.h"
#include "engine/beats/PulseFigures.h"

#include <algorithm>
#include <memory>

namespace emeg {

namespace {

/// One search and one model for all channels; its members are called in the order of the work.
class HeartModel {
public:
  HeartModel(HeartSeries& series, const BeatRequest& request, Findings& findings, Observer& observer)
      : series_(series), request_(request), findings_(findings), observer_(observer),
        rate_(static_cast<float>(series.rate)), settings_(keepingBeatModel(rate_)) {}

  void run() {
    observer_.stepBegins(Step::FindingBeats, -1);
    const BcgSeries all{series_.channels, series_.length, rate_};
    if (request_.source == BeatSource::Blind)
      search(all);
    else
      use(findKnownBeats(request_, series_.ecg, all));
    findings_.pulseSampleRate = series_.rate;
    findings_.beatsPerMinute = period_.beatsPerMinute(rate_);
    findings_.plausibility = measurePlausibility(all, typicalPulses(), period_.period);
    for (const double position : positions_) findings_.pulseTimes.push_back(position / series_.rate);
    observer_.memoryNeeded(PulseModel::memoryFor(positions_, period_.period, settings_));
    model();
    noteWhatStays();
  }

private:
  void search(const BcgSeries& all) {
    FoundBeats found = findBeats(all, unlimitedBeatSearch());
    observer_.heartPeriodFound(found.period.beatsPerMinute(rate_));
    observer_.beatsFound(found, rate_);
    period_ = found.period;
    positions_ = std::move(found.positions);
    findings_.pulseListIsFull = found.listIsFull;
  }

  void use(KnownBeats known) {
    period_ = known.period;
    positions_ = known.pulses.positions;
    delays_ = std::move(known.delays);
    for (const int32_t delay : delays_) findings_.pulseDelays.push_back(delay / series_.rate);
    findings_.knownPulses = std::move(known.pulses);
  }

  /// Where the artifact is in most channels.
  std::vector<double> typicalPulses() const {
    if (delays_.empty()) return positions_;
    std::vector<int32_t> delays = delays_;
    std::sort(delays.begin(), delays.end());
    return delayedPulses(positions_, delays[delays.size() / 2], series_.length);
  }

  void model() {
    std::unique_ptr<PulseModel> shared;
    if (delays_.empty()) shared = std::make_unique<PulseModel>(positions_, period_.period, settings_);
    for (size_t k = 0; k < series_.channels.size(); ++k) {
      observer_.stepBegins(Step::RemovingBeats, static_cast<int>(k));
      observer_.progress(static_cast<double>(k) / static_cast<double>(series_.channels.size()));
      std::vector<double>& channel = series_.channels[k];
      channel.resize(static_cast<size_t>(series_.length) + 1, 0.0);
      const std::vector<double> before = channel;
      std::vector<double> pulses = positions_;
      if (shared) {
        shared->replaceByEstimate(channel, series_.length);
      } else {
        pulses = delayedPulses(pulses, delays_[k], series_.length);
        PulseModel(pulses, period_.period, settings_).replaceByEstimate(channel, series_.length);
      }
      channel.back() = 0;
      findings_.pulseFigures.push_back(measurePulseFigures(before, channel, pulses, series_.length));
    }
  }

  /// The stretches between those that the model explains.
  void noteWhatStays() {
    const std::vector<double> pulses = typicalPulses();
    if (pulses.size() < fewestBeats) {
      findings_.withoutModel = {{0, static_cast<double>(series_.length) / series_.rate}};
      return;
    }
    int64_t from = 0;
    const auto note = [&](int64_t to) {
      if (to > from)
        findings_.withoutModel.push_back(
            {static_cast<double>(from) / series_.rate, static_cast<double>(to) / series_.rate});
    };
    const PulseModel model(pulses, period_.period, settings_);
    for (const PositionRange& stretch : model.modelledStretches(series_.length)) {
      note(stretch.begin);
      from = stretch.end;
    }
    note(series_.length);
  }

  HeartSeries& series_;
  const BeatRequest& request_;
  Findings& findings_;
  Observer& observer_;
  const float rate_;
  const BeatModelSettings settings_;
  HeartPeriod period_;
  std::vector<double> positions_;
  std::vector<int32_t> delays_; ///< of known beats, per channel
};

} // namespace

void findHeartArtifact(HeartSeries& series, const BeatRequest& request, Findings& findings,
                       Observer& observer) {
  HeartModel(series, request, findings, observer).run();
}

} // namespace emeg
