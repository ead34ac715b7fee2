#include "app/simulation/Simulation.h"

#include <algorithm>

namespace emeg {

Simulation::Simulation(const SimulationParameters& parameters)
    : parameters_(parameters),
      eeg_(parameters.eeg, parameters.seed, parameters.nrOfChannels, parameters.samplingFrequency),
      lineNoise_(parameters), disturbances_(parameters) {
  if (parameters.movement) movement_.emplace(parameters);
  if (parameters.gradient) gradient_.emplace(parameters);
  if (parameters.heart) pulse_.emplace(parameters);
  if (parameters.ecg) ecg_.emplace(parameters, pulse_->beats());
}

bool Simulation::next(int64_t largestCount, SimulatedBlock& block) {
  const int64_t count = std::min(largestCount, parameters_.nrOfTimePoints() - position_);
  if (count <= 0) return false;
  const auto length = static_cast<size_t>(count);
  const auto nrOfChannels = static_cast<size_t>(parameters_.nrOfChannels);
  block.firstTimePoint = position_;
  block.nrOfTimePoints = count;
  block.nrOfChannels = parameters_.nrOfChannels;
  block.clean.resize(nrOfChannels * length);
  block.pulse.assign(nrOfChannels * length, 0.0);
  block.bursts.assign(length, 0.0);
  block.gains.assign(nrOfChannels, 0.0);

  eeg_.next(count, block.clean);
  lineNoise_.add(position_, count, block.clean);
  if (movement_) movement_->add(position_, count, block.clean);
  if (ecg_) ecg_->add(position_, std::span(block.clean).last(length));
  for (const int channel : parameters_.deadChannels)
    std::fill_n(block.clean.begin() + channel * count, count, 0.0);
  if (pulse_) pulse_->fill(position_, count, block.pulse);
  if (gradient_) {
    block.gains = gradient_->gains();
    for (int64_t t = 0; t < count; t++)
      block.bursts[static_cast<size_t>(t)] =
          gradient_->value(static_cast<double>(position_ + t) / parameters_.samplingFrequency);
  }
  disturb(block);
  position_ += count;
  return true;
}

/// Spikes belong to what the scanner is not to blame for. While the recording drops out, every part of it is
/// 0.
void Simulation::disturb(SimulatedBlock& block) const {
  const int64_t count = block.nrOfTimePoints;
  block.clipUv = parameters_.disturbances.clipUv;
  for (int c = 0; c < block.nrOfChannels; c++)
    if (!parameters_.isDead(c))
      disturbances_.addSpikes(
          position_, std::span(block.clean).subspan(block.indexOf(c, 0), static_cast<size_t>(count)));
  if (disturbances_.dropoutTimes().empty()) return;
  for (int64_t t = 0; t < count; t++) {
    if (!disturbances_.isDroppedOut(static_cast<double>(position_ + t) / parameters_.samplingFrequency))
      continue;
    block.bursts[static_cast<size_t>(t)] = 0;
    for (int c = 0; c < block.nrOfChannels; c++)
      block.clean[block.indexOf(c, t)] = block.pulse[block.indexOf(c, t)] = 0;
  }
}

} // namespace emeg
