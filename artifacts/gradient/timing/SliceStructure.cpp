#include "artifacts/gradient/timing/SliceStructure.h"

#include "artifacts/gradient/timing/BandLimitedShift.h"
#include "artifacts/gradient/timing/Repeats.h"
#include "artifacts/gradient/timing/SharpenedSignal.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <vector>

namespace emeg {

namespace {

constexpr double shortestSlice = 0.015; // seconds
constexpr double shortestSliceSamples = 4;
constexpr double longestSlice = 0.6; // seconds
constexpr double leastSliceCorrelation = 0.4;
constexpr double leastFlatCorrelation = 0.2; // with the spectrum evened out, where noise counts
constexpr double sliceLossShare = 0.5;       // of what even the best distance leaves unexplained ...
constexpr double sliceLoss = 0.001;          // ... and of correlation
constexpr double spectralFloor = 0.01;
constexpr double unlike = 0.5;         // share of the power that a slice leaves in the next
constexpr double quietShare = 0.02;    // of the mean power
constexpr double comparedOver = 0.005; // seconds
constexpr double activityOver = 0.002; // seconds
constexpr double farOutstanding = 6;
constexpr double outstanding = 2;          // power of the slice that differs most, to the second
constexpr int32_t leastWithNeighbours = 6; // slices
constexpr double jumpShare = 0.72;         // of the unlike power in two slices, to be in one
constexpr double smallestGap = 0.5;        // of a slice; less is dead time in which no slice fits

/// Running sums of a circular series.
class CircularSums {
public:
  explicit CircularSums(const std::vector<double>& values) : sums_(2 * values.size() + 1, 0.0) {
    for (size_t i = 0; i < 2 * values.size(); ++i) sums_[i + 1] = sums_[i] + values[i % values.size()];
  }
  /// Of `count` values from `begin` on; both at most the series' length.
  double of(int64_t begin, int64_t count) const {
    return sums_[static_cast<size_t>(begin + count)] - sums_[static_cast<size_t>(begin)];
  }

private:
  std::vector<double> sums_;
};

/// The average volume as a closed circle of samples.
class CircularVolume {
public:
  CircularVolume(std::span<const double> twoVolumes, double volumeDuration, double samplingFrequency)
      : twoVolumes_(twoVolumes), duration_(volumeDuration), fs_(samplingFrequency),
        length_(static_cast<int64_t>(std::floor(volumeDuration))) {
    for (int64_t t = 0; t < length_; ++t) power_ += square(at(t));
  }

  int64_t length() const { return length_; }
  double duration() const { return duration_; }
  double power() const { return power_; }
  double meanPower() const { return power_ / static_cast<double>(length_); }
  double at(int64_t t) const { return twoVolumes_[static_cast<size_t>(t)]; }
  int64_t samples(double seconds) const {
    return std::clamp<int64_t>(static_cast<int64_t>(std::floor(seconds * fs_ + 0.5)), 1, length_);
  }

  /// Values from `position` on, wrapped around.
  std::vector<double> from(double position, int64_t count) const {
    std::vector<double> values(static_cast<size_t>(count));
    position -= std::floor(position / duration_) * duration_;
    readShifted(twoVolumes_, position, values);
    return values;
  }

  double correlation(int64_t lag) const {
    double sum = 0;
    for (int64_t t = 0; t < length_; ++t) sum += at(t) * at(t + lag);
    return power_ > 0 ? sum / power_ : 0;
  }

  double correlation(double lag) const {
    const std::vector<double> later = from(lag, length_);
    double sum = 0;
    for (int64_t t = 0; t < length_; ++t) sum += at(t) * later[static_cast<size_t>(t)];
    return power_ > 0 ? sum / power_ : 0;
  }

  static double square(double value) { return value * value; }

private:
  std::span<const double> twoVolumes_;
  double duration_;
  double fs_;
  int64_t length_;
  double power_ = 0;
};

/// The lag of highest correlation between samples, from the whole lag that is highest on.
double refinedLag(const CircularVolume& volume, double lag) {
  double best = volume.correlation(lag);
  for (double step = 0.5; step > 0.001; step /= 2) {
    const double below = volume.correlation(lag - step);
    const double above = volume.correlation(lag + step);
    if (below > best && below >= above) {
      lag -= step;
      best = below;
    } else if (above > best) {
      lag += step;
      best = above;
    }
  }
  return lag;
}

struct Peak {
  double lag = 0;
  double value = 0;
};

/// The highest point between the samples of a series around one of them.
Peak highestBetween(const std::vector<double>& values, double position) {
  const auto valueAt = [&](double at) {
    const double whole = std::floor(at);
    return BandLimitedShift(at - whole).at(values, static_cast<int64_t>(whole));
  };
  Peak best{position, valueAt(position)};
  for (double step = 0.5; step > 0.005; step /= 2)
    for (const double lag : {best.lag - step, best.lag + step})
      if (const double value = valueAt(lag); value > best.value) best = {lag, value};
  return best;
}

/// The shortest distance at which the volume resembles itself almost as much as at any; 0 when at none.
double shortestSimilarDistance(const CircularVolume& volume, double least) {
  const int64_t from = volume.samples(shortestSlice);
  const int64_t to = std::min(volume.samples(longestSlice), volume.length() / 2 + volume.length() / 8);
  // Some more on both sides to interpolate with.
  const int64_t margin = std::min<int64_t>(16, from);
  std::vector<double> values;
  for (int64_t lag = from - margin; lag <= std::min(to + margin, volume.length()); ++lag)
    values.push_back(volume.correlation(lag));
  std::vector<Peak> peaks;
  double best = 0;
  for (int64_t lag = from; lag <= to; ++lag) {
    const auto i = static_cast<size_t>(lag - from + margin);
    if (i == 0 || i + 1 >= values.size() || values[i] < values[i - 1] || values[i] <= values[i + 1]) continue;
    if (values[i] < 0.5 * least) continue; // between samples it may be higher
    Peak peak = highestBetween(values, static_cast<double>(i));
    peak.lag += static_cast<double>(from - margin);
    peaks.push_back(peak);
    best = std::max(best, peak.value);
  }
  if (best < least) return 0;
  best = std::min(best, 1.0);
  const double enough = best - std::min(sliceLossShare * (1 - best), 0.05 * best) - sliceLoss;
  const auto first =
      std::find_if(peaks.begin(), peaks.end(), [&](const Peak& peak) { return peak.value >= enough; });
  // A readout makes peaks around every distance; the highest of them is meant.
  Peak chosen = *first;
  for (auto peak = first; peak != peaks.end() && peak->lag < 1.2 * first->lag; ++peak)
    if (peak->value > chosen.value) chosen = *peak;
  return refinedLag(volume, chosen.lag);
}

/// Sharpens the slice duration at distances of 2, 4, 8, ... slices.
double refinedSliceDuration(const CircularVolume& volume, double slice) {
  for (int64_t k = 2; static_cast<double>(k) * slice < 0.6 * volume.duration(); k *= 2) {
    const double lag = refinedLag(volume, static_cast<double>(k) * slice);
    if (volume.correlation(lag) < 0.3 || std::fabs(lag - static_cast<double>(k) * slice) > 1) break;
    slice = lag / static_cast<double>(k);
  }
  return slice;
}

/// The stretch in which slices follow each other without a gap.
struct SimilarStretch {
  int64_t begin = 0;
  int64_t length = 0;
};

/// Where the volume resembles itself one slice later; quiet belongs to what surrounds it. Nothing when that
/// is everywhere.
std::optional<SimilarStretch> stretchOfSlices(const CircularVolume& volume, double slice) {
  const std::vector<double> later = volume.from(slice, volume.length());
  std::vector<double> difference(static_cast<size_t>(volume.length()));
  std::vector<double> both(difference.size());
  for (size_t t = 0; t < difference.size(); ++t) {
    const double now = volume.at(static_cast<int64_t>(t));
    difference[t] = CircularVolume::square(later[t] - now);
    both[t] = CircularVolume::square(later[t]) + CircularVolume::square(now);
  }
  const CircularSums differences(difference), powers(both);
  const int64_t window = volume.samples(comparedOver);
  const double floor = quietShare * 2 * volume.meanPower() * static_cast<double>(window);
  std::vector<bool> similar(difference.size()), decided(difference.size());
  bool anyUnlike = false;
  for (int64_t t = 0; t < volume.length(); ++t) {
    const double power = powers.of(t, window);
    const auto i = static_cast<size_t>(t);
    decided[i] = power > floor;
    similar[i] = decided[i] && differences.of(t, window) < unlike * power;
    anyUnlike = anyUnlike || (decided[i] && !similar[i]);
  }
  if (!anyUnlike) return std::nullopt;

  // The longest way around without a similar place that has an unlike one in it; what is left are the slices.
  int64_t longest = 0, longestEnd = 0;
  int64_t run = 0;
  bool hasUnlike = false;
  for (int64_t t = 0; t < 2 * volume.length(); ++t) {
    const auto i = static_cast<size_t>(t % volume.length());
    if (similar[i]) {
      if (hasUnlike && run > longest) {
        longest = run;
        longestEnd = t % volume.length();
      }
      run = 0;
      hasUnlike = false;
    } else {
      ++run;
      hasUnlike = hasUnlike || decided[i];
    }
  }
  if (longest == 0 || longest >= volume.length()) return std::nullopt;
  // A place is similar when the window from there on is.
  return SimilarStretch{longestEnd, std::min(volume.length() - longest + window, volume.length())};
}

std::vector<double> averageSlice(const CircularVolume& volume, const SliceStructure& slices) {
  std::vector<double> average(static_cast<size_t>(std::max(1.0, std::floor(slices.sliceDuration))), 0.0);
  for (int32_t s = 0; s < slices.nrOfSlices; ++s) {
    const std::vector<double> slice =
        volume.from(slices.onset + s * slices.sliceDuration, static_cast<int64_t>(average.size()));
    for (size_t t = 0; t < average.size(); ++t) average[t] += slice[t] / slices.nrOfSlices;
  }
  return average;
}

/// Where, within an average slice that begins anywhere, activity begins behind the longest quiet; 0 when
/// there is no quiet of some milliseconds.
int64_t endOfLongestQuiet(const CircularVolume& volume, const std::vector<double>& slice) {
  const auto n = static_cast<int64_t>(slice.size());
  const int64_t window = std::min(volume.samples(activityOver), n);
  std::vector<double> squares(slice.size());
  for (size_t t = 0; t < slice.size(); ++t) squares[t] = CircularVolume::square(slice[t]);
  const double mean = std::accumulate(squares.begin(), squares.end(), 0.0) / static_cast<double>(n);
  const CircularSums sums(squares);
  int64_t run = 0, longest = 0, end = 0;
  for (int64_t t = 0; t < 2 * n; ++t) {
    const bool quiet = sums.of(t % n, window) < quietShare * mean * static_cast<double>(window);
    run = quiet ? run + 1 : 0;
    if (run > longest && run <= n) {
      longest = run;
      end = (t + 1) % n;
    }
  }
  return longest >= volume.samples(activityOver) ? end : 0;
}

/// Moves the onset, by less than a slice, to where slices become active behind their quiet (if they have
/// any).
void snapToActivity(const CircularVolume& volume, SliceStructure& slices) {
  const auto quietEnd = static_cast<double>(endOfLongestQuiet(volume, averageSlice(volume, slices)));
  if (quietEnd == 0) return;
  slices.onset += quietEnd < slices.sliceDuration / 2 ? quietEnd : quietEnd - slices.sliceDuration;
  slices.onset -= std::floor(slices.onset / volume.duration()) * volume.duration();
}

/// The slice that differs most from the average: its onset, if it stands out.
void findFirstSlice(const CircularVolume& volume, SliceStructure& slices) {
  const std::vector<double> average = averageSlice(volume, slices);
  std::vector<double> rest(static_cast<size_t>(volume.length()), 0.0);
  for (int32_t s = 0; s < slices.nrOfSlices; ++s) {
    const double onset = slices.onset + s * slices.sliceDuration;
    const std::vector<double> slice = volume.from(onset, static_cast<int64_t>(average.size()));
    for (size_t t = 0; t < average.size(); ++t) {
      const auto at = static_cast<int64_t>(std::floor(onset + static_cast<double>(t))) % volume.length();
      rest[static_cast<size_t>(at)] = slice[t] - average[t];
    }
  }
  flattenSpectrum(rest, spectralFloor);
  for (double& value : rest) value = CircularVolume::square(value);
  const CircularSums sums(rest);
  const auto width = std::min(static_cast<int64_t>(slices.sliceDuration), volume.length());
  int64_t best = 0;
  for (int64_t t = 1; t < volume.length(); ++t)
    if (sums.of(t, width) > sums.of(best, width)) best = t;
  const double most = sums.of(best, width);
  double second = 0;
  // Where slices overlap, the one that differs reaches into its neighbours.
  const int64_t apart = slices.nrOfSlices < leastWithNeighbours ? width : 2 * width;
  for (int64_t t = best + apart; t + apart <= best + volume.length(); ++t)
    second = std::max(second, sums.of(t % volume.length(), width));
  slices.isOnsetKnown = most > (slices.nrOfSlices < leastWithNeighbours ? 2 : 1) * outstanding * second;
  slices.isOnsetCertain = most > farOutstanding * second;

  // Windows that begin a little earlier or later may hold the whole difference as well.
  const int64_t n = volume.length();
  const auto holdsAll = [&](int64_t t) { return sums.of((t + n) % n, width) > 0.98 * most; };
  int64_t earliest = best, latest = best;
  while (earliest > best - width && holdsAll(earliest - 1)) --earliest;
  while (latest < best + width && holdsAll(latest + 1)) ++latest;
  const double middle = static_cast<double>(earliest + latest) / 2;
  slices.onsetSlack = static_cast<double>(latest - earliest) / 2;

  const int64_t quiet = endOfLongestQuiet(volume, average);
  const double quietEnd = slices.onset + static_cast<double>(quiet);
  slices.onset = middle;
  if (quiet > 0 && slices.isOnsetKnown) {
    const double steps = std::round((middle - quietEnd) / slices.sliceDuration);
    slices.onset = quietEnd + steps * slices.sliceDuration;
  }
  slices.onset -= std::floor(slices.onset / volume.duration()) * volume.duration();
}

/// The place where the distance between slices is longer: there the volume differs most from itself one slice
/// later, more than where the first slice follows on it. The first slice's onset; nothing when no place
/// stands out.
std::optional<double> onsetBehindDeadTime(const CircularVolume& volume, double slice, double deadTime) {
  const std::vector<double> later = volume.from(slice, volume.length());
  std::vector<double> difference(static_cast<size_t>(volume.length()));
  for (int64_t t = 0; t < volume.length(); ++t)
    difference[static_cast<size_t>(t)] = CircularVolume::square(later[static_cast<size_t>(t)] - volume.at(t));
  const CircularSums sums(difference);
  const int64_t n = volume.length();
  const auto width = std::min(static_cast<int64_t>(slice), n);
  int64_t best = 0;
  for (int64_t t = 1; t < n; ++t)
    if (sums.of(t, width) > sums.of(best, width)) best = t;
  const double most = sums.of(best, width);
  double mostOfTwo = 0;
  for (int64_t t = 0; t < n; ++t) mostOfTwo = std::max(mostOfTwo, sums.of(t, std::min(2 * width, n)));
  if (!(most > jumpShare * mostOfTwo)) return std::nullopt;
  int64_t latest = best;
  while (latest < best + width && sums.of((latest + 1) % n, width) > 0.98 * most) ++latest;
  return std::fmod(static_cast<double>(latest) + slice + std::max(0.0, deadTime), volume.duration());
}

void findActivityIn(const CircularVolume& volume, SliceStructure& slices) {
  const std::vector<double> values = volume.from(slices.onset, volume.length());
  const int64_t window = volume.samples(activityOver);
  const double floor = quietShare * volume.meanPower() * static_cast<double>(window);
  std::vector<double> squares(values.size());
  for (size_t t = 0; t < values.size(); ++t) squares[t] = CircularVolume::square(values[t]);
  const CircularSums sums(squares);
  int64_t first = 0, last = volume.length() - window;
  while (first < last && sums.of(first, window) < floor) ++first;
  while (last > first && sums.of(last, window) < floor) --last;
  slices.firstActivity = static_cast<double>(first);
  slices.lastActivity = static_cast<double>(last + window);
}

/// With a gap the volume's length says nothing about the slices' distance: a line through all but the first
/// does.
void alignSlices(const CircularVolume& volume, SliceStructure& slices) {
  if (slices.nrOfSlices < 4) return;
  const std::vector<double> fromOnset = volume.from(slices.onset, volume.length());
  const FittedRepeats fit = fitRepeats(fromOnset, {0, slices.sliceDuration}, {1, slices.nrOfSlices - 2});
  if (std::fabs(fit.line.period - slices.sliceDuration) < 1) slices.sliceDuration = fit.line.period;
}

double explainedByAverageSlice(const CircularVolume& volume, const SliceStructure& slices) {
  const std::vector<double> average = averageSlice(volume, slices);
  double rest = 0, power = 0;
  for (int32_t s = 0; s < slices.nrOfSlices; ++s) {
    const std::vector<double> slice =
        volume.from(slices.onset + s * slices.sliceDuration, static_cast<int64_t>(average.size()));
    for (size_t t = 0; t < average.size(); ++t) {
      rest += CircularVolume::square(slice[t] - average[t]);
      power += CircularVolume::square(slice[t]);
    }
  }
  return power > 0 ? 1 - rest / power : 0;
}

/// The count that fits the volume's length, the gap (if any) taken off.
int32_t countOf(const CircularVolume& volume, double slice, const std::optional<SimilarStretch>& stretch) {
  double count = std::round(volume.duration() / slice);
  // Every slice but the last resembles the next; the quiet at its end is not seen.
  const double rest = volume.duration() - static_cast<double>(stretch ? stretch->length : volume.length());
  if (rest > 1.3 * slice) count = std::ceil(static_cast<double>(stretch->length) / slice - 0.15) + 1;
  const double largest = std::floor(volume.duration() / slice + 0.1);
  return static_cast<int32_t>(std::clamp(count, 1.0, std::max(1.0, largest)));
}

} // namespace

void findActivity(std::span<const double> twoVolumes, double volumeDuration, double samplingFrequency,
                  SliceStructure& slices) {
  if (!(volumeDuration >= 1) || static_cast<double>(twoVolumes.size()) < 2 * std::floor(volumeDuration))
    return;
  findActivityIn(CircularVolume(twoVolumes, volumeDuration, samplingFrequency), slices);
}

SliceStructure findSlices(std::span<const double> twoVolumes, double volumeDuration, double samplingFrequency,
                          const KnownSlices& given) {
  SliceStructure slices;
  slices.sliceDuration = volumeDuration;
  if (!(volumeDuration >= 32) || static_cast<double>(twoVolumes.size()) < 2 * std::floor(volumeDuration))
    return slices;
  // A slice of a few samples is none.
  KnownSlices known = given;
  if (known.nrOfSlices < 0 || known.nrOfSlices > volumeDuration / shortestSliceSamples) known.nrOfSlices = 0;
  const CircularVolume volume(twoVolumes, volumeDuration, samplingFrequency);
  std::vector<double> flat(twoVolumes.begin(), twoVolumes.end());
  flattenSpectrum(flat, spectralFloor);
  const CircularVolume flatVolume(flat, volumeDuration, samplingFrequency);
  double slice = known.sliceDuration >= shortestSliceSamples && known.sliceDuration < 0.75 * volumeDuration
                     ? known.sliceDuration
                     : 0;
  if (slice > 0) {
    const double refined = refinedSliceDuration(flatVolume, refinedLag(flatVolume, slice));
    if (std::fabs(refined - slice) < 1) slice = refined;
  } else if (known.nrOfSlices > 0) {
    // What the volume shows, where it goes with the count.
    slice = shortestSimilarDistance(flatVolume, leastFlatCorrelation);
    const double times = slice > 0 ? volumeDuration / known.nrOfSlices / slice : 0;
    if (times > 0 && times < 1.8 && times > 0.98)
      slice = refinedSliceDuration(flatVolume, slice);
    else if (times >= 1.8)
      slice = refinedLag(flatVolume, std::round(times) * slice);
    else
      slice = volumeDuration / known.nrOfSlices;
  } else {
    slice = shortestSimilarDistance(flatVolume, leastFlatCorrelation);
    if (slice == 0) slice = shortestSimilarDistance(volume, leastSliceCorrelation);
    if (slice > 0) slice = refinedSliceDuration(flatVolume, slice);
  }
  if (slice <= 0) {
    findActivityIn(volume, slices);
    return slices;
  }

  const double nearest = std::round(volumeDuration / slice);
  std::optional<SimilarStretch> stretch = stretchOfSlices(volume, slice);
  slices.nrOfSlices = known.nrOfSlices > 0 ? known.nrOfSlices : countOf(volume, slice, stretch);
  slices.sliceDuration = slice;
  const double gap = volumeDuration - slices.nrOfSlices * slice;
  const std::optional<double> behindDeadTime =
      slices.nrOfSlices == nearest ? onsetBehindDeadTime(volume, slice, gap) : std::nullopt;
  const bool hasGap = stretch && gap > smallestGap * slice;
  if (known.onset) {
    slices.onset = *known.onset - std::floor(*known.onset / volumeDuration) * volumeDuration;
    slices.isOnsetKnown = slices.isOnsetCertain = true;
    if (hasGap || behindDeadTime)
      alignSlices(volume, slices);
    else
      slices.sliceDuration = volumeDuration / slices.nrOfSlices;
  } else if (hasGap) {
    slices.onset = static_cast<double>(stretch->begin);
    slices.isOnsetKnown = slices.isOnsetCertain = true;
    alignSlices(volume, slices);
  } else if (behindDeadTime) {
    slices.onset = *behindDeadTime;
    slices.isOnsetKnown = slices.isOnsetCertain = true;
    alignSlices(volume, slices);
    snapToActivity(volume, slices);
  } else {
    slices.sliceDuration = volumeDuration / slices.nrOfSlices;
    findFirstSlice(volume, slices);
  }
  findActivityIn(volume, slices);
  slices.explainedBySlice = explainedByAverageSlice(volume, slices);
  return slices;
}

} // namespace emeg
