#include "app/correct/RunWarnings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A run that went well: 100 s, 45 volumes, 100 beats.
CorrectionResult goodResult() {
  CorrectionResult result;
  result.header.samplingFrequency = 1000;
  result.header.nrOfTimePoints = 100000;
  RecordingChannel channel;
  channel.name = "Cz";
  result.header.channels = {channel};
  result.plan.channels = planChannels(result.header, {});
  result.plan.nrOfTimePoints = 100000;
  result.found.timing.source = TimingSource::QuietBetweenSlices;
  result.found.timing.evidence.unlikeVolumes = 0.001;
  result.found.timing.scans.resize(1);
  MRSequence& sequence = result.found.timing.scans[0].sequence;
  sequence.nrOfVolumes = 45;
  sequence.nrOfSlicesPerVolume = 20;
  sequence.volumeDuration = 2;
  sequence.sliceDuration = 0.1;
  sequence.firstTriggerTime = 5;
  for (int beat = 1; beat < 100; ++beat) result.found.pulseTimes.push_back(beat);
  ChannelQuality quality;
  quality.before = {500, 100, 1, 260000, 100000};
  quality.after = {0.5, 0.5, 1, 0.5, 0.5};
  result.found.quality = {QualityFigures{{1, 100}, {quality}, 0, 0}};
  return result;
}

std::vector<std::string> warnings(const CorrectionResult& result) {
  CorrectParameters parameters;
  parameters.bcg = true;
  return warningsOf(result, parameters);
}

} // namespace

TEST(RunWarnings, AGoodRunHasNone) {
  EXPECT_THAT(warnings(goodResult()), IsEmpty());
}

TEST(RunWarnings, CountsThatContradictTheLength) {
  CorrectionResult result = goodResult();
  result.found.timing.scans[0].sequence.nrOfVolumes = 60;
  EXPECT_THAT(warnings(result), Contains(HasSubstr("the recording ends at 100.0 s")));
  result = goodResult();
  result.found.timing.scans[0].sequence.firstTriggerTime = -10;
  EXPECT_THAT(warnings(result), Contains(HasSubstr("the timing is wrong")));
}

TEST(RunWarnings, ADriftingVolumeDuration) {
  CorrectionResult result = goodResult();
  result.found.quality[0]->drift = -0.0012;
  EXPECT_THAT(warnings(result), Contains(HasSubstr("1.20 ms earlier")));
}

TEST(RunWarnings, ScanThatWasNotCounted) {
  CorrectionResult result = goodResult();
  result.found.quality[0]->artifactSecondsOutside = 30;
  EXPECT_THAT(warnings(result), Contains(HasSubstr("about 30 s outside the 45 volumes")));
}

TEST(RunWarnings, ScanThatWasNotCountedAlthoughThereAreMarkers) {
  CorrectionResult result = goodResult();
  result.plan.settings.timing.markerKind = MarkerKind::Volume;
  result.found.quality[0]->artifactSecondsOutside = 30;
  EXPECT_THAT(warnings(result), ElementsAre(HasSubstr("Are markers missing there?")));
}

TEST(RunWarnings, ANumberOfSlicesThatWasGivenAndNotTaken) {
  CorrectionResult result = goodResult();
  result.plan.settings.timing.given.nrOfSlicesPerVolume = 20;
  EXPECT_THAT(warnings(result), IsEmpty());
  result.plan.settings.timing.given.nrOfSlicesPerVolume = 10000;
  EXPECT_THAT(warnings(result), ElementsAre(HasSubstr("10000 slices per volume do not fit")));
}

TEST(RunWarnings, MarkersOfVolumesThatWereSaidToBeThoseOfSlices) {
  CorrectionResult result = goodResult();
  result.found.timing.source = TimingSource::SliceMarkers;
  EXPECT_THAT(warnings(result), IsEmpty());
  MRSequence& sequence = result.found.timing.scans[0].sequence;
  sequence.nrOfSlicesPerVolume = 2;
  sequence.nrOfVolumes = 22;
  sequence.volumeDuration = 4;
  sequence.sliceDuration = 2;
  EXPECT_THAT(warnings(result), ElementsAre(HasSubstr("use --volume-markers")));
}

TEST(RunWarnings, GivenVolumesWithLittleInCommon) {
  CorrectionResult result = goodResult();
  result.found.timing.evidence.unlikeVolumes = 0.7;
  EXPECT_THAT(warnings(result), IsEmpty()) << "whoever searched has judged";
  result.plan.settings.timing.given.volumeDuration = 2;
  EXPECT_THAT(warnings(result), ElementsAre(HasSubstr("only 30 % of their power in common")));
  result.found.timing.evidence.unlikeVolumes = 0.4;
  EXPECT_THAT(warnings(result), IsEmpty());
}

TEST(RunWarnings, PowerThatWasNotReduced) {
  CorrectionResult result = goodResult();
  result.found.quality[0]->channels[0].after = {400, 50, 1, 160000, 80000};
  EXPECT_THAT(warnings(result), Contains(HasSubstr("was not reduced in Cz")));
}

TEST(RunWarnings, AnArtifactThatGrew) {
  CorrectionResult result = goodResult();
  result.found.quality[0]->channels[0].after = {700, 50, 1, 490000, 240000};
  EXPECT_THAT(warnings(result), Contains(HasSubstr("larger than before in Cz")));
}

TEST(RunWarnings, ADeadChannelIsNoReason) {
  CorrectionResult result = goodResult();
  result.found.quality[0]->channels.push_back({});
  result.header.channels.push_back(result.header.channels[0]);
  result.plan.channels = planChannels(result.header, {});
  EXPECT_THAT(warnings(result), IsEmpty());
}

TEST(RunWarnings, TooFewVolumes) {
  CorrectionResult result = goodResult();
  result.found.quality[0].reset();
  result.found.timing.scans[0].sequence.nrOfVolumes = 3;
  EXPECT_THAT(warnings(result), Contains(HasSubstr("only 3 volumes")));
}

TEST(RunWarnings, FewPulses) {
  CorrectionResult result = goodResult();
  result.found.pulseTimes = {1, 2};
  EXPECT_THAT(warnings(result), Contains(HasSubstr("the heart beat artifact was not removed")));
}

TEST(RunWarnings, AChainThatCoversAPart) {
  CorrectionResult result = goodResult();
  result.found.withoutModel = {{0, 2.9}, {68.4, 100}};
  EXPECT_THAT(warnings(result),
              ElementsAre(HasSubstr("does not cover 68.4 to 100.0 s: the heart beat artifact, "
                                    "if there is one, is left there")));
  result.plan.settings.method = asThePluginDoes;
  EXPECT_THAT(warnings(result), ElementsAre(HasSubstr("everything below 35 Hz was removed there")));
}

TEST(RunWarnings, ARecordingWithoutScan) {
  CorrectionResult result = goodResult();
  result.found.timing.scans.clear();
  EXPECT_THAT(warnings(result), Contains(HasSubstr("no scanner sequence")));
}

TEST(RunWarnings, ScansThatWereNotMeasuredAreNoReason) {
  CorrectionResult result = goodResult();
  result.found.quality.clear();
  EXPECT_THAT(warnings(result), IsEmpty());
}

TEST(RunWarnings, SamplesThatAreNoNumbers) {
  CorrectionResult result = goodResult();
  result.found.nrOfNotFinite = 12;
  EXPECT_THAT(warnings(result), ElementsAre(HasSubstr("12 samples are no numbers")));
}

TEST(RunWarnings, SaturatedSamplesThatStay) {
  CorrectionResult result = goodResult();
  result.found.repaired = {{0, 10, 4}};
  EXPECT_THAT(warnings(result), Contains(HasSubstr("4 saturated samples at its ends")));
}

} // namespace emeg
