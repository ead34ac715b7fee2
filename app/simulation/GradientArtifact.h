#pragma once

#include "app/simulation/AmplitudeDrift.h"
#include "app/simulation/BurstWaveform.h"
#include "app/simulation/ScanTiming.h"
#include "app/simulation/SimulationParameters.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// The gradient artifact of all scans: one burst (or two) per slice at its exact onset, the same waveform in
/// every channel with a gain of its own (0.6 to 1.2, either polarity), and the drift of its amplitude.
class GradientArtifact {
public:
  /// `parameters` must hold gradient parameters that fit the recording.
  explicit GradientArtifact(const SimulationParameters& parameters);

  /// Of the first scan.
  const ScanTiming& timing() const { return timings_.front(); }
  const std::vector<ScanTiming>& timings() const { return timings_; }
  double gain(int channel) const { return gains_[static_cast<size_t>(channel)]; }
  const std::vector<double>& gains() const { return gains_; }
  double driftFactor(double time) const { return drift_.factor(time); }

  /// Microvolts at `time` (s) in a channel of gain 1.
  double value(double time) const;

private:
  double valueInScan(const ScanTiming& timing, int64_t volumesBefore, double time) const;

  std::vector<ScanTiming> timings_;
  std::vector<double> delays_; ///< seconds by which volumes come late, scan after scan; empty: none does
  BurstWaveform waveform_;
  double secondBurstDelay_;
  double secondBurstFactor_;
  double activeDuration_; ///< seconds from a slice's onset to the end of its activity
  AmplitudeDrift drift_;
  std::vector<double> gains_;
};

/// Volumes of every scan that a recording of this length has room for between its quiet stretches; 0 when
/// none fits. Where the recording ends within the scan, enough of them to reach its end.
int64_t nrOfVolumesThatFit(const GradientParameters& gradient, double seconds);

} // namespace emeg
