// Heart beat detection and pulse model of a whole recording beside their plain versions, step by step in one
// process: the ratio of the two is the figure to look at. The same pulses come out of both.

#include "artifacts/cardiac/model/PulseModel.h"
#include "artifacts/cardiac/search/DetectionSignal.h"
#include "artifacts/cardiac/search/HeartPeriod.h"
#include "artifacts/cardiac/search/PulseSelection.h"
#include "tests/artifacts/cardiac/SimulatedBcg.h"
#include "tests/artifacts/reference/LiteralDetectionSignal.h"
#include "tests/artifacts/reference/LiteralHeartPeriod.h"
#include "tests/artifacts/reference/LiteralPulseModel.h"
#include "tests/artifacts/reference/LiteralPulseSelection.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <string>
#include <vector>

namespace emeg {
namespace {

constexpr size_t pulseCapacity = 3000;
constexpr float lowPassHz = 35;

/// Milliseconds of every step.
struct StepTimes {
  double period = 0;
  double signal = 0;
  double selection = 0;
  double model = 0;

  double whole() const { return period + signal + selection + model; }
};

template <class Step>
auto timed(double& milliseconds, const Step& step) {
  const auto start = std::chrono::steady_clock::now();
  auto result = step();
  milliseconds += std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  return result;
}

using Channels = std::vector<std::vector<double>>;

std::vector<double> correct(const SimulatedBcg& recording, StepTimes& times) {
  const BcgSeries series = recording.view();
  const HeartPeriod heart = timed(times.period, [&] { return estimateHeartPeriod(series); });
  const std::vector<float> signal =
      timed(times.signal, [&] { return buildPulseDetectionSignal(series, heart); });
  const HeartPulses pulses = timed(times.selection, [&] {
    return selectHeartPulses(signal, series.rate, lowPassHz, heart, pulseCapacity);
  });
  Channels estimates = recording.series;
  timed(times.model, [&] {
    PulseModel model(pulses.positions, heart.period);
    for (std::vector<double>& channel : estimates) model.replaceByEstimate(channel, recording.length);
    return true;
  });
  benchmark::DoNotOptimize(estimates.data());
  return pulses.positions;
}

std::vector<double> correctPlainly(const SimulatedBcg& recording, StepTimes& times) {
  const auto length = static_cast<int32_t>(recording.length);
  Channels series = recording.series;
  for (std::vector<double>& channel : series) channel.pop_back();
  const LiteralPeriod heart =
      timed(times.period, [&] { return literalHeartPeriod(series, length, recording.rate); });
  const std::vector<float> signal =
      timed(times.signal, [&] { return literalDetectionSignal(series, length, heart); });
  const std::vector<double> pulses =
      timed(times.selection, [&] { return literalPulsePositions(signal, length, recording.rate, heart); });
  timed(times.model, [&] {
    for (std::vector<double>& channel : series) literalPulseModel(channel, pulses, heart.period);
    return true;
  });
  benchmark::DoNotOptimize(series.data());
  return pulses;
}

void cardiacCorrection(benchmark::State& state) {
  const SimulatedBcg recording = simulateBcg(healthyHeart(static_cast<double>(state.range(0)), 1));
  StepTimes fast;
  StepTimes plain;
  for (auto _ : state) {
    StepTimes once;
    const bool same = correct(recording, once) == correctPlainly(recording, plain);
    if (!same) state.SkipWithError("the pulses differ from those of the plain version");
    state.SetIterationTime(once.whole() / 1000);
    fast.period += once.period;
    fast.signal += once.signal;
    fast.selection += once.selection;
    fast.model += once.model;
  }
  const auto rounds = static_cast<double>(state.iterations());
  state.counters["plain_ms"] = plain.whole() / rounds;
  state.counters["ratio"] = plain.whole() / fast.whole();
  state.counters["period"] = plain.period / fast.period;
  state.counters["signal"] = plain.signal / fast.signal;
  state.counters["selection"] = plain.selection / fast.selection;
  state.counters["model"] = plain.model / fast.model;
}

BENCHMARK(cardiacCorrection)
    ->ArgName("beatsPerMinute")
    ->Arg(55)
    ->Arg(65)
    ->Arg(75)
    ->Arg(85)
    ->Iterations(5)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace emeg
