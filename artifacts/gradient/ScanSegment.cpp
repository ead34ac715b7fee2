#include "artifacts/gradient/ScanSegment.h"

namespace emeg {

MRSequence sequenceOf(const ScanSegment& segment, double samplingFrequency, double firstSample) {
  const int32_t partsBefore = segment.beginsInVolume ? 1 : 0;
  MRSequence sequence;
  sequence.nrOfVolumes = segment.nrOfVolumes + partsBefore + (segment.endsInVolume ? 1 : 0);
  sequence.nrOfSlicesPerVolume = segment.nrOfSlicesPerVolume;
  sequence.volumeDuration = segment.volumeDuration / samplingFrequency;
  sequence.sliceDuration = segment.sliceDuration / samplingFrequency;
  sequence.firstTriggerTime = (segment.volumeOnset(-partsBefore) - firstSample) / samplingFrequency;
  const double gap = segment.volumeDuration - segment.nrOfSlicesPerVolume * segment.sliceDuration;
  sequence.hasVolumeGaps = gap > 0.5 * segment.sliceDuration;
  return sequence;
}

} // namespace emeg
