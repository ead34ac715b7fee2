#include "artifacts/gradient/timing/volumes/ScanComparison.h"

#include <gtest/gtest.h>

#include <vector>

namespace emeg {
namespace {

/// Ten slices and a gap, identifiable.
ScanSegment scanOf(double volumeDuration, double explained, double begin = 0, double end = 20000) {
  ScanSegment scan;
  scan.begin = begin;
  scan.end = end;
  scan.volumeDuration = volumeDuration;
  scan.nrOfVolumes = static_cast<int32_t>((end - begin) / volumeDuration);
  scan.nrOfSlicesPerVolume = 10;
  scan.sliceDuration = 0.08 * volumeDuration;
  scan.isCountIdentifiable = true;
  scan.explainedByVolume = explained;
  return scan;
}

bool isBetter(const ScanSegment& scan, const ScanSegment& best) {
  return isBetter(scan, scoreOf(scan, 1), best, scoreOf(best, 1));
}

TEST(ScanComparison, AShorterVolumeThatExplainsAsMuchIsBetterWhicheverIsTriedFirst) {
  EXPECT_FALSE(isBetter(scanOf(6000, 0.97), scanOf(2000, 0.96)));
  EXPECT_TRUE(isBetter(scanOf(2000, 0.96), scanOf(6000, 0.97)));
  EXPECT_TRUE(isBetter(scanOf(6000, 0.97), scanOf(2000, 0.8)));
  EXPECT_FALSE(isBetter(scanOf(2000, 0.8), scanOf(6000, 0.97)));
}

TEST(ScanComparison, MorePowerIsBetterWherePeriodsHaveNothingToDoWithEachOther) {
  EXPECT_TRUE(isBetter(scanOf(3100, 0.97), scanOf(2000, 0.9)));
  EXPECT_FALSE(isBetter(scanOf(3100, 0.9), scanOf(2000, 0.9)));
}

TEST(ScanComparison, WhatFitsIntoOneVolumeIsItsPart) {
  const std::vector<double> signal(20000, 1.0);
  const std::vector<ScanSegment> across = {scanOf(6000, 0.9)};
  const std::vector<ScanSegment> parts = {scanOf(100, 0.99, 0, 2000), scanOf(100, 0.99, 6000, 8000),
                                          scanOf(100, 0.99, 12000, 14000)};
  EXPECT_TRUE(areBetter(across, parts, signal));
}

TEST(ScanComparison, ScansThatExplainMoreThanOneAcrossThemStayApart) {
  const std::vector<double> signal(20000, 1.0);
  const std::vector<ScanSegment> across = {scanOf(500, 0.7)};
  const std::vector<ScanSegment> apart = {scanOf(2000, 0.99, 0, 9000), scanOf(2000, 0.99, 10000, 19000)};
  EXPECT_FALSE(areBetter(across, apart, signal));
  EXPECT_TRUE(areBetter({scanOf(500, 0.99)}, apart, signal));
  EXPECT_TRUE(areBetter(across, {}, signal));
  EXPECT_FALSE(areBetter({}, apart, signal));
}

} // namespace
} // namespace emeg
