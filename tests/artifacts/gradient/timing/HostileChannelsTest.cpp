#include "artifacts/gradient/timing/markers/MarkerTiming.h"
#include "artifacts/gradient/timing/volumes/ScanDetection.h"
#include "tests/artifacts/gradient/timing/SimulatedScan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace emeg {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(HostileChannels, ShortFlatAndMeaninglessOnesHoldNoScan) {
  for (const size_t n : {0u, 1u, 2u, 3u, 31u, 33u, 500u, 5000u}) {
    SCOPED_TRACE(n);
    for (const double value : {0.0, 1.0, nan, 1e300, std::numeric_limits<double>::infinity()})
      EXPECT_TRUE(detectScans(std::vector<double>(n, value), 1000).empty());
  }
}

TEST(HostileChannels, SamplingFrequenciesThatAreNoneHoldNoScan) {
  const SimulatedScan scan = simulateScan(Preset::Gap, 1000, 20);
  for (const double fs : {0.0, -1.0, nan, std::numeric_limits<double>::infinity()})
    EXPECT_TRUE(detectScans(scan.recorded, fs).empty());
}

TEST(HostileChannels, NoiseHoldsNoScan) {
  std::mt19937_64 random(1);
  std::vector<double> noise(40000);
  for (double& value : noise) value = static_cast<double>(random() >> 40);
  EXPECT_TRUE(detectScans(noise, 1000).empty());
}

TEST(HostileChannels, SingleBadSamplesHideNoScan) {
  SimulatedScan scan = simulateScan(Preset::Gap, 1000, 30);
  scan.recorded[9000] = nan;
  scan.recorded[12345] = 1e300;
  scan.recorded[20000] = -std::numeric_limits<double>::infinity();
  const std::vector<ScanSegment> found = detectScans(scan.recorded, scan.fs);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].nrOfVolumes, scan.timing().nrOfVolumes);
  EXPECT_EQ(found[0].nrOfSlicesPerVolume, 20);
}

TEST(HostileChannels, GivenTimingThatIsNoneLeadsNowhere) {
  const SimulatedScan scan = simulateScan(Preset::Gap, 1000, 20);
  for (const double duration : {nan, 1e300, 1e-300}) {
    GivenTiming given;
    given.volumeDuration = duration;
    given.nrOfSlicesPerVolume = std::numeric_limits<int32_t>::max();
    given.firstOnset = 1e300;
    EXPECT_NO_THROW(detectScans(scan.recorded, scan.fs, given));
  }
}

TEST(HostileChannels, MarkersOutsideTheChannelFindNothing) {
  const SimulatedScan scan = simulateScan(Preset::Gap, 1000, 20);
  const std::vector<double> markers = {1e300, -1e300, nan, 1e17, 2e17, 3e17, 4e17};
  EXPECT_TRUE(scansFromMarkers(scan.recorded, scan.fs, markers, MarkerKind::Volume).empty());
  EXPECT_NO_THROW(scansFromMarkers(scan.recorded, scan.fs, markers, MarkerKind::Slice));
}

} // namespace
} // namespace emeg
