#include "engine/figures/ScanDoubts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum ScanDoubtKind;

constexpr VolumeLockedPart large = {500, 100, 1, 260000, 100000};
constexpr VolumeLockedPart gone = {0.5, 0.5, 1, 0.5, 0.5};

/// 100 s at 1 kHz with scans, their figures and how they were asked for.
struct Doubted {
  Findings found;
  TimingRequest request;
  RecordingShape shape;

  std::vector<ScanDoubt> doubts() const { return doubtsAboutScans(found, request, shape); }
  std::vector<ScanDoubtKind> kinds() const {
    std::vector<ScanDoubtKind> kinds;
    for (const ScanDoubt& doubt : doubts()) kinds.push_back(doubt.kind);
    return kinds;
  }
  MRSequence& sequence() { return found.timing.scans[0].sequence; }
  QualityFigures& figures() { return *found.quality[0]; }
};

/// One scan of 45 volumes that went well in two channels.
Doubted goodScan() {
  Doubted good;
  good.shape.samplingFrequency = 1000;
  good.shape.nrOfSamples = 100000;
  good.found.timing.source = TimingSource::QuietBetweenSlices;
  good.found.timing.evidence.unlikeVolumes = 0.001;
  good.found.timing.scans.resize(1);
  good.sequence().nrOfVolumes = 45;
  good.sequence().nrOfSlicesPerVolume = 20;
  good.sequence().volumeDuration = 2;
  good.sequence().sliceDuration = 0.1;
  good.sequence().firstTriggerTime = 5;
  ChannelQuality channel;
  channel.before = large;
  channel.after = gone;
  good.found.quality = {QualityFigures{{1, 100}, {channel, channel}, 0, 0}};
  return good;
}

} // namespace

TEST(ScanDoubts, NothingSpeaksAgainstAScanThatIsGone) {
  EXPECT_THAT(goodScan().kinds(), IsEmpty());
}

TEST(ScanDoubts, NeitherScansNorFiguresAreNoReason) {
  Doubted scan = goodScan();
  scan.found.quality.clear();
  EXPECT_THAT(scan.kinds(), IsEmpty());
  scan.found.timing.scans.clear();
  EXPECT_THAT(scan.kinds(), IsEmpty());
}

TEST(ScanDoubts, VolumesThatTheRecordingDoesNotHold) {
  Doubted scan = goodScan();
  scan.sequence().nrOfVolumes = 48; // one more than fits may be cut off
  EXPECT_THAT(scan.kinds(), IsEmpty());
  scan.sequence().nrOfVolumes = 60;
  ASSERT_THAT(scan.kinds(), ElementsAre(BeyondRecording));
  EXPECT_EQ(scan.doubts()[0].where.end, 125);
  scan = goodScan();
  scan.sequence().firstTriggerTime = -10;
  ASSERT_THAT(scan.kinds(), ElementsAre(BeyondRecording));
  EXPECT_EQ(scan.doubts()[0].where.start, -10);
}

TEST(ScanDoubts, ADriftOfMoreThanHalfASample) {
  Doubted scan = goodScan();
  scan.figures().drift = -0.0004;
  EXPECT_THAT(scan.kinds(), IsEmpty());
  scan.shape.samplingFrequency = 5000;
  scan.shape.nrOfSamples = 500000;
  ASSERT_THAT(scan.kinds(), ElementsAre(Drift));
  EXPECT_EQ(scan.doubts()[0].measured, -0.0004);
  scan.figures().drift = 0.00015;
  EXPECT_THAT(scan.kinds(), IsEmpty()) << "at any rate, 0.2 ms do no harm";
}

TEST(ScanDoubts, WhatLooksLikeScanOutsideIsToldOfTheLongestOne) {
  Doubted scan = goodScan();
  scan.found.timing.scans.push_back(scan.found.timing.scans[0]);
  scan.found.quality.push_back(scan.found.quality[0]);
  scan.sequence().nrOfVolumes = 20;
  for (auto& figures : scan.found.quality) figures->artifactSecondsOutside = 30;
  ASSERT_THAT(scan.kinds(), ElementsAre(ScanOutside));
  EXPECT_EQ(scan.doubts()[0].scan, 1u);
  EXPECT_EQ(scan.doubts()[0].measured, 30);
}

TEST(ScanDoubts, ANumberOfSlicesThatWasGivenAndNotTaken) {
  Doubted scan = goodScan();
  scan.request.given.nrOfSlicesPerVolume = 20;
  EXPECT_THAT(scan.kinds(), IsEmpty());
  scan.request.given.nrOfSlicesPerVolume = 10000;
  ASSERT_THAT(scan.kinds(), ElementsAre(SlicesNotTaken));
  EXPECT_EQ(scan.doubts()[0].measured, 10000);
}

TEST(ScanDoubts, SliceMarkersThatComeLikeVolumes) {
  Doubted scan = goodScan();
  scan.sequence().sliceDuration = 2;
  EXPECT_THAT(scan.kinds(), IsEmpty());
  scan.found.timing.source = TimingSource::SliceMarkers;
  ASSERT_THAT(scan.kinds(), ElementsAre(LongSlices));
  EXPECT_EQ(scan.doubts()[0].measured, 2);
}

TEST(ScanDoubts, VolumesOfAGivenTimingThatAreNotAlike) {
  Doubted scan = goodScan();
  scan.found.timing.evidence.unlikeVolumes = 0.7;
  EXPECT_THAT(scan.kinds(), IsEmpty()) << "whoever searched has judged";
  scan.request.given.volumeDuration = 2;
  ASSERT_THAT(scan.kinds(), ElementsAre(VolumesUnlike));
  EXPECT_EQ(scan.doubts()[0].measured, 0.7);
  scan.found.timing.evidence.unlikeVolumes = 0.4;
  EXPECT_THAT(scan.kinds(), IsEmpty());
}

TEST(ScanDoubts, SlicesThatDoNotRepeat) {
  Doubted scan = goodScan();
  scan.found.timing.slicesDoNotRepeat = true;
  scan.found.timing.slicesLeaveDb = 6;
  ASSERT_THAT(scan.kinds(), ElementsAre(SlicesDoNotRepeat));
  EXPECT_EQ(scan.doubts()[0].measured, 6);
}

TEST(ScanDoubts, FewerThanFourVolumesAreTooFew) {
  Doubted scan = goodScan();
  scan.found.quality[0].reset();
  scan.sequence().nrOfVolumes = 4;
  EXPECT_THAT(scan.kinds(), IsEmpty());
  scan.sequence().nrOfVolumes = 3;
  ASSERT_THAT(scan.kinds(), ElementsAre(TooFewVolumes));
  EXPECT_EQ(scan.doubts()[0].measured, 3);
}

TEST(ScanDoubts, NameTheChannelsInWhichTheArtifactGrewOrStayed) {
  Doubted scan = goodScan();
  scan.figures().channels[1].after = {400, 50, 1, 160000, 80000};
  ASSERT_THAT(scan.kinds(), ElementsAre(ArtifactStayed));
  EXPECT_THAT(scan.doubts()[0].channels, ElementsAre(1));
  scan.figures().channels[0].after = {700, 50, 1, 490000, 240000};
  ASSERT_THAT(scan.kinds(), ElementsAre(ArtifactGrew, ArtifactStayed));
  EXPECT_THAT(scan.doubts()[0].channels, ElementsAre(0));
}

TEST(ScanDoubts, ADeadChannelIsNoReason) {
  Doubted scan = goodScan();
  scan.figures().channels.push_back({});
  EXPECT_THAT(scan.kinds(), IsEmpty());
}

} // namespace emeg
