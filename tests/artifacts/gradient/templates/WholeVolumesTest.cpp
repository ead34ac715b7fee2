#include "artifacts/gradient/templates/WholeVolumes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace emeg {
namespace {

constexpr double volume = 200.5;

double artifact(double t) {
  const double u = t - std::floor(t / volume) * volume;
  return std::exp(-0.5 * std::pow((u - 100) / 15, 2)) * std::sin(0.8 * u);
}

/// Ten volumes, the first at -80: the channel begins within it and ends within the last.
ScanSegment segment() {
  ScanSegment scan;
  scan.volumeDuration = volume;
  scan.firstVolumeOnset = -80 + volume;
  scan.nrOfVolumes = 8;
  scan.nrOfSlicesPerVolume = 1;
  scan.sliceDuration = volume;
  scan.begin = 0;
  scan.end = 1800;
  scan.beginsInVolume = scan.endsInVolume = true;
  return scan;
}

TEST(WholeVolumes, MissingPartsComeFromTheNeighbouringVolume) {
  std::vector<double> channel(1800);
  for (size_t i = 0; i < channel.size(); i++) channel[i] = artifact(static_cast<double>(i) + 80);
  const WholeVolumes whole = withWholeVolumes(channel, segment());
  EXPECT_EQ(whole.nrOfAddedBefore, 82);
  EXPECT_EQ(whole.firstOfScan, 0);
  EXPECT_EQ(whole.endOfScan, 1800);
  ASSERT_GE(static_cast<double>(whole.samples.size()), 82 + 10 * volume - 80);
  for (size_t i = 2; i < whole.samples.size() - 2; i++)
    ASSERT_NEAR(whole.samples[i], artifact(static_cast<double>(i) - 82 + 80), 2e-3) << i;
}

TEST(WholeVolumes, AScanThatStopsWithinTheRecordingIsCompletedThere) {
  std::vector<double> channel(2500, 0.0);
  for (size_t i = 0; i < 1800; i++) channel[i] = artifact(static_cast<double>(i) + 80);
  const WholeVolumes whole = withWholeVolumes(channel, segment());
  EXPECT_EQ(whole.endOfScan, 1800);
  EXPECT_EQ(whole.samples.size(), 2500u + 82u);
  EXPECT_NEAR(whole.samples[82 + 1850], artifact(1850 + 80), 2e-3);
  EXPECT_EQ(whole.samples[82 + 2200], 0);
}

TEST(WholeVolumes, WholeScansStayAsTheyAre) {
  ScanSegment scan = segment();
  scan.beginsInVolume = scan.endsInVolume = false;
  const std::vector<double> channel(1800, 1.5);
  const WholeVolumes whole = withWholeVolumes(channel, scan);
  EXPECT_EQ(whole.samples, channel);
  EXPECT_EQ(whole.nrOfAddedBefore, 0);
  EXPECT_EQ(whole.endOfScan, 1800);
}

} // namespace
} // namespace emeg
