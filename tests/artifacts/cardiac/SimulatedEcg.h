#pragma once

#include "app/evaluation/BeatMatching.h"

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// How an electrocardiogram differs from that of a quiet, healthy heart.
struct EcgCase {
  std::string name = {};
  double beatsPerMinute = 65;
  double rmssd = 0.030;    ///< seconds
  double tWave = 0.5;      ///< of R's height
  double rPeakUv = 1000;   ///< negative: inverted leads
  double ectopicShare = 0; ///< of the beats
  double noiseUv = 0;      ///< RMS of noise up to 35 Hz
  double residueUv = 0;  ///< amplitude at the slice frequency, half of it at twice that; size varies by 30 %
  int nrOfDropouts = 0;  ///< of four seconds each
  int nrOfSpikes = 0;    ///< of 20 mV
  double movementUv = 0; ///< five bursts
};

/// A quiet heart, and everything that is hard about an electrocardiogram inside a scanner.
const std::vector<EcgCase>& ecgCases();

/// Three minutes as the heart beats are looked for in them: 1 to 35 Hz, 250 samples a second.
struct SimulatedEcg {
  std::vector<double> samples;
  double rate = 0;
  std::vector<double> beats; ///< R peaks, seconds
};

SimulatedEcg simulateEcg(const EcgCase& ecgCase, uint64_t seed);

/// What findRPeaks makes of it, within 60 ms.
BeatAgreement foundRPeaks(const EcgCase& ecgCase, uint64_t seed);

} // namespace emeg
