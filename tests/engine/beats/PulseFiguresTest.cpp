#include "engine/beats/PulseFigures.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <vector>

namespace emeg {

constexpr double twoPi = 2 * std::numbers::pi;

TEST(PulseFigures, SeeWhatIsLockedToTheBeats) {
  std::vector<double> series(2501);
  std::vector<double> pulses;
  for (int i = 0; i <= 10; ++i) pulses.push_back(250.0 * i);
  for (size_t i = 0; i < 2500; ++i) series[i] = 8 * std::sin(twoPi * static_cast<double>(i) / 250);
  const PulseChannelFigures figures =
      measurePulseFigures(series, std::vector<double>(2501, 0.0), pulses, 2500);
  EXPECT_NEAR(figures.rmsBefore, 8 / std::sqrt(2), 0.01);
  EXPECT_NEAR(figures.beatRmsBefore, 8 / std::sqrt(2), 0.01);
  EXPECT_NEAR(figures.beatRmsAfter, 8 / std::sqrt(2), 0.01);
  EXPECT_NEAR(measurePulseFigures(series, series, pulses, 2500).beatRmsAfter, 0, 1e-12);
}

} // namespace emeg
