#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

#include <limits>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

struct TimeInterval : ::testing::Test {
  TimeInterval() { use(1000, 100); }
  void use(int64_t nrOfTimePoints, double samplingFrequency) {
    pretendInput(converter, 2, nrOfTimePoints, samplingFrequency);
    converter.options.selectTimeInterval = true;
  }
  /// The whole parameter definition with the artifact choice answered with 0.
  bool ask(float start, float end) {
    host.floatAnswers = {start, end};
    host.integerAnswers = {0};
    return converter.askParameters();
  }
  ScriptedHost host;
  QuietConverter converter;
};

TEST_F(TimeInterval, AsksForStartAndEndInMilliseconds) {
  EXPECT_TRUE(ask(1500, 4000));
  ASSERT_GE(host.calls.size(), 4u);
  EXPECT_EQ(host.calls[1], "parameter 2");
  EXPECT_EQ(host.calls[2], "float Please indicate the starting point of the time interval to export.<br>"
                           "Starting time must stay between 0 and 10000.00 ms. [0, 0, 10000]");
  EXPECT_EQ(host.calls[3], "float Please indicate the end point of the time interval to export.<br>"
                           "End time must stay between 1500.00 and 10000.00 ms. [10000, 1500, 10000]");
  EXPECT_EQ(converter.values.intervalStartMs, 1500.0f);
  EXPECT_EQ(converter.values.intervalEndMs, 4000.0f);
  EXPECT_TRUE(converter.switches.intervalRestricted);
  EXPECT_TRUE(converter.switches.rewriteNeeded);
  EXPECT_FALSE(converter.switches.correctionNeeded);
  EXPECT_EQ(converter.span.firstTimePoint, 150);
  EXPECT_EQ(converter.span.lastTimePoint, 399);
  EXPECT_EQ(converter.span.nrOfIntervalTimePoints, 250);
}

TEST_F(TimeInterval, OfTheWholeRecordingIsNoRestriction) {
  EXPECT_FALSE(ask(0, 10000));
  EXPECT_FALSE(converter.switches.intervalRestricted);
  EXPECT_EQ(host.calls.back(), "log " + line("No processing is required: exiting plugin."));
}

TEST_F(TimeInterval, IsRestrictedByEitherBound) {
  EXPECT_TRUE(ask(10, 10000));
  EXPECT_TRUE(converter.switches.intervalRestricted);
  EXPECT_TRUE(ask(0, 9990));
  EXPECT_TRUE(converter.switches.intervalRestricted);
}

TEST_F(TimeInterval, CancelledAtTheStartAborts) {
  EXPECT_FALSE(ask(-1, 5));
  EXPECT_EQ(host.questions().size(), 1u);
  EXPECT_EQ(host.logLines(), (Lines{line("Defining parameters"), "", line("Plugin execution was aborted.")}));
}

TEST_F(TimeInterval, CancelledAtTheEndAborts) {
  EXPECT_FALSE(ask(5, -1));
  EXPECT_EQ(host.questions().size(), 2u);
  EXPECT_TRUE(host.logged(line("Plugin execution was aborted.")));
}

TEST_F(TimeInterval, ThatIsNotANumberAborts) {
  EXPECT_FALSE(ask(std::numeric_limits<float>::quiet_NaN(), 5));
  EXPECT_TRUE(host.logged(line("Plugin execution was aborted.")));
}

TEST_F(TimeInterval, IsNotAskedWhenTheHostsDialogueSaysWhole) {
  host.dialogIntegers[2] = 1;
  host.integerAnswers = {0};
  EXPECT_FALSE(converter.askParameters());
  EXPECT_EQ(host.questions().size(), 1u) << "only the artifact choice";
}

TEST_F(TimeInterval, IsAskedForEveryOtherValueInTheHostsDialogue) {
  for (const int value : {-1, 0, 2, 100}) {
    host.calls.clear();
    host.dialogIntegers[2] = value;
    EXPECT_TRUE(ask(1500, 4000));
    EXPECT_EQ(host.texts("float").size(), 2u) << value;
  }
}

TEST_F(TimeInterval, IsNotAskedWhenParametersComeFromTheHostsDialogue) {
  converter.options.parametersFromDialog = true;
  converter.span.durationMs = 10000;
  converter.values.intervalEndMs = 10000;
  EXPECT_TRUE(converter.askTimeInterval());
  EXPECT_TRUE(host.questions().empty());
  EXPECT_FALSE(converter.switches.intervalRestricted);
}

TEST_F(TimeInterval, IsNotAskedWhereTheOptionIsOff) {
  converter.options.selectTimeInterval = false;
  EXPECT_TRUE(converter.askTimeInterval());
  EXPECT_TRUE(host.calls.empty());
}

TEST_F(TimeInterval, BoundsAreRoundedToTheNearestSample) {
  use(1000, 250); // 4 ms per sample
  EXPECT_TRUE(ask(9.9f, 102.1f));
  EXPECT_EQ(converter.span.firstTimePoint, 2); // 2.475
  EXPECT_EQ(converter.span.lastTimePoint, 25); // 25.525 -> 26, less one
  EXPECT_TRUE(ask(10, 102));
  EXPECT_EQ(converter.span.firstTimePoint, 3) << "2.5 is rounded up";
  EXPECT_EQ(converter.span.lastTimePoint, 25);
}

TEST_F(TimeInterval, EndingBeyondTheRecordingIsClippedToItsLastSample) {
  EXPECT_TRUE(ask(1000, 99999));
  EXPECT_EQ(converter.span.lastTimePoint, 999);
  EXPECT_EQ(converter.span.nrOfIntervalTimePoints, 900);
}

TEST_F(TimeInterval, WithoutAnySampleEndsInAMessageBox) {
  EXPECT_FALSE(ask(5000, 5000));
  ASSERT_EQ(host.boxes().size(), 1u);
  EXPECT_FALSE(ask(6000, 5000));
  EXPECT_FALSE(ask(99999, 99999));
  EXPECT_EQ(host.boxes().size(), 3u);
}

TEST_F(TimeInterval, OfAnInfiniteStartEndsInAMessageBox) {
  EXPECT_FALSE(ask(std::numeric_limits<float>::infinity(), std::numeric_limits<float>::infinity()));
  EXPECT_EQ(host.boxes().size(), 1u);
}

TEST_F(TimeInterval, OfOneSampleIsEnough) {
  EXPECT_TRUE(ask(5000, 5010));
  EXPECT_EQ(converter.span.firstTimePoint, 500);
  EXPECT_EQ(converter.span.lastTimePoint, 500);
  EXPECT_EQ(converter.span.nrOfIntervalTimePoints, 1);
  EXPECT_EQ(converter.span.timePointsPerChunk, 1);
}

TEST_F(TimeInterval, OfALongRecordingThatIsNotRestrictedReachesItsVeryLastSample) {
  // 32-bit milliseconds are 2 ms apart beyond 4.6 hours: the end in samples would be off.
  const int64_t nrOfTimePoints = int64_t{6} * 3600 * 5000 + 3;
  QuietConverter plain;
  pretendInput(plain, 1, nrOfTimePoints, 5000);
  plain.options.forceHeaderUpdate = true;
  host.integerAnswers = {0};
  EXPECT_TRUE(plain.askParameters());
  EXPECT_EQ(plain.span.firstTimePoint, 0);
  EXPECT_EQ(plain.span.lastTimePoint, nrOfTimePoints - 1);
  EXPECT_EQ(plain.span.nrOfIntervalTimePoints, nrOfTimePoints);
}

} // namespace
} // namespace emeg
