#pragma once

#include "artifacts/gradient/ScanSegment.h"
#include "engine/CorrectionSettings.h"
#include "engine/Findings.h"
#include "engine/Observer.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// The channels of a recording at a low rate, in which heart beats are found and modelled.
struct HeartSeries {
  std::vector<std::vector<double>> channels; ///< those whose beats are removed, free of gradient artifact
  std::vector<double> ecg;                   ///< the electrocardiogram like these, empty without one
  double rate = 0;                           ///< Hz
  int64_t length = 0;
};

/// Splits off what lies below 1 Hz and removes the gradient artifact at the low rate: what lies below 35 Hz
/// of it repeats with the scans like all of it. `scans` in samples of the recording, `step` of which make one
/// of the series.
void removeGradientFromSeries(HeartSeries& series, std::vector<ScanSegment> scans, double step,
                              bool volumeWise, int windowSlices, Observer& observer);

/// Finds the heart beats as the request says, and replaces every channel of the series by its heart beat
/// artifact: 0 where no beat is modelled. What was found goes into the findings. Where there are too few
/// beats for a model all channels become 0.
void findHeartArtifact(HeartSeries& series, const BeatRequest& request, Findings& findings,
                       Observer& observer);

} // namespace emeg
