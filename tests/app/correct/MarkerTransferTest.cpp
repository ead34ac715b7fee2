#include "app/correct/MarkerTransfer.h"

#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace emeg {

namespace {

using testing::ElementsAre;

RecordingMarker markerAt(double onset, double duration = 0) {
  RecordingMarker marker;
  marker.type = "Stimulus";
  marker.description = "S  1";
  marker.onset = onset;
  marker.duration = duration;
  return marker;
}

RecordingHeader tenSecondsWith(const std::vector<RecordingMarker>& markers) {
  RecordingHeader header;
  header.samplingFrequency = 1000;
  header.nrOfTimePoints = 10000;
  header.markers = markers;
  return header;
}

CorrectionPlan planFor(int64_t first, int64_t count, int decimation) {
  CorrectionPlan plan;
  plan.firstTimePoint = first;
  plan.nrOfTimePoints = count;
  plan.hasInterval = count != 10000;
  plan.samplesPerOutput = decimation;
  plan.outputRate = 1000.0 / decimation;
  plan.nrOfOutputs = (count - 1) / decimation + 1;
  return plan;
}

std::vector<double> onsetsOf(const std::vector<RecordingMarker>& markers) {
  std::vector<double> onsets;
  for (const RecordingMarker& marker : markers) onsets.push_back(marker.onset);
  return onsets;
}

std::vector<RecordingMarker> namedIn(const MemoryRecording& recording, const std::string& description) {
  std::vector<RecordingMarker> found;
  for (const RecordingMarker& marker : recording.header().markers)
    if (marker.description == description) found.push_back(marker);
  return found;
}

} // namespace

TEST(MarkerTransfer, MarkersKeepTheirTimesThroughIntervalAndDecimation) {
  const RecordingHeader header =
      tenSecondsWith({markerAt(1999), markerAt(2000), markerAt(4001), markerAt(6000)});
  const auto moved = transferMarkers(header, planFor(2000, 4000, 4), {}, false);
  EXPECT_THAT(onsetsOf(moved), ElementsAre(0, 500.25));
  EXPECT_EQ(moved[1].description, "S  1");
  EXPECT_EQ(moved[1].type, "Stimulus");
}

TEST(MarkerTransfer, StretchesAreCutAtTheInterval) {
  const RecordingHeader header =
      tenSecondsWith({markerAt(1000, 1500), markerAt(5000, 4000), markerAt(0, 2000)});
  const auto moved = transferMarkers(header, planFor(2000, 4000, 1), {}, false);
  ASSERT_EQ(moved.size(), 2u);
  EXPECT_EQ(moved[0].onset, 0);
  EXPECT_EQ(moved[0].duration, 500);
  EXPECT_EQ(moved[1].onset, 3000);
  EXPECT_EQ(moved[1].duration, 1000);
}

TEST(MarkerTransfer, AMarkerBehindTheLastKeptSampleMovesOntoItWhereOnlySamplesCount) {
  const RecordingHeader header = tenSecondsWith({markerAt(9999)});
  EXPECT_THAT(onsetsOf(transferMarkers(header, planFor(0, 10000, 6), {}, true)), ElementsAre(1666));
  EXPECT_THAT(onsetsOf(transferMarkers(header, planFor(0, 10000, 6), {}, false)), ElementsAre(9999.0 / 6));
}

TEST(MarkerTransfer, OnsetsThatWereFoundAreAdded) {
  Findings found;
  found.timing.scans.resize(1);
  found.timing.scans.front().sequence.nrOfVolumes = 2;
  found.timing.scans.front().sequence.nrOfSlicesPerVolume = 3;
  found.timing.scans.front().sequence.volumeDuration = 2;
  found.timing.scans.front().sequence.sliceDuration = 0.5;
  found.timing.scans.front().sequence.firstTriggerTime = 1;
  found.pulseTimes = {0.5, 1.4, 2.5};
  const auto continuous = transferMarkers(tenSecondsWith({}), planFor(0, 10000, 1), found, false);
  EXPECT_EQ(std::count_if(continuous.begin(), continuous.end(),
                          [](const RecordingMarker& m) { return m.description == gradientMarkerName; }),
            2);
  found.timing.scans.front().sequence.hasVolumeGaps = true;
  const auto gaps = transferMarkers(tenSecondsWith({}), planFor(0, 10000, 1), found, false);
  EXPECT_EQ(std::count_if(gaps.begin(), gaps.end(),
                          [](const RecordingMarker& m) { return m.description == gradientMarkerName; }),
            6);
  EXPECT_EQ(std::count_if(gaps.begin(), gaps.end(),
                          [](const RecordingMarker& m) { return m.description == pulseMarkerName; }),
            3);
}

TEST(MarkerTransfer, StretchesWithoutHeartBeatModelAreBad) {
  Findings found;
  found.withoutModel = {{0, 1.5}, {8, 10}};
  const auto markers = transferMarkers(tenSecondsWith({}), planFor(0, 10000, 4), found, false);
  ASSERT_EQ(markers.size(), 2u);
  EXPECT_EQ(markers[0].type, "Bad");
  EXPECT_EQ(markers[0].description, unmodelledMarkerName);
  EXPECT_EQ(markers[0].onset, 0);
  EXPECT_EQ(markers[0].duration, 375);
  EXPECT_EQ(markers[1].onset, 2000);
  EXPECT_EQ(markers[1].duration, 500);
}

TEST(UnmodelledStretches, AreAnnotatedInTheOutput) {
  const TestFolder folder;
  copyOf(heartRecording())->save(folder / "run.vhdr");
  const ProgramRun run = runEmeg({"correct", folder / "run.vhdr", "--bcg", "--json"});
  ASSERT_NE(run.status, 2);
  const auto stretches = nlohmann::json::parse(run.out)["Detected"]["HeartBeats"]["StretchesWithoutModel"];
  const auto bad = namedIn(MemoryRecording(folder / "run_GRA_BCG.vhdr"), unmodelledMarkerName);
  ASSERT_EQ(bad.size(), stretches.size());
  for (size_t i = 0; i < bad.size(); ++i) {
    EXPECT_NEAR(bad[i].onset, 1000 * stretches[i][0].get<double>(), 1);
    EXPECT_NEAR(bad[i].onset + bad[i].duration, 1000 * stretches[i][1].get<double>(), 1);
  }
}

/// Markers of all sorts, through the program, into every format.
TEST(Markers, ComeBackWithTheirNamesAtTheirTimes) {
  const TestFolder folder;
  const auto recording = copyOf(scanRecording());
  recording->editableHeader().markers.clear();
  for (int i = 0; i < 40; ++i) recording->addMarker("Stimulus", "S " + std::to_string(i), 997.0 * i);
  recording->addMarker("Comment", "eyes, \xC3\xA4ndern", 12345, 2000);
  recording->save(folder / "run.vhdr");
  for (const char* name : {"out.vhdr", "out.bdf", "out.edf", "out.ctc"}) {
    const std::string output = folder / name;
    ASSERT_EQ(runEmeg({"correct", folder / "run.vhdr", "-o", output, "--quiet", "--force"}).status, 0);
    const MemoryRecording after(output);
    const bool isBrainVision = std::string(name) == "out.vhdr";
    const double tolerance = isBrainVision ? 0 : 0.1; // samples of 1 ms
    for (int i = 0; i < 40; ++i) {
      std::vector<RecordingMarker> found;
      for (const RecordingMarker& marker : after.header().markers) {
        const std::string text = marker.description;
        if (text == "S " + std::to_string(i) || text.find("/S " + std::to_string(i)) != std::string::npos ||
            text == "S_" + std::to_string(i))
          if (std::abs(marker.onset - 997.0 * i) < 1) found.push_back(marker);
      }
      ASSERT_EQ(found.size(), 1u) << name << " " << i;
      EXPECT_NEAR(found[0].onset, 997.0 * i, tolerance) << name;
    }
  }
  const MemoryRecording after(folder / "out.vhdr");
  const auto comment = namedIn(after, "eyes, \xC3\xA4ndern");
  ASSERT_EQ(comment.size(), 1u);
  EXPECT_EQ(comment[0].onset, 12345);
  EXPECT_EQ(comment[0].duration, 2000);
  EXPECT_GT(namedIn(after, gradientMarkerName).size(), 300u);
}

TEST(Markers, KeepTheirTimesThroughIntervalAndRateInEveryFormat) {
  const TestFolder folder;
  const auto recording = copyOf(scanRecording());
  recording->editableHeader().markers.clear();
  for (int i = 0; i < 40; ++i) recording->addMarker("Stimulus", "S", 997.0 * i);
  recording->save(folder / "run.vhdr");
  for (const char* name : {"out.vhdr", "other.bdf"}) {
    ASSERT_EQ(runEmeg({"correct", folder / "run.vhdr", "-o", folder / name, "--interval", "1.5:38", "--rate",
                       "250", "--quiet"})
                  .status,
              0);
    const MemoryRecording after(folder / name);
    std::vector<double> times;
    for (const RecordingMarker& marker : after.header().markers)
      if (marker.description == "S" || marker.description == "Stimulus/S")
        times.push_back(marker.onset / 250);
    const bool isBrainVision = std::string(name) == "out.vhdr";
    ASSERT_EQ(times.size(), 37u) << name; // 1.994 s ... 37.886 s
    for (size_t i = 0; i < times.size(); ++i)
      EXPECT_NEAR(times[i], 0.997 * static_cast<double>(i + 2) - 1.5, isBrainVision ? 0.0020001 : 0.0001)
          << name;
  }
}

} // namespace emeg
