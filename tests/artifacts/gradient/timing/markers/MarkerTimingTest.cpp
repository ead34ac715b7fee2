#include "artifacts/gradient/timing/markers/MarkerTiming.h"

#include "tests/artifacts/gradient/timing/SimulatedScan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace emeg {
namespace {

/// Markers at onset + v x interval, cut down to whole samples.
std::vector<double> quantised(double onset, double interval, int count) {
  std::vector<double> markers;
  for (int v = 0; v < count; v++) markers.push_back(std::floor(onset + v * interval));
  return markers;
}

TEST(MarkerLines, StraightenQuantisedMarkers) {
  const std::vector<MarkerLine> lines = fitMarkerLines(quantised(100.3, 1800.337, 200));
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NEAR(lines[0].interval, 1800.337, 0.002);
  EXPECT_NEAR(lines[0].onset, 99.8, 0.2);
  EXPECT_EQ(lines[0].nrOfRepeats, 200);
  EXPECT_EQ(lines[0].nrOfMissing, 0);
}

TEST(MarkerLines, DoWithoutMissingMarkersAndIgnoreStrayOnes) {
  std::vector<double> markers = quantised(100.3, 1800.337, 100);
  markers.erase(markers.begin() + 40, markers.begin() + 43);
  markers.erase(markers.begin() + 10);
  markers.push_back(markers[20]);       // twice
  markers.push_back(markers[30] + 700); // stray
  markers.push_back(5);                 // in front of all
  const std::vector<MarkerLine> lines = fitMarkerLines(markers);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NEAR(lines[0].interval, 1800.337, 0.005);
  EXPECT_EQ(lines[0].nrOfRepeats, 100);
  EXPECT_EQ(lines[0].nrOfMissing, 4);
  EXPECT_EQ(lines[0].nrOfStray, 2);
}

TEST(MarkerLines, EndAtPauses) {
  std::vector<double> markers = quantised(100, 1000.5, 20);
  for (const double marker : quantised(24720.4, 1000.5, 15)) markers.push_back(marker);
  const std::vector<MarkerLine> lines = fitMarkerLines(markers);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].nrOfRepeats, 20);
  EXPECT_EQ(lines[1].nrOfRepeats, 15);
  EXPECT_NEAR(lines[1].onset, 24720, 1);
}

TEST(MarkerLines, EndAtPausesThatNearlyFitTheInterval) {
  std::vector<double> markers = quantised(100, 4000.3, 9);
  // Two intervals and 60 samples later: within a twentieth of an interval, but markers are precise.
  for (const double marker : quantised(100 + 10 * 4000.3 + 60, 4000.3, 9)) markers.push_back(marker);
  const std::vector<MarkerLine> lines = fitMarkerLines(markers);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].nrOfRepeats, 9);
  EXPECT_NEAR(lines[1].interval, 4000.3, 0.2);
}

TEST(MarkerLines, MayScatter) {
  std::mt19937 generator(3);
  std::uniform_real_distribution<double> late(0, 60);
  std::vector<double> markers;
  for (int v = 0; v < 50; v++) markers.push_back(std::floor(100 + v * 4000.3 + late(generator)));
  const std::vector<MarkerLine> lines = fitMarkerLines(markers);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].nrOfRepeats, 50);
}

TEST(MarkerLines, AreNoneInFewOrScatteredMarkers) {
  EXPECT_TRUE(fitMarkerLines({}).empty());
  EXPECT_TRUE(fitMarkerLines(std::vector<double>{5}).empty());
  EXPECT_TRUE(fitMarkerLines(std::vector<double>{5, 1005}).empty());
  EXPECT_TRUE(fitMarkerLines(std::vector<double>(1000, 7.0)).empty());
}

TEST(ScansFromMarkers, AreRefinedOnTheWaveform) {
  const SimulatedScan scan = simulateScan(Preset::Equidistant, 2000, 30);
  std::vector<double> markers;
  for (int64_t v = 0; v < scan.timing().nrOfVolumes; v++)
    if (v != 3) markers.push_back(std::floor(scan.onsetOf(v)));
  const std::vector<ScanSegment> found =
      scansFromMarkers(scan.recorded, scan.fs, markers, MarkerKind::Volume);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].nrOfVolumes, scan.timing().nrOfVolumes);
  EXPECT_EQ(found[0].nrOfSlicesPerVolume, 25);
  EXPECT_NEAR(found[0].firstVolumeOnset, scan.onsetOf(0), 1);
  EXPECT_NEAR(found[0].volumeDuration * found[0].nrOfVolumes,
              scan.timing().volumeDuration * scan.fs * found[0].nrOfVolumes, 0.01);
}

TEST(ScansFromMarkers, GatherSlicesIntoVolumes) {
  for (const Preset preset : {Preset::Gap, Preset::Continuous}) {
    const SimulatedScan scan = simulateScan(preset, 2000, 30);
    std::vector<double> markers;
    for (int64_t v = 0; v < scan.timing().nrOfVolumes; v++)
      for (int s = 0; s < scan.timing().nrOfSlicesPerVolume; s++)
        markers.push_back(std::floor(scan.timing().sliceOnset(v, s) * scan.fs));
    const std::vector<ScanSegment> found =
        scansFromMarkers(scan.recorded, scan.fs, markers, MarkerKind::Slice);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].nrOfVolumes, scan.timing().nrOfVolumes);
    EXPECT_EQ(found[0].nrOfSlicesPerVolume, scan.timing().nrOfSlicesPerVolume);
  }
}

/// What both kinds of markers must lead to.
void expectScan(const SimulatedScan& scan, const std::vector<ScanSegment>& found) {
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].nrOfVolumes, scan.timing().nrOfVolumes);
  EXPECT_EQ(found[0].nrOfSlicesPerVolume, scan.timing().nrOfSlicesPerVolume);
  EXPECT_NEAR(found[0].firstVolumeOnset, scan.onsetOf(0), 2);
  EXPECT_NEAR(found[0].volumeDuration * found[0].nrOfVolumes,
              scan.timing().volumeDuration * scan.fs * found[0].nrOfVolumes, 0.01);
}

TEST(ScansFromMarkers, OneOfThreeMarkersMayBeMissing) {
  const SimulatedScan scan =
      simulateScan(Preset::Continuous, 2000, 30, [](auto& p) { p.gradient->nrOfVolumes = 3; });
  for (int64_t missing = 0; missing < 3; missing++) {
    SCOPED_TRACE(missing);
    std::vector<double> markers;
    for (int64_t v = 0; v < 3; v++)
      if (v != missing) markers.push_back(std::floor(scan.onsetOf(v)));
    for (const int32_t slices : {0, 25})
      expectScan(scan, scansFromMarkers(scan.recorded, scan.fs, markers, MarkerKind::Volume, slices));
  }
}

TEST(ScansFromMarkers, OnsetsOfSlicesAreThoseOfTheirMarkers) {
  // Without any quiet, with dead time, with volumes that last nearly two slices longer than their slices.
  for (const Preset preset : {Preset::Fill, Preset::Equidistant, Preset::ManySlices}) {
    SCOPED_TRACE(nameOf(preset));
    const SimulatedScan scan = simulateScan(preset, 2000, 22);
    std::vector<double> markers;
    for (int64_t v = 0; v < scan.timing().nrOfVolumes; v++)
      for (int s = 0; s < scan.timing().nrOfSlicesPerVolume; s++)
        if ((37 * v + s) % 40 != 7) markers.push_back(std::floor(scan.timing().sliceOnset(v, s) * scan.fs));
    for (const int32_t slices : {0, scan.timing().nrOfSlicesPerVolume})
      expectScan(scan, scansFromMarkers(scan.recorded, scan.fs, markers, MarkerKind::Slice, slices));
  }
}

TEST(ScansFromMarkers, DeadAndSpoiltChannelsDoNotMatter) {
  const SimulatedScan scan = simulateScan(Preset::Gap, 1000, 30);
  std::vector<double> markers;
  for (int64_t v = 0; v < scan.timing().nrOfVolumes; v++) markers.push_back(std::floor(scan.onsetOf(v)));
  std::mt19937 random(1);
  const auto read = [&](int channel, std::vector<double>& samples) {
    samples = scan.recorded;
    if (channel == 0) samples.assign(samples.size(), 0.0);
    if (channel == 1)
      for (double& sample : samples) sample = static_cast<double>(random() >> 8);
  };
  const std::vector<ScanSegment> found =
      scansFromMarkersInChannels(read, 3, scan.fs, markers, MarkerKind::Volume);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].nrOfVolumes, scan.timing().nrOfVolumes);
  EXPECT_EQ(found[0].nrOfSlicesPerVolume, scan.timing().nrOfSlicesPerVolume);
  EXPECT_NEAR(found[0].firstVolumeOnset, scan.onsetOf(0), 1);
}

TEST(ScansFromMarkers, FindNothingWhereNothingRepeats) {
  const SimulatedScan scan = simulateScan(Preset::Gap, 1000, 30, [](auto& p) { p.gradient->peakUv = 0; });
  EXPECT_TRUE(
      scansFromMarkers(scan.recorded, scan.fs, quantised(3000, 1800.3, 12), MarkerKind::Volume).empty());
}

} // namespace
} // namespace emeg
