#include "app/correct/CorrectionPlan.h"
#include "app/correct/OutputPlace.h"

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
  EXPECT_EQ(planCorrection(hundredSeconds(), parameters).decimationFactor, 4);
  EXPECT_EQ(planCorrection(hundredSeconds(), parameters).nrOfOutputTimePoints(), 25000);
}

TEST(CorrectionPlan, OtherRatesAreRefusedWithThoseThatArePossible) {
  CorrectParameters parameters;
  parameters.rate = 300;
  EXPECT_THAT(refusalOf(parameters), HasSubstr("333.333 and 250 Hz are possible"));
  for (const double rate : {0.0, -5.0, 2000.0, 1e-9}) {
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
