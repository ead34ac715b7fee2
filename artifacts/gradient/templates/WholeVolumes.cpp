#include "artifacts/gradient/templates/WholeVolumes.h"

#include "artifacts/gradient/templates/BandLimitedShift.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr int64_t splineMargin = 2; // samples, so that the spline's last piece is not the volume's

} // namespace

WholeVolumes withWholeVolumes(std::span<const double> channel, const ScanSegment& segment) {
  const auto n = static_cast<int64_t>(channel.size());
  const double volume = segment.volumeDuration;
  WholeVolumes result;
  result.endOfScan = n;
  result.samples.assign(channel.begin(), channel.end());
  // Without a whole volume there is nothing to take anything from.
  if (!(volume >= 1) || volume > static_cast<double>(n) || segment.nrOfVolumes < 1) return result;
  const auto inside = [&](double position) {
    return static_cast<int64_t>(std::clamp(position, 0.0, static_cast<double>(n)));
  };

  if (segment.endsInVolume) {
    const double end = segment.volumeOnset(segment.nrOfVolumes + 1);
    // Less than a slice from the recording's end, the scan goes on to there.
    const bool reachesEnd = static_cast<double>(n) - segment.end < segment.sliceDuration;
    result.endOfScan = reachesEnd ? n : inside(std::floor(segment.end));
    const auto to =
        static_cast<int64_t>(std::ceil(std::clamp(end, static_cast<double>(result.endOfScan),
                                                  static_cast<double>(result.endOfScan) + volume))) +
        splineMargin;
    result.samples.resize(static_cast<size_t>(std::max(n, to)));
    readShifted(
        channel, static_cast<double>(result.endOfScan) - volume,
        std::span(result.samples)
            .subspan(static_cast<size_t>(result.endOfScan), static_cast<size_t>(to - result.endOfScan)));
  }
  if (segment.beginsInVolume) {
    result.firstOfScan = segment.begin < segment.sliceDuration ? 0 : inside(std::ceil(segment.begin));
    const double begin = std::clamp(segment.volumeOnset(-1), static_cast<double>(result.firstOfScan) - volume,
                                    static_cast<double>(result.firstOfScan));
    const auto from = static_cast<int64_t>(std::floor(begin)) - splineMargin;
    result.nrOfAddedBefore = std::max<int64_t>(0, -from);
    std::vector<double> missing(static_cast<size_t>(result.firstOfScan - from));
    readShifted(channel, static_cast<double>(from) + volume, missing);
    result.samples.insert(result.samples.begin(), static_cast<size_t>(result.nrOfAddedBefore), 0.0);
    std::copy(missing.begin(), missing.end(), result.samples.begin() + from + result.nrOfAddedBefore);
  }
  return result;
}

} // namespace emeg
