// The removal of scans from stretches of a channel against that from all of it.

#include "artifacts/gradient/templates/SegmentRemoval.h"
#include "tests/artifacts/gradient/timing/SimulatedScan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace emeg {
namespace {

/// As far as the recording shows the scan.
ScanSegment segmentOf(const SimulatedScan& scan, const ScanTiming& timing) {
  ScanSegment segment;
  segment.volumeDuration = timing.volumeDuration * scan.fs;
  segment.sliceDuration = timing.sliceDuration * scan.fs;
  segment.nrOfSlicesPerVolume = timing.nrOfSlicesPerVolume;
  segment.firstVolumeOnset = timing.firstVolumeOnset * scan.fs;
  double volumes = static_cast<double>(timing.nrOfVolumes);
  segment.begin = std::max(segment.firstVolumeOnset, 0.0);
  segment.end = std::min(segment.volumeOnset(volumes), scan.seconds * scan.fs);
  if (segment.firstVolumeOnset < 0) {
    segment.beginsInVolume = true;
    const double cut = std::ceil(-segment.firstVolumeOnset / segment.volumeDuration);
    segment.firstVolumeOnset += cut * segment.volumeDuration;
    volumes -= cut;
  }
  if (segment.volumeOnset(volumes) > segment.end) {
    segment.endsInVolume = true;
    volumes = std::floor((segment.end - segment.firstVolumeOnset) / segment.volumeDuration);
  }
  segment.nrOfVolumes = static_cast<int32_t>(volumes);
  return segment;
}

std::vector<ScanSegment> segmentsOf(const SimulatedScan& scan) {
  std::vector<ScanSegment> segments;
  for (const ScanTiming& timing : scan.timings) segments.push_back(segmentOf(scan, timing));
  return segments;
}

void expectTheSameInStretches(const SimulatedScan& scan, int slices,
                              const std::vector<ScanSegment>& segments) {
  const auto n = static_cast<int64_t>(scan.recorded.size());
  for (const bool volumeWise : {false, true}) {
    SegmentRemoval removal(segments, scan.fs, volumeWise, slices);
    std::vector<double> whole(scan.recorded.size(), 0.0);
    removal.estimate(scan.recorded, whole);
    const double peak = *std::max_element(whole.begin(), whole.end());
    EXPECT_GT(peak, 100);
    for (const int64_t length : {int64_t{700}, int64_t{20011}}) {
      std::vector<double> parts(scan.recorded.size(), 0.0);
      for (int64_t begin = 0; begin < n; begin += length) {
        const PositionRange outputs{begin, std::min(begin + length, n)};
        const PositionRange held = withContext(outputs, removal.context(), n);
        removal.estimate(
            {std::span(scan.recorded)
                 .subspan(static_cast<size_t>(held.begin), static_cast<size_t>(held.length())),
             held.begin, n},
            outputs,
            std::span(parts).subspan(static_cast<size_t>(begin), static_cast<size_t>(outputs.length())));
      }
      for (size_t t = 0; t < parts.size(); ++t)
        ASSERT_NEAR(parts[t], whole[t], 1e-10 * peak)
            << t << (volumeWise ? " volumes " : " slices ") << length;
    }
  }
}

void expectTheSame(const SimulatedScan& scan, int slices) {
  expectTheSameInStretches(scan, slices, segmentsOf(scan));
}

TEST(SegmentRemovalFromStretches, EqualsThatFromTheWholeChannel) {
  expectTheSame(simulateScan(Preset::Continuous, 1000, 120), 20);
  expectTheSame(simulateScan(Preset::Gap, 1000, 120), 60);
}

TEST(SegmentRemovalFromStretches, EqualsItWhereTheRecordingCutsTheScan) {
  expectTheSame(simulateScan(Preset::Continuous, 1000, 100,
                             [](auto& p) {
                               p.gradient->cutBefore = 0.9;
                               p.gradient->endsInScan = true;
                             }),
                20);
}

TEST(SegmentRemovalFromStretches, EqualsItWithSeveralScans) {
  expectTheSame(simulateScan(Preset::Continuous, 1000, 140,
                             [](auto& p) {
                               p.gradient->nrOfScans = 3;
                               p.gradient->nrOfVolumes = 21;
                               p.gradient->pauseDuration = 1.1; // less than a volume
                               p.gradient->cutBefore = 2.2;
                             }),
                20);
}

TEST(SegmentRemovalFromStretches, EqualsItWhereEverySliceBeginsAtASample) {
  // A scanner and an amplifier with one clock: rounding must not move an onset to the sample before it.
  const SimulatedScan scan =
      simulateScan(Preset::Equidistant, 1000, 120, [](auto& p) { p.gradient->sliceDuration = 0.08; });
  ScanSegment segment = segmentOf(scan, scan.timing());
  ASSERT_NEAR(segment.volumeDuration, 2000, 1e-9);
  segment.volumeDuration = 2000;
  segment.sliceDuration = 80;
  segment.begin = segment.firstVolumeOnset = std::floor(segment.firstVolumeOnset);
  segment.end = segment.endOfVolumes();
  expectTheSameInStretches(scan, 20, {segment});
}

TEST(SegmentRemovalFromStretches, EqualsItWhereTheWindowReachesOverAllOfTheScan) {
  expectTheSame(simulateScan(Preset::Continuous, 1000, 60), 1000);
}

} // namespace
} // namespace emeg
