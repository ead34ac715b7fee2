#include "artifacts/gradient/timing/volumes/ScanSearch.h"

#include "artifacts/gradient/timing/volumes/LargerUnit.h"
#include "artifacts/gradient/timing/volumes/ScanComparison.h"
#include "artifacts/gradient/timing/volumes/ScannerBand.h"
#include "artifacts/gradient/timing/volumes/SharpenedSignal.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

/// Quiet of up to so many seconds is looked across: as long as a silent delay between volumes may be; as it
/// may be within a volume; and hardly any.
constexpr std::array<double, 3> longestGaps = {12, 2, 0.3};
constexpr size_t gapWithinVolumes = 1; // index
constexpr double clockTolerance = 0.005;
constexpr double leastExplained = 0.1; // of the power, by the average volume
constexpr double leastExplainedBlindly = 0.5;
constexpr int64_t fewestRepeats = 3;      // two are alike by chance, and explain each other
constexpr double samePeriod = 0.2;        // samples
constexpr double leastStretch = 0.3;      // seconds
constexpr double volumeOfAlikeSlices = 2; // seconds
constexpr double longestSlice = 0.25;     // seconds; what repeats faster is no volume
constexpr double sameSlice = 0.02;        // relative
constexpr int mostRounds = 200;           // scans and leftovers looked at

/// As far as a scan may reach: to the scans around it.
PositionRange limitsAround(PositionRange stretch, const std::vector<ScanSegment>& found,
                           PositionRange limits) {
  const double middle = static_cast<double>(stretch.begin + stretch.end) / 2;
  for (const ScanSegment& scan : found) {
    if (scan.end <= middle) limits.begin = std::max(limits.begin, static_cast<int64_t>(scan.end));
    if (scan.begin >= middle) limits.end = std::min(limits.end, static_cast<int64_t>(scan.begin));
  }
  return limits;
}

/// Those that come next begin where these end.
void addBehind(std::vector<ScanSegment>& found, PositionRange& limits,
               const std::vector<ScanSegment>& scans) {
  found.insert(found.end(), scans.begin(), scans.end());
  if (!found.empty()) limits.begin = std::max(limits.begin, static_cast<int64_t>(found.back().end));
}

/// What the stretches have of a range.
std::vector<PositionRange> partsOf(PositionRange range, const std::vector<PositionRange>& stretches) {
  std::vector<PositionRange> parts;
  for (const PositionRange& stretch : stretches) {
    const PositionRange part{std::max(range.begin, stretch.begin), std::min(range.end, stretch.end)};
    if (part.length() > 0) parts.push_back(part);
  }
  return parts;
}

/// A volume takes at least as long as its slices, and these as long as is known.
bool holdsSlices(const ScanSegment& scan, const GivenTiming& given, double samplingFrequency) {
  if (given.sliceDuration <= 0) return true;
  const double slice = given.sliceDuration * samplingFrequency;
  const double count = std::max(1, given.nrOfSlicesPerVolume);
  return std::fabs(scan.sliceDuration - slice) < sameSlice * slice &&
         scan.volumeDuration > (1 - sameSlice) * count * slice;
}

} // namespace

ScanSearch::ScanSearch(std::span<const double> channel, double samplingFrequency)
    : fs_(samplingFrequency), sharpened_(sharpenedSignal(channel, samplingFrequency)) {
  static_assert(nrOfGaps == longestGaps.size());
  blankSpikes(sharpened_, levelOfBursts(sharpened_, fs_), fs_);
  for (size_t i = 0; i < nrOfGaps; ++i) busyStretches_[i] = busyStretches(sharpened_, fs_, longestGaps[i]);
}

std::vector<ScanSegment> ScanSearch::scans(const GivenTiming& given) const {
  return scansInTurn(busyStretches_.front(), {0, nrOfSamples()}, 0, given);
}

/// Each stretch by itself, behind what was found in those before: a scan may have been followed into the next
/// one, across a dropout.
std::vector<ScanSegment> ScanSearch::scansInTurn(const std::vector<PositionRange>& stretches,
                                                 PositionRange limits, size_t gap,
                                                 const GivenTiming& given) const {
  std::vector<ScanSegment> found;
  for (const std::vector<PositionRange>& group : possibleVolumes(stretches, fs_))
    addBehind(found, limits,
              group.size() > 1 ? scansAcross(group, limits, gap, given)
                               : scansWithin(group.front(), limits, gap, given));
  return found;
}

/// The stretch, or where there is quiet in it that would not part the stretch from others, its parts.
std::vector<ScanSegment> ScanSearch::scansWithin(PositionRange stretch, PositionRange limits, size_t gap,
                                                 const GivenTiming& given) const {
  stretch.begin = std::max(stretch.begin, limits.begin);
  while (++gap < nrOfGaps) {
    const std::vector<PositionRange> parts = partsOf(stretch, busyStretches_[gap]);
    if (parts.size() > 1) return scansInTurn(parts, limits, gap, given);
  }
  return scansIn(stretch, limits, given);
}

/// Stretches that may be one scan's volumes or scans of their own: what describes them better decides.
std::vector<ScanSegment> ScanSearch::scansAcross(const std::vector<PositionRange>& stretches,
                                                 PositionRange limits, size_t gap,
                                                 const GivenTiming& given) const {
  const PositionRange whole{std::max(stretches.front().begin, limits.begin), stretches.back().end};
  std::vector<ScanSegment> across = scansIn(whole, limits, given);
  std::vector<ScanSegment> apart;
  for (const PositionRange& stretch : stretches)
    addBehind(apart, limits, scansWithin(stretch, limits, gap, given));
  return areBetter(across, apart, sharpened_) ? across : apart;
}

std::span<const double> ScanSearch::part(PositionRange range) const {
  return std::span(sharpened_).subspan(static_cast<size_t>(range.begin), static_cast<size_t>(range.length()));
}

PositionRange ScanSearch::busyPartOf(PositionRange range) const {
  PositionRange busy = range;
  for (const PositionRange& part : partsOf(range, busyStretches_[gapWithinVolumes]))
    if (busy.length() == range.length() || part.length() > busy.length()) busy = part;
  return busy;
}

std::vector<ScanSegment> ScanSearch::scansIn(PositionRange whole, PositionRange limits,
                                             const GivenTiming& given) const {
  std::vector<PositionRange> open = {whole};
  std::vector<ScanSegment> found;
  for (int round = 0; !open.empty() && round < mostRounds; ++round) {
    const PositionRange stretch = open.back();
    open.pop_back();
    if (static_cast<double>(stretch.length()) < leastStretch * fs_) continue;
    const std::optional<ScanSegment> scan = scanIn(stretch, limitsAround(stretch, found, limits), given);
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

std::optional<ScanSegment> ScanSearch::scanIn(PositionRange stretch, PositionRange limits,
                                              const GivenTiming& given) const {
  std::optional<ScanSegment> best;
  double bestScore = 0;
  std::vector<double> tried; // samples; slices that were gathered into volumes are volumes that were tried
  const bool isTold = given.volumeDuration > 0 || given.sliceDuration > 0; // that there is a scan
  for (const bool evened : {false, true}) {
    for (const Period& period : candidatePeriods(stretch, evened, given)) {
      const auto same = [&](double other) { return std::fabs(other - period.samples) < samePeriod; };
      if (std::any_of(tried.begin(), tried.end(), same)) continue;
      const std::optional<ScanSegment> scan = scanOfPeriod(period, stretch, limits, given);
      tried.push_back(period.samples);
      if (scan && scan->isCountIdentifiable) tried.push_back(scan->volumeDuration);
      if (!scan || scan->explainedByVolume < leastExplained || scan->nrOfVolumes < 1) continue;
      if (scan->nrOfRepeats < fewestRepeats || !holdsSlices(*scan, given, fs_)) continue;
      const double score = scoreIn(stretch, *scan);
      if ((!best || isBetter(*scan, score, *best, bestScore)) && (isTold || isOfScanner(*scan))) {
        best = scan;
        bestScore = score;
      }
      if (best && isSettled(*best, bestScore)) return best;
    }
  }
  return best;
}

double ScanSearch::scoreIn(PositionRange stretch, const ScanSegment& scan) const {
  return scoreOf(scan, (scan.end - scan.begin) / static_cast<double>(stretch.length()));
}

bool ScanSearch::isOfScanner(const ScanSegment& scan) const {
  return scan.nrOfVolumes >= 2 && scan.explainedByVolume >= leastExplainedBlindly &&
         explainedInScannerBand(sharpened_, fs_, scan) >= leastExplainedBlindly;
}

/// Those that the waveform shows, in ascending order, then those that are known.
std::vector<Period> ScanSearch::candidatePeriods(PositionRange stretch, bool evened,
                                                 const GivenTiming& given) const {
  const double expected = given.volumeDuration * fs_;
  std::vector<Period> periods = findPeriods(part(stretch), fs_, evened, expected, clockTolerance * expected);
  std::sort(periods.begin(), periods.end(),
            [](const auto& a, const auto& b) { return a.samples < b.samples; });
  const auto same = [](const Period& a, const Period& b) { return b.samples - a.samples < samePeriod; };
  periods.erase(std::unique(periods.begin(), periods.end(), same), periods.end());
  if (given.sliceDuration > 0 && expected <= 0) {
    // Without dead time; with it these explain less than the others, which come first.
    const double slice = given.sliceDuration * fs_;
    if (given.nrOfSlicesPerVolume > 1) periods.push_back({given.nrOfSlicesPerVolume * slice});
    periods.push_back({slice});
  }
  return periods;
}

std::optional<ScanSegment> ScanSearch::scanOfPeriod(const Period& period, PositionRange stretch,
                                                    PositionRange limits, const GivenTiming& given) const {
  PositionRange core = longestRepeatingStretch(part(stretch), period.samples, fs_);
  core = {core.begin + stretch.begin, core.end + stretch.begin};
  const RepeatLine line{static_cast<double>(core.begin), period.samples};
  const RepeatRange range =
      wholeRepeats(line, static_cast<double>(core.begin), static_cast<double>(core.end));
  if (range.count() < 2) return std::nullopt;
  FittedRepeats repeats = fitRepeats(sharpened_, line, range);

  KnownTiming known;
  known.slices.nrOfSlices = given.nrOfSlicesPerVolume;
  known.slices.sliceDuration = given.sliceDuration > 0 ? given.sliceDuration * fs_ : period.slice;
  if (given.firstOnset) known.volumeOnset = *given.firstOnset * fs_;
  if (given.volumeDuration <= 0) makeVolumes(repeats, known);
  return describeScan(sharpened_, fs_, repeats, limits, known);
}

/// Repeats may be slices: what distinguishes some of them makes volumes of them.
void ScanSearch::makeVolumes(FittedRepeats& repeats, KnownTiming& known) const {
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

std::optional<ScanSegment> ScanSearch::scanOfVolumes(const RepeatLine& volumes, RepeatRange range,
                                                     PositionRange limits,
                                                     int32_t nrOfSlicesPerVolume) const {
  const RepeatRange inside = wholeRepeats(volumes, 0, static_cast<double>(nrOfSamples()));
  range = {std::max(range.first, inside.first), std::min(range.last, inside.last)};
  if (range.count() < 2) return std::nullopt;
  const FittedRepeats repeats = fitRepeats(sharpened_, volumes, range);
  KnownTiming known;
  known.slices.nrOfSlices = nrOfSlicesPerVolume;
  known.volumeOnset = repeats.line.onset;
  const std::optional<ScanSegment> scan = describeScan(sharpened_, fs_, repeats, limits, known);
  if (!scan || scan->explainedByVolume < leastExplained || scan->nrOfVolumes < 1) return std::nullopt;
  return scan;
}

} // namespace emeg
