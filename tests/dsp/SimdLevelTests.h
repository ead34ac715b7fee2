#pragma once

#include "dsp/SimdLevel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <random>
#include <string>
#include <vector>

/// What tests of code that is compiled for several SIMD levels share.
namespace emeg {

/// The levels that can run here.
inline std::vector<SimdLevel> availableSimdLevels() {
  std::vector<SimdLevel> levels;
  for (const SimdLevel level : {SimdLevel::Baseline, SimdLevel::Avx2, SimdLevel::Avx512})
    if (level <= bestSimdLevel()) levels.push_back(level);
  return levels;
}

inline std::string nameOf(SimdLevel level) {
  return level == SimdLevel::Baseline ? "Baseline" : level == SimdLevel::Avx2 ? "Avx2" : "Avx512";
}

inline void PrintTo(SimdLevel level, std::ostream* out) {
  *out << nameOf(level);
}

/// A test that runs once at every level.
class AtEveryLevel : public testing::TestWithParam<SimdLevel> {
public:
  static std::string name(const testing::TestParamInfo<SimdLevel>& info) { return nameOf(info.param); }
};

/// `count` values that end where their memory ends and begin `shift` values behind its beginning, so that
/// they are aligned to nothing and the address sanitizer sees every access behind them (without a shift,
/// every one in front of them too).
class EdgedArray {
public:
  EdgedArray(std::size_t count, std::size_t shift, double value = 0.0)
      : shift_(shift), values_(shift + count, value) {}
  explicit EdgedArray(const std::vector<double>& values, std::size_t shift)
      : EdgedArray(values.size(), shift) {
    for (std::size_t i = 0; i < values.size(); ++i) data()[i] = values[i];
  }

  double* data() { return values_.data() + shift_; }
  const double* data() const { return values_.data() + shift_; }
  std::size_t size() const { return values_.size() - shift_; }
  std::vector<double> values() const { return {data(), data() + size()}; }

private:
  std::size_t shift_;
  std::vector<double> values_;
};

/// Noise whose magnitudes lie up to 10 ^ (2 x decades) apart: every change in the order of a sum shows.
inline std::vector<double> unevenNoise(std::size_t count, uint32_t seed, double decades = 6) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  std::uniform_real_distribution<double> exponent(-decades, decades);
  std::vector<double> values(count);
  for (double& value : values) value = normal(random) * std::pow(10.0, exponent(random));
  return values;
}

/// Equal to the last bit; results that are no number have no sign and no payload worth comparing.
inline bool sameBits(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return std::memcmp(&a, &b, sizeof a) == 0;
}

inline testing::AssertionResult sameBits(const std::vector<double>& actual,
                                         const std::vector<double>& expected) {
  if (actual.size() != expected.size())
    return testing::AssertionFailure() << actual.size() << " values instead of " << expected.size();
  for (std::size_t i = 0; i < actual.size(); ++i)
    if (!sameBits(actual[i], expected[i]))
      return testing::AssertionFailure() << "value " << i << " of " << actual.size() << ": " << actual[i]
                                         << " instead of " << expected[i];
  return testing::AssertionSuccess();
}

} // namespace emeg
