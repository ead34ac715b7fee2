#include "artifacts/gradient/timing/slices/SliceGaps.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace emeg {

namespace {

constexpr double unlike = 0.5;         // share of the power that a slice leaves in the next
constexpr double quietShare = 0.02;    // of the mean power
constexpr double comparedOver = 0.005; // seconds
constexpr double jumpShare = 0.72;     // of the unlike power in two slices, to be in one

} // namespace

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

int32_t countSlices(const CircularVolume& volume, double slice,
                    const std::optional<SimilarStretch>& stretch) {
  double count = std::round(volume.duration() / slice);
  // Every slice but the last resembles the next; the quiet at its end is not seen.
  const double rest = volume.duration() - static_cast<double>(stretch ? stretch->length : volume.length());
  if (rest > 1.3 * slice) {
    const auto resembling = static_cast<double>(stretch->length - volume.samples(comparedOver));
    count = std::ceil(resembling / slice - 0.1) + 1;
  }
  const double largest = std::floor(volume.duration() / slice + 0.1);
  return static_cast<int32_t>(std::clamp(count, 1.0, std::max(1.0, largest)));
}

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

} // namespace emeg
