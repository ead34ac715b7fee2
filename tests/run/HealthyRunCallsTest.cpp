#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

#include <cmath>
#include <set>

namespace emeg::test {
namespace {

/// The detection on the first channel, with every measured number as "#".
ExpectedCalls& findsVolumesWithGaps(ExpectedCalls& calls) {
  return calls.logs("Automatic detection of MR sequence parameters")
      .logs("Number of volumes: 12")
      .logs("Number of slices per volume: 10")
      .logs("First slice: 0")
      .logs("Volume duration (s): #")
      .logs("Slice duration (s): #")
      .logs("First trigger time (s): #")
      .logs("Writing MR gradient triggers");
}

ExpectedCalls& findsContinuousVolumes(ExpectedCalls& calls) {
  calls.logs("Automatic detection of MR sequence parameters")
      .logs("No volumes gaps in this data set (continuous acquisition)");
  // Of the 200 intervals behind the first slice, every 14th contains the end of a volume.
  for (int i = 0; i < 14; ++i) calls.logs("# / # / #");
  return calls.logs("Number of volumes: 22")
      .logs("Number of slices per volume: 14")
      .logs("First slice: 1")
      .logs("Volume duration (s): #")
      .logs("Slice duration (s): #")
      .logs("First trigger time: #")
      .logs("Writing MR gradient triggers");
}

class HealthyRun : public PluginRun {
protected:
  static void expectTiming(const MeasuredNumbers& numbers, const BurstTrain& train) {
    ASSERT_EQ(numbers.volumeDurations.size(), 1u);
    ASSERT_EQ(numbers.sliceDurations.size(), 1u);
    ASSERT_EQ(numbers.firstTriggerTimes.size(), 1u);
    EXPECT_NEAR(numbers.volumeDurations[0], train.volumeDuration, 1e-6 * train.volumeDuration);
    EXPECT_NEAR(numbers.sliceDurations[0], train.sliceDuration, 1e-5);
    // Continuous acquisition counts from where the burst has become loud.
    EXPECT_NEAR(numbers.firstTriggerTimes[0], train.firstOnset, 0.010);
  }
};

TEST_F(HealthyRun, MakesTheseCallsForARecordingWithVolumeGapsAndNothingBesideIt) {
  const ScannedRecording made = scannedWithVolumeGaps();
  const std::string ctc = write(made.recording);
  const HostRunResult result = run(answers(ctc));

  ExpectedCalls expected = ExpectedCalls::ofARun().choosesOnly(ctc).definesParameters(1).createsChunks();
  findsVolumesWithGaps(expected.logs("Processing channel #0"))
      .asksWindow("10.00", 150)
      .logs("Processing channel #1")
      .writesEverything()
      .returns(true);
  const MeasuredNumbers numbers = withoutMeasuredNumbers(result.transcript);
  EXPECT_EQ(differenceOf(numbers.calls, expected), "");
  expectTiming(numbers, made.train);
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.standardError, "");
}

TEST_F(HealthyRun, AsksTheSameSliceWiseWithAProtocolThatWasChosen) {
  const ScannedRecording made = scannedWithVolumeGaps();
  const std::string ctc = write(made.recording);
  const std::string prt = write("run1.prt", protocolText("msec", {"Rest\r\n1\r\n0 500\r\nColor: 1 2 3"}));
  const HostRunResult result = run(answers(ctc, "", prt, false));

  ExpectedCalls expected =
      ExpectedCalls::ofARun().choosesNo("CCD").chooses("PRT", prt).chooses("CTC", ctc).definesParameters(0);
  findsVolumesWithGaps(expected.createsChunks().logs("Processing channel #0"))
      .asksWindow("10.00", 150)
      .logs("Processing channel #1")
      .writesEverything()
      .returns(true);
  EXPECT_EQ(differenceOf(withoutMeasuredNumbers(result.transcript).calls, expected), "");
  EXPECT_EQ(result.exitStatus, 0);
}

TEST_F(HealthyRun, AsksForNoOtherFileWhenAChannelDescriptionIsChosen) {
  const ScannedRecording made = scannedWithVolumeGaps();
  write(made.recording);
  const std::string ccd = write("run1.ccd", descriptionBytes("run1.ctc", "run1.prt", 2));
  write("run1.prt", protocolText("usec", {"Rest\r\n1\r\n0 500\r\nColor: 1 2 3"}));
  const HostRunResult result = run(answers("", ccd));

  ExpectedCalls expected = ExpectedCalls::ofARun().chooses("CCD", ccd).definesParameters(1);
  findsVolumesWithGaps(expected.createsChunks().logs("Processing channel #0"))
      .asksWindow("10.00", 150)
      .logs("Processing channel #1")
      .writesEverything()
      .returns(true);
  EXPECT_EQ(differenceOf(withoutMeasuredNumbers(result.transcript).calls, expected), "");
  EXPECT_EQ(result.exitStatus, 0);
}

TEST_F(HealthyRun, LogsTheLongIntervalsOfAContinuousAcquisition) {
  const ScannedRecording made = scannedContinuously();
  const std::string ctc = write(made.recording);
  const HostRunResult result = run(answers(ctc));

  ExpectedCalls expected = ExpectedCalls::ofARun().choosesOnly(ctc).definesParameters(1).createsChunks();
  findsContinuousVolumes(expected.logs("Processing channel #0"))
      .asksWindow("13.83", 150)
      .logs("Processing channel #1")
      .writesEverything()
      .returns(true);
  const MeasuredNumbers numbers = withoutMeasuredNumbers(result.transcript);
  EXPECT_EQ(differenceOf(numbers.calls, expected), "");
  expectTiming(numbers, made.train);
  EXPECT_EQ(result.exitStatus, 0);

  std::set<int> runs;
  std::set<double> thresholds;
  std::vector<double> durations;
  for (const MeasuredNumbers::Interval& interval : numbers.intervals) {
    runs.insert(interval.run);
    thresholds.insert(interval.threshold);
    durations.push_back(interval.duration);
    EXPECT_NEAR(interval.duration, made.train.sliceDuration + 0.0043, 1e-4);
    EXPECT_NEAR(interval.threshold, made.train.sliceDuration + 0.0043 / 2, 1e-4);
  }
  EXPECT_THAT(runs, testing::ElementsAre(13, 27, 41, 55, 69, 83, 97, 111, 125, 139, 153, 167, 181, 195));
  EXPECT_EQ(thresholds.size(), 1u);
  EXPECT_TRUE(std::is_sorted(durations.begin(), durations.end()));
}

TEST_F(HealthyRun, CorrectsAContinuousAcquisitionSliceWiseWithADescriptionAndAProtocol) {
  const ScannedRecording made = scannedContinuously();
  write(made.recording);
  const std::string ccd = write("run1.ccd", descriptionBytes("run1.ctc", "run1.prt", 2));
  write("run1.prt", protocolText("usec", {"Rest\r\n1\r\n0 500\r\nColor: 1 2 3"}));
  const HostRunResult result = run(answers("", ccd, "", false));

  ExpectedCalls expected = ExpectedCalls::ofARun().chooses("CCD", ccd).definesParameters(0);
  findsContinuousVolumes(expected.createsChunks().logs("Processing channel #0"))
      .asksWindow("13.83", 150)
      .logs("Processing channel #1")
      .writesEverything()
      .returns(true);
  EXPECT_EQ(differenceOf(withoutMeasuredNumbers(result.transcript).calls, expected), "");
  EXPECT_EQ(result.exitStatus, 0);
}

} // namespace
} // namespace emeg::test
