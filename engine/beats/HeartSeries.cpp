#include "artifacts/gradient/templates/SegmentRemoval.h"
#include "engine/CorrectionFilters.h"
#include "engine/beats/HeartArtifact.h"

namespace emeg {

void removeGradientFromSeries(HeartSeries& series, std::vector<ScanSegment> scans, double step,
                              bool volumeWise, int windowSlices, Observer& observer) {
  for (ScanSegment& scan : scans)
    for (double* place :
         {&scan.begin, &scan.end, &scan.firstVolumeOnset, &scan.volumeDuration, &scan.sliceDuration})
      *place /= step;
  const FirFilter split = templateSplit(series.rate);
  SegmentRemoval templates(std::move(scans), series.rate, volumeWise, windowSlices);
  const auto clean = [&](std::vector<double>& channel) {
    observer.progress(0);
    channel = split.apply(channel);
    std::vector<double> artifact(channel.size(), 0.0);
    templates.estimate(channel, artifact);
    // 32-bit floats in doubles: no square of them overflows.
    for (size_t i = 0; i < channel.size(); ++i)
      channel[i] = static_cast<double>(static_cast<float>(channel[i] - artifact[i]));
  };
  for (std::vector<double>& channel : series.channels) clean(channel);
  if (!series.ecg.empty()) clean(series.ecg);
}

} // namespace emeg
