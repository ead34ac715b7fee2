#include "artifacts/gradient/timing/choice/TimingChoice.h"

#include "dsp/FFTWorkspace.h"
#include "dsp/FrequencyFilter.h"
#include "tests/artifacts/gradient/SplinedRecording.h"
#include "tests/artifacts/gradient/timing/SimulatedScan.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>

namespace emeg {
namespace {

/// What the quiet between slices shows in the channel.
MRSequence sequenceFromQuiet(const SimulatedScan& scan) {
  const SplinedRecording recording(scan.recorded);
  const auto log2Length = static_cast<int32_t>(std::bit_width(scan.recorded.size()));
  FFTWorkspace workspace;
  return detectMRSequence(recording.view(), scan.fs, log2Length, workspace, [](const std::string&) {});
}

TimingChoice choose(const SimulatedScan& scan, const MRSequence& found, const TimingRequest& request = {}) {
  const ChannelReader read = [&](int, std::vector<double>& samples) { samples = scan.recorded; };
  return chooseTiming(found, request, read, 3, scan.fs, [](const std::string&) {});
}

TimingChoice choose(const SimulatedScan& scan, const TimingRequest& request = {}) {
  return choose(scan, request.isBlind() ? sequenceFromQuiet(scan) : MRSequence(), request);
}

void expectTruth(const SimulatedScan& scan, const TimingChoice& choice) {
  ASSERT_EQ(choice.scans.size(), 1u);
  EXPECT_EQ(choice.scans[0].nrOfVolumes, scan.timing().nrOfVolumes);
  EXPECT_EQ(choice.scans[0].nrOfSlicesPerVolume, scan.timing().nrOfSlicesPerVolume);
}

TEST(TimingChoice, QuietBetweenSlicesStandsWhereItIsPlausible) {
  for (const Preset preset : {Preset::Gap, Preset::Continuous})
    for (const double fs : {2000.0, 5000.0}) {
      SCOPED_TRACE(nameOf(preset));
      const SimulatedScan scan = simulateScan(preset, fs, 40);
      const TimingChoice choice = choose(scan);
      EXPECT_EQ(choice.source, TimingSource::QuietBetweenSlices);
      EXPECT_EQ(choice.doubt, "");
      expectTruth(scan, choice);
    }
}

TEST(TimingChoice, SimilarVolumesStepInWhereThereIsNoQuiet) {
  const SimulatedScan scan = simulateScan(Preset::Fill, 2000, 40);
  const TimingChoice choice = choose(scan);
  EXPECT_EQ(choice.source, TimingSource::SimilarVolumes);
  EXPECT_NE(choice.doubt, "");
  expectTruth(scan, choice);
}

TEST(TimingChoice, SimilarVolumesStepInWhereSlicesShowTwoBursts) {
  const SimulatedScan scan = simulateScan(Preset::TwoBursts, 2000, 40);
  const TimingChoice choice = choose(scan);
  EXPECT_EQ(choice.source, TimingSource::SimilarVolumes);
  expectTruth(scan, choice);
}

TEST(TimingChoice, EquidistantSlicesAreNotBelievedToShowVolumesByTheirQuiet) {
  const SimulatedScan scan = simulateScan(Preset::Equidistant, 2000, 40);
  const TimingChoice choice = choose(scan);
  EXPECT_EQ(choice.source, TimingSource::SimilarVolumes);
  expectTruth(scan, choice);
}

TEST(TimingChoice, AScanThatGoesOnIsNoticed) {
  const SimulatedScan scan = simulateScan(Preset::Continuous, 2000, 80, [](auto& p) {
    p.gradient->nrOfScans = 2;
    p.gradient->nrOfVolumes = 16;
  });
  const TimingChoice choice = choose(scan);
  EXPECT_EQ(choice.source, TimingSource::SimilarVolumes);
  ASSERT_EQ(choice.scans.size(), 2u);
  EXPECT_EQ(choice.scans[1].nrOfVolumes, 16);
}

TEST(TimingChoice, ALostVolumeAtTheBeginningIsNoticed) {
  const SimulatedScan scan = simulateScan(Preset::Gap, 2000, 60);
  MRSequence found = sequenceFromQuiet(scan);
  --found.nrOfVolumes;
  found.firstTriggerTime += found.volumeDuration;
  const TimingChoice choice = choose(scan, found);
  EXPECT_EQ(choice.source, TimingSource::SimilarVolumes);
  expectTruth(scan, choice);
}

TEST(TimingChoice, ADurationThatIsALittleWrongIsNoticed) {
  const SimulatedScan scan = simulateScan(Preset::Gap, 2000, 60);
  MRSequence found = sequenceFromQuiet(scan);
  EXPECT_EQ(choose(scan, found).source, TimingSource::QuietBetweenSlices);
  found.volumeDuration += 0.15 / scan.fs / found.nrOfVolumes;
  const TimingChoice choice = choose(scan, found);
  EXPECT_EQ(choice.source, TimingSource::SimilarVolumes);
  expectTruth(scan, choice);
}

TEST(TimingChoice, ASpikeThatSpoilsTheSliceDurationIsNoticed) {
  const SimulatedScan scan =
      simulateScan(Preset::Continuous, 2000, 60, [](auto& p) { p.disturbances.nrOfSpikes = 1; });
  MRSequence found = sequenceFromQuiet(simulateScan(Preset::Continuous, 2000, 60));
  found.sliceDuration -= 0.05 / scan.fs;
  const TimingChoice choice = choose(scan, found);
  EXPECT_EQ(choice.source, TimingSource::SimilarVolumes);
  expectTruth(scan, choice);
  EXPECT_NEAR(choice.scans[0].sliceDuration, scan.timing().sliceDuration * scan.fs, 0.002);
}

TEST(TimingChoice, EegAloneHoldsNoScanWhateverWasFound) {
  SimulatedScan scan = simulateScan(Preset::Gap, 1000, 40);
  const MRSequence found = sequenceFromQuiet(scan);
  scan.recorded = scan.clean;
  EXPECT_EQ(choose(scan, found).source, TimingSource::None);
  EXPECT_EQ(choose(scan, MRSequence()).source, TimingSource::None);
}

TEST(TimingChoice, AGivenCountOfSlicesIsKept) {
  const SimulatedScan scan = simulateScan(Preset::Gap, 2000, 40);
  MRSequence found = sequenceFromQuiet(scan);
  TimingRequest request;
  request.given.nrOfSlicesPerVolume = scan.timing().nrOfSlicesPerVolume;
  EXPECT_EQ(choose(scan, found, request).source, TimingSource::QuietBetweenSlices);
  found.nrOfSlicesPerVolume -= 1;
  const TimingChoice choice = choose(scan, found, request);
  EXPECT_EQ(choice.source, TimingSource::SimilarVolumes);
  expectTruth(scan, choice);
}

TEST(TimingChoice, GivenDurationsComeFirst) {
  const SimulatedScan scan = simulateScan(Preset::Continuous, 2000, 40);
  TimingRequest request;
  request.given.volumeDuration = std::round(scan.timing().volumeDuration * 1000) / 1000;
  request.given.nrOfSlicesPerVolume = scan.timing().nrOfSlicesPerVolume;
  const TimingChoice choice = choose(scan, request);
  EXPECT_EQ(choice.source, TimingSource::GivenTiming);
  expectTruth(scan, choice);
}

TEST(TimingChoice, MarkersComeFirst) {
  const SimulatedScan scan = simulateScan(Preset::Continuous, 2000, 40);
  TimingRequest request;
  for (int64_t v = 0; v < scan.timing().nrOfVolumes; v++)
    request.markers.push_back(std::floor(scan.onsetOf(v)));
  request.markerKind = MarkerKind::Volume;
  const TimingChoice choice = choose(scan, request);
  EXPECT_EQ(choice.source, TimingSource::VolumeMarkers);
  expectTruth(scan, choice);
}

TEST(TimingChoice, MarkersOfSomethingElseAreNotBelieved) {
  SimulatedScan scan = simulateScan(Preset::Continuous, 1000, 40);
  TimingRequest request;
  for (int64_t v = 0; v < scan.timing().nrOfVolumes; v++)
    request.markers.push_back(std::floor(scan.onsetOf(v)));
  request.markerKind = MarkerKind::Volume;
  scan.recorded = scan.clean;
  EXPECT_EQ(choose(scan, request).source, TimingSource::None);
}

/// Inner slices each with a waveform of their own, the same in every volume.
SimulatedScan scanOfDifferentSlices() {
  SimulatedScan scan = simulateScan(Preset::Continuous, 1000, 60);
  const ScanTiming& timing = scan.timing();
  std::mt19937 generator(9);
  std::normal_distribution<double> normal;
  std::vector<double> gains(static_cast<size_t>(timing.nrOfSlicesPerVolume));
  for (double& gain : gains) gain = 1 + 0.5 * normal(generator);
  for (size_t t = 0; t < scan.recorded.size(); t++) {
    const double inVolumes =
        (static_cast<double>(t) / scan.fs - timing.firstVolumeOnset) / timing.volumeDuration;
    if (inVolumes < 0 || inVolumes >= static_cast<double>(timing.nrOfVolumes)) continue;
    const double inSlices =
        (inVolumes - std::floor(inVolumes)) * timing.volumeDuration / timing.sliceDuration;
    const auto slice = std::min(static_cast<size_t>(inSlices), gains.size() - 1);
    scan.recorded[t] = scan.clean[t] + gains[slice] * (scan.recorded[t] - scan.clean[t]);
  }
  return scan;
}

TEST(TimingChoice, SlicesThatDoNotRepeatAreAveragedAsVolumes) {
  const SimulatedScan scan = scanOfDifferentSlices();
  TimingRequest request;
  request.volumeWise = false;
  const TimingChoice choice = choose(scan, request);
  EXPECT_TRUE(choice.slicesDoNotRepeat);
  EXPECT_GT(choice.slicesLeaveDb, 10);
  EXPECT_FALSE(choose(scan).slicesDoNotRepeat) << "volumes were asked for";
}

TEST(TimingChoice, SlicesThatRepeatAreAveragedAsSlices) {
  TimingRequest request;
  request.volumeWise = false;
  EXPECT_FALSE(choose(simulateScan(Preset::Gap, 2000, 40), request).slicesDoNotRepeat);
}

TEST(TimingChoice, NoChannelsNoTiming) {
  const TimingChoice choice = chooseTiming({}, {}, {}, 0, 1000, [](const std::string&) {});
  EXPECT_EQ(choice.source, TimingSource::None);
}

} // namespace
} // namespace emeg
