#include "artifacts/gradient/timing/ScanDetection.h"

#include "artifacts/gradient/timing/Periodicity.h"
#include "artifacts/gradient/timing/ScanDescription.h"
#include "artifacts/gradient/timing/SharpenedSignal.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace emeg {

namespace {

/// Quiet of up to so many seconds belongs to a scan; the second value is tried where the first finds nothing,
/// as with long silent delays between volumes.
constexpr double longestGaps[] = {2, 12};
constexpr double clockTolerance = 0.005;
constexpr double leastExplained = 0.1;     // of the power, by the average volume
constexpr double worthLongerPeriod = 0.01; // of the explained power
constexpr double samePeriod = 0.2;         // samples
constexpr double leastStretch = 0.3;       // seconds
constexpr double volumeOfAlikeSlices = 2;  // seconds
constexpr double longestSlice = 0.25;      // seconds; what repeats faster is no volume
constexpr int mostRounds = 200;            // scans and leftovers looked at

/// One channel's search.
class ScanSearch {
public:
  ScanSearch(std::span<const double> channel, double samplingFrequency, const GivenTiming& given)
      : fs_(samplingFrequency), given_(given), sharpened_(sharpenedSignal(channel, samplingFrequency)) {
    blankSpikes(sharpened_, levelOfBursts(sharpened_, fs_), fs_);
    for (size_t i = 0; i < std::size(longestGaps); ++i)
      busyStretches_[i] = busyStretches(sharpened_, fs_, longestGaps[i]);
  }

  /// The scans in the busy stretches with the shorter gaps or, where these hold none, the longer ones.
  std::vector<ScanSegment> scans() {
    for (const std::vector<SampleRange>& stretches : busyStretches_) {
      std::vector<ScanSegment> found = scansIn(stretches);
      if (!found.empty()) return found;
    }
    return {};
  }

private:
  std::vector<ScanSegment> scansIn(std::vector<SampleRange> open) const {
    std::vector<ScanSegment> found;
    for (int round = 0; !open.empty() && round < mostRounds; ++round) {
      const SampleRange stretch = open.back();
      open.pop_back();
      if (static_cast<double>(stretch.length()) < leastStretch * fs_) continue;
      const std::optional<ScanSegment> scan = scanIn(stretch, limitsAround(stretch, found));
      if (!scan) continue;
      found.push_back(*scan);
      // What the scan leaves of the stretch may hold others.
      const auto begin = static_cast<int64_t>(scan->begin);
      const auto end = static_cast<int64_t>(scan->end);
      if (begin > stretch.begin) open.push_back({stretch.begin, begin});
      if (end < stretch.end) open.push_back({end, stretch.end});
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.begin < b.begin; });
    return found;
  }

  std::span<const double> part(SampleRange range) const {
    return std::span(sharpened_)
        .subspan(static_cast<size_t>(range.begin), static_cast<size_t>(range.length()));
  }

  /// As far as a scan may reach: to the scans around it.
  SampleRange limitsAround(SampleRange stretch, const std::vector<ScanSegment>& found) const {
    SampleRange limits{0, static_cast<int64_t>(sharpened_.size())};
    const double middle = static_cast<double>(stretch.begin + stretch.end) / 2;
    for (const ScanSegment& scan : found) {
      if (scan.end <= middle) limits.begin = std::max(limits.begin, static_cast<int64_t>(scan.end));
      if (scan.begin >= middle) limits.end = std::min(limits.end, static_cast<int64_t>(scan.begin));
    }
    return limits;
  }

  /// The candidate period that explains most of the stretch; of those that explain as much, the shortest.
  std::optional<ScanSegment> scanIn(SampleRange stretch, SampleRange limits) const {
    std::optional<ScanSegment> best;
    double bestScore = 0;
    for (const double period : candidatePeriods(stretch)) {
      const std::optional<ScanSegment> scan = scanOfPeriod(period, stretch, limits);
      if (!scan || scan->explainedByVolume < leastExplained || scan->nrOfVolumes < 1) continue;
      const double covered = (scan->end - scan->begin) / static_cast<double>(stretch.length());
      // A count that something tells is worth as much as a little explained power.
      const double score = scan->explainedByVolume * std::min(covered, 1.0) +
                           (scan->isCountIdentifiable ? 2 * worthLongerPeriod : 0);
      if (score > bestScore + (best ? worthLongerPeriod : 0)) {
        best = scan;
        bestScore = score;
      }
    }
    return best;
  }

  /// In ascending order.
  std::vector<double> candidatePeriods(SampleRange stretch) const {
    const double expected = given_.volumeDuration * fs_;
    std::vector<double> periods;
    for (const bool evened : {false, true})
      for (const Period& period :
           findPeriods(part(stretch), fs_, evened, expected, clockTolerance * expected))
        periods.push_back(period.samples);
    std::sort(periods.begin(), periods.end());
    const auto same = [](double a, double b) { return b - a < samePeriod; };
    periods.erase(std::unique(periods.begin(), periods.end(), same), periods.end());
    return periods;
  }

  std::optional<ScanSegment> scanOfPeriod(double period, SampleRange stretch, SampleRange limits) const {
    SampleRange core = longestRepeatingStretch(part(stretch), period, fs_);
    core = {core.begin + stretch.begin, core.end + stretch.begin};
    const RepeatLine line{static_cast<double>(core.begin), period};
    const RepeatRange range =
        wholeRepeats(line, static_cast<double>(core.begin), static_cast<double>(core.end));
    if (range.count() < 2) return std::nullopt;
    FittedRepeats repeats = fitRepeats(sharpened_, line, range);

    KnownTiming known;
    known.slices.nrOfSlices = given_.nrOfSlicesPerVolume;
    if (given_.firstOnset) known.volumeOnset = *given_.firstOnset * fs_;
    if (given_.volumeDuration <= 0) makeVolumes(repeats, known);
    return describeScan(sharpened_, fs_, repeats, limits, known);
  }

  /// Repeats may be slices: what distinguishes some of them makes volumes of them.
  void makeVolumes(FittedRepeats& repeats, KnownTiming& known) const {
    if (repeats.line.period >= longestSlice * fs_) return;
    const int64_t count = repeatsPerLargerUnit(sharpened_, repeats, fs_);
    if (count > 1) {
      const double slice = repeats.line.period;
      const RepeatLine line{repeats.line.onset, slice * static_cast<double>(count)};
      const RepeatRange range = wholeRepeats(line, repeats.line.at(static_cast<double>(repeats.range.first)),
                                             repeats.line.at(static_cast<double>(repeats.range.last + 1)));
      if (range.count() >= 2) {
        repeats = fitRepeats(sharpened_, line, range);
        known.slices.sliceDuration = slice;
        return;
      }
    }
    known.slicesTakenForVolume =
        static_cast<int32_t>(std::max(3.0, std::round(volumeOfAlikeSlices * fs_ / repeats.line.period)));
  }

  double fs_;
  GivenTiming given_;
  std::vector<double> sharpened_;
  std::array<std::vector<SampleRange>, std::size(longestGaps)> busyStretches_;
};

bool isSampled(double samplingFrequency) {
  return std::isfinite(samplingFrequency) && samplingFrequency >= 1;
}

} // namespace

std::vector<ScanSegment> detectScans(std::span<const double> channel, double samplingFrequency,
                                     const GivenTiming& given) {
  if (!isSampled(samplingFrequency)) return {};
  return ScanSearch(channel, samplingFrequency, given).scans();
}

std::vector<ScanSegment> detectScansInChannels(const ChannelReader& read, int nrOfChannels,
                                               double samplingFrequency, const GivenTiming& given,
                                               int largestNrOfChannels) {
  const int asked = std::max(0, std::min(nrOfChannels, largestNrOfChannels));
  std::vector<std::vector<ScanSegment>> scans;
  std::vector<double> samples;
  for (int i = 0; i < asked; ++i) {
    read(static_cast<int>((static_cast<int64_t>(2 * i + 1) * nrOfChannels) / (2 * asked)), samples);
    scans.push_back(detectScans(samples, samplingFrequency, given));
  }
  return voteOnScans(scans);
}

} // namespace emeg
