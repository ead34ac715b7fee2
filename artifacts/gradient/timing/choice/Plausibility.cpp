#include "artifacts/gradient/timing/choice/Plausibility.h"

#include <cmath>

namespace emeg {

namespace {

constexpr int32_t fewestVolumes = 4;    // fewer leave volume-wise templates without neighbours
constexpr int32_t fewestSlices = 4;     // their distance is measured without three of them
constexpr double shortestSlice = 0.008; // seconds
constexpr double leastDeadTime = 0.25;  // samples: less than that is what measuring leaves

} // namespace

std::string doubtAbout(const MRSequence& sequence, double seconds, double samplingFrequency) {
  if (!(sequence.sliceDuration > 0)) return "no slices";
  if (!std::isfinite(sequence.volumeDuration) || !std::isfinite(sequence.sliceDuration) ||
      !std::isfinite(sequence.firstTriggerTime) || sequence.nrOfSlicesPerVolume < 1)
    return "counts and durations that mean nothing";
  if (sequence.nrOfVolumes < fewestVolumes) return "hardly any volumes";
  if (sequence.nrOfSlicesPerVolume < fewestSlices) return "hardly any slices";
  if (sequence.sliceDuration < shortestSlice) return "slices shorter than any scanner's";
  const double slices = sequence.nrOfSlicesPerVolume * sequence.sliceDuration;
  if (slices > sequence.volumeDuration + 0.5 * sequence.sliceDuration)
    return "slices longer than their volume";
  const double end =
      sequence.firstTriggerTime + (sequence.nrOfVolumes - 1) * sequence.volumeDuration + slices;
  if (sequence.firstTriggerTime < -sequence.sliceDuration || end > seconds + sequence.sliceDuration)
    return "more volumes than the recording is long";
  if (std::abs(sequence.volumeDuration - slices) * samplingFrequency < leastDeadTime)
    return "no pause that tells where a volume begins";
  return {};
}

} // namespace emeg
