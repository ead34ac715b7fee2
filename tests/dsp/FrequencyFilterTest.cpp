#include "dsp/FrequencyFilter.h"

#include "dsp/FFTWorkspace.h"
#include "tests/dsp/reference/SlowFourier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace emeg {
namespace {

using reference::Wide;

/// 1 / (1 + (x / (n cutOff))^(2 order)) by the power function.
double lowPass(const FilterStage& stage, double x, double n) {
  return 1.0 / (1.0 + std::pow(x / (n * stage.cutOff), 2 * stage.order));
}

/// The gains as the definition walks the stage list, pass by pass, one bin at a time.
std::vector<double> slowResponse(const FilterStageList& stages, int32_t log2N) {
  const int n = 1 << (log2N - 1);
  std::vector<double> gains(static_cast<std::size_t>(2 * n), 1.0 / n);
  const int count = stages.count();
  int i = 0;
  while (i < count) {
    bool useA = true;
    bool useB = true;
    int a = 0;
    int b = 0;
    if (i == 0 && stages[0].kind == EdgeKind::HighPass) {
      useA = false;
    } else {
      while (i < count - 2) {
        const bool pair = stages[i].kind == EdgeKind::LowPass && stages[i + 1].kind == EdgeKind::HighPass;
        if (pair) break;
        i = i + 1;
      }
      if (i == count - 1) {
        if (stages[i].kind == EdgeKind::HighPass) return gains;
        useB = false;
      }
      a = i;
      b = i + 1;
    }
    for (int x = 0; x <= n; ++x) {
      double keep = useA ? lowPass(stages[a], x, n) : 0.0;
      double remove = useB ? lowPass(stages[b], x, n) : 1.0;
      double gain = 1 - (1 - keep) * remove;
      if (x == 0) gain = useA ? 1 : 0;
      if (x == 0) gains[0] *= gain;
      if (x == n) gains[1] *= gain;
      if (x == 0 || x == n) continue;
      gains[static_cast<std::size_t>(2 * x)] *= gain;
      gains[static_cast<std::size_t>(2 * x + 1)] *= gain;
    }
    i = i + 1;
  }
  return gains;
}

void expectResponse(const FilterStageList& stages, int32_t log2N) {
  const FilterResponse response = makeFilterResponse(stages, log2N);
  const std::vector<double> expected = slowResponse(stages, log2N);
  ASSERT_EQ(response.gains().size(), expected.size() + 1);
  const double unit = 2.0 / static_cast<double>(expected.size());
  for (std::size_t k = 0; k < expected.size(); ++k)
    EXPECT_NEAR(static_cast<double>(response.gains()[k]), expected[k], 1e-5 * expected[k] + 1e-12 * unit)
        << k;
}

/// Padding as defined, with reads that stay inside the signal.
std::vector<double> slowPadding(const std::vector<double>& signal, std::size_t length) {
  std::vector<double> padded = signal;
  const auto valid = static_cast<int>(signal.size());
  const int slots = static_cast<int>(length) - valid;
  for (int i = 0; i < slots; ++i) {
    const double t = slots == 1 ? 0.0 : static_cast<double>(i) / (slots - 1);
    const int back = std::max(0, std::min(valid - 1, valid - 2 - i));
    const int front = std::min(valid - 1, 1 + i);
    padded.push_back((1 - t) * signal[static_cast<std::size_t>(back)] +
                     t * signal[static_cast<std::size_t>(front)]);
  }
  return padded;
}

FilterResponse single(EdgeKind kind, double cutOff, double order, int32_t log2N) {
  FilterStageList stages;
  stages.addFilterStage(kind, cutOff, order);
  return makeFilterResponse(stages, log2N);
}

/// A response that lets everything through, so that a filtered signal shows its padding.
FilterResponse allPass(int32_t log2N) {
  return single(EdgeKind::LowPass, 1e30, 8, log2N);
}

TEST(FrequencyFilter, OneLowPassEdgeHasTheButterworthSquaredGain) {
  const FilterResponse response = single(EdgeKind::LowPass, 0.3, 6, 10);
  EXPECT_EQ(response.binGains().log2n(), 10);
  EXPECT_EQ(response.nrOfStages(), 1);
  ASSERT_EQ(response.gains().size(), 1025U);
  EXPECT_EQ(response.gains()[0], 1.0F / 512);
  for (std::size_t x = 1; x < 512; ++x) {
    const double expected = 1.0 / 512 / (1 + std::pow(static_cast<double>(x) / (512 * 0.3), 12));
    EXPECT_NEAR(static_cast<double>(response.gains()[2 * x]), expected, 1e-6 * expected) << x;
    EXPECT_EQ(response.gains()[2 * x], response.gains()[2 * x + 1]);
  }
  const double nyquist = 1.0 / 512 / (1 + std::pow(1 / 0.3, 12));
  EXPECT_NEAR(static_cast<double>(response.gains()[1]), nyquist, 1e-6 * nyquist);
}

TEST(FrequencyFilter, OneHighPassEdgeRemovesDC) {
  const FilterResponse response = single(EdgeKind::HighPass, 0.02, 4, 9);
  EXPECT_EQ(response.gains()[0], 0.0F);
  for (std::size_t x = 1; x < 256; ++x) {
    const double expected = 1.0 / 256 * (1 - 1 / (1 + std::pow(static_cast<double>(x) / (256 * 0.02), 8)));
    EXPECT_NEAR(static_cast<double>(response.gains()[2 * x]), expected, 1e-6 * expected) << x;
    EXPECT_EQ(response.gains()[2 * x], response.gains()[2 * x + 1]);
  }
  EXPECT_NEAR(static_cast<double>(response.gains()[1]), 1.0 / 256, 1e-9);
}

TEST(FrequencyFilter, ALowPassBelowAHighPassStopsTheBandBetween) {
  FilterStageList stages;
  stages.addFilterStage(EdgeKind::HighPass, 0.3, 32);
  stages.addFilterStage(EdgeKind::LowPass, 0.2, 32);
  const FilterResponse response = makeFilterResponse(stages, 11);
  const auto gain = [&](double frequency) {
    return 1024.0F * response.gains()[2 * static_cast<std::size_t>(1024 * frequency)];
  };
  EXPECT_FLOAT_EQ(response.gains()[0], 1.0F / 1024);
  EXPECT_NEAR(gain(0.1), 1.0F, 1e-6F);
  EXPECT_NEAR(gain(0.25), 0.0F, 1e-4F);
  EXPECT_NEAR(gain(0.5), 1.0F, 1e-6F);
  EXPECT_NEAR(1024.0F * response.gains()[1], 1.0F, 1e-6F);
}

TEST(FrequencyFilter, AHighPassBelowALowPassIsABandPass) {
  FilterStageList stages;
  stages.addFilterStage(EdgeKind::LowPass, 0.4, 32);
  stages.addFilterStage(EdgeKind::HighPass, 0.1, 32);
  const FilterResponse response = makeFilterResponse(stages, 11);
  EXPECT_EQ(response.gains()[0], 0.0F);
  EXPECT_NEAR(1024.0F * response.gains()[2 * 40], 0.0F, 1e-6F);
  EXPECT_NEAR(1024.0F * response.gains()[2 * 220], 1.0F, 1e-6F);
  EXPECT_NEAR(1024.0F * response.gains()[2 * 800], 0.0F, 1e-6F);
}

TEST(FrequencyFilter, EveryListOfUpToFiveEdgesIsWalkedAsDefined) {
  for (int count = 1; count <= 5; ++count)
    for (int kinds = 0; kinds < 1 << count; ++kinds) {
      SCOPED_TRACE(testing::Message() << count << " edges, kinds " << kinds);
      FilterStageList stages;
      for (int i = 0; i < count; ++i)
        stages.addFilterStage((kinds >> i & 1) != 0 ? EdgeKind::LowPass : EdgeKind::HighPass, 0.1 + 0.15 * i,
                              2 + i);
      expectResponse(stages, 7);
    }
}

TEST(FrequencyFilter, AFullListOfEdgesIsWalkedAsDefined) {
  FilterStageList stages;
  for (int i = 0; i < 16; ++i) {
    stages.addFilterStage(EdgeKind::LowPass, 0.05 * (i + 1), 16);
    stages.addFilterStage(EdgeKind::HighPass, 0.05 * (i + 1) + 0.02, 16);
  }
  ASSERT_EQ(stages.count(), 32);
  expectResponse(stages, 10);
}

TEST(FrequencyFilter, WithoutStagesEveryGainIsTheScalingAlone) {
  const FilterResponse response = makeFilterResponse(FilterStageList{}, 6);
  EXPECT_EQ(response.nrOfStages(), 0);
  ASSERT_EQ(response.gains().size(), 65U);
  for (std::size_t k = 0; k < 64; ++k) EXPECT_EQ(response.gains()[k], 1.0F / 32);
}

TEST(FrequencyFilter, ExtremeEdgesGiveGainsBetweenZeroAndOne) {
  for (const double cutOff : {1e-300, 1e-9, 1.0, 1e9, 1e300, std::numeric_limits<double>::infinity()})
    for (const EdgeKind kind : {EdgeKind::LowPass, EdgeKind::HighPass}) {
      const FilterResponse response = single(kind, cutOff, 1000, 6);
      for (const float gain : response.gains()) {
        EXPECT_GE(gain, 0.0F);
        EXPECT_LE(gain, 1.0F / 32);
      }
    }
}

TEST(FrequencyFilter, LengthsThatHaveNoTransformGiveAnEmptyResponse) {
  FFTWorkspace workspace;
  FilterStageList stages;
  stages.addFilterStage(EdgeKind::LowPass, 0.5, 4);
  std::vector<double> signal(8, 1.0);
  for (const int32_t log2N : {-1, 0, 32, 1000}) {
    const FilterResponse response = makeFilterResponse(stages, log2N);
    EXPECT_TRUE(response.gains().empty());
    EXPECT_EQ(response.nrOfStages(), 0);
    filterSignalFFT(signal.data(), 1, response, workspace);
  }
  for (const int32_t log2N : {1, 2, 3})
    filterSignalFFT(signal.data(), 2, makeFilterResponse(stages, log2N), workspace);
  EXPECT_EQ(signal, std::vector<double>(8, 1.0));
}

TEST(FrequencyFilter, WithoutStagesSignalAndPaddingStayUntouched) {
  FFTWorkspace workspace;
  std::vector<double> signal = reference::random(64, 1);
  const std::vector<double> before = signal;
  filterSignalFFT(signal.data(), 40, makeFilterResponse(FilterStageList{}, 6), workspace);
  EXPECT_EQ(signal, before);
}

TEST(FrequencyFilter, ImpossibleNumbersOfValidSamplesLeaveTheSignalUntouched) {
  FFTWorkspace workspace;
  std::vector<double> signal = reference::random(64, 2);
  const std::vector<double> before = signal;
  const FilterResponse response = single(EdgeKind::LowPass, 0.1, 4, 6);
  for (const int64_t valid : {int64_t{0}, int64_t{-1}, int64_t{65}, std::numeric_limits<int64_t>::min(),
                              std::numeric_limits<int64_t>::max()})
    filterSignalFFT(signal.data(), valid, response, workspace);
  EXPECT_EQ(signal, before);
}

TEST(FrequencyFilter, PaddingLeadsFromTheMirroredEndToTheBeginning) {
  FFTWorkspace workspace;
  // From a long padding that is clamped to the signal (1 to 31 of 64 valid samples) to none at all. What lies
  // behind the valid samples beforehand must not matter.
  for (std::size_t valid = 1; valid <= 64; ++valid) {
    const std::vector<double> input = reference::random(valid, 4);
    std::vector<double> signal(64, std::numeric_limits<double>::quiet_NaN());
    std::copy(input.begin(), input.end(), signal.begin());
    filterSignalFFT(signal.data(), static_cast<int64_t>(valid), allPass(6), workspace);
    const std::vector<double> expected = slowPadding(input, 64);
    for (std::size_t k = 0; k < 64; ++k) EXPECT_NEAR(signal[k], expected[k], 1e-14) << valid << ' ' << k;
  }
}

TEST(FrequencyFilter, ASinglePaddingSlotHoldsTheMirroredSample) {
  FFTWorkspace workspace;
  std::vector<double> signal = reference::random(32, 5);
  const double mirrored = signal[29];
  filterSignalFFT(signal.data(), 31, allPass(5), workspace);
  EXPECT_NEAR(signal[31], mirrored, 1e-14);
}

TEST(FrequencyFilter, LowPassKeepsAConstant) {
  FFTWorkspace workspace;
  for (const int64_t valid : {int64_t{1024}, int64_t{1000}, int64_t{300}, int64_t{1}}) {
    std::vector<double> signal(1024, 0.0);
    std::fill(signal.begin(), signal.begin() + valid, 123.5);
    filterSignalFFT(signal.data(), valid, single(EdgeKind::LowPass, 0.1, 8, 10), workspace);
    for (std::size_t k = 0; k < 1024; ++k) EXPECT_NEAR(signal[k], 123.5, 1e-11) << valid << ' ' << k;
  }
}

TEST(FrequencyFilter, HighPassRemovesAConstant) {
  FFTWorkspace workspace;
  std::vector<double> signal(1024, 123.5);
  filterSignalFFT(signal.data(), 1000, single(EdgeKind::HighPass, 0.1, 8, 10), workspace);
  for (const double value : signal) EXPECT_NEAR(value, 0.0, 1e-11);
}

TEST(FrequencyFilter, FilteringIsAMultiplicationOfTheSpectrumOfThePaddedSignal) {
  FFTWorkspace workspace;
  FilterStageList stages;
  stages.addFilterStage(EdgeKind::HighPass, 0.05, 3);
  stages.addFilterStage(EdgeKind::LowPass, 0.2, 6);
  const std::vector<double> input = reference::random(200, 6);
  const std::vector<double> padded = slowPadding(input, 256);
  std::vector<Wide> spectrum = reference::directDFT(std::vector<Wide>(padded.begin(), padded.end()), -1);
  const std::vector<double> gains = slowResponse(stages, 8);
  for (std::size_t k = 0; k < 256; ++k) {
    const std::size_t bin = std::min(k, 256 - k);
    spectrum[k] *= static_cast<long double>(bin == 0 ? gains[0] : bin == 128 ? gains[1] : gains[2 * bin]);
  }
  const std::vector<Wide> expected = reference::directDFT(spectrum, 1);

  std::vector<double> signal = input;
  signal.resize(256);
  filterSignalFFT(signal.data(), 200, makeFilterResponse(stages, 8), workspace);
  for (std::size_t k = 0; k < 256; ++k)
    EXPECT_NEAR(signal[k], static_cast<double>(expected[k].real() / 2), 1e-6) << k;
}

} // namespace
} // namespace emeg
