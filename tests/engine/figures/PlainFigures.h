#pragma once

#include "artifacts/gradient/timing/pauses/SequenceDetection.h"
#include "engine/figures/FrequencyRange.h"
#include "engine/timing/FoundScan.h"

#include <cstdint>
#include <vector>

namespace emeg::plain {

/// The figures as defined, from a whole channel that lies in memory, sums written out.
struct VolumeFigures {
  double sliceHarmonics = 0, volumeHarmonics = 0, background = 0;
  double lineToBackground = 0, medianSliceToBackground = 0;
  double medianImagingArtifact = 0;
  double artifactSecondsOutside = 0;
  double drift = 0;
};
VolumeFigures volumeFigures(const std::vector<double>& channel, double samplingFrequency,
                            const MRSequence& sequence, const std::vector<FoundScan>& corrected,
                            const FrequencyRange& range);

/// Welch's method with windows of 2^log2Length samples and the Fourier sums written out; samples as floats.
std::vector<double> welch(const std::vector<double>& channel, int64_t first, int64_t end, int log2Length,
                          size_t nrOfBins);

} // namespace emeg::plain
