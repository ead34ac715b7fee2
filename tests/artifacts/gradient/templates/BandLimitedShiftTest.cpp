#include "artifacts/gradient/templates/BandLimitedShift.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace emeg {
namespace {

TEST(BandLimitedShift, FollowsSinusoidsUpToEightTenthsOfTheNyquistFrequency) {
  for (const double frequency : {0.01, 0.2, 0.4}) {
    std::vector<double> signal(200);
    const double w = 2 * std::numbers::pi * frequency;
    for (size_t i = 0; i < signal.size(); i++) signal[i] = std::sin(w * static_cast<double>(i) + 0.3);
    for (const double fraction : {0.0, 0.1, 0.5, 0.99}) {
      std::vector<double> out(100);
      readShifted(signal, 50 + fraction, out);
      for (size_t i = 0; i < out.size(); i++)
        ASSERT_NEAR(out[i], std::sin(w * (50 + fraction + static_cast<double>(i)) + 0.3), 5e-4) << frequency;
    }
  }
}

TEST(BandLimitedShift, ReadsZerosOutsideTheSignal) {
  const std::vector<double> signal(10, 1.0);
  std::vector<double> out(30, 7.0);
  readShifted(signal, -10, out);
  EXPECT_EQ(out[0], 0);
  EXPECT_NEAR(out[15], 1, 1e-12);
  EXPECT_EQ(out[29], 0);
}

} // namespace
} // namespace emeg
