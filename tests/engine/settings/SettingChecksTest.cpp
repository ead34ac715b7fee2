#include "engine/settings/SettingChecks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace emeg {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// 100 s of one channel at 1 kHz.
RecordingShape hundredSeconds() {
  RecordingShape shape;
  shape.samplingFrequency = 1000;
  shape.nrOfSamples = 100000;
  shape.roles.resize(1);
  return shape;
}

/// Empty where there is no problem.
std::string problemOf(const CorrectionSettings& settings, const std::string& prefix = "") {
  return firstProblemOf(settings, hundredSeconds(), prefix).value_or("");
}

} // namespace

TEST(SettingChecks, DefaultsFitEveryRecording) {
  EXPECT_EQ(problemOf({}), "");
  EXPECT_NO_THROW(checkSettings({}, hundredSeconds()));
}

TEST(SettingChecks, AProblemIsASentenceWithTheNamesOfTheSettings) {
  CorrectionSettings settings;
  settings.highPass = 40;
  settings.lowPass = 30;
  EXPECT_EQ(problemOf(settings), "high-pass 40 low-pass 30 leaves no frequency.");
  EXPECT_EQ(problemOf(settings, "--"), "--high-pass 40 --low-pass 30 leaves no frequency.");
  EXPECT_THROW(checkSettings(settings, hundredSeconds()), UnusableSettings);
}

TEST(SettingChecks, RecordingsWithoutSamplesChannelsOrTenSamplesASecond) {
  RecordingShape shape = hundredSeconds();
  shape.nrOfSamples = 0;
  EXPECT_THAT(firstProblemOf({}, shape).value_or(""), HasSubstr("no samples"));
  shape = hundredSeconds();
  shape.roles.clear();
  EXPECT_THAT(firstProblemOf({}, shape).value_or(""), HasSubstr("no channels"));
  for (const double rate : {0.0, 9.9, -1000.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
    shape = hundredSeconds();
    shape.samplingFrequency = rate;
    EXPECT_THAT(firstProblemOf({}, shape).value_or(""), HasSubstr("samples a second")) << rate;
  }
}

TEST(SettingChecks, EdgesLieBelowHalfTheRateAtWhichTheyAreApplied) {
  for (const double edge : {500.0, -1.0, 1e300, std::nan("")}) {
    CorrectionSettings settings;
    settings.lowPass = edge;
    EXPECT_THAT(problemOf(settings), HasSubstr("half of the recording's sampling frequency")) << edge;
  }
  CorrectionSettings settings;
  settings.rate = 100;
  settings.highPass = 50;
  EXPECT_EQ(problemOf(settings),
            "high-pass 50: the frequency lies between 0 and 50 Hz, half of the new sampling frequency.");
  settings.rate = 2000; // edges are applied before the rate is raised
  settings.highPass = 600;
  EXPECT_THAT(problemOf(settings), HasSubstr("half of the recording's"));
}

TEST(SettingChecks, StopBandsBeginAboveZeroAndEndBelowHalfTheRate) {
  for (const Notch& notch : {Notch{1, 4}, Notch{50, -2}, Notch{50, 0}, Notch{499, 4}, Notch{2, 4}}) {
    CorrectionSettings settings;
    settings.notches = {{50, 4}, notch};
    EXPECT_THAT(problemOf(settings), StartsWith("notch ")) << notch.frequency << ":" << notch.width;
  }
}

TEST(SettingChecks, LineNoiseMayLieAboveHalfTheNewRate) {
  CorrectionSettings settings;
  settings.rate = 100;
  settings.lineNoise = {60};
  EXPECT_EQ(problemOf(settings), "");
  for (const double hz : {0.0, 500.0, -50.0}) {
    settings.lineNoise = {60, hz};
    EXPECT_THAT(problemOf(settings), StartsWith("line-noise ")) << hz;
  }
}

TEST(SettingChecks, CountsBelowOne) {
  CorrectionSettings settings;
  settings.decimation = 0;
  EXPECT_THAT(problemOf(settings), StartsWith("decimate 0"));
  settings = {};
  settings.timing.windowSlices = 0;
  EXPECT_THAT(problemOf(settings), StartsWith("window 0"));
}

TEST(SettingChecks, RatesThatCannotBeMade) {
  for (const double rate : {-5.0, 10001.0, 0.1, std::nan("")}) {
    CorrectionSettings settings;
    settings.rate = rate;
    EXPECT_THAT(problemOf(settings), StartsWith("rate ")) << rate;
  }
}

TEST(SettingChecks, ThreeVolumesMustFit) {
  CorrectionSettings settings;
  settings.timing.given.volumeDuration = 33.3;
  EXPECT_EQ(problemOf(settings), "");
  for (const double tr : {33.4, 1e300, std::nan("")}) {
    settings.timing.given.volumeDuration = tr;
    EXPECT_THAT(problemOf(settings), HasSubstr("three volumes")) << tr;
  }
}

TEST(SettingChecks, TimingsThatContradictThemselves) {
  CorrectionSettings settings;
  settings.timing.given.firstOnset = 3;
  EXPECT_EQ(problemOf(settings, "--"), "--first needs --tr.");
  settings.timing.given.volumeDuration = 2;
  EXPECT_EQ(problemOf(settings), "");
  settings.timing.given.firstOnset = -101;
  EXPECT_THAT(problemOf(settings), StartsWith("first: "));
  settings.timing.given.firstOnset.reset();
  settings.timing.markerKind = MarkerKind::Volume;
  EXPECT_THAT(problemOf(settings), StartsWith("tr 2: markers"));
}

TEST(SettingChecks, SaturationShowsInTheIntegersOfACorrectedChannelOnly) {
  CorrectionSettings settings;
  settings.repairSaturation = true;
  EXPECT_THAT(problemOf(settings), HasSubstr("stores no integers"));
  RecordingShape shape = hundredSeconds();
  shape.integers = {IntegerRange()};
  EXPECT_FALSE(firstProblemOf(settings, shape));
  shape.roles[0].passesUnchanged = true;
  EXPECT_TRUE(firstProblemOf(settings, shape));
}

TEST(SettingChecks, ThePlugInFindsTimingAndBeatsItself) {
  CorrectionSettings settings;
  settings.method = asThePluginDoes;
  EXPECT_EQ(problemOf(settings), "");
  settings.timing.given.nrOfSlicesPerVolume = 20;
  EXPECT_THAT(problemOf(settings), StartsWith("as-plugin"));
  settings.timing.given.nrOfSlicesPerVolume = 0;
  settings.beats.source = BeatSource::Ecg;
  EXPECT_THAT(problemOf(settings), StartsWith("as-plugin"));
  settings.beats.source = BeatSource::Blind;
  RecordingShape shape = hundredSeconds();
  shape.nrOfSamples = int64_t{1} << 31;
  EXPECT_THAT(firstProblemOf(settings, shape).value_or(""), HasSubstr("2147483647"));
}

} // namespace emeg
