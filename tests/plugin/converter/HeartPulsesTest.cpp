#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

constexpr double beatInterval = 0.9; // seconds

/// A heart without a scanner: two channels of 60 s at 500 Hz.
Recording beatingHeart() {
  std::mt19937 generator(3);
  Recording recording;
  recording.samplingFrequency = 500;
  for (int c = 0; c < 2; ++c) {
    std::vector<double> samples;
    for (int i = 0; i < 30000; ++i) {
      const double t = std::fmod(i / 500.0 + 0.5, beatInterval) - 0.5;
      const double noise = static_cast<double>(generator() % 401) * 0.05 - 10;
      samples.push_back(noise + 80 * std::exp(-t * t / 0.0025) -
                        (50 + 10 * c) * std::exp(-(t - 0.15) * (t - 0.15) / 0.005));
    }
    recording.samples.push_back(samples);
  }
  return recording;
}

/// The plug-in's converter without the gradient stage.
class HeartConverter : public PluginConverter {
  bool afterChunkFilesHook() override {
    switches.correctGradient = false;
    return true;
  }
};

struct HeartPulsesOfARun : ::testing::Test {
  HeartPulsesOfARun() : chosen(beatingHeart()) {
    chosen.host.integerAnswers = {2};
    chosen.host.yesNoAnswers = {1};
  }
  /// Of the trigger protocol that the converter holds.
  static std::vector<double> markers(const PluginConverter& converter) {
    for (const Condition& condition : converter.protocolList.protocols.back().conditions)
      if (condition.conditionName == "HeartPulseTriggers") return condition.onsets;
    return {};
  }
  ChosenRecording chosen;
};

TEST_F(HeartPulsesOfARun, BecomeMarkersAtTheReducedRatesSampleInterval) {
  HeartConverter converter;
  ASSERT_TRUE(converter.start());
  const std::vector<double> onsets = markers(converter);
  const std::vector<double>& pulses = converter.beats.positions;
  ASSERT_GT(pulses.size(), 55u);
  ASSERT_EQ(onsets.size(), pulses.size());
  for (size_t i = 0; i < pulses.size(); ++i) {
    EXPECT_EQ(onsets[i], std::floor(pulses[i] * (static_cast<double>(0.004f) * 1e6) + 0.5));
  }
  for (size_t i = 1; i < pulses.size(); ++i) EXPECT_NEAR(onsets[i] - onsets[i - 1], 1e6 * beatInterval, 8000);
  EXPECT_NEAR(converter.beats.period.period, 225, 1);
  EXPECT_TRUE(chosen.host.logged(line("Writing heart pulse triggers")));
}

TEST_F(HeartPulsesOfARun, OfARestrictedIntervalAreWrittenFromItsStart) {
  HeartConverter converter;
  converter.options.selectTimeInterval = true;
  chosen.host.floatAnswers = {10000, 55000};
  ASSERT_TRUE(converter.start());
  const std::vector<double> onsets = markers(converter);
  const std::vector<double>& pulses = converter.beats.positions;
  ASSERT_GT(pulses.size(), 40u);
  ASSERT_EQ(onsets.size(), pulses.size());
  EXPECT_EQ(onsets[0], std::floor(pulses[0] * (static_cast<double>(0.004f) * 1e6) + 0.5));
}

TEST_F(HeartPulsesOfARun, EndWithTheirMarkersWhereTheListIsFullWhichIsLoggedOnce) {
  HeartConverter converter;
  converter.method.mostBeats = 5;
  ASSERT_TRUE(converter.start());
  EXPECT_EQ(converter.beats.positions.size(), 5u);
  EXPECT_EQ(markers(converter).size(), 5u);
  const Lines log = chosen.host.logLines();
  const std::string full =
      line("The heart pulse list is full: behind the last pulse all signal below 35 Hz is removed.");
  EXPECT_EQ(std::count(log.begin(), log.end(), full), 1);
  EXPECT_TRUE(chosen.host.logged(line("TimeCorrectedPulses: 2 channels X 3 pulses X " +
                                      log[log.size() - 5].substr(log[log.size() - 5].rfind('X') + 2))));
}

TEST_F(HeartPulsesOfARun, EndWhereTheListOfCandidatesIsFullWhichIsLoggedOnce) {
  HeartConverter converter;
  converter.method.mostCandidatesPerSecond = 0.5f;
  ASSERT_TRUE(converter.start());
  ASSERT_GT(converter.beats.positions.size(), 5u);
  EXPECT_LT(converter.beats.positions.back(), 14000);
  const Lines log = chosen.host.logLines();
  const std::string full =
      line("The list of heart pulse candidates is full: behind the last pulse all signal "
           "below 35 Hz is removed.");
  EXPECT_EQ(std::count(log.begin(), log.end(), full), 1);
}

TEST_F(HeartPulsesOfARun, MayFillTheListToItsLastPlaceWithoutAWord) {
  size_t nrOfPulses = 0;
  {
    HeartConverter converter;
    ASSERT_TRUE(converter.start());
    nrOfPulses = converter.beats.positions.size();
    EXPECT_EQ(converter.method.mostBeats, 3000u);
  }
  chosen.host.fileAnswers = {"", "", chosen.ctcPath()};
  chosen.host.integerAnswers = {2};
  chosen.host.yesNoAnswers = {1};
  HeartConverter converter;
  converter.method.mostBeats = nrOfPulses;
  ASSERT_TRUE(converter.start());
  EXPECT_EQ(converter.beats.positions.size(), nrOfPulses);
  for (const std::string& text : chosen.host.logLines()) EXPECT_EQ(text.find("is full"), std::string::npos);
}

TEST_F(HeartPulsesOfARun, AloneLeaveNoGradientTriggers) {
  HeartConverter converter;
  ASSERT_TRUE(converter.start());
  const std::string text = readFile(chosen.folder.path("run1_GRA_BCG_ArtifactsTriggers.prt"));
  EXPECT_NE(text.find("HeartPulseTriggers"), std::string::npos);
  EXPECT_EQ(text.find("MRGradientTriggers"), std::string::npos);
  EXPECT_NE(text.find("Color:              255 64 64"), std::string::npos);
}

TEST_F(HeartPulsesOfARun, InASilentRecordingAreNoneAndLeaveAnEmptySet) {
  Recording silent = beatingHeart();
  for (std::vector<double>& channel : silent.samples) channel.assign(channel.size(), 0.0);
  writeFile(chosen.ctcPath(), silent.bytes());
  HeartConverter converter;
  ASSERT_TRUE(converter.start());
  EXPECT_TRUE(converter.beats.positions.empty());
  const Protocol& triggers = converter.protocolList.protocols.back();
  EXPECT_LE(triggers.nrOfConditions(), 2) << "no other set";
  EXPECT_TRUE(markers(converter).empty());
  EXPECT_TRUE(chosen.host.logged(line("TimeCorrectedPulses: 2 channels X 0 pulses X 0 timepoints")));
}

TEST_F(HeartPulsesOfARun, InTheirSpanTakeTheArtifactAway) {
  HeartConverter converter;
  ASSERT_TRUE(converter.start());
  const Recording before = beatingHeart();
  const Recording after = readOutput(chosen.folder.path("run1_GRA_BCG.ctc"));
  for (size_t c = 0; c < 2; ++c) {
    double energyBefore = 0;
    double energyAfter = 0;
    for (size_t i = 1000; i < 29000; ++i) {
      energyBefore += before.samples[c][i] * before.samples[c][i];
      energyAfter += after.samples[c][i] * after.samples[c][i];
    }
    EXPECT_LT(energyAfter, 0.25 * energyBefore) << c;
  }
}

} // namespace
} // namespace emeg
