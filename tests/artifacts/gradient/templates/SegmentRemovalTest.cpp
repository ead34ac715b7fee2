#include "artifacts/gradient/templates/SegmentRemoval.h"

#include "artifacts/CubicSplines.h"
#include "artifacts/gradient/templates/TemplateRemoval.h"
#include "tests/artifacts/gradient/timing/SimulatedScan.h"

#include <gtest/gtest.h>

#include <cmath>

namespace emeg {
namespace {

ScanSegment trueSegment(const SimulatedScan& scan, const ScanTiming& timing) {
  ScanSegment segment;
  segment.firstVolumeOnset = timing.firstVolumeOnset * scan.fs;
  segment.volumeDuration = timing.volumeDuration * scan.fs;
  segment.sliceDuration = timing.sliceDuration * scan.fs;
  segment.nrOfVolumes = static_cast<int32_t>(timing.nrOfVolumes);
  segment.nrOfSlicesPerVolume = timing.nrOfSlicesPerVolume;
  segment.begin = segment.firstVolumeOnset;
  segment.end = segment.endOfVolumes();
  return segment;
}

std::vector<double> estimated(const SimulatedScan& scan, const std::vector<ScanSegment>& segments,
                              bool volumeWise = false) {
  std::vector<double> estimate(scan.recorded.size(), 0.0);
  SegmentRemoval(segments, scan.fs, volumeWise, 150).estimate(scan.recorded, estimate);
  return estimate;
}

/// dB of the artifact that is left in [from, to) seconds.
double leftDb(const SimulatedScan& scan, const std::vector<double>& estimate, double from, double to) {
  double artifact = 0, left = 0;
  for (auto t = static_cast<size_t>(from * scan.fs); t < static_cast<size_t>(to * scan.fs); t++) {
    artifact += std::pow(scan.recorded[t] - scan.clean[t], 2);
    left += std::pow(scan.recorded[t] - estimate[t] - scan.clean[t], 2);
  }
  return 10 * std::log10(left / artifact);
}

TEST(SegmentRemoval, AWholeScanIsRemovedAsWithoutSegments) {
  // Not at a whole sample, which rounding might move.
  const SimulatedScan scan =
      simulateScan(Preset::Continuous, 1000, 40, [](auto& p) { p.gradient->quietBefore = 3.0003; });
  const ScanSegment segment = trueSegment(scan, scan.timing());
  const std::vector<double> estimate = estimated(scan, {segment});

  const size_t n = scan.recorded.size();
  std::vector<double> b(n), c(n), d(n), plain(n, 0.0);
  computeSplineCoefficients(scan.recorded.data(), b.data(), c.data(), d.data(), static_cast<int64_t>(n));
  MRSequence sequence = sequenceOf(segment, scan.fs);
  sequence.windowHalfLength = windowSecondsOf(sequence, 150, false);
  estimateGradientArtifact({scan.recorded.data(), b.data(), c.data(), d.data(), static_cast<int64_t>(n)},
                           sequence, scan.fs, false, plain.data());
  for (auto t = static_cast<size_t>(segment.begin); t < static_cast<size_t>(segment.end); t++)
    ASSERT_NEAR(estimate[t], plain[t], 1e-6) << t;
}

TEST(SegmentRemoval, EveryScanWithItsOwnTimingAndNothingBetween) {
  const SimulatedScan scan = simulateScan(Preset::Continuous, 1000, 60, [](auto& p) {
    p.gradient->nrOfScans = 2;
    p.gradient->nrOfVolumes = 11;
    p.gradient->pauseDuration = 7.3;
  });
  ASSERT_EQ(scan.timings.size(), 2u);
  const std::vector<double> estimate =
      estimated(scan, {trueSegment(scan, scan.timings[0]), trueSegment(scan, scan.timings[1])});
  for (const ScanTiming& timing : scan.timings)
    EXPECT_LT(leftDb(scan, estimate, timing.firstVolumeOnset, timing.end()), -28);
  constexpr double fade = 0.011; // seconds
  const auto from = static_cast<size_t>((scan.timings[0].end() + fade) * scan.fs);
  const auto to = static_cast<size_t>((scan.timings[1].firstVolumeOnset - fade) * scan.fs);
  for (size_t t = from; t < to; t++) ASSERT_EQ(estimate[t], 0) << t;
  for (size_t t = 0; t < static_cast<size_t>((scan.timing().firstVolumeOnset - fade) * scan.fs); t++)
    ASSERT_EQ(estimate[t], 0) << t;
}

TEST(SegmentRemoval, VolumesThatTheRecordingCutsAreCorrectedToItsEdges) {
  const SimulatedScan scan = simulateScan(Preset::Continuous, 1000, 40, [](auto& p) {
    p.gradient->cutBefore = 0.9;
    p.gradient->endsInScan = true;
  });
  ScanSegment segment = trueSegment(scan, scan.timing());
  ASSERT_LT(segment.firstVolumeOnset, 0);
  segment.firstVolumeOnset += segment.volumeDuration;
  segment.nrOfVolumes =
      static_cast<int32_t>((40 * scan.fs - segment.firstVolumeOnset) / segment.volumeDuration);
  segment.beginsInVolume = segment.endsInVolume = true;
  // As the activity shows it: the recording begins and ends in a slice's quiet.
  segment.begin = 60;
  segment.end = 40 * scan.fs - 60;
  for (const bool volumeWise : {false, true}) {
    SCOPED_TRACE(volumeWise);
    const std::vector<double> estimate = estimated(scan, {segment}, volumeWise);
    EXPECT_LT(leftDb(scan, estimate, 0, 0.5), -20);
    EXPECT_LT(leftDb(scan, estimate, 39.5, 40), -20);
    EXPECT_LT(leftDb(scan, estimate, 0, 40), -26);
  }
}

TEST(SegmentRemoval, HostileSegmentsDoNoHarm) {
  const std::vector<double> channel(500, 1.0);
  ScanSegment far;
  far.begin = 1e9;
  far.end = 2e9;
  far.firstVolumeOnset = 1e9;
  far.volumeDuration = 100;
  far.sliceDuration = 10;
  far.nrOfVolumes = 5;
  far.nrOfSlicesPerVolume = 10;
  ScanSegment backwards = far;
  backwards.begin = 300;
  backwards.end = 200;
  std::vector<double> estimate(channel.size(), 0.0);
  SegmentRemoval({backwards, far}, 1000, true, 150).estimate(channel, estimate);
  for (const double value : estimate) ASSERT_TRUE(std::isfinite(value));
}

} // namespace
} // namespace emeg
