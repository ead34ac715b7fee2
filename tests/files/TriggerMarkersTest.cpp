#include "files/formats/TriggerMarkers.h"

#include "files/formats/ProtocolFile.h"

#include <gtest/gtest.h>
#include <limits>

namespace emeg {
namespace {

using Times = std::vector<double>;

GradientMarkerTiming volumesOf(int32_t nrOfVolumes, double volumeDuration, double firstTriggerTime) {
  GradientMarkerTiming timing;
  timing.nrOfVolumes = nrOfVolumes;
  timing.nrOfSlicesPerVolume = 3;
  timing.volumeDuration = volumeDuration;
  timing.sliceDuration = 0.1;
  timing.firstTriggerTime = firstTriggerTime;
  return timing;
}

Times markersOf(const GradientMarkerTiming& timing, double intervalStartUs = 0) {
  Protocol triggers = makeTriggerProtocol();
  addGradientMarkers(triggers, timing, microsecondsPerSecond, intervalStartUs);
  EXPECT_EQ(triggers.nrOfConditions(), 2);
  EXPECT_EQ(triggers.conditions[1].onsets, triggers.conditions[1].offsets);
  return triggers.conditions[1].onsets;
}

TEST(TriggerMarkers, TheirProtocolStartsEmpty) {
  const Protocol triggers = makeTriggerProtocol();
  EXPECT_FALSE(triggers.interactive);
  EXPECT_EQ(triggers.name, "_ArtifactsTriggers");
  EXPECT_EQ(triggers.resolutionOfTime, TimeResolution::Usec);
  EXPECT_EQ(triggers.nrOfConditions(), 1);
}

TEST(TriggerMarkers, OneStandsAtTheOnsetOfEveryVolume) {
  EXPECT_EQ(markersOf(volumesOf(3, 1.8003371, 2.5)), (Times{2500000, 4300337, 6100674}));
}

TEST(TriggerMarkers, OneStandsAtTheOnsetOfEverySliceWhenAsked) {
  GradientMarkerTiming timing = volumesOf(2, 1.0, 0.25);
  timing.onePerSlice = true;
  EXPECT_EQ(markersOf(timing), (Times{250000, 350000, 450000, 1250000, 1350000, 1450000}));
}

TEST(TriggerMarkers, AreRoundedToWholeMicroseconds) {
  EXPECT_EQ(markersOf(volumesOf(1, 1.0, 1.0000004)), Times{1000000});
  EXPECT_EQ(markersOf(volumesOf(1, 1.0, 1.0000006)), Times{1000001});
  EXPECT_EQ(markersOf(volumesOf(1, 1.0, -0.0000006)), Times{-1});
}

TEST(TriggerMarkers, CountFromTheStartOfTheRecording) {
  EXPECT_EQ(markersOf(volumesOf(2, 1.0, 0.5), 10000000.0), (Times{10500000, 11500000}));
}

TEST(TriggerMarkers, HaveTheirOwnColour) {
  Protocol triggers = makeTriggerProtocol();
  addGradientMarkers(triggers, volumesOf(2, 1.0, 0), microsecondsPerSecond, 0);
  ASSERT_TRUE(triggers.conditions[1].colour.has_value());
  EXPECT_EQ(triggers.conditions[1].colour->r, 64);
  EXPECT_EQ(triggers.conditions[1].colour->g, 64);
  EXPECT_EQ(triggers.conditions[1].colour->b, 255);
}

TEST(TriggerMarkers, OfHeartPulsesComeFirstWhateverWasDetectedFirst) {
  Protocol triggers = makeTriggerProtocol();
  addGradientMarkers(triggers, volumesOf(1, 1.0, 0), microsecondsPerSecond, 0);
  triggers.findOrAddCondition("HeartPulseTriggers", 1, 255, 64, 64);
  triggers.addInterval(7, 7);
  ASSERT_EQ(triggers.nrOfConditions(), 3);
  EXPECT_EQ(triggers.conditions[1].conditionName, "HeartPulseTriggers");
  EXPECT_EQ(triggers.conditions[1].onsets, Times{7});
  EXPECT_EQ(triggers.conditions[2].conditionName, "MRGradientTriggers");
}

TEST(TriggerMarkers, OfOnlyTheGradientAreWrittenAloneEachTimeTwice) {
  Protocol triggers = makeTriggerProtocol();
  addGradientMarkers(triggers, volumesOf(2, 1.0, 0.5), microsecondsPerSecond, 0);
  assignMissingColours(triggers);
  cutToInterval(triggers, 0, 1e7);
  const std::string text = formatProtocol(triggers, "run1.ctc", 1.0, {}, {});
  const std::string end = "\r\nNrOfConditions:     1\r\n\r\nMRGradientTriggers\r\n2"
                          "\r\n    500000        500000\r\n   1500000       1500000"
                          "\r\nColor:              64 64 255";
  ASSERT_GE(text.size(), end.size());
  EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

TEST(TriggerMarkers, OutsideTheExportedIntervalAreDropped) {
  Protocol triggers = makeTriggerProtocol();
  addGradientMarkers(triggers, volumesOf(5, 1.0, 0.5), microsecondsPerSecond, 0);
  triggers.findOrAddCondition("HeartPulseTriggers", 1, 255, 64, 64);
  triggers.addInterval(900, 900);
  cutToInterval(triggers, 1500000, 3000000);
  ASSERT_EQ(triggers.nrOfConditions(), 2) << "no heart pulse is left, so its condition is gone";
  EXPECT_EQ(triggers.conditions[1].conditionName, "MRGradientTriggers");
  EXPECT_EQ(triggers.conditions[1].onsets, (Times{0, 1000000}));
}

TEST(TriggerMarkers, CountsThatAreNotPositiveAddNone) {
  EXPECT_TRUE(markersOf(volumesOf(0, 1.0, 0)).empty());
  EXPECT_TRUE(markersOf(volumesOf(-5, 1.0, 0)).empty());
  GradientMarkerTiming timing = volumesOf(4, 1.0, 0);
  timing.onePerSlice = true;
  timing.nrOfSlicesPerVolume = std::numeric_limits<int32_t>::min();
  EXPECT_TRUE(markersOf(timing).empty());
}

TEST(TriggerMarkers, TimesThatAreNotNumbersAddNone) {
  EXPECT_TRUE(markersOf(volumesOf(3, std::numeric_limits<double>::quiet_NaN(), 0)).empty());
  EXPECT_EQ(markersOf(volumesOf(3, 1e308, 0)), Times{0});
}

TEST(TriggerMarkers, HugeCountsEnd) {
  constexpr int32_t largest = std::numeric_limits<int32_t>::max();
  GradientMarkerTiming timing = volumesOf(largest, std::numeric_limits<double>::infinity(), 0);
  timing.nrOfSlicesPerVolume = largest;
  timing.onePerSlice = true;
  EXPECT_TRUE(markersOf(timing).empty());
  timing.volumeDuration = 1e-6;
  EXPECT_EQ(static_cast<int64_t>(markersOf(timing).size()), maxNrOfGradientMarkers);
}

TEST(TriggerMarkers, WithoutAFreeConditionAreIgnored) {
  Protocol triggers = makeTriggerProtocol();
  for (int c = 0; c < 255; ++c) triggers.findOrAddCondition(std::to_string(c), 1, -1, -1, -1);
  addGradientMarkers(triggers, volumesOf(3, 1.0, 0), microsecondsPerSecond, 0);
  EXPECT_EQ(triggers.nrOfConditions(), Protocol::maxNrOfConditions);
  for (const Condition& condition : triggers.conditions) EXPECT_EQ(condition.nrOfIntervals(), 0);
}

TEST(TriggerMarkers, OneStandsAtEveryHeartPulse) {
  Protocol triggers = makeTriggerProtocol();
  addHeartPulseMarkers(triggers, {0, 12, 250.4}, 4000.000189989805, 0);
  ASSERT_EQ(triggers.nrOfConditions(), 2);
  const Condition& pulses = triggers.conditions[1];
  EXPECT_EQ(pulses.conditionName, "HeartPulseTriggers");
  EXPECT_EQ(pulses.onsets, (Times{0, 48000, 1001600}));
  EXPECT_EQ(pulses.offsets, pulses.onsets);
}

TEST(TriggerMarkers, OfHeartPulsesStandInFrontOfTheGradients) {
  Protocol triggers = makeTriggerProtocol();
  addGradientMarkers(triggers, volumesOf(1, 1.0, 0.5), microsecondsPerSecond, 0);
  addHeartPulseMarkers(triggers, {100}, 4000, 1000000);
  ASSERT_EQ(triggers.nrOfConditions(), 3);
  EXPECT_EQ(triggers.conditions[1].conditionName, "HeartPulseTriggers");
  EXPECT_EQ(triggers.conditions[1].onsets, Times{1400000});
  EXPECT_EQ(triggers.conditions[2].conditionName, "MRGradientTriggers");
}

TEST(TriggerMarkers, OfNoHeartPulseAreAnEmptySet) {
  Protocol triggers = makeTriggerProtocol();
  addHeartPulseMarkers(triggers, {}, 4000, 0);
  ASSERT_EQ(triggers.nrOfConditions(), 2);
  EXPECT_EQ(triggers.conditions[1].conditionName, "HeartPulseTriggers");
  EXPECT_TRUE(triggers.conditions[1].onsets.empty());
}

} // namespace
} // namespace emeg
