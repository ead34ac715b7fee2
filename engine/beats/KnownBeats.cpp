#include "engine/beats/KnownBeats.h"

#include "artifacts/cardiac/known/PulseDelay.h"
#include "artifacts/cardiac/known/RPeaks.h"

namespace emeg {

KnownBeats findKnownBeats(const BeatRequest& request, const std::vector<double>& ecg,
                          const BcgSeries& series) {
  const auto rate = static_cast<double>(series.rate);
  const bool isEcg = request.source == BeatSource::Ecg;
  std::vector<double> beats = isEcg ? findRPeaks(ecg, rate) : request.times;
  if (!isEcg)
    for (double& beat : beats) beat *= rate;

  // Whoever detected the R peaks saw what lies between them; a list may hold anything.
  const bool withoutStray = !isEcg;
  KnownBeats known;
  known.pulses = usablePulses(beats, series.length, series.rate, withoutStray);
  known.period = periodOfPulses(known.pulses.positions);
  if (known.pulses.positions.size() >= fewestBeats)
    known.delays = fitPulseDelays(series, known.pulses.positions, known.period.period);
  return known;
}

} // namespace emeg
