// Gradient templates of one channel, slice by slice and volume by volume, beside the plain version in one
// process: the ratio of the two is the figure to look at.

#include "artifacts/CubicSplines.h"
#include "artifacts/gradient/templates/TemplateRemoval.h"
#include "tests/artifacts/BurstTrain.h"
#include "tests/artifacts/reference/LiteralTemplateRemoval.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace emeg {
namespace {

constexpr int32_t windowHalfLength = 14; // seconds

BurstTrain oneMinute() {
  BurstTrain train = BurstTrain::withGaps();
  train.nrOfVolumes = 57;
  train.seconds = 60;
  return train;
}

void templatesOfOneChannel(benchmark::State& state) {
  const BurstTrain train = oneMinute();
  const std::vector<double> y = train.recording();
  const auto n = static_cast<int64_t>(y.size());
  std::vector<double> b(y.size()), c(y.size()), d(y.size()), estimate(y.size());
  MRSequence sequence;
  sequence.nrOfVolumes = train.nrOfVolumes;
  sequence.nrOfSlicesPerVolume = train.nrOfSlicesPerVolume;
  sequence.volumeDuration = train.volumeDuration;
  sequence.sliceDuration = train.sliceDuration;
  sequence.firstTriggerTime = train.firstOnset;
  sequence.windowHalfLength = windowHalfLength;
  for (auto _ : state) {
    estimate.assign(y.size(), 0.0);
    computeSplineCoefficients(y.data(), b.data(), c.data(), d.data(), n);
    estimateGradientArtifact({y.data(), b.data(), c.data(), d.data(), n}, sequence, train.samplingFrequency,
                             state.range(0) != 0, estimate.data());
    benchmark::DoNotOptimize(estimate.data());
  }
}

void plainTemplatesOfOneChannel(benchmark::State& state) {
  const BurstTrain train = oneMinute();
  const std::vector<double> signal = train.recording();
  LiteralTiming timing;
  timing.nrOfVolumes = train.nrOfVolumes;
  timing.nrOfSlicesPerVolume = train.nrOfSlicesPerVolume;
  timing.volumeDuration = train.volumeDuration;
  timing.sliceDuration = train.sliceDuration;
  timing.firstTriggerTime = train.firstOnset;
  for (auto _ : state) {
    benchmark::DoNotOptimize(literalArtifactEstimate(signal, train.samplingFrequency, timing,
                                                     windowHalfLength, state.range(0) != 0));
  }
}

BENCHMARK(templatesOfOneChannel)->ArgName("volumeWise")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(plainTemplatesOfOneChannel)->ArgName("volumeWise")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace emeg
