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
  /// When a volume really begins, in seconds: its jitter included.
  double volumeOnset(size_t scan, int64_t volume) const;
  double gain(int channel) const { return gains_[static_cast<size_t>(channel)]; }
  const std::vector<double>& gains() const { return gains_; }
  double driftFactor(double time) const { return drift_.factor(time); }

  /// Microvolts at `time` (s) in a channel of gain 1.
  double value(double time) const;

private:
  double delayOf(size_t scan, int64_t volume) const;
  double valueInScan(size_t scan, double time) const;

  std::vector<ScanTiming> timings_;
  /// Seconds by which the volumes of every scan come late; empty: none does.
  std::vector<std::vector<double>> delays_;
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

/// Seconds after which the last of all scans is over at the earliest, when each has this many volumes.
double leastEndOfScans(const GradientParameters& gradient, int64_t nrOfVolumes);

} // namespace emeg
