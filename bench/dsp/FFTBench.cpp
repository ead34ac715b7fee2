// One channel's way through a filter - forward transform, multiplication by a response, inverse - by this
// library's plain calls and by FFTW's, in one process on the same data: the ratio is the figure to look at.

#include "dsp/FFTWorkspace.h"
#include "dsp/FilterFFT.h"
#include "dsp/LongFFTPasses.h"
#include "dsp/RealFFT.h"
#include "dsp/SimdLevel.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace emeg {
namespace {

constexpr int32_t leastLog2n = 12;
constexpr int32_t mostLog2n = 24;

struct FreeAligned {
  void operator()(double* memory) const { fftw_free(memory); }
};
using Signal = std::unique_ptr<double[], FreeAligned>;

/// Noise, with room for the two values by which FFTW's spectrum is longer.
Signal noise(int32_t log2n) {
  const std::size_t n = std::size_t{1} << log2n;
  Signal signal(fftw_alloc_real(n + 2));
  std::mt19937 generator(1);
  for (std::size_t i = 0; i < n + 2; ++i) signal[i] = static_cast<double>(generator()) / 2147483648.0 - 1.0;
  return signal;
}

/// Gains that undo the scaling, so that a signal stays the same from round to round.
std::vector<float> gains(int32_t log2n, double factor) {
  const std::size_t n = std::size_t{1} << log2n;
  return std::vector<float>(n + 2, static_cast<float>(factor / static_cast<double>(n)));
}

void multiply(double* spectrum, const std::vector<float>& response, std::size_t count) {
  for (std::size_t k = 0; k < count; ++k) spectrum[k] *= static_cast<double>(response[k]);
}

/// The plain calls. At a level below the best one they are made of their passes.
class Plain {
public:
  Plain(int32_t log2n, SimdLevel level)
      : log2n_(log2n), level_(level), signal_(noise(log2n)), response_(gains(log2n, 2)) {
    run();
  }
  void run() {
    if (level_ == bestSimdLevel())
      realFFTForward(signal_.get(), log2n_, workspace_);
    else
      forwardInPasses();
    multiply(signal_.get(), response_, std::size_t{1} << log2n_);
    if (level_ == bestSimdLevel())
      realFFTInverse(signal_.get(), log2n_, workspace_);
    else
      inverseInPasses();
  }

private:
  void transformPoints(bool inverse) {
    const LongFFT fft = workspace_.longFFT(log2n_ - 1);
    const LongFFTPasses& passes = longFFTPasses(level_);
    passes.transformColumns(fft, signal_.get(), inverse);
    passes.transformRows(fft, signal_.get(), inverse);
    passes.toNaturalOrder(fft, signal_.get());
  }
  void forwardInPasses() {
    transformPoints(false);
    longFFTPasses(level_).splitSpectrum(workspace_.realFFTPlan(log2n_), signal_.get());
    joinEnds(1.0);
  }
  void inverseInPasses() {
    longFFTPasses(level_).mergeSpectrum(workspace_.realFFTPlan(log2n_), signal_.get());
    joinEnds(0.5);
    transformPoints(true);
  }
  /// DC and Nyquist.
  void joinEnds(double factor) {
    const double first = signal_[0];
    const double second = signal_[1];
    signal_[0] = (first + second) * factor;
    signal_[1] = (first - second) * factor;
  }

  int32_t log2n_;
  SimdLevel level_;
  FFTWorkspace workspace_;
  Signal signal_;
  std::vector<float> response_;
};

/// The three in one.
class Fused {
public:
  Fused(int32_t log2n, SimdLevel level)
      : signal_(noise(log2n)), gains_(gains(log2n, 2).data(), log2n, level) {
    run();
  }
  void run() { filterFFT(signal_.get(), gains_, workspace_); }

private:
  FFTWorkspace workspace_;
  Signal signal_;
  BinGains gains_;
};

/// FFTW, one thread, real to complex and back in place.
class Fftw {
public:
  Fftw(int32_t log2n, unsigned effort) : n_(std::size_t{1} << log2n), signal_(noise(log2n)) {
    auto* const spectrum = reinterpret_cast<fftw_complex*>(signal_.get());
    forward_.reset(fftw_plan_dft_r2c_1d(static_cast<int>(n_), signal_.get(), spectrum, effort));
    inverse_.reset(fftw_plan_dft_c2r_1d(static_cast<int>(n_), spectrum, signal_.get(), effort));
    // Measuring plans leave anything in the array.
    const Signal again = noise(log2n);
    std::copy_n(again.get(), n_ + 2, signal_.get());
    response_ = gains(log2n, 1);
    run();
  }
  void run() {
    fftw_execute(forward_.get());
    multiply(signal_.get(), response_, n_ + 2);
    fftw_execute(inverse_.get());
  }

private:
  struct Destroy {
    void operator()(fftw_plan plan) const { fftw_destroy_plan(plan); }
  };
  using Plan = std::unique_ptr<std::remove_pointer_t<fftw_plan>, Destroy>;

  std::size_t n_;
  Signal signal_;
  Plan forward_;
  Plan inverse_;
  std::vector<float> response_;
};

double millisecondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

/// Least time of one round of each, all taking turns for about two seconds, so that a disturbance hits them
/// alike.
std::vector<double> leastTimes(const std::vector<std::function<void()>>& works) {
  constexpr double wanted = 2000;
  std::vector<double> least(works.size(), std::numeric_limits<double>::infinity());
  double spent = 0;
  for (int round = 0; round < 20 || spent < wanted; ++round)
    for (std::size_t i = 0; i < works.size(); ++i) {
      const double once = millisecondsOf(works[i]);
      least[i] = std::min(least[i], once);
      spent += once;
    }
  return least;
}

/// The levels by their names, in ascending order.
constexpr std::array<const char*, 3> levelNames = {"baseline", "avx2", "avx512"};

void printTable(int32_t first, int32_t last, SimdLevel level) {
  std::printf("SIMD level: %s; milliseconds for forward, multiply, inverse\n",
              levelNames[static_cast<std::size_t>(level)]);
  std::printf("%6s %11s %15s %14s %13s %12s %14s\n", "log2 n", "ours", "FFTW ESTIMATE", "FFTW MEASURE",
              "ours/MEASURE", "ours fused", "fused/MEASURE");
  for (int32_t log2n = first; log2n <= last; ++log2n) {
    Plain plain(log2n, level);
    Fused fused(log2n, level);
    Fftw estimate(log2n, FFTW_ESTIMATE);
    Fftw measure(log2n, FFTW_MEASURE);
    const std::vector<double> ms = leastTimes(
        {[&] { plain.run(); }, [&] { estimate.run(); }, [&] { measure.run(); }, [&] { fused.run(); }});
    std::printf("%6d %11.4f %15.4f %14.4f %13.2f %12.4f %14.2f\n", log2n, ms[0], ms[1], ms[2], ms[0] / ms[2],
                ms[3], ms[3] / ms[2]);
    std::fflush(stdout);
  }
}

template <class Work, class... Effort>
void measure(benchmark::State& state, Effort... effort) {
  Work work(static_cast<int32_t>(state.range(0)), effort...);
  for (auto _ : state) {
    work.run();
    benchmark::ClobberMemory();
  }
}

void registerSizes(int32_t first, int32_t last, SimdLevel level) {
  const auto sized = [=](benchmark::internal::Benchmark* made) {
    made->DenseRange(first, last)->Unit(benchmark::kMicrosecond);
  };
  sized(benchmark::RegisterBenchmark("plain", [=](benchmark::State& s) { measure<Plain>(s, level); }));
  sized(benchmark::RegisterBenchmark("fused", [=](benchmark::State& s) { measure<Fused>(s, level); }));
  sized(benchmark::RegisterBenchmark("fftwEstimate",
                                     [](benchmark::State& s) { measure<Fftw>(s, FFTW_ESTIMATE); }));
  sized(benchmark::RegisterBenchmark("fftwMeasure",
                                     [](benchmark::State& s) { measure<Fftw>(s, FFTW_MEASURE); }));
}

/// "A-B", log2 of the lengths.
bool readSizes(std::string_view text, int32_t& first, int32_t& last) {
  const char* const end = text.data() + text.size();
  const auto a = std::from_chars(text.data(), end, first);
  if (a.ec != std::errc{} || a.ptr == end || *a.ptr != '-') return false;
  const auto b = std::from_chars(a.ptr + 1, end, last);
  return b.ec == std::errc{} && b.ptr == end && RealFFTPlan::leastLog2n <= first && first <= last &&
         last <= 28;
}

bool readLevel(std::string_view text, SimdLevel& level) {
  const auto* const found = std::find(levelNames.begin(), levelNames.end(), text);
  const auto index = found - levelNames.begin();
  if (found == levelNames.end() || index > static_cast<std::ptrdiff_t>(bestSimdLevel())) return false;
  level = static_cast<SimdLevel>(index);
  return true;
}

} // namespace
} // namespace emeg

int main(int argc, char** argv) {
  bool table = false;
  int32_t first = emeg::leastLog2n;
  int32_t last = emeg::mostLog2n;
  emeg::SimdLevel level = emeg::bestSimdLevel();
  std::vector<char*> others = {argv[0]};
  for (int i = 1; i < argc; ++i) {
    const std::string_view option = argv[i];
    const bool hasValue = i + 1 < argc;
    if (option == "--table") {
      table = true;
    } else if (option == "--sizes" && hasValue) {
      if (!emeg::readSizes(argv[++i], first, last)) {
        std::fprintf(stderr, "bench_fft: --sizes takes A-B, two logarithms from 11 to 28, as in 12-20\n");
        return EXIT_FAILURE;
      }
    } else if (option == "--level" && hasValue) {
      if (!emeg::readLevel(argv[++i], level)) {
        std::fprintf(stderr,
                     "bench_fft: --level takes baseline, avx2 or avx512, as far as this machine has them\n");
        return EXIT_FAILURE;
      }
    } else {
      others.push_back(argv[i]);
    }
  }
  if (table) {
    emeg::printTable(first, last, level);
    return EXIT_SUCCESS;
  }
  emeg::registerSizes(first, last, level);
  int nrOfOthers = static_cast<int>(others.size());
  benchmark::Initialize(&nrOfOthers, others.data());
  if (benchmark::ReportUnrecognizedArguments(nrOfOthers, others.data())) return EXIT_FAILURE;
  benchmark::RunSpecifiedBenchmarks();
}
