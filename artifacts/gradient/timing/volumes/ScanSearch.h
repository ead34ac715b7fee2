#pragma once

#include "artifacts/gradient/timing/volumes/Periodicity.h"
#include "artifacts/gradient/timing/volumes/ScanDescription.h"
#include "artifacts/gradient/timing/volumes/ScanDetection.h"

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace emeg {

/// One channel's search for scans: holds the channel's sharpened copy.
class ScanSearch {
public:
  ScanSearch(std::span<const double> channel, double samplingFrequency);

  /// All scans, in ascending order of time. Quiet of up to twelve seconds belongs to a scan where it comes at
  /// equal distances, as between volumes with a silent delay; else it parts two scans from a third of a
  /// second on.
  std::vector<ScanSegment> scans(const GivenTiming& given) const;

  /// The scan in a stretch: the candidate period that explains most of it; of those that explain as much, the
  /// shortest. It may reach beyond the stretch up to the limits.
  std::optional<ScanSegment> scanIn(PositionRange stretch, PositionRange limits,
                                    const GivenTiming& given) const;

  /// The scan of volumes whose onsets are known to within a sample or so.
  std::optional<ScanSegment> scanOfVolumes(const RepeatLine& volumes, RepeatRange range, PositionRange limits,
                                           int32_t nrOfSlicesPerVolume) const;

  /// The longest part of the range that is busy; all of it where none is.
  PositionRange busyPartOf(PositionRange range) const;

  int64_t nrOfSamples() const { return static_cast<int64_t>(sharpened_.size()); }

private:
  std::span<const double> part(PositionRange range) const;
  std::vector<ScanSegment> scansInTurn(const std::vector<PositionRange>& stretches, PositionRange limits,
                                       size_t gap, const GivenTiming& given) const;
  std::vector<ScanSegment> scansWithin(PositionRange stretch, PositionRange limits, size_t gap,
                                       const GivenTiming& given) const;
  std::vector<ScanSegment> scansAcross(const std::vector<PositionRange>& stretches, PositionRange limits,
                                       size_t gap, const GivenTiming& given) const;
  std::vector<ScanSegment> scansIn(PositionRange whole, PositionRange limits, const GivenTiming& given) const;
  double scoreIn(PositionRange stretch, const ScanSegment& scan) const;
  std::vector<Period> candidatePeriods(PositionRange stretch, bool evened, const GivenTiming& given) const;
  std::optional<ScanSegment> scanOfPeriod(const Period& period, PositionRange stretch, PositionRange limits,
                                          const GivenTiming& given) const;
  bool isOfScanner(const ScanSegment& scan) const;
  void makeVolumes(FittedRepeats& repeats, KnownTiming& known) const;

  static constexpr size_t nrOfGaps = 3;
  double fs_;
  std::vector<double> sharpened_;
  std::array<std::vector<PositionRange>, nrOfGaps> busyStretches_;
};

} // namespace emeg
