#pragma once

#include "artifacts/gradient/timing/pauses/SequenceDetection.h"

#include <cstdint>

namespace emeg {

/// One scan of a recording as the similarity of its volumes shows it. Positions are samples from the start of
/// the recording; real numbers lie between samples.
struct ScanSegment {
  double begin = 0;            ///< first sample with the scan's activity
  double end = 0;              ///< behind the last one
  double firstVolumeOnset = 0; ///< of the first whole volume
  double volumeDuration = 0;   ///< samples
  int32_t nrOfVolumes = 0;     ///< whole ones
  int32_t nrOfSlicesPerVolume = 0;
  double sliceDuration = 0; ///< samples
  /// False: all slices are alike and equally far apart, so that nothing tells where a volume begins or how
  /// many slices it has; the count and the onset are then a choice under which the removal works.
  bool isCountIdentifiable = false;
  bool beginsInVolume = false; ///< part of a volume comes before the first whole one
  bool endsInVolume = false;   ///< part of a volume comes behind the last whole one

  double explainedByVolume = 0; ///< share of the power (above some 50 Hz) that the average volume explains
  double explainedBySlice = 0;  ///< share of the average volume's power that its average slice explains
  int64_t nrOfRepeats = 0;      ///< volumes, or slices where these are alike, that make the average
  int32_t nrOfChannelsAgreeing = 1; ///< channels that found the same volumes and slices
  int32_t nrOfChannelsAsked = 1;

  double volumeOnset(double volume) const { return firstVolumeOnset + volume * volumeDuration; }
  double endOfVolumes() const { return volumeOnset(nrOfVolumes); }
};

/// The segment as the template removal takes it, without a window. Parts of volumes at either end are counted
/// as volumes, so that the first onset may lie before the recording. `firstSample` is where the processed
/// interval begins.
MRSequence sequenceOf(const ScanSegment& segment, double samplingFrequency, double firstSample = 0);

} // namespace emeg
