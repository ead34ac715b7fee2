#include "app/correct/CorrectionPlan.h"
#include "app/correct/OutputPlace.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::HasSubstr;

RecordingHeader hundredSeconds() {
  RecordingHeader header;
  header.samplingFrequency = 1000;
  header.nrOfTimePoints = 100000;
  RecordingChannel channel;
  channel.name = "Cz";
  header.channels = {channel};
  return header;
}

/// What the plan is refused with; empty when it is not.
std::string refusalOf(const CorrectParameters& parameters) {
  try {
    planCorrection(hundredSeconds(), parameters);
  } catch (const UnusableInput& refusal) {
    return refusal.what();
  }
  return {};
}

} // namespace

TEST(CorrectionPlan, AnIntervalBeginsAndEndsAtTheNearestSamples) {
  CorrectParameters parameters;
  parameters.interval = Seconds{10.0004, 20.0006};
  const CorrectionPlan plan = planCorrection(hundredSeconds(), parameters);
  EXPECT_EQ(plan.firstTimePoint, 10000);
  EXPECT_EQ(plan.nrOfTimePoints, 10001);
  EXPECT_EQ(plan.suffix, "_10000-20001ms_GRA");
}

TEST(CorrectionPlan, AnIntervalThatEndsBehindTheRecordingEndsWithIt) {
  CorrectParameters parameters;
  parameters.interval = Seconds{90, 1000};
  EXPECT_EQ(planCorrection(hundredSeconds(), parameters).endTimePoint(), 100000);
  parameters.interval = Seconds{0, std::nullopt};
  EXPECT_FALSE(planCorrection(hundredSeconds(), parameters).hasInterval);
}

TEST(CorrectionPlan, IntervalsThatHoldNothingAreRefused) {
  CorrectParameters parameters;
  for (const Seconds interval : {Seconds{20, 10}, Seconds{-1, 10}, Seconds{200, 300}, Seconds{5, 5}}) {
    parameters.interval = interval;
    EXPECT_THAT(refusalOf(parameters), HasSubstr("100.000 s")) << interval.start;
  }
}

TEST(CorrectionPlan, ARateThatDividesTheRecordingsIsAFactor) {
  CorrectParameters parameters;
  parameters.rate = 250;
  EXPECT_EQ(planCorrection(hundredSeconds(), parameters).samplesPerOutput, 4);
  EXPECT_EQ(planCorrection(hundredSeconds(), parameters).nrOfOutputs, 25000);
  EXPECT_EQ(planCorrection(hundredSeconds(), parameters).suffix, "_dec4_GRA");
  EXPECT_EQ(planCorrection(hundredSeconds(), parameters).settings.rate, 250);
  parameters.asPlugin = true;
  EXPECT_EQ(planCorrection(hundredSeconds(), parameters).settings.rate, 0);
  EXPECT_EQ(planCorrection(hundredSeconds(), parameters).settings.decimation, 4);
}

TEST(CorrectionPlan, AnyOtherRateIsTakenToo) {
  CorrectParameters parameters;
  parameters.rate = 256;
  const CorrectionPlan plan = planCorrection(hundredSeconds(), parameters);
  EXPECT_EQ(plan.outputRate, 256);
  EXPECT_EQ(plan.nrOfOutputs, 25600);
  EXPECT_EQ(plan.suffix, "_256Hz_GRA");
  parameters.rate = 2000;
  EXPECT_EQ(planCorrection(hundredSeconds(), parameters).nrOfOutputs, 199999);
}

TEST(CorrectionPlan, ThePlugInOnlyDividesTheRate) {
  CorrectParameters parameters;
  parameters.asPlugin = true;
  parameters.rate = 300;
  EXPECT_THAT(refusalOf(parameters), HasSubstr("333.333 and 250 Hz are possible"));
  parameters.rate = 2000;
  EXPECT_THAT(refusalOf(parameters), HasSubstr("whole numbers"));
}

TEST(CorrectionPlan, RatesThatMakeNoSenseAreRefused) {
  CorrectParameters parameters;
  for (const double rate : {0.0, -5.0, 10001.0, 1e-9, std::nan("")}) {
    parameters.rate = rate;
    EXPECT_THAT(refusalOf(parameters), HasSubstr("--rate")) << rate;
  }
}

TEST(CorrectionPlan, FilterEdgesLieBelowHalfTheSamplingFrequency) {
  CorrectParameters parameters;
  parameters.lowPass = 500;
  EXPECT_THAT(refusalOf(parameters), HasSubstr("--low-pass 500"));
  parameters.lowPass = 20;
  parameters.highPass = 30;
  EXPECT_THAT(refusalOf(parameters), HasSubstr("leaves no frequency"));
  parameters = {};
  parameters.notches = {{50, 200}};
  EXPECT_THAT(refusalOf(parameters), HasSubstr("--notch"));
  parameters = {};
  parameters.lineNoise = {0};
  EXPECT_THAT(refusalOf(parameters), HasSubstr("--line-noise"));
}

TEST(CorrectionPlan, FiltersBelongBelowTheNewNyquistFrequency) {
  CorrectParameters parameters;
  parameters.rate = 100;
  parameters.lowPass = 40;
  EXPECT_EQ(refusalOf(parameters), "");
  parameters.lowPass = 50;
  EXPECT_THAT(refusalOf(parameters),
              HasSubstr("--low-pass 50: the frequency lies between 0 and 50 Hz, half of "
                        "the new sampling frequency"));
  parameters.lowPass = 0;
  parameters.notches = {{49, 4}};
  EXPECT_THAT(refusalOf(parameters), HasSubstr("--notch"));
  parameters.notches.clear();
  parameters.highPass = 60;
  EXPECT_THAT(refusalOf(parameters), HasSubstr("--high-pass"));
  parameters.highPass = 0;
  parameters.lineNoise = {60}; // is removed before the rate changes
  EXPECT_EQ(refusalOf(parameters), "");
}

TEST(CorrectionPlan, WithThePlugInAllChannelsAreAlike) {
  RecordingHeader header = hundredSeconds();
  header.channels.push_back(header.channels[0]);
  header.channels[1].kind = ChannelKind::Trigger;
  CorrectParameters parameters;
  EXPECT_FALSE(planCorrection(header, parameters).channels.changesAll());
  parameters.asPlugin = true;
  EXPECT_TRUE(planCorrection(header, parameters).channels.changesAll());
}

TEST(CorrectionPlan, RecordingsTooSlowOrTooLongAreRefused) {
  RecordingHeader header = hundredSeconds();
  header.samplingFrequency = 5;
  EXPECT_THROW(planCorrection(header, {}), UnusableInput);
  header = hundredSeconds();
  header.nrOfTimePoints = int64_t{1} << 32;
  EXPECT_THROW(planCorrection(header, {}), UnusableInput);
}

TEST(OutputPlace, KeepsTheInputsFormatWhereItCanBeWritten) {
  CorrectParameters parameters;
  CorrectionPlan plan;
  plan.suffix = "_GRA_BCG";
  const auto placeFor = [&](const std::string& input, const std::string& output) {
    parameters.input = input;
    parameters.output = output;
    return outputPlaceOf(parameters, plan).recording;
  };
  EXPECT_EQ(placeFor("a/run.vhdr", ""), "a/run_GRA_BCG.vhdr");
  EXPECT_EQ(placeFor("run.BDF", ""), "run_GRA_BCG.BDF");
  EXPECT_EQ(placeFor("run.set", ""), "run_GRA_BCG.vhdr");
  EXPECT_EQ(placeFor("run.set", "b/clean.edf"), "b/clean.edf");
  EXPECT_EQ(outputPlaceOf(parameters, plan).sidecar, "b/clean.json");
  EXPECT_THROW(placeFor("run.set", "clean.set"), UnusableInput);
}

} // namespace emeg
