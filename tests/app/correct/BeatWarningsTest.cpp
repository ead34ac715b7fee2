#include "app/correct/BeatWarnings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// 100 s, a beat a second, found in the EEG, nothing wrong.
CorrectionResult goodResult() {
  CorrectionResult result;
  result.header.samplingFrequency = 1000;
  result.header.nrOfTimePoints = 100000;
  result.header.channels.resize(2);
  result.header.channels[0].name = "Cz";
  result.header.channels[1].name = "chest";
  result.plan.nrOfTimePoints = 100000;
  for (int beat = 1; beat < 100; ++beat) result.found.pulseTimes.push_back(beat);
  result.found.beatsPerMinute = 60;
  result.found.pulseSampleRate = 250;
  result.found.plausibility = PulsePlausibility{250, 250, 250, 0, -1, 0.8, 0};
  return result;
}

PulsePlausibility& pulsesOf(CorrectionResult& result) {
  return *result.found.plausibility;
}

} // namespace

TEST(BeatWarnings, AHealthyHeartHasNone) {
  EXPECT_THAT(beatWarningsOf(goodResult()), IsEmpty());
}

TEST(BeatWarnings, EveryDoubtAboutTheSearchIsPartOfOneSentence) {
  CorrectionResult result = goodResult();
  result.found.beatsPerMinute = 139;
  pulsesOf(result) = PulsePlausibility{290, 250, 215, 0.05, 5000, 0.1, 0.11};
  EXPECT_THAT(
      beatWarningsOf(result),
      ElementsAre(AllOf(HasSubstr("may be wrong: 139 beats per minute are at the limit of the search; "
                                  "one stretch, such as a movement, made the period 139 per minute"),
                        HasSubstr("recording shows 52; they come 70 times a minute"),
                        HasSubstr("; 5 % of the intervals"), HasSubstr("the first at 20.0 s; "),
                        HasSubstr("hardly an artifact that they have in common (10 % of"),
                        HasSubstr("around 11 % of them"))));
}

TEST(BeatWarnings, AllDoubtsAreOneWarningThatRecommendsTheOptions) {
  CorrectionResult result = goodResult();
  pulsesOf(result).meanInterval = 215;
  pulsesOf(result).commonShare = 0.1;
  ASSERT_EQ(beatWarningsOf(result).size(), 1u);
  EXPECT_THAT(beatWarningsOf(result)[0], HasSubstr("--ecg CHANNEL or --pulse-markers NAME"));
  result.header.channels[1].kind = ChannelKind::Ecg;
  EXPECT_THAT(beatWarningsOf(result)[0], HasSubstr("Use --ecg chest"));
}

TEST(BeatWarnings, AChainThatBreaksRecommendsTheOptionsToo) {
  CorrectionResult result = goodResult();
  result.found.pulseTimes.resize(60);
  result.found.withoutModel = {{60.5, 100}};
  EXPECT_THAT(beatWarningsOf(result), ElementsAre(HasSubstr("--pulse-markers")));
  result.found.pulseTimes.resize(2);
  result.found.withoutModel.clear();
  EXPECT_THAT(beatWarningsOf(result), ElementsAre(HasSubstr("--pulse-markers")));
}

TEST(BeatWarnings, KnownBeatsAreNotDoubtedBecauseOfTheirRhythm) {
  CorrectionResult result = goodResult();
  result.plan.settings.beats = {BeatSource::Ecg, "chest", {}};
  pulsesOf(result).offIntervals = 0.3;
  pulsesOf(result).unlikePulses = 0.3;
  EXPECT_THAT(beatWarningsOf(result), IsEmpty());
  pulsesOf(result).commonShare = 0.02;
  EXPECT_THAT(beatWarningsOf(result), ElementsAre(HasSubstr("hardly anything in the EEG goes with")));
}

TEST(BeatWarnings, KnownBeatsThatWereGuessedOrRefused) {
  CorrectionResult result = goodResult();
  result.plan.settings.beats = {BeatSource::Markers, "R", {}};
  KnownPulses& pulses = result.found.knownPulses;
  pulses.positions.assign(99, 0);
  pulses.gaps = {{2500, 6000, 13}};
  EXPECT_THAT(beatWarningsOf(result), Contains(HasSubstr("13 of the 99 heart beats are guesses")));
  EXPECT_THAT(beatWarningsOf(result), Contains(HasSubstr("from 10.0 to 24.0 s")));
  pulses.nrOfStray = 8;
  pulses.nrOfDoubled = 5;
  EXPECT_THAT(beatWarningsOf(result), Contains(HasSubstr("13 of the markers \"R\" come closer")));
}

} // namespace emeg
