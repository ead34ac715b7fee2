#pragma once

#include "app/simulation/HeartBeats.h"
#include "app/simulation/SimulationParameters.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// An electrocardiogram: P, Q, R, S and T as Gaussian waves around every R peak (McSharry, Clifford,
/// Tarassenko, Smith: A dynamical model for generating synthetic electrocardiogram signals, IEEE Trans.
/// Biomed. Eng. 50 (2003)). Blood that flows through a magnetic field lifts the T wave (magnetohydrodynamic
/// effect). Ectopic beats have a wide complex of the other sign and no P wave.
class Electrocardiogram {
public:
  /// `parameters` must hold a heart and an electrocardiogram.
  Electrocardiogram(const SimulationParameters& parameters, HeartBeats beats);

  /// Adds the time points first ... first + samples.size() - 1 in microvolts.
  void add(int64_t first, std::span<double> samples) const;

private:
  struct Wave {
    double centre; ///< seconds after the R peak
    double width;  ///< standard deviation, seconds
    double height; ///< microvolts
  };
  void addWave(const Wave& wave, double rPeak, int64_t first, std::span<double> samples) const;

  double samplingFrequency_;
  HeartBeats beats_;
  std::vector<Wave> normal_, ectopic_;
};

} // namespace emeg
