// Transforms in many threads at once. The thread sanitizer (preset tsan) sees what equal bits may hide.

#include "dsp/FFTTables.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/FilterFFT.h"
#include "dsp/FrequencyFilter.h"
#include "dsp/RealFFT.h"
#include "tests/dsp/SimdLevelTests.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

namespace emeg {
namespace {

constexpr std::size_t nrOfThreads = 8;

/// From 16 values, kernels alone, to long transforms with narrow and wide groups of columns.
constexpr int32_t leastLog2n = 4;
constexpr int32_t mostLog2n = 17;
constexpr std::size_t nrOfSizes = mostLog2n - leastLog2n + 1;

std::size_t sizeOf(int32_t log2n) {
  return std::size_t{1} << log2n;
}

/// Runs work(0) ... work(nrOfThreads - 1), each in a thread of its own, from a common start.
void inThreads(const std::function<void(std::size_t)>& work) {
  std::atomic<std::size_t> ready = 0;
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < nrOfThreads; ++thread)
    threads.emplace_back([&, thread] {
      ++ready;
      while (ready < nrOfThreads) std::this_thread::yield();
      work(thread);
    });
  for (std::thread& thread : threads) thread.join();
}

FilterResponse bandPass(int32_t log2n) {
  FilterStageList stages;
  stages.addFilterStage(EdgeKind::HighPass, 0.05, 3);
  stages.addFilterStage(EdgeKind::LowPass, 0.3, 5);
  return makeFilterResponse(stages, log2n);
}

std::vector<double> signalOf(int32_t log2n, uint32_t seed) {
  return unevenNoise(sizeOf(log2n), seed, 2);
}

/// Every kind of transform of a size, one result behind the other.
std::vector<double> everyTransform(int32_t log2n, uint32_t seed, FFTWorkspace& workspace) {
  const std::vector<double> input = signalOf(log2n, seed);
  std::vector<double> results;
  std::vector<double> signal = input;
  const auto keep = [&] { results.insert(results.end(), signal.begin(), signal.end()); };
  realFFTForward(signal.data(), log2n, workspace);
  keep();
  realFFTInverse(signal.data(), log2n, workspace);
  keep();
  signal = input;
  complexFFTForward(signal.data(), log2n - 1, workspace);
  keep();
  complexFFTInverse(signal.data(), log2n - 1, workspace);
  keep();
  signal = input;
  filterSignalFFT(signal.data(), static_cast<int64_t>(signal.size() * 3 / 4), bandPass(log2n), workspace);
  keep();
  return results;
}

/// Each thread begins with another size, so that different sizes, and after a while the same ones, are met
/// for the first time at once.
int32_t sizeInTurn(std::size_t thread, std::size_t turn) {
  return leastLog2n + static_cast<int32_t>((turn + thread * nrOfSizes / nrOfThreads) % nrOfSizes);
}

std::vector<std::vector<double>> oneAfterTheOther() {
  FFTTables tables;
  FFTWorkspace workspace(tables);
  std::vector<std::vector<double>> results;
  for (int32_t log2n = leastLog2n; log2n <= mostLog2n; ++log2n)
    results.push_back(everyTransform(log2n, static_cast<uint32_t>(log2n), workspace));
  return results;
}

TEST(ParallelTransforms, SizesFirstMetInManyThreadsGiveTheBitsOfOneThread) {
  const std::vector<std::vector<double>> expected = oneAfterTheOther();
  FFTTables tables;
  std::vector<std::vector<std::vector<double>>> results(nrOfThreads,
                                                        std::vector<std::vector<double>>(nrOfSizes));
  inThreads([&](std::size_t thread) {
    FFTWorkspace workspace(tables);
    for (std::size_t turn = 0; turn < nrOfSizes; ++turn) {
      const int32_t log2n = sizeInTurn(thread, turn);
      results[thread][static_cast<std::size_t>(log2n - leastLog2n)] =
          everyTransform(log2n, static_cast<uint32_t>(log2n), workspace);
    }
  });
  for (std::size_t thread = 0; thread < nrOfThreads; ++thread)
    for (std::size_t size = 0; size < nrOfSizes; ++size)
      EXPECT_TRUE(sameBits(results[thread][size], expected[size]))
          << "thread " << thread << ", 2^" << leastLog2n + static_cast<int32_t>(size);
}

TEST(ParallelTransforms, OneSizeFirstMetByAllThreadsIsMadeOnce) {
  for (const int32_t log2n : {4, 8, 10, 11, 14, 17}) {
    FFTTables tables;
    std::vector<const void*> plans(nrOfThreads);
    std::vector<std::vector<double>> results(nrOfThreads);
    inThreads([&](std::size_t thread) {
      FFTWorkspace workspace(tables);
      results[thread] = signalOf(log2n, 1);
      realFFTForward(results[thread].data(), log2n, workspace);
      plans[thread] = &tables.bitReversalTable(log2n / 2);
    });
    for (std::size_t thread = 1; thread < nrOfThreads; ++thread) {
      EXPECT_EQ(plans[thread], plans[0]);
      EXPECT_TRUE(sameBits(results[thread], results[0])) << "2^" << log2n;
    }
    EXPECT_EQ(tables.cosinePeriod(), static_cast<int64_t>(sizeOf(log2n)));
  }
}

TEST(ParallelTransforms, AShortTransformKeepsItsCosinesWhileOtherThreadsGrowTheTable) {
  FFTTables tables;
  FFTWorkspace alone;
  std::vector<double> expected = signalOf(9, 2);
  realFFTForward(expected.data(), 9, alone);
  std::vector<std::size_t> wrong(nrOfThreads);
  inThreads([&](std::size_t thread) {
    for (int32_t log2n = leastLog2n; log2n <= mostLog2n; ++log2n) {
      if (thread % 2 == 0) {
        tables.makeCosineTable(log2n);
        continue;
      }
      FFTWorkspace workspace(tables);
      std::vector<double> signal = signalOf(9, 2);
      realFFTForward(signal.data(), 9, workspace);
      if (!sameBits(signal, expected)) ++wrong[thread];
    }
  });
  EXPECT_EQ(wrong, std::vector<std::size_t>(nrOfThreads));
}

TEST(ParallelTransforms, ThreadsFilterWithOneResponse) {
  const int32_t log2n = 15;
  const FilterResponse response = bandPass(log2n);
  const auto filtered = [&](uint32_t seed, FFTWorkspace& workspace) {
    std::vector<double> signal = signalOf(log2n, seed);
    filterSignalFFT(signal.data(), static_cast<int64_t>(signal.size()), response, workspace);
    return signal;
  };
  std::vector<std::vector<double>> results(nrOfThreads);
  inThreads([&](std::size_t thread) {
    FFTWorkspace workspace;
    results[thread] = filtered(static_cast<uint32_t>(thread + 1), workspace);
  });
  FFTWorkspace workspace;
  for (std::size_t thread = 0; thread < nrOfThreads; ++thread)
    EXPECT_TRUE(sameBits(results[thread], filtered(static_cast<uint32_t>(thread + 1), workspace)))
        << "thread " << thread;
}

} // namespace
} // namespace emeg
