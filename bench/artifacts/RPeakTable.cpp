// How many R peaks are found in electrocardiograms with everything that is hard about them in a scanner: the
// worst of five seeds. Prints the table of docs/heart-beats.md.

#include "tests/artifacts/cardiac/SimulatedEcg.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

int main() {
  constexpr uint64_t nrOfSeeds = 5;
  std::printf(
      "| Electrocardiogram | Sensitivity | Positive predictivity | RMS error (ms) | Largest error (ms) |\n"
      "|---|---|---|---|---|\n");
  for (const emeg::EcgCase& ecgCase : emeg::ecgCases()) {
    double sensitivity = 1;
    double predictivity = 1;
    double rms = 0;
    double largest = 0;
    for (uint64_t seed = 1; seed <= nrOfSeeds; ++seed) {
      const emeg::BeatAgreement agreement = emeg::foundRPeaks(ecgCase, seed);
      sensitivity = std::min(sensitivity, agreement.sensitivity());
      predictivity = std::min(predictivity, agreement.positivePredictivity());
      rms = std::max(rms, agreement.rmsError * 1000);
      largest = std::max(largest, agreement.largestError * 1000);
    }
    std::printf("| %s | %.3f | %.3f | %.1f | %.1f |\n", ecgCase.name.c_str(), sensitivity, predictivity, rms,
                largest);
  }
  return 0;
}
