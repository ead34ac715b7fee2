#include "app/simulation/BurstWaveform.h"
#include "app/simulation/GradientArtifact.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace emeg {

namespace {

using Slice = BurstWaveform::Slice;

SimulationParameters parametersFor(Preset preset, double fs, double seconds = 30) {
  SimulationParameters parameters = presetParameters(preset, fs);
  parameters.nrOfChannels = 2;
  parameters.seconds = seconds;
  return parameters;
}

/// The artifact as it is defined: the sum of all bursts there are.
double sumOfAllBursts(const GradientParameters& gradient, const BurstWaveform& waveform,
                      const GradientArtifact& artifact, double time) {
  double sum = 0;
  for (size_t scan = 0; scan < artifact.timings().size(); scan++) {
    for (int64_t v = 0; v < artifact.timings()[scan].nrOfVolumes; v++) {
      for (int s = 0; s < gradient.nrOfSlicesPerVolume; s++) {
        const Slice kind = s == 0 ? Slice::First : Slice::Ordinary;
        const double inSlice = time - artifact.volumeOnset(scan, v) - s * gradient.sliceDuration;
        sum += waveform.value(kind, inSlice);
        if (gradient.secondBurstDelay > 0)
          sum += gradient.secondBurstFactor * waveform.value(kind, inSlice - gradient.secondBurstDelay);
      }
    }
  }
  return sum * artifact.driftFactor(time);
}

/// Root mean square of the artifact around a time.
double sizeAround(const GradientArtifact& artifact, double time, double width) {
  constexpr int points = 40;
  double squares = 0;
  for (int i = 0; i < points; i++)
    squares += std::pow(artifact.value(time + width * ((i + 0.5) / points - 0.5)), 2);
  return std::sqrt(squares / points);
}

struct Activity {
  int nrOfBursts = 0;
  double longestQuiet = 0; ///< seconds, between bursts or at an end
};

/// Bursts between two times: stretches in which the size over 2 ms exceeds a hundredth of the peak.
Activity activityBetween(const GradientArtifact& artifact, double begin, double end, double peakUv = 2500) {
  constexpr double step = 0.00025;
  constexpr double leastQuiet = 0.003; // a burst itself may be small for a moment
  Activity activity;
  double lastActive = begin;
  for (double t = begin; t < end; t += step) {
    if (!(sizeAround(artifact, t, 0.002) > 0.01 * peakUv)) continue;
    if (activity.nrOfBursts == 0 || t - lastActive > leastQuiet) activity.nrOfBursts++;
    activity.longestQuiet = std::max(activity.longestQuiet, t - lastActive);
    lastActive = t;
  }
  activity.longestQuiet = std::max(activity.longestQuiet, end - lastActive);
  return activity;
}

Activity activityInVolume(const GradientArtifact& artifact, int64_t volume) {
  const ScanTiming& timing = artifact.timing();
  const double begin = timing.volumeOnset(volume);
  return activityBetween(artifact, begin, begin + timing.nrOfSlicesPerVolume * timing.sliceDuration);
}

struct Kind {
  std::string name;
  Preset preset;
  std::function<void(GradientParameters&)> change;
};

void PrintTo(const Kind& kind, std::ostream* out) {
  *out << kind.name;
}

class EveryKind : public testing::TestWithParam<std::tuple<Kind, double>> {};

TEST_P(EveryKind, IsTheSumOfItsBursts) {
  const auto& [kind, fs] = GetParam();
  SimulationParameters parameters = parametersFor(kind.preset, fs, 12);
  kind.change(*parameters.gradient);
  ASSERT_EQ(problemWith(parameters), "");
  const GradientArtifact artifact(parameters);
  const BurstWaveform waveform(*parameters.gradient, fs);
  std::mt19937 random(1);
  std::uniform_real_distribution<double> uniform(0, parameters.seconds);
  int nrOfActive = 0;
  for (int i = 0; i < 300; i++) {
    const double time = uniform(random);
    const double expected = sumOfAllBursts(*parameters.gradient, waveform, artifact, time);
    ASSERT_NEAR(artifact.value(time), expected, 1e-9 * 2500) << time;
    if (std::fabs(expected) > 1) nrOfActive++;
  }
  EXPECT_GT(nrOfActive, 30);
}

const auto nothing = [](GradientParameters&) {};

INSTANTIATE_TEST_SUITE_P(
    GradientArtifact, EveryKind,
    testing::Combine(
        testing::Values(
            Kind{"gap", Preset::Gap, nothing}, Kind{"fill", Preset::Fill, nothing},
            Kind{"fill without dead time", Preset::Fill, [](GradientParameters& g) { g.gapDuration = 0; }},
            Kind{"two bursts", Preset::TwoBursts, nothing}, Kind{"equidistant", Preset::Equidistant, nothing},
            Kind{"multiband", Preset::Multiband, nothing}, Kind{"many slices", Preset::ManySlices, nothing},
            Kind{"jitter", Preset::Fill, [](GradientParameters& g) { g.onsetJitterRms = 0.003; }},
            Kind{"two scans", Preset::Continuous,
                 [](GradientParameters& g) {
                   g.nrOfScans = 2;
                   g.nrOfVolumes = 1;
                   g.pauseDuration = 0.5;
                   g.quietAfter = 1;
                 }},
            Kind{"cut", Preset::Equidistant,
                 [](GradientParameters& g) {
                   g.cutBefore = 0.7;
                   g.endsInScan = true;
                 }}),
        testing::Values(1000.0, 5000.0)));

class KindAtRate : public testing::TestWithParam<double> {};

TEST_P(KindAtRate, GapLeavesQuietInEverySlice) {
  const Activity activity = activityInVolume(GradientArtifact(parametersFor(Preset::Gap, GetParam())), 2);
  EXPECT_EQ(activity.nrOfBursts, 20);
  EXPECT_GT(activity.longestQuiet, 0.02);
}

TEST_P(KindAtRate, FillHasNoQuietOfTenMilliseconds) {
  const GradientArtifact artifact(parametersFor(Preset::Fill, GetParam()));
  EXPECT_LT(activityInVolume(artifact, 2).longestQuiet, 0.01);
  const double begin = artifact.timing().volumeOnset(1);
  EXPECT_LT(
      activityBetween(artifact, begin + 0.01, begin + 3 * artifact.timing().volumeDuration).longestQuiet,
      0.01);
}

TEST_P(KindAtRate, FillStaysFilledWhenItsSlicesChange) {
  SimulationParameters parameters = parametersFor(Preset::Fill, GetParam());
  parameters.gradient->sliceDuration = 0.0921;
  EXPECT_GT(activityInVolume(GradientArtifact(parameters), 2).longestQuiet, 0.005);
  fitBurstsToSlices(parameters);
  ASSERT_EQ(problemWith(parameters), "");
  EXPECT_LT(activityInVolume(GradientArtifact(parameters), 2).longestQuiet, 0.005);
}

TEST_P(KindAtRate, MultibandHasShortGapsOnly) {
  const SimulationParameters parameters = parametersFor(Preset::Multiband, GetParam());
  const GradientArtifact artifact(parameters);
  const ScanTiming& timing = artifact.timing();
  EXPECT_EQ(timing.nrOfSlicesPerVolume, 12);
  EXPECT_NEAR(timing.volumeDuration, 12 * timing.sliceDuration, 1e-12);
  const double inGap =
      timing.volumeOnset(1) + parameters.gradient->burstDuration / 2 - timing.sliceDuration / 2;
  EXPECT_EQ(activityBetween(artifact, inGap, inGap + timing.volumeDuration).nrOfBursts, 12);
  const double longestQuiet =
      activityBetween(artifact, inGap, inGap + 3 * timing.volumeDuration).longestQuiet;
  EXPECT_GT(longestQuiet, 0.004);
  EXPECT_LT(longestQuiet, 0.01);
}

TEST_P(KindAtRate, EquidistantSlicesKeepTheirDistanceAcrossVolumes) {
  SimulationParameters parameters = parametersFor(Preset::Equidistant, GetParam());
  parameters.gradient->driftRms = 0;
  const ScanTiming timing = GradientArtifact(parameters).timing();
  for (int64_t v = 0; v + 1 < timing.nrOfVolumes; v++)
    EXPECT_NEAR(timing.volumeOnset(v + 1) - timing.sliceOnset(v, timing.nrOfSlicesPerVolume - 1),
                timing.sliceDuration, 1e-12);
  // With first slices like all others the artifact repeats with every slice.
  parameters.gradient->firstSliceDifference = 0;
  const GradientArtifact alike(parameters);
  double largestDifference = 0;
  double largest = 0;
  for (double t = timing.firstVolumeOnset; t < timing.end() - timing.sliceDuration; t += 0.00037) {
    largest = std::max(largest, std::fabs(alike.value(t)));
    largestDifference =
        std::max(largestDifference, std::fabs(alike.value(t) - alike.value(t + timing.sliceDuration)));
  }
  EXPECT_GT(largest, 2000);
  EXPECT_LT(largestDifference, 1e-4 * largest); // where a burst's edge is cut off
}

INSTANTIATE_TEST_SUITE_P(GradientArtifact, KindAtRate, testing::Values(1000.0, 2000.0, 5000.0));

TEST(GradientArtifact, TwoBurstsAreSeenInEverySlice) {
  const SimulationParameters parameters = parametersFor(Preset::TwoBursts, 5000);
  const GradientArtifact artifact(parameters);
  EXPECT_EQ(activityInVolume(artifact, 2).nrOfBursts, 40);
  const ScanTiming& timing = artifact.timing();
  for (int s = 0; s < timing.nrOfSlicesPerVolume; s++) {
    const double onset = timing.sliceOnset(2, s);
    double largest = 0;
    for (double t = 0; t < parameters.gradient->burstDuration; t += 0.0003) {
      largest = std::max(largest, std::fabs(artifact.value(onset + t)));
      ASSERT_NEAR(artifact.value(onset + 0.0381 + t), -0.8 * artifact.value(onset + t), 1e-6);
    }
    EXPECT_GT(largest, 2000);
  }
}

TEST(GradientArtifact, ManySlicesAreMoreThanAHundred) {
  const GradientArtifact artifact(parametersFor(Preset::ManySlices, 5000));
  EXPECT_EQ(artifact.timing().nrOfSlicesPerVolume, 120);
  EXPECT_EQ(activityInVolume(artifact, 2).nrOfBursts, 120);
}

TEST(GradientArtifact, VolumesComeEarlyAndLateByTheWantedJitter) {
  SimulationParameters parameters = parametersFor(Preset::Gap, 5000, 2000);
  parameters.gradient->onsetJitterRms = 10e-6;
  const GradientArtifact artifact(parameters);
  const ScanTiming& timing = artifact.timing();
  ASSERT_GT(timing.nrOfVolumes, 1000);
  double sum = 0;
  double squares = 0;
  for (int64_t v = 0; v < timing.nrOfVolumes; v++) {
    const double late = artifact.volumeOnset(0, v) - timing.volumeOnset(v);
    sum += late;
    squares += late * late;
  }
  const auto n = static_cast<double>(timing.nrOfVolumes);
  EXPECT_NEAR(std::sqrt(squares / n), 10e-6, 10e-6 * 4 / std::sqrt(2 * n)); // four standard errors
  EXPECT_NEAR(sum / n, 0, 10e-6 * 4 / std::sqrt(n));
  // The artifact is where volumeOnset says, not where it would be without jitter.
  const BurstWaveform waveform(*parameters.gradient, 5000);
  double onRaster = 0;
  for (int64_t v = 0; v < 20; v++) {
    for (double t = 0.01; t < 0.04; t += 0.0007) {
      EXPECT_NEAR(artifact.value(artifact.volumeOnset(0, v) + t), waveform.value(Slice::First, t), 1e-6);
      onRaster = std::max(
          onRaster, std::fabs(artifact.value(timing.volumeOnset(v) + t) - waveform.value(Slice::First, t)));
    }
  }
  EXPECT_GT(onRaster, 10);
}

TEST(GradientArtifact, SeveralScansHavePausesInWhichNothingIsHeard) {
  SimulationParameters parameters = parametersFor(Preset::Gap, 2000, 60);
  parameters.gradient->nrOfScans = 3;
  parameters.gradient->pauseDuration = 4.5;
  ASSERT_EQ(problemWith(parameters), "");
  const GradientArtifact artifact(parameters);
  const std::vector<ScanTiming>& timings = artifact.timings();
  ASSERT_EQ(timings.size(), 3u);
  for (size_t i = 0; i + 1 < timings.size(); i++) {
    EXPECT_EQ(timings[i].nrOfVolumes, timings[0].nrOfVolumes);
    const double pause = timings[i + 1].firstVolumeOnset - timings[i].end();
    EXPECT_GE(pause, 4.5);
    EXPECT_LE(pause, 4.51);
    for (double t = timings[i].end(); t < timings[i + 1].firstVolumeOnset; t += 0.0005)
      ASSERT_EQ(artifact.value(t), 0) << t;
  }
  for (const ScanTiming& timing : timings)
    EXPECT_GT(sizeAround(artifact, timing.volumeOnset(1) + 0.024, 0.04), 300);
  EXPECT_LE(timings.back().end(), 55);
  EXPECT_GT(timings.back().end() + 3 * timings.back().volumeDuration, 54.9); // as many volumes as fit
}

TEST(GradientArtifact, ARecordingMayBeginAndEndWithinTheScan) {
  SimulationParameters parameters = parametersFor(Preset::Continuous, 2000, 40);
  parameters.gradient->cutBefore = 0.9;
  parameters.gradient->endsInScan = true;
  ASSERT_EQ(problemWith(parameters), "");
  const GradientArtifact artifact(parameters);
  const ScanTiming& timing = artifact.timing();
  EXPECT_GE(timing.firstVolumeOnset, -0.9);
  EXPECT_LE(timing.firstVolumeOnset, -0.89);
  EXPECT_GT(timing.end(), 40);
  EXPECT_LT(timing.end(), 40 + 3 * timing.volumeDuration);
  EXPECT_GE(activityBetween(artifact, 0, 10 * timing.sliceDuration).nrOfBursts, 10); // and a part of one
  EXPECT_GE(activityBetween(artifact, 40 - 10 * timing.sliceDuration, 40).nrOfBursts,
            10); // and a part of one
}

TEST(SimulationParameters, ScansThatCannotBeCutAsAskedAreRefused) {
  SimulationParameters early = parametersFor(Preset::Gap, 2000, 40);
  early.gradient->nrOfVolumes = 3;
  early.gradient->cutBefore = 5;
  EXPECT_EQ(problemWith(early), "");
  early.gradient->cutBefore = 6;
  EXPECT_NE(problemWith(early), "");
  SimulationParameters late = parametersFor(Preset::Gap, 2000, 20);
  late.gradient->nrOfVolumes = 10;
  late.gradient->endsInScan = true;
  EXPECT_EQ(problemWith(late), "");
  late.gradient->nrOfVolumes = 9; // over after 19.2 s
  EXPECT_NE(problemWith(late), "");
}

} // namespace

} // namespace emeg
