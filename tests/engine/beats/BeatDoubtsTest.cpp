#include "engine/beats/BeatDoubts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum BeatDoubtKind;

/// 100 s, a beat a second, nothing wrong.
Findings goodBeats() {
  Findings found;
  for (int beat = 1; beat < 100; ++beat) found.pulseTimes.push_back(beat);
  found.beatsPerMinute = 60;
  found.pulseSampleRate = 250;
  found.plausibility = PulsePlausibility{250, 250, 250, 0, -1, 0.8, 0};
  found.knownPulses.positions.assign(99, 0);
  return found;
}

std::vector<BeatDoubtKind> kindsOf(const Findings& found, BeatSource source = BeatSource::Blind) {
  std::vector<BeatDoubtKind> kinds;
  for (const BeatDoubt& doubt : doubtsAboutBeats(found, source)) kinds.push_back(doubt.kind);
  return kinds;
}

/// The only doubt.
BeatDoubt doubtAbout(const Findings& found, BeatSource source = BeatSource::Blind) {
  const std::vector<BeatDoubt> doubts = doubtsAboutBeats(found, source);
  EXPECT_EQ(doubts.size(), 1u);
  return doubts.empty() ? BeatDoubt() : doubts[0];
}

} // namespace

TEST(BeatDoubts, NothingSpeaksAgainstAHealthyHeart) {
  for (const BeatSource source : {BeatSource::Blind, BeatSource::Markers, BeatSource::Ecg})
    EXPECT_THAT(kindsOf(goodBeats(), source), IsEmpty());
}

TEST(BeatDoubts, FewBeatsMakeAPoorModelAndTwoMakeNone) {
  Findings found = goodBeats();
  found.pulseTimes.resize(20);
  EXPECT_THAT(kindsOf(found), IsEmpty());
  found.pulseTimes.resize(19);
  EXPECT_EQ(doubtAbout(found).kind, FewBeats);
  EXPECT_EQ(doubtAbout(found).measured, 19);
  found.pulseTimes.resize(2);
  found.beatsPerMinute = 200; // says nothing about two beats
  EXPECT_EQ(doubtAbout(found).kind, TooFewBeats);
}

TEST(BeatDoubts, MoreBeatsThanAHeartCanMake) {
  Findings found = goodBeats();
  found.pulseListIsFull = true;
  EXPECT_THAT(kindsOf(found), ElementsAre(BeatListIsFull));
}

TEST(BeatDoubts, APeriodThatTheRestOfTheRecordingDoesNotShow) {
  Findings found = goodBeats();
  found.plausibility->commonPeriod = 300;
  EXPECT_EQ(doubtAbout(found).kind, PeriodOfOneStretch);
  EXPECT_EQ(doubtAbout(found).measured, 60);
  EXPECT_EQ(doubtAbout(found).expected, 50);
  found.plausibility->commonPeriod = 260;
  EXPECT_THAT(kindsOf(found), IsEmpty()) << "hearts are irregular";
}

TEST(BeatDoubts, IntervalsThatContradictThePeriod) {
  Findings found = goodBeats();
  found.plausibility->meanInterval = 200;
  EXPECT_EQ(doubtAbout(found).kind, IntervalsContradictPeriod);
  EXPECT_EQ(doubtAbout(found).measured, 75);
  EXPECT_EQ(doubtAbout(found).expected, 60);
}

TEST(BeatDoubts, ARateAtTheEdgeOfTheSearch) {
  for (const double rate : {35.5, 139.0}) {
    Findings found = goodBeats();
    found.beatsPerMinute = rate;
    found.plausibility->commonPeriod = 0;
    found.plausibility->meanInterval = 60 * 250 / rate;
    EXPECT_EQ(doubtAbout(found).kind, AtLimitOfSearch);
    EXPECT_EQ(doubtAbout(found).measured, rate);
  }
}

TEST(BeatDoubts, IntervalsThatNoHeartMakes) {
  Findings found = goodBeats();
  found.plausibility->offIntervals = 0.05;
  found.plausibility->firstOff = 5000;
  EXPECT_EQ(doubtAbout(found).kind, OffIntervals);
  EXPECT_EQ(doubtAbout(found).measured, 0.05);
  EXPECT_EQ(doubtAbout(found).where.start, 20);
}

TEST(BeatDoubts, BeatsWithLittleInCommon) {
  Findings found = goodBeats();
  found.plausibility->commonShare = 0.1;
  EXPECT_EQ(doubtAbout(found).kind, LittleInCommon);
  EXPECT_EQ(doubtAbout(found).measured, 0.1);
  EXPECT_THAT(kindsOf(found, BeatSource::Ecg), IsEmpty()) << "of known beats less is asked";
  found.plausibility->commonShare = 0.02;
  EXPECT_EQ(doubtAbout(found, BeatSource::Ecg).kind, NothingInCommon);
}

TEST(BeatDoubts, BeatsThatLookLikeNoOther) {
  Findings found = goodBeats();
  found.plausibility->unlikePulses = 0.11;
  EXPECT_EQ(doubtAbout(found).kind, UnlikeBeats);
  EXPECT_EQ(doubtAbout(found).measured, 0.11);
}

TEST(BeatDoubts, TheRhythmOfKnownBeatsIsNotDoubted) {
  Findings found = goodBeats();
  found.plausibility->offIntervals = 0.3;
  found.plausibility->unlikePulses = 0.3;
  found.plausibility->commonPeriod = 400;
  EXPECT_THAT(kindsOf(found, BeatSource::Markers), IsEmpty());
}

TEST(BeatDoubts, KnownBeatsThatWereGuessedOrRefused) {
  Findings found = goodBeats();
  found.knownPulses.gaps = {{250, 750, 3}};
  EXPECT_THAT(kindsOf(found, BeatSource::Markers), IsEmpty());
  found.knownPulses.gaps.push_back({2500, 6000, 13});
  found.knownPulses.nrOfStray = 8;
  found.knownPulses.nrOfDoubled = 5;
  const std::vector<BeatDoubt> doubts = doubtsAboutBeats(found, BeatSource::Markers);
  ASSERT_THAT(kindsOf(found, BeatSource::Markers), ElementsAre(ManyGuessed, GuessedStretch, ManyRefused));
  EXPECT_EQ(doubts[0].measured, 16);
  EXPECT_EQ(doubts[0].expected, 99);
  EXPECT_EQ(doubts[1].where.start, 10);
  EXPECT_EQ(doubts[1].where.end, 24);
  EXPECT_EQ(doubts[2].measured, 13);
}

TEST(BeatDoubts, StretchesThatTheChainLeavesOut) {
  Findings found = goodBeats();
  found.withoutModel = {{0, 2.9}, {68.4, 100}};
  EXPECT_EQ(doubtAbout(found).kind, NotCovered);
  EXPECT_EQ(doubtAbout(found).where.start, 68.4);
}

} // namespace emeg
