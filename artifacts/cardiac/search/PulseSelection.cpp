#include "artifacts/cardiac/search/PulseSelection.h"

#include "artifacts/cardiac/search/GapFilling.h"

#include <cmath>

namespace emeg {

HeartPulses selectHeartPulses(const std::vector<float>& detectionSignal, float rate,
                              float candidatesPerSecond, const HeartPeriod& heart, size_t capacity) {
  HeartPulses pulses;
  if (heart.shortest <= 0 || detectionSignal.empty()) return pulses;
  const auto length = static_cast<double>(detectionSignal.size());
  const double room =
      std::floor(length / static_cast<double>(rate) * static_cast<double>(candidatesPerSecond));

  PulseCandidates candidates = findCandidates(detectionSignal, static_cast<size_t>(room));
  pulses.candidatesAreFull = candidates.listIsFull;
  std::vector<int32_t> seeds = markCandidates(candidates, heart.shortest);
  const size_t seedRoom = detectionSignal.size() / static_cast<size_t>(heart.shortest);
  if (seeds.size() > seedRoom) seeds.resize(seedRoom);
  PulseChains chains = makeSeedChains(candidates, seeds, heart.longest);
  PulsePathSearch search(candidates, static_cast<int64_t>(detectionSignal.size()), heart.shortest,
                         heart.longest);
  linkChains(chains, candidates, search);
  for (const int32_t beat : fillGaps(std::move(chains), candidates, search)) {
    pulses.listIsFull = pulses.positions.size() >= capacity;
    if (pulses.listIsFull) break;
    pulses.positions.push_back(candidates.position(beat));
  }
  return pulses;
}

} // namespace emeg
