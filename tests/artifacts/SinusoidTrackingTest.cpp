#include "artifacts/SinusoidTracking.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <stdexcept>
#include <vector>

namespace emeg {
namespace {

using Signal = std::vector<double>;

constexpr double turn = 2 * std::numbers::pi;

Signal noise(size_t length, uint32_t seed = 1) {
  std::mt19937 generator(seed);
  std::normal_distribution<double> normal(0, 10);
  Signal signal(length);
  for (double& sample : signal) sample = normal(generator);
  return signal;
}

Signal sinusoid(size_t length, double frequency, double rate, double amplitude, double phase = 0.3) {
  Signal signal(length);
  for (size_t t = 0; t < length; ++t)
    signal[t] = amplitude * std::cos(turn * frequency * static_cast<double>(t) / rate + phase);
  return signal;
}

double rms(const Signal& signal, size_t from = 0) {
  double sum = 0;
  for (size_t t = from; t < signal.size(); ++t) sum += signal[t] * signal[t];
  return std::sqrt(sum / static_cast<double>(signal.size() - from));
}

Signal without(const SinusoidTracker& tracker, const Signal& recording) {
  Signal left = recording;
  tracker.subtract(wholeRecording(recording), {0, static_cast<int64_t>(recording.size())}, left);
  return left;
}

struct Wave {
  double cosine = 0;
  double sine = 0;
};

/// Weighted normal equations of x = a cos + b sin around `middle`, solved by Gauss' elimination.
Wave plainFit(const Signal& x, double frequency, double rate, int64_t middle, int64_t hop) {
  double m[2][3] = {};
  for (int64_t t = middle - hop; t <= middle + hop; ++t) {
    if (t < 0 || t >= static_cast<int64_t>(x.size())) continue;
    const double hann = std::pow(
        std::cos(std::numbers::pi / 2 * static_cast<double>(t - middle) / static_cast<double>(hop)), 2);
    const double angle = turn * frequency * static_cast<double>(t) / rate;
    const double basis[2] = {std::cos(angle), std::sin(angle)};
    for (int i = 0; i < 2; ++i) {
      for (int j = 0; j < 2; ++j) m[i][j] += hann * basis[i] * basis[j];
      m[i][2] += hann * basis[i] * x[static_cast<size_t>(t)];
    }
  }
  const double factor = m[1][0] / m[0][0];
  for (int j = 0; j < 3; ++j) m[1][j] -= factor * m[0][j];
  const double sine = m[1][2] / m[1][1];
  return {(m[0][2] - m[0][1] * sine) / m[0][0], sine};
}

Signal plainWithout(const Signal& x, double frequency, double rate) {
  const auto hop = static_cast<int64_t>(4 * rate);
  const auto n = static_cast<int64_t>(x.size());
  std::vector<Wave> waves;
  for (int64_t middle = 0; middle < n; middle += hop)
    waves.push_back(plainFit(x, frequency, rate, middle, hop));
  Signal left = x;
  for (int64_t t = 0; t < n; ++t) {
    const auto w = static_cast<size_t>(t / hop);
    const Wave& a = waves[w];
    const Wave& b = w + 1 < waves.size() ? waves[w + 1] : a;
    const double u = static_cast<double>(t % hop) / static_cast<double>(hop);
    const double angle = turn * frequency * static_cast<double>(t) / rate;
    left[static_cast<size_t>(t)] -= ((1 - u) * a.cosine + u * b.cosine) * std::cos(angle) +
                                    ((1 - u) * a.sine + u * b.sine) * std::sin(angle);
  }
  return left;
}

TEST(SinusoidTracker, EqualsAPlainLeastSquaresFitInOverlappingWindows) {
  struct Case {
    double frequency, rate;
    size_t length;
  };
  for (const Case& c : {Case{50, 250, 10000}, Case{49.93, 500, 7777}, Case{16.7, 100, 401},
                        Case{50, 256, 300}, Case{60, 1000, 20000}}) {
    SCOPED_TRACE(c.frequency);
    const Signal recording = noise(c.length);
    const Signal left = without(SinusoidTracker(c.frequency, c.rate), recording);
    const Signal plain = plainWithout(recording, c.frequency, c.rate);
    for (size_t t = 0; t < left.size(); ++t) ASSERT_NEAR(left[t], plain[t], 1e-8) << t;
  }
}

TEST(SinusoidTracker, RemovesAConstantSinusoidEntirely) {
  for (const double frequency : {50.0, 17.3, 0.9, 124.5}) {
    const Signal line = sinusoid(9000, frequency, 250, 100);
    EXPECT_LT(rms(without(SinusoidTracker(frequency, 250), line)), 1e-7) << frequency;
  }
}

TEST(SinusoidTracker, FollowsAmplitudeAndPhaseThatChangeSlowly) {
  constexpr double rate = 250;
  Signal line(250 * 120);
  for (size_t t = 0; t < line.size(); ++t) {
    const double s = static_cast<double>(t) / rate;
    line[t] =
        50 * (1 + 0.3 * std::sin(turn * s / 150)) * std::cos(turn * 50 * s + 0.3 * std::sin(turn * s / 150));
  }
  EXPECT_LT(rms(without(SinusoidTracker(50, rate), line)), 0.01 * rms(line)) << "40 dB";
}

TEST(SinusoidTracker, KeepsWhatLiesMoreThanHalfAHertzBeside) {
  for (const double beside : {49.4, 50.6, 47.0, 10.0}) {
    const Signal eeg = sinusoid(250 * 60, beside, 250, 10);
    const Signal left = without(SinusoidTracker(50, 250), eeg);
    Signal taken(eeg.size());
    std::transform(eeg.begin(), eeg.end(), left.begin(), taken.begin(), std::minus<>());
    const auto inside = static_cast<std::ptrdiff_t>(250 * 10); // behind the half windows at the edges
    EXPECT_LT(rms(Signal(taken.begin() + inside, taken.end() - inside)), 0.03 * rms(eeg)) << beside;
  }
}

TEST(SinusoidTracker, GivesTheSameBitsHoweverTheRecordingIsCut) {
  const Signal recording = noise(12345);
  const auto n = static_cast<int64_t>(recording.size());
  const SinusoidTracker tracker(50, 250);
  const Signal whole = without(tracker, recording);
  for (const int64_t length : {1000, 1, 999, 4001}) {
    // Single samples everywhere would take long: around the windows' middles they do.
    for (int64_t begin = length == 1 ? 1990 : 0; begin < (length == 1 ? 2010 : n); begin += length) {
      const PositionRange outputs{begin, std::min(begin + length, n)};
      const PositionRange needed = tracker.inputFor(outputs, n);
      ASSERT_GE(needed.begin, 0);
      ASSERT_LE(needed.end, n);
      const Signal held(recording.begin() + needed.begin, recording.begin() + needed.end);
      Signal left(recording.begin() + outputs.begin, recording.begin() + outputs.end);
      tracker.subtract({held, needed.begin, n}, outputs, left);
      for (size_t i = 0; i < left.size(); ++i)
        ASSERT_EQ(left[i], whole[static_cast<size_t>(begin) + i]) << begin << " " << i;
    }
  }
}

TEST(SinusoidTracker, NeedsNothingForNoOutputs) {
  const SinusoidTracker tracker(50, 250);
  EXPECT_EQ(tracker.inputFor({700, 700}, 1000).length(), 0);
  EXPECT_NO_THROW(tracker.subtract({{}, 0, 1000}, {700, 700}, {}));
}

TEST(SinusoidTracker, RefusesWhatIsMissing) {
  const SinusoidTracker tracker(50, 250);
  const Signal recording = noise(10000);
  Signal left(100);
  const std::span<const double> part = std::span(recording).subspan(5000, 100);
  EXPECT_THROW(tracker.subtract({part, 5000, 10000}, {5000, 5100}, left), std::invalid_argument);
  EXPECT_THROW(tracker.subtract(wholeRecording(recording), {5000, 5101}, left), std::invalid_argument);
  EXPECT_THROW(tracker.subtract(wholeRecording(recording), {9950, 10050}, left), std::invalid_argument);
  EXPECT_THROW(tracker.subtract(wholeRecording(recording), {-10, 90}, left), std::invalid_argument);
}

TEST(SinusoidTracker, RefusesFrequenciesThatTheRateDoesNotHold) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double frequency : {0.0, -50.0, 125.0, 1e300, nan})
    EXPECT_THROW(SinusoidTracker(frequency, 250), std::invalid_argument) << frequency;
  for (const double rate : {0.0, -250.0, 100.0, nan})
    EXPECT_THROW(SinusoidTracker(50, rate), std::invalid_argument) << rate;
}

TEST(SinusoidTracker, LeavesRecordingsOfLessThanHalfATurnAsTheyAre) {
  const SinusoidTracker tracker(0.01, 250);
  for (const size_t length : {1u, 2u, 20u}) {
    const Signal recording(length, 5.0);
    EXPECT_EQ(without(tracker, recording), recording);
  }
}

TEST(SinusoidTracker, DoesNotSpreadASampleThatIsNotANumberBeyondItsWindows) {
  Signal recording = noise(20000);
  recording[10000] = std::numeric_limits<double>::quiet_NaN();
  const Signal left = without(SinusoidTracker(50, 250), recording);
  for (size_t t = 0; t < left.size(); ++t)
    if (t < 8000 || t > 12000) {
      ASSERT_TRUE(std::isfinite(left[t])) << t;
    }
}

TEST(SinusoidTracker, StaysFiniteWithHugeSamples) {
  const Signal left = without(SinusoidTracker(50, 250), Signal(5000, 1e150));
  for (const double sample : left) ASSERT_TRUE(std::isfinite(sample));
}

} // namespace
} // namespace emeg
