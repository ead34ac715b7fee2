#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace emeg {

/// What an average volume shows of its slices. Samples, real numbers.
struct SliceStructure {
  int32_t nrOfSlices = 1;
  double sliceDuration = 0;
  double onset = 0;            ///< of the first slice, from the start of the average, less than a volume
  double onsetSlack = 0;       ///< by so much it may be earlier or later
  bool isOnsetKnown = false;   ///< a gap, or a slice that differs, tells which slice is the first
  bool isOnsetCertain = false; ///< so clearly that nothing else need be asked
  double firstActivity = 0;    ///< from the onset to the volume's first activity
  double lastActivity = 0;     ///< from the onset to the end of its last activity
  double explainedBySlice = 0; ///< share of the average volume's power that its average slice explains
};

/// What is known about the slices beforehand.
struct KnownSlices {
  int32_t nrOfSlices = 0;      ///< 0: not known
  double sliceDuration = 0;    ///< samples; 0: not known
  std::optional<double> onset; ///< of the first slice, from the start of the average
};

/// Finds the slices in an average volume that begins anywhere. `twoVolumes` is the average of two volumes in
/// a row (2 x volumeDuration samples or more), so that what wraps around the volume's end is there as well.
/// The slice is the shortest stretch after which the volume resembles itself; a gap shows where it does not,
/// and without one the first slice is the one that differs from the average slice.
SliceStructure findSlices(std::span<const double> twoVolumes, double volumeDuration, double samplingFrequency,
                          const KnownSlices& known = {});

/// Sets firstActivity and lastActivity for the onset that the slices have.
void findActivity(std::span<const double> twoVolumes, double volumeDuration, double samplingFrequency,
                  SliceStructure& slices);

} // namespace emeg
