#include "dsp/Resampler.h"

#include "dsp/WindowedSinc.h"
#include "tests/dsp/SimdLevelTests.h"
#include "tests/dsp/reference/PlainFilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace emeg {
namespace {

using Rates = std::pair<double, double>;

/// Whole-number divisors, small ratios, ratios with too many phases for a table, and none at all.
const std::vector<Rates> manyRates = {{5000, 250},
                                      {5000, 256},
                                      {1000, 512},
                                      {2048, 500},
                                      {500, 1000},
                                      {250, 1024},
                                      {1000, 1000 / std::numbers::pi},
                                      {250, 100 * std::numbers::pi},
                                      {1000, 999.99},
                                      {2034.51, 500}};

double passLimit() {
  return reference::fromDecibels(0.05) - 1 + 1e-4;
}
constexpr double stopLimit = 1e-4;

std::string describe(const Rates& rates) {
  return std::to_string(rates.first) + " to " + std::to_string(rates.second) + " Hz";
}

/// A resampler, and a length of input that leaves some 200 outputs or inputs between the two ends.
struct Conversion {
  explicit Conversion(const Rates& r)
      : rates(r), resampler(r.first, r.second),
        samples(static_cast<std::size_t>(2 * resampler.context()) +
                static_cast<std::size_t>(200 * std::max(1.0, rates.first / rates.second))) {}

  std::vector<double> ofSinusoid(double frequency) const {
    return resampler.apply(reference::sinusoid(samples, frequency / rates.first, 1));
  }

  Rates rates;
  Resampler resampler;
  std::size_t samples;
};

/// Calls check(time in s, output) for the outputs that no end of the recording reaches; returns their number.
template <typename Check>
std::size_t forInnerOutputs(const Conversion& conversion, const std::vector<double>& outputs,
                            std::size_t samples, Check check) {
  const double context = static_cast<double>(conversion.resampler.context());
  std::size_t checked = 0;
  for (std::size_t k = 0; k < outputs.size(); ++k) {
    const double time = static_cast<double>(k) / conversion.rates.second;
    const double position = time * conversion.rates.first;
    if (position < context || position >= static_cast<double>(samples) - context) continue;
    check(time, outputs[k]);
    ++checked;
  }
  return checked;
}

TEST(Resampler, SinusoidsBelowFourTenthsOfTheLowerRatePassWithinTheLimit) {
  for (const Rates& rates : manyRates) {
    const Conversion conversion(rates);
    const double highest = 0.4 * std::min(rates.first, rates.second);
    for (int i = 0; i <= 40; ++i) {
      const double f = highest * i / 40;
      double worst = 0;
      const std::size_t checked = forInnerOutputs(
          conversion, conversion.ofSinusoid(f), conversion.samples, [&](double time, double output) {
            worst = std::max(worst, std::abs(output - std::cos(2 * std::numbers::pi * f * time + 1)));
          });
      EXPECT_GE(checked, 150U) << describe(rates);
      EXPECT_LT(worst, passLimit()) << describe(rates) << ", " << f << " Hz";
    }
  }
}

TEST(Resampler, SinusoidsFromHalfTheNewRateOnVanish) {
  for (const Rates& rates : manyRates) {
    if (rates.second >= rates.first) continue;
    const Conversion conversion(rates);
    for (int i = 0; i <= 60; ++i) {
      const double f = rates.second / 2 + (rates.first - rates.second) / 2 * i / 60;
      double worst = 0;
      const std::size_t checked =
          forInnerOutputs(conversion, conversion.ofSinusoid(f), conversion.samples,
                          [&](double, double output) { worst = std::max(worst, std::abs(output)); });
      EXPECT_GE(checked, 150U) << describe(rates);
      EXPECT_LT(worst, stopLimit) << describe(rates) << ", " << f << " Hz";
    }
  }
}

TEST(Resampler, SinusoidsLeaveNoImagesAtAHigherRate) {
  const Resampler resampler(250, 1000);
  for (const double f : {3.0, 40.0, 77.0, 99.0}) {
    const std::vector<double> outputs = resampler.apply(reference::sinusoid(1000, f / 250, 1));
    EXPECT_NEAR(std::abs(reference::sinusoidIn(outputs, 400, 3200, f / 1000)), 1, passLimit()) << f;
    for (const double image : {250 - f, 250 + f, 500 - f})
      EXPECT_LT(std::abs(reference::sinusoidIn(outputs, 400, 3200, image / 1000)), stopLimit) << f;
  }
}

TEST(Resampler, AChirpArrivesAtItsTime) {
  for (const Rates& rates : manyRates) {
    const Conversion conversion(rates);
    const double highest = 0.38 * std::min(rates.first, rates.second);
    const double duration = 2000 / std::min(rates.first, rates.second);
    const auto chirp = [&](double t) { return std::sin(std::numbers::pi * highest / duration * t * t); };
    std::vector<double> x(static_cast<std::size_t>(duration * rates.first));
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = chirp(static_cast<double>(i) / rates.first);
    double worst = 0;
    const std::size_t checked =
        forInnerOutputs(conversion, conversion.resampler.apply(x), x.size(), [&](double time, double output) {
          worst = std::max(worst, std::abs(output - chirp(time)));
        });
    EXPECT_GE(checked, 1500U) << describe(rates);
    EXPECT_LT(worst, passLimit()) << describe(rates);
  }
}

TEST(Resampler, OutputsAreTheSumThatDefinesThem) {
  for (const Rates& rates : manyRates) {
    const double lower = std::min(rates.first, rates.second) / rates.first;
    const KaiserSinc kernel(0.45 * lower, 0.1 * lower, 90);
    const std::vector<double> x = reference::whiteNoise(3000, 21);
    const Resampler resampler(rates.first, rates.second);
    const std::vector<double> outputs = resampler.apply(x);
    for (std::size_t k = 0; k < outputs.size(); k += 23) {
      const double instant = static_cast<double>(k) * rates.first / rates.second;
      const auto middle = static_cast<int64_t>(instant);
      double sum = 0;
      double weights = 0;
      for (int64_t p = middle - resampler.context() - 2; p <= middle + resampler.context() + 2; ++p) {
        const double weight = kernel(static_cast<double>(p) - instant);
        sum += weight * reference::continued(x, p);
        weights += weight;
      }
      EXPECT_NEAR(outputs[k], sum / weights, 1e-6) << describe(rates) << ", output " << k;
    }
  }
}

TEST(Resampler, ThereIsAnOutputAtEveryInstantUpToTheLastSample) {
  const auto count = [](double oldRate, double newRate, int64_t n) {
    return Resampler(oldRate, newRate).outputLength(n);
  };
  EXPECT_EQ(count(5000, 250, 0), 0);
  EXPECT_EQ(count(5000, 250, 1), 1);
  EXPECT_EQ(count(5000, 250, 20), 1);
  EXPECT_EQ(count(5000, 250, 21), 2);
  EXPECT_EQ(count(500, 1000, 3), 5);
  EXPECT_EQ(count(1000, 512, 125), 64);
  EXPECT_EQ(count(1000, 512, 126), 65);
  EXPECT_EQ(count(1000, 512, 125 * int64_t{30000000} + 1), 64 * int64_t{30000000} + 1);
  EXPECT_EQ(count(0.3, 0.1, 4), 2);
  EXPECT_EQ(count(512.2, 2048.8, 4), 13);
  EXPECT_EQ(count(2034.51, 500, 203452), 50001);
  EXPECT_EQ(count(1000, 1000 / std::numbers::pi, 1001), 319);
}

TEST(Resampler, TheLastOutputOfAnExactRatioIsNeverLost) {
  std::mt19937 random(22);
  std::uniform_int_distribution<int> part(1, 3000);
  for (int i = 0; i < 2000; ++i) {
    const int64_t numerator = part(random);
    const int64_t denominator = part(random);
    const double unit = 0.1 * part(random);
    const OutputInstants instants(static_cast<double>(denominator) * unit,
                                  static_cast<double>(numerator) * unit);
    const int64_t last = part(random);
    EXPECT_EQ(instants.countUpTo(last), last * numerator / denominator + 1);
    EXPECT_EQ(instants.countBelow(last), (last * numerator + denominator - 1) / denominator);
  }
}

TEST(Resampler, TheLastOutputIsNotLostWhereTheRatesHaveASmallCommonMeasure) {
  std::mt19937 random(25);
  std::uniform_int_distribution<int64_t> part(2000000, 9000000);
  for (int i = 0; i < 2000; ++i) {
    const int64_t samples = part(random);
    const int64_t outputs = part(random);
    const int64_t measure = std::gcd(samples, outputs);
    if (std::max(samples, outputs) / measure <= 1048576) continue;
    const OutputInstants instants(static_cast<double>(samples) / 1000, static_cast<double>(outputs) / 1000);
    EXPECT_EQ(instants.phases(), 0);
    EXPECT_EQ(instants.countUpTo(samples), outputs + 1) << samples << " to " << outputs;
  }
}

TEST(Resampler, InstantsDoNotDriftInALongRecording) {
  const OutputInstants exact(1000, 512);
  const int64_t k = 64 * int64_t{10000000000} + 1;
  EXPECT_EQ(exact[k].whole, 125 * int64_t{10000000000} + 1);
  EXPECT_EQ(exact[k].fraction, 61.0 / 64);
  const OutputInstants rough(1000, 1000 / std::numbers::pi);
  const int64_t many = 1000000000;
  const long double expected =
      static_cast<long double>(many) * 1000 / static_cast<long double>(1000 / std::numbers::pi);
  const long double instant =
      static_cast<long double>(rough[many].whole) + static_cast<long double>(rough[many].fraction);
  EXPECT_NEAR(static_cast<double>(instant - expected), 0, 2e-6);
}

TEST(Resampler, AConstantStaysTheSame) {
  for (const Rates& rates : manyRates) {
    const std::vector<double> x(1000, 1234.5);
    for (const double output : Resampler(rates.first, rates.second).apply(x))
      EXPECT_NEAR(output, 1234.5, 1e-9) << describe(rates);
  }
}

TEST(Resampler, ADriftStaysADriftUpToBothEnds) {
  for (const Rates& rates : manyRates) {
    std::vector<double> x(4000);
    std::iota(x.begin(), x.end(), 0.0);
    const std::vector<double> outputs = Resampler(rates.first, rates.second).apply(x);
    for (std::size_t k = 0; k < outputs.size(); ++k) {
      const double instant = static_cast<double>(k) * rates.first / rates.second;
      EXPECT_NEAR(outputs[k], instant, 1e-3 * std::max(1.0, rates.first / rates.second))
          << describe(rates) << ", output " << k;
    }
  }
}

TEST(Resampler, EqualRatesCopy) {
  const std::vector<double> x = {1, -0.0, std::numeric_limits<double>::infinity(), 3};
  EXPECT_TRUE(sameBits(Resampler(512, 512).apply(x), x));
  EXPECT_EQ(Resampler(512, 512).context(), 0);
}

TEST(Resampler, CuttingTheRecordingChangesNoBitAndLosesNoOutput) {
  for (const Rates& rates : manyRates) {
    const Resampler resampler(rates.first, rates.second);
    const std::vector<double> x = unevenNoise(7001, 23, 3);
    const auto n = static_cast<int64_t>(x.size());
    const std::vector<double> whole = resampler.apply(x);
    std::mt19937 random(24);
    std::uniform_int_distribution<int64_t> length(1, 500);
    std::vector<double> joined;
    for (int64_t begin = 0; begin < n;) {
      const PositionRange stretch{begin, std::min(n, begin + length(random))};
      const PositionRange outputs = resampler.outputsIn(stretch, n);
      ASSERT_EQ(outputs.begin, static_cast<int64_t>(joined.size())) << describe(rates);
      const PositionRange input = resampler.inputFor(outputs, n);
      const EdgedArray held({x.begin() + input.begin, x.begin() + input.end}, 0);
      std::vector<double> part(static_cast<std::size_t>(outputs.length()));
      resampler.apply({{held.data(), held.size()}, input.begin, n}, outputs, part);
      joined.insert(joined.end(), part.begin(), part.end());
      begin = stretch.end;
    }
    EXPECT_TRUE(sameBits(joined, whole)) << describe(rates);
  }
}

TEST(Resampler, RecordingsShorterThanTheKernelAreResampled) {
  for (const Rates& rates : manyRates)
    for (const std::size_t samples : {1U, 2U, 5U}) {
      const std::vector<double> x(samples, 3.0);
      const std::vector<double> outputs = Resampler(rates.first, rates.second).apply(x);
      EXPECT_FALSE(outputs.empty());
      for (const double output : outputs) EXPECT_NEAR(output, 3, 1e-12) << describe(rates);
    }
  EXPECT_TRUE(Resampler(5000, 250).apply(std::vector<double>()).empty());
}

TEST(Resampler, RangesOutsideOfTheRecordingHoldNoOutputs) {
  const Resampler resampler(5000, 250);
  EXPECT_EQ(resampler.outputsIn({-100, 0}, 1000).length(), 0);
  EXPECT_EQ(resampler.outputsIn({1000, 5000}, 1000).length(), 0);
  EXPECT_EQ(resampler.outputsIn({30, 20}, 1000).length(), 0);
  EXPECT_EQ(resampler.outputsIn({0, 1000}, 1000).length(), 50);
  EXPECT_EQ(resampler.outputsIn({0, 0}, 0).length(), 0);
}

TEST(Resampler, RatesThatMakeNoSenseAreRefused) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double rate : {nan, infinity, -infinity, 0.0, -250.0, 1e-300, 1e300, 1e-2, 1e8}) {
    EXPECT_THROW(Resampler(1000, rate), std::invalid_argument) << rate;
    EXPECT_THROW(Resampler(rate, 1000), std::invalid_argument) << rate;
  }
  EXPECT_THROW(Resampler(nan, nan), std::invalid_argument);
  EXPECT_NO_THROW(Resampler(5000, 0.5));
  EXPECT_NO_THROW(Resampler(0.5, 5000));
}

TEST(Resampler, MissingInputAndWrongPlacesAreErrors) {
  const Resampler resampler(5000, 250);
  const std::vector<double> x(100);
  std::vector<double> out(5);
  EXPECT_THROW(resampler.apply({x, 5000, 90000}, {250, 255}, out), std::invalid_argument);
  EXPECT_THROW(resampler.apply(wholeRecording(x), {1, 6}, out), std::invalid_argument);
  EXPECT_THROW(resampler.apply(wholeRecording(x), {0, 4}, out), std::invalid_argument);
  EXPECT_THROW(resampler.apply({x, -1, 100}, {0, 5}, out), std::invalid_argument);
  EXPECT_THROW(resampler.outputLength(-1), std::invalid_argument);
  EXPECT_THROW(resampler.outputLength(std::numeric_limits<int64_t>::max()), std::invalid_argument);
}

} // namespace
} // namespace emeg
