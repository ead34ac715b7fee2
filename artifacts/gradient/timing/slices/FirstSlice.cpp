#include "artifacts/gradient/timing/slices/FirstSlice.h"

#include "artifacts/gradient/timing/volumes/SharpenedSignal.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

namespace emeg {

namespace {

constexpr double spectralFloor = 0.01;
constexpr double quietShare = 0.02;    // of the mean power
constexpr double activityOver = 0.002; // seconds
constexpr double farOutstanding = 6;
constexpr double outstanding = 2;          // power of the slice that differs most, to the second
constexpr int32_t leastWithNeighbours = 6; // slices

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

} // namespace

std::vector<double> averageSlice(const CircularVolume& volume, const SliceStructure& slices) {
  std::vector<double> average(static_cast<size_t>(std::max(1.0, std::floor(slices.sliceDuration))), 0.0);
  for (int32_t s = 0; s < slices.nrOfSlices; ++s) {
    const std::vector<double> slice =
        volume.from(slices.onset + s * slices.sliceDuration, static_cast<int64_t>(average.size()));
    for (size_t t = 0; t < average.size(); ++t) average[t] += slice[t] / slices.nrOfSlices;
  }
  return average;
}

void snapToActivity(const CircularVolume& volume, SliceStructure& slices) {
  const auto quietEnd = static_cast<double>(endOfLongestQuiet(volume, averageSlice(volume, slices)));
  if (quietEnd == 0) return;
  slices.onset += quietEnd < slices.sliceDuration / 2 ? quietEnd : quietEnd - slices.sliceDuration;
  slices.onset -= std::floor(slices.onset / volume.duration()) * volume.duration();
}

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

} // namespace emeg
