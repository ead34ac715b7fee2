#include "artifacts/gradient/timing/volumes/BusyStretches.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace emeg {
namespace {

constexpr double fs = 1000;

/// Busy (5) in the given stretches of seconds, quiet (0.1) elsewhere.
std::vector<double> busyIn(const std::vector<std::pair<double, double>>& stretches, double seconds) {
  std::vector<double> signal(static_cast<size_t>(seconds * fs), 0.1);
  for (const auto& [begin, end] : stretches)
    for (auto i = static_cast<size_t>(begin * fs); i < static_cast<size_t>(end * fs); i++) signal[i] = 5;
  return signal;
}

std::vector<size_t> sizesOfGroups(const std::vector<double>& begins, double length) {
  std::vector<PositionRange> stretches;
  for (const double begin : begins)
    stretches.push_back({static_cast<int64_t>(begin * fs), static_cast<int64_t>((begin + length) * fs)});
  std::vector<size_t> sizes;
  for (const auto& group : possibleVolumes(stretches, fs)) sizes.push_back(group.size());
  return sizes;
}

TEST(BusyStretches, ReachAcrossGapsUpToAnyLength) {
  const std::vector<double> signal = busyIn({{1, 2}, {2.5, 4}, {7, 9}}, 12);
  for (const auto& [gap, count] : {std::pair{0.3, 3u}, {1.0, 2u}, {4.0, 1u}}) {
    SCOPED_TRACE(gap);
    EXPECT_EQ(busyStretches(signal, fs, gap).size(), count);
  }
  EXPECT_NEAR(static_cast<double>(busyStretches(signal, fs, 1)[0].end), 4000, 50);
}

TEST(BusyStretches, AreOneWhereNothingIsQuiet) {
  const auto stretches = busyStretches(std::vector<double>(5000, 1.0), fs, 1);
  ASSERT_EQ(stretches.size(), 1u);
  EXPECT_EQ(stretches[0].length(), 5000);
  EXPECT_TRUE(busyStretches(std::vector<double>(5000, 0.0), fs, 1).empty());
  EXPECT_TRUE(busyStretches({}, fs, 1).empty());
}

TEST(BusyStretches, AtEqualDistancesMayBeVolumes) {
  using Sizes = std::vector<size_t>;
  EXPECT_EQ(sizesOfGroups({1, 9, 17, 25}, 3), Sizes({4}));
  EXPECT_EQ(sizesOfGroups({1, 9, 17, 26, 33.5}, 3), Sizes({3, 1, 1}));
  EXPECT_EQ(sizesOfGroups({1, 9}, 3), Sizes({1, 1}));
  EXPECT_EQ(sizesOfGroups({1, 9, 20, 26}, 3), Sizes({1, 1, 1, 1}));
  // Labelling and readout in turn.
  EXPECT_EQ(sizesOfGroups({1, 3.1, 5, 7.1, 9, 11.1}, 0.5), Sizes({6}));
  EXPECT_TRUE(sizesOfGroups({}, 3).empty());
}

} // namespace
} // namespace emeg
