#include "dsp/RealFFT.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

namespace emeg {
namespace {

std::vector<double> noise(std::size_t count) {
  std::mt19937 generator(1);
  std::vector<double> values(count);
  for (double& value : values) value = static_cast<double>(generator()) / 2147483648.0 - 1.0;
  return values;
}

/// The path of one channel through a filter: forward, times the gains, inverse. The gains undo the scaling,
/// so that the signal stays the same from round to round.
void forwardMultiplyInverse(benchmark::State& state) {
  const auto log2n = static_cast<int32_t>(state.range(0));
  const std::size_t n = std::size_t{1} << log2n;
  std::vector<double> signal = noise(n);
  const std::vector<float> gains(n, 2.0F / static_cast<float>(n));
  for (auto _ : state) {
    realFFTForward(signal.data(), log2n);
    for (std::size_t k = 0; k < n; ++k) signal[k] *= static_cast<double>(gains[k]);
    realFFTInverse(signal.data(), log2n);
    benchmark::DoNotOptimize(signal.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
}
BENCHMARK(forwardMultiplyInverse)->DenseRange(12, 22)->Unit(benchmark::kMicrosecond);

void forwardOnly(benchmark::State& state) {
  const auto log2n = static_cast<int32_t>(state.range(0));
  const std::vector<double> input = noise(std::size_t{1} << log2n);
  std::vector<double> signal = input;
  for (auto _ : state) {
    // Forward transforms make a signal grow without end: each starts from the same one, and only it is timed.
    state.PauseTiming();
    signal = input;
    state.ResumeTiming();
    realFFTForward(signal.data(), log2n);
    benchmark::DoNotOptimize(signal.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(input.size()));
}
BENCHMARK(forwardOnly)->Arg(16)->Arg(20)->Arg(22)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace emeg
