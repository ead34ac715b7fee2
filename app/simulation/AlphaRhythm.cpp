#include "app/simulation/AlphaRhythm.h"

#include <cmath>
#include <numbers>

namespace emeg {

namespace {

constexpr double twoPi = 2 * std::numbers::pi;
constexpr double alphaHz = 10;
constexpr double frequencySpreadHz = 0.3;
constexpr double frequencyMemorySeconds = 2;
constexpr double envelopeSeconds = 7;          // mean time from one maximum to the next
constexpr double envelopeRadiansPerRoot = 0.4; // random walk of the envelope's phase, rad / sqrt(s)

} // namespace

AlphaRhythm::AlphaRhythm(RandomGenerator random, double samplingFrequency)
    : random_(random), samplingInterval_(1 / samplingFrequency), phase_(twoPi * random_.uniform()),
      envelopePhase_(twoPi * random_.uniform()), frequencyOffset_(frequencySpreadHz * random_.normal()),
      frequencyPole_(std::exp(-samplingInterval_ / frequencyMemorySeconds)),
      frequencyKick_(frequencySpreadHz * std::sqrt(1 - frequencyPole_ * frequencyPole_)),
      envelopeKick_(envelopeRadiansPerRoot * std::sqrt(samplingInterval_)) {}

double AlphaRhythm::next() {
  const double value = 0.5 * (1 + std::sin(envelopePhase_)) * std::sin(phase_);
  frequencyOffset_ = frequencyPole_ * frequencyOffset_ + frequencyKick_ * random_.normal();
  phase_ += twoPi * (alphaHz + frequencyOffset_) * samplingInterval_;
  if (phase_ > twoPi) phase_ -= twoPi;
  envelopePhase_ += twoPi / envelopeSeconds * samplingInterval_ + envelopeKick_ * random_.normal();
  if (envelopePhase_ > twoPi) envelopePhase_ -= twoPi;
  return value;
}

} // namespace emeg
