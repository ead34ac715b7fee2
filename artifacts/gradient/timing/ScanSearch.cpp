#include "artifacts/gradient/timing/ScanSearch.h"

#include "artifacts/gradient/timing/LargerUnit.h"
#include "artifacts/gradient/timing/ScannerBand.h"
#include "artifacts/gradient/timing/SharpenedSignal.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

/// Quiet of up to so many seconds belongs to a scan; the second value is tried where the first finds nothing,
/// as with long silent delays between volumes.
constexpr std::array<double, 2> longestGaps = {2, 12};
constexpr double clockTolerance = 0.005;
constexpr double leastExplained = 0.1; // of the power, by the average volume
constexpr double leastExplainedBlindly = 0.5;
constexpr double worthLongerPeriod = 0.01;    // of the explained power
constexpr double goodEnough = 0.95;           // explained power of a scan beyond which no other is looked for
constexpr double samePeriod = 0.2;            // samples
constexpr double leastStretch = 0.3;          // seconds
constexpr double volumeOfAlikeSlices = 2;     // seconds
constexpr double longestSlice = 0.25;         // seconds; what repeats faster is no volume
constexpr double multiplesMustExplain = 0.05; // more of the power than the volume itself
constexpr double halfOf = 0.5;
constexpr double sameSlice = 0.02;         // relative
constexpr double multipleTolerance = 1e-3; // relative
constexpr int mostRounds = 200;            // scans and leftovers looked at

/// As far as a scan may reach: to the scans around it.
SampleRange limitsAround(SampleRange stretch, const std::vector<ScanSegment>& found, int64_t nrOfSamples) {
  SampleRange limits{0, nrOfSamples};
  const double middle = static_cast<double>(stretch.begin + stretch.end) / 2;
  for (const ScanSegment& scan : found) {
    if (scan.end <= middle) limits.begin = std::max(limits.begin, static_cast<int64_t>(scan.end));
    if (scan.begin >= middle) limits.end = std::min(limits.end, static_cast<int64_t>(scan.begin));
  }
  return limits;
}

/// Several volumes taken for one.
bool isMultipleOf(const ScanSegment& scan, const ScanSegment& shorter) {
  const double times = scan.volumeDuration / shorter.volumeDuration;
  return times > 1.5 && std::fabs(times - std::round(times)) < multipleTolerance * times;
}

/// Volumes of alike slices without dead time look the same wherever they begin: a few slices may pass for
/// one.
bool isGapless(const ScanSegment& scan) {
  return std::fabs(scan.volumeDuration - scan.nrOfSlicesPerVolume * scan.sliceDuration) <
         sameSlice * scan.sliceDuration;
}

bool isCertain(const ScanSegment& scan) {
  return scan.isCountIdentifiable && scan.nrOfVolumes > 2 && !isGapless(scan);
}

/// Whether a scan, found with a period that is tried later, is a better description than the best so far.
bool isBetter(const ScanSegment& scan, double score, const ScanSegment& best, double bestScore) {
  if (best.isCountIdentifiable && isMultipleOf(scan, best)) {
    if (!isGapless(best)) return score > bestScore + multiplesMustExplain;
    if (scan.isCountIdentifiable && 1 - scan.explainedByVolume < halfOf * (1 - best.explainedByVolume))
      return score > bestScore;
  }
  return score > bestScore + worthLongerPeriod;
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
  for (const std::vector<SampleRange>& stretches : busyStretches_) {
    std::vector<ScanSegment> found = scansIn(stretches, given);
    if (!found.empty()) return found;
  }
  return {};
}

std::span<const double> ScanSearch::part(SampleRange range) const {
  return std::span(sharpened_).subspan(static_cast<size_t>(range.begin), static_cast<size_t>(range.length()));
}

SampleRange ScanSearch::busyPartOf(SampleRange range) const {
  SampleRange busy = range;
  for (const SampleRange& stretch : busyStretches_.front()) {
    const SampleRange shared{std::max(range.begin, stretch.begin), std::min(range.end, stretch.end)};
    if (shared.length() > 0 && (busy.length() == range.length() || shared.length() > busy.length()))
      busy = shared;
  }
  return busy;
}

std::vector<ScanSegment> ScanSearch::scansIn(std::vector<SampleRange> open, const GivenTiming& given) const {
  std::vector<ScanSegment> found;
  for (int round = 0; !open.empty() && round < mostRounds; ++round) {
    const SampleRange stretch = open.back();
    open.pop_back();
    if (static_cast<double>(stretch.length()) < leastStretch * fs_) continue;
    const std::optional<ScanSegment> scan =
        scanIn(stretch, limitsAround(stretch, found, nrOfSamples()), given);
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

std::optional<ScanSegment> ScanSearch::scanIn(SampleRange stretch, SampleRange limits,
                                              const GivenTiming& given) const {
  std::optional<ScanSegment> best;
  double bestScore = 0;
  std::vector<double> tried; // samples; slices that were gathered into volumes are volumes that were tried
  const bool isTold = given.volumeDuration > 0 || given.sliceDuration > 0; // that there is a scan
  for (const bool evened : {false, true}) {
    for (const double period : candidatePeriods(stretch, evened, given)) {
      const auto same = [&](double other) { return std::fabs(other - period) < samePeriod; };
      if (std::any_of(tried.begin(), tried.end(), same)) continue;
      const std::optional<ScanSegment> scan = scanOfPeriod(period, stretch, limits, given);
      tried.push_back(period);
      if (scan && scan->isCountIdentifiable) tried.push_back(scan->volumeDuration);
      if (!scan || scan->explainedByVolume < leastExplained || scan->nrOfVolumes < 1) continue;
      if (!holdsSlices(*scan, given, fs_)) continue;
      const double covered = (scan->end - scan->begin) / static_cast<double>(stretch.length());
      // A count that something tells is worth as much as a little explained power.
      const double score = scan->explainedByVolume * std::min(covered, 1.0) +
                           (scan->isCountIdentifiable ? 2 * worthLongerPeriod : 0);
      if ((!best || isBetter(*scan, score, *best, bestScore)) && (isTold || isOfScanner(*scan))) {
        best = scan;
        bestScore = score;
      }
      if (bestScore > goodEnough && isCertain(*best)) return best;
    }
  }
  return best;
}

bool ScanSearch::isOfScanner(const ScanSegment& scan) const {
  return scan.nrOfVolumes >= 2 && scan.explainedByVolume >= leastExplainedBlindly &&
         explainedInScannerBand(sharpened_, fs_, scan) >= leastExplainedBlindly;
}

/// Those that the waveform shows, in ascending order, then those that are known.
std::vector<double> ScanSearch::candidatePeriods(SampleRange stretch, bool evened,
                                                 const GivenTiming& given) const {
  std::vector<double> periods;
  const double expected = given.volumeDuration * fs_;
  for (const Period& period : findPeriods(part(stretch), fs_, evened, expected, clockTolerance * expected))
    periods.push_back(period.samples);
  std::sort(periods.begin(), periods.end());
  const auto same = [](double a, double b) { return b - a < samePeriod; };
  periods.erase(std::unique(periods.begin(), periods.end(), same), periods.end());
  if (given.sliceDuration > 0 && expected <= 0) {
    // Without dead time; with it these explain less than the others, which come first.
    const double slice = given.sliceDuration * fs_;
    if (given.nrOfSlicesPerVolume > 1) periods.push_back(given.nrOfSlicesPerVolume * slice);
    periods.push_back(slice);
  }
  return periods;
}

std::optional<ScanSegment> ScanSearch::scanOfPeriod(double period, SampleRange stretch, SampleRange limits,
                                                    const GivenTiming& given) const {
  SampleRange core = longestRepeatingStretch(part(stretch), period, fs_);
  core = {core.begin + stretch.begin, core.end + stretch.begin};
  const RepeatLine line{static_cast<double>(core.begin), period};
  const RepeatRange range =
      wholeRepeats(line, static_cast<double>(core.begin), static_cast<double>(core.end));
  if (range.count() < 2) return std::nullopt;
  FittedRepeats repeats = fitRepeats(sharpened_, line, range);

  KnownTiming known;
  known.slices.nrOfSlices = given.nrOfSlicesPerVolume;
  known.slices.sliceDuration = given.sliceDuration * fs_;
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
                                                     SampleRange limits, int32_t nrOfSlicesPerVolume) const {
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
