#pragma once

#include "app/simulation/AmplitudeDrift.h"
#include "app/simulation/BurstWaveform.h"
#include "app/simulation/ScanTiming.h"
#include "app/simulation/SimulationParameters.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// The gradient artifact of a whole scan: one burst per slice at its exact onset, the same waveform in every
/// channel with a gain of its own (0.6 to 1.2, either polarity), and the drift of its amplitude.
class GradientArtifact {
public:
  /// `parameters` must hold gradient parameters that fit the recording.
  explicit GradientArtifact(const SimulationParameters& parameters);

  const ScanTiming& timing() const { return timing_; }
  double gain(int channel) const { return gains_[static_cast<size_t>(channel)]; }
  const std::vector<double>& gains() const { return gains_; }
  double driftFactor(double time) const { return drift_.factor(time); }

  /// Microvolts at `time` (s) in a channel of gain 1.
  double value(double time) const;

private:
  ScanTiming timing_;
  BurstWaveform waveform_;
  AmplitudeDrift drift_;
  std::vector<double> gains_;
};

/// Volumes that a recording of this length has room for between its quiet stretches; 0 when none fits.
int64_t nrOfVolumesThatFit(const GradientParameters& gradient, double seconds);

} // namespace emeg
