#include "artifacts/cardiac/model/PulseModel.h"

#include "artifacts/cardiac/model/BeatReassembly.h"
#include "artifacts/cardiac/model/BeatWriter.h"
#include "artifacts/cardiac/model/PrincipalComponents.h"
#include "artifacts/cardiac/model/StretchEstimate.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr size_t fewestPulses = 3;
constexpr int nrOfComponents = 3;

std::vector<double> usedPulses(const std::vector<double>& positions, const BeatModelSettings& settings) {
  if (!settings.keepOutside) return positions;
  std::vector<double> pulses;
  for (const double position : positions) {
    const double sample = std::floor(position + 0.5);
    if (std::isfinite(sample) && (pulses.empty() || sample > pulses.back())) pulses.push_back(sample);
  }
  return pulses;
}

std::vector<BeatStretch> stretchesOf(const std::vector<double>& pulses, const BeatModelSettings& settings) {
  if (!settings.keepOutside || pulses.size() < fewestPulses) return {};
  return splitAtGaps(pulses, settings.gapFactor);
}

BeatTimeBase timeBaseOf(const std::vector<double>& pulses, const std::vector<BeatStretch>& stretches,
                        int32_t heartPeriod, const BeatModelSettings& settings) {
  if (pulses.size() < fewestPulses) return {};
  if (!settings.keepOutside) return makeBeatTimeBase(pulses, heartPeriod);
  return makeStretchTimeBase(pulses, stretches, heartPeriod, settings.followsUsualBeat);
}

} // namespace

PulseModel::PulseModel(const std::vector<double>& pulsePositions, int32_t heartPeriod,
                       const BeatModelSettings& settings)
    : settings_(settings), pulses_(usedPulses(pulsePositions, settings)),
      hasBeats_(pulses_.size() >= fewestPulses), stretches_(stretchesOf(pulses_, settings)),
      base_(timeBaseOf(pulses_, stretches_, heartPeriod, settings)), fitBase_(withoutOuterIntervals(base_)),
      warpFit_(fitBase_) {}

uint64_t PulseModel::memoryFor(const std::vector<double>& pulsePositions, int32_t heartPeriod,
                               const BeatModelSettings& settings) {
  const std::vector<double> pulses = usedPulses(pulsePositions, settings);
  if (pulses.size() < fewestPulses) return 0;
  constexpr uint64_t rowsBesideTheEpochs = 32; // tables, beats, shapes
  const BeatTimeBase base = timeBaseOf(pulses, stretchesOf(pulses, settings), heartPeriod, settings);
  return (base.nrOfEpochs() + rowsBesideTheEpochs) * static_cast<uint64_t>(base.epochLength()) *
         sizeof(double);
}

int32_t PulseModel::nrOfEpochs() const {
  int32_t count = 0;
  for (size_t e = 0; hasBeats_ && e < base_.nrOfEpochs(); ++e) count += base_.isEpoch(e) ? 1 : 0;
  return count;
}

std::vector<PositionRange> PulseModel::modelledStretches(int64_t length) const {
  std::vector<PositionRange> modelled;
  if (!hasBeats_) return modelled;
  for (const BeatStretch& stretch : stretches_) modelled.push_back(modelledSamples(stretch, pulses_, length));
  if (!settings_.keepOutside) {
    const auto sampleOf = [length](double pulse) {
      return static_cast<int64_t>(std::clamp(std::floor(pulse), 0.0, static_cast<double>(length)));
    };
    modelled.push_back({sampleOf(pulses_.front()), sampleOf(pulses_.back())});
  }
  return modelled;
}

double PulseModel::replaceByEstimate(std::vector<double>& series, int64_t length) const {
  if (!hasBeats_) {
    std::fill(series.begin(), series.end(), 0.0);
    return 0.5;
  }
  const double a = warpFit_.fit(series.data(), length);
  if (settings_.keepOutside) {
    replaceByStretchEstimate(base_, stretches_, settings_.fadeLength, a, nrOfComponents, series, length);
  } else {
    estimateFromPulseToPulse(a, series, length);
  }
  return a;
}

void PulseModel::estimateFromPulseToPulse(double a, std::vector<double>& series, int64_t length) const {
  const WarpTable table = makeWarpTable(a, base_);
  const size_t lastInterval = base_.nrOfIntervals() - 1;
  const auto epochLength = static_cast<size_t>(base_.epochLength());

  RowMatrix epochs(base_.nrOfEpochs(), epochLength);
  std::vector<double> beat(static_cast<size_t>(base_.modelLength));
  std::vector<double> firstBeat;
  for (size_t i = 0; i <= lastInterval; ++i) {
    resampleInterval(series.data(), length, base_, table, i, beat.data());
    cutIntoEpochs(base_, i, beat, epochs);
    if (i == 0) firstBeat = beat;
  }
  const std::vector<double> lastBeat = beat;
  const PrincipalComponents model = principalComponentModel(nrOfComponents, epochs);

  BeatWriter writer(base_, a);
  std::vector<double> epochBefore(epochLength);
  std::vector<double> epochAfter(epochLength);
  for (size_t i = 0; i <= lastInterval; ++i) {
    if (i == 0) beat = firstBeat;
    if (i == lastInterval) beat = lastBeat;
    if (i < lastInterval) model.modelOf(i, epochAfter);
    reassembleBeat(base_, i > 0 ? epochBefore.data() : nullptr,
                   i < lastInterval ? epochAfter.data() : nullptr, beat);
    writer.write(i, beat, series.data(), length);
    epochBefore.swap(epochAfter);
  }
}

} // namespace emeg
