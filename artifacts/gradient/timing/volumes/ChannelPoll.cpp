#include "artifacts/gradient/timing/volumes/ChannelPoll.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace emeg {

namespace {

/// No two usable values differ.
bool isFlat(const std::vector<double>& channel) {
  const auto usable = [](double value) { return std::isfinite(value); };
  const auto first = std::find_if(channel.begin(), channel.end(), usable);
  return std::none_of(first, channel.end(), [&](double value) { return usable(value) && value != *first; });
}

} // namespace

std::vector<std::vector<ScanSegment>> scansOfChannels(const ChannelReader& read, int nrOfChannels,
                                                      int largestNrOfChannels, const ScanFinder& find) {
  const int places = std::max(0, std::min(nrOfChannels, largestNrOfChannels));
  const auto middleOf = [&](int place) {
    return static_cast<int>(((2 * int64_t{place} + 1) * nrOfChannels) / (2 * int64_t{places}));
  };
  std::vector<std::vector<ScanSegment>> scans;
  std::vector<double> samples;
  for (int place = 0; place < places; ++place) {
    const int end = place + 1 < places ? middleOf(place + 1) : nrOfChannels;
    for (int channel = middleOf(place); channel < end; ++channel) {
      read(channel, samples);
      if (isFlat(samples)) continue;
      scans.push_back(find(samples));
      break;
    }
  }
  return scans;
}

} // namespace emeg
