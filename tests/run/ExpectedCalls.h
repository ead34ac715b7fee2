#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace emeg::test {

/// The calls that a run of the plug-in is expected to make, as the stand-in host records them.
class ExpectedCalls {
public:
  /// What every run begins with: the plug-in and the converter each ask for the host's version.
  static ExpectedCalls ofARun();

  ExpectedCalls& version(int major, int minor, int revision);
  /// File dialogues by the kind of file, "CCD", "PRT" or "CTC". The window is repainted after a choice.
  ExpectedCalls& chooses(const std::string& kind, const std::string& path);
  ExpectedCalls& choosesNo(const std::string& kind);
  /// No CCD and no PRT, then this CTC.
  ExpectedCalls& choosesOnly(const std::string& ctcPath);
  /// A log line with the plug-in's prefix; the line exactly as it is.
  ExpectedCalls& logs(const std::string& message);
  ExpectedCalls& logsLine(const std::string& line);
  ExpectedCalls& shows(const std::string& message);
  ExpectedCalls& asksCorrection(int answer);
  ExpectedCalls& asksVolumeWise(int answer);
  ExpectedCalls& readsWindowParameter(int answer);
  ExpectedCalls& asksWindow(const std::string& slicesPerSecond, int answer);
  /// "Defining parameters" and the answers 1 and `volumeWise`.
  ExpectedCalls& definesParameters(int volumeWise = 1);
  /// The lines of the chunk files up to this one.
  ExpectedCalls& createsChunks(int count = 32);
  /// What is logged for a channel in which no sequence is found.
  ExpectedCalls& findsNothing(int nrOfVolumes = 0, int nrOfSlicesPerVolume = 0, int firstSlice = 0);
  ExpectedCalls& aborts();
  ExpectedCalls& writesEverything();
  ExpectedCalls& returns(bool result);

  const std::vector<nlohmann::json>& calls() const { return calls_; }

private:
  ExpectedCalls& add(nlohmann::json call);
  std::vector<nlohmann::json> calls_;
};

/// Empty when the calls are the expected ones; otherwise what differs first.
std::string differenceOf(const std::vector<nlohmann::json>& calls, const ExpectedCalls& expected);

/// Log lines with a number that was measured: the calls with each such number replaced by "#", and the
/// numbers in the order of the lines. A number in another format than `%.14f` for durations, `%f` for trigger
/// times and `%d / %.10f / %.10f` for intervals is not replaced.
struct MeasuredNumbers {
  std::vector<nlohmann::json> calls;
  std::vector<double> volumeDurations, sliceDurations, firstTriggerTimes;
  struct Interval {
    int run;
    double duration, threshold;
  };
  std::vector<Interval> intervals;
};
MeasuredNumbers withoutMeasuredNumbers(const std::vector<nlohmann::json>& calls);

} // namespace emeg::test
