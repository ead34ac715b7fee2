#include "artifacts/cardiac/series/SpacedPeaks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<size_t> placesOf(const std::vector<double>& signal, size_t distance) {
  std::vector<size_t> places;
  for (const Peak& peak : spacedPeaks(signal, distance)) places.push_back(peak.at);
  return places;
}

} // namespace

TEST(SpacedPeaks, OfCloseOnesTheHighestStays) {
  const std::vector<double> signal = {0, 1, 0, 3, 0, 2, 0, 0, 0, 1, 0};
  EXPECT_THAT(placesOf(signal, 1), ElementsAre(1, 3, 5, 9));
  EXPECT_THAT(placesOf(signal, 3), ElementsAre(3, 9));
  EXPECT_THAT(placesOf(signal, 100), ElementsAre(3));
}

TEST(SpacedPeaks, ThePeakThatHidesAnotherMustStayItself) {
  // 4 hides 3, which therefore does not hide 2.
  EXPECT_THAT(placesOf({0, 4, 0, 3, 0, 2, 0}, 3), ElementsAre(1, 5));
}

TEST(SpacedPeaks, FlatOrNegativeSignalsHaveNone) {
  EXPECT_THAT(placesOf({}, 3), IsEmpty());
  EXPECT_THAT(placesOf({1, 1, 1, 1}, 3), IsEmpty());
  EXPECT_THAT(placesOf({-3, -1, -3}, 3), IsEmpty());
}

TEST(UsualHeight, NeitherASpikeNorASilentStretchDecides) {
  std::vector<double> signal(2000);
  for (size_t i = 0; i < signal.size(); i += 50) signal[i] = 10;
  signal[777] = 1e6;
  std::fill(signal.begin() + 1200, signal.begin() + 1400, 0.0);
  const UsualHeight usual(signal, 100);
  for (const size_t i : {0u, 777u, 1300u, 1999u}) EXPECT_EQ(usual.at(i), 10) << i;
}

TEST(UsualHeight, FollowsSlowChanges) {
  std::vector<double> signal(4000);
  for (size_t i = 0; i < signal.size(); i += 50) signal[i] = i < 2000 ? 10 : 1;
  const UsualHeight usual(signal, 100);
  EXPECT_EQ(usual.at(100), 10);
  EXPECT_EQ(usual.at(3900), 1);
}

} // namespace emeg
