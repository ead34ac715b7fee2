#pragma once

#include "artifacts/gradient/ScanSegment.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace emeg {

/// What the user knows of the scans. Zeros: not known.
struct GivenTiming {
  double volumeDuration = 0;       ///< seconds, as set at the scanner; its clock may differ by half a percent
  int32_t nrOfSlicesPerVolume = 0; ///< excitations, where several slices are excited at once
  double sliceDuration = 0;        ///< seconds
  std::optional<double> firstOnset; ///< seconds, of the first volume; its nearest whole volume counts
};

/// Finds the scans of a recording in one channel by the similarity of whole volumes, in ascending order of
/// time: neither quiet between slices, dead time nor markers are needed. Where the scan is, is found by its
/// power; the volume by the autocorrelation of the channel's second difference; its length by aligning
/// volumes far apart; the slices by what the average volume repeats within itself; the first slice by a gap
/// or by how it differs. Needs three volumes in a scan. Spikes, dropouts and clipping spoil the volumes they
/// are in and no others.
///
/// After Allen, Josephs, Turner, NeuroImage 12 (2000), and the alignment of volumes to a common template as
/// in Niazy, Beckmann, Iannetti, Brady, Smith, NeuroImage 28 (2005), here without triggers.
std::vector<ScanSegment> detectScans(std::span<const double> channel, double samplingFrequency,
                                     const GivenTiming& given = {});

/// Fills the vector with a channel's samples; channels are numbered from 0.
using ChannelReader = std::function<void(int channel, std::vector<double>& samples)>;

/// The same from up to `largestNrOfChannels` channels, evenly spread, one at a time; flat ones are passed
/// over. They vote: of the scans that channels find at the same time, the one whose slices and duration of
/// the volume most channels agree on (then: whose average volume explains more) stands, if they are a third
/// of the channels, with the count of volumes that most of them find and the median of their times.
std::vector<ScanSegment> detectScansInChannels(const ChannelReader& read, int nrOfChannels,
                                               double samplingFrequency, const GivenTiming& given = {},
                                               int largestNrOfChannels = 7);

/// The vote by itself: one list of scans per channel. Of a scan at least `leastAgreeing` channels must have
/// found the same volume or slice duration.
std::vector<ScanSegment> voteOnScans(const std::vector<std::vector<ScanSegment>>& scansOfChannels,
                                     int32_t leastAgreeing = 1);

} // namespace emeg
