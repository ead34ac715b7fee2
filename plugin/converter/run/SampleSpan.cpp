#include "plugin/converter/Converter.h"
#include "plugin/converter/messages/Text.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

/// Nearest sample to a time; times far outside any recording stay far outside.
int64_t nearestTimePoint(double ms, double msPerSample) {
  return static_cast<int64_t>(std::clamp(std::floor(ms / msPerSample + 0.5), -4e18, 4e18));
}

} // namespace

bool LMTRPluginEMEGFileConverter::deriveSampleSpan() {
  const double msPerSample = values.samplingInterval * 1000;
  const int64_t lastOfRecording = input.nrOfTimePoints - 1;
  span.firstTimePoint = nearestTimePoint(static_cast<double>(values.intervalStartMs), msPerSample);
  // The interval's bounds are 32-bit milliseconds, too coarse for the end of a recording of hours.
  span.lastTimePoint =
      switches.intervalRestricted
          ? std::min(nearestTimePoint(static_cast<double>(values.intervalEndMs), msPerSample) - 1,
                     lastOfRecording)
          : lastOfRecording;
  const int64_t length = span.lastTimePoint - span.firstTimePoint + 1;
  if (span.firstTimePoint < 0 || length < 1) {
    return showError(formatText("The time interval from %.2f to %.2f ms holds no samples.",
                                static_cast<double>(values.intervalStartMs),
                                static_cast<double>(values.intervalEndMs)));
  }
  span.nrOfIntervalTimePoints = length;
  span.nrOfOutputTimePoints = (length - 1) / filters.decimationFactor + 1;

  span.firstProcessedTimePoint = span.firstTimePoint;
  span.lastProcessedTimePoint = span.lastTimePoint;
  if (switches.filteringNeeded || switches.anyArtifactCorrection) {
    span.marginTimePoints = int64_t{5} * filters.decimationFactor;
    span.firstProcessedTimePoint -= span.marginTimePoints;
    span.lastProcessedTimePoint += span.marginTimePoints;
    // The transform length is that of the span before it is clipped to the recording.
    span.log2FftLength = static_cast<int32_t>(
        std::ceil(std::log(static_cast<double>(span.nrOfProcessedTimePoints())) / std::log(2.0)));
    span.fftLength = int64_t{1} << span.log2FftLength;
    span.firstProcessedTimePoint = std::max<int64_t>(span.firstProcessedTimePoint, 0);
    span.lastProcessedTimePoint = std::min(span.lastProcessedTimePoint, lastOfRecording);
  } else {
    span.marginTimePoints = 0;
    span.fftLength = span.nrOfOutputTimePoints;
  }
  span.timePointsPerChunk = static_cast<int64_t>(
      std::ceil(static_cast<double>(span.nrOfProcessedTimePoints()) / ChunkFiles::nrOfChunks));
  return true;
}

} // namespace emeg
