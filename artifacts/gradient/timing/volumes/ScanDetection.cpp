#include "artifacts/gradient/timing/volumes/ScanDetection.h"

#include "artifacts/gradient/timing/volumes/ChannelPoll.h"
#include "artifacts/gradient/timing/volumes/ScanSearch.h"

#include <cmath>

namespace emeg {

namespace {

bool isSampled(double samplingFrequency) {
  return std::isfinite(samplingFrequency) && samplingFrequency >= 1;
}

/// Durations and onsets that no recording of this length can have count as not known.
GivenTiming usable(GivenTiming given, double seconds) {
  if (!(given.volumeDuration > 0 && given.volumeDuration < seconds)) given.volumeDuration = 0;
  if (given.firstOnset && !(std::fabs(*given.firstOnset) <= seconds)) given.firstOnset.reset();
  return given;
}

} // namespace

std::vector<ScanSegment> detectScans(std::span<const double> channel, double samplingFrequency,
                                     const GivenTiming& given) {
  if (!isSampled(samplingFrequency)) return {};
  return ScanSearch(channel, samplingFrequency)
      .scans(usable(given, static_cast<double>(channel.size()) / samplingFrequency));
}

std::vector<ScanSegment> detectScansInChannels(const ChannelReader& read, int nrOfChannels,
                                               double samplingFrequency, const GivenTiming& given,
                                               int largestNrOfChannels) {
  const auto scans =
      scansOfChannels(read, nrOfChannels, largestNrOfChannels, [&](std::span<const double> channel) {
        return detectScans(channel, samplingFrequency, given);
      });
  const bool isBlind = !(given.volumeDuration > 0);
  return voteOnScans(scans, isBlind && scans.size() >= 3 ? 2 : 1);
}

} // namespace emeg
