#include "artifacts/cardiac/PulseModel.h"

#include "artifacts/cardiac/BeatReassembly.h"
#include "artifacts/cardiac/BeatWriter.h"
#include "artifacts/cardiac/PrincipalComponents.h"

#include <algorithm>

namespace emeg {

namespace {

constexpr size_t fewestPulses = 3;
constexpr int nrOfComponents = 3;

} // namespace

PulseModel::PulseModel(const std::vector<double>& pulsePositions, int32_t heartPeriod)
    : hasBeats_(pulsePositions.size() >= fewestPulses),
      base_(hasBeats_ ? makeBeatTimeBase(pulsePositions, heartPeriod) : BeatTimeBase()), warpFit_(base_) {}

uint64_t PulseModel::memoryFor(const std::vector<double>& pulsePositions, int32_t heartPeriod) {
  if (pulsePositions.size() < fewestPulses) return 0;
  constexpr uint64_t rowsBesideTheEpochs = 32; // tables, beats, shapes
  const BeatTimeBase base = makeBeatTimeBase(pulsePositions, heartPeriod);
  return (base.nrOfEpochs() + rowsBesideTheEpochs) * static_cast<uint64_t>(base.epochLength()) *
         sizeof(double);
}

void PulseModel::replaceByEstimate(std::vector<double>& series, int64_t length) {
  if (!hasBeats_) {
    std::fill(series.begin(), series.end(), 0.0);
    return;
  }
  const double a = warpFit_.fit(series.data(), length);
  channelWarps_.push_back(a);
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
