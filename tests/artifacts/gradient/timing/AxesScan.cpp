#include "tests/artifacts/gradient/timing/AxesScan.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace emeg {

namespace {

constexpr int nrOfAxes = 3;

/// A ramp: `size` in arbitrary units at `time` seconds behind its slice's onset.
struct Ramp {
  double time;
  int axis;
  double size;
};

void addTrapezoid(std::vector<Ramp>& ramps, double time, double duration, int axis, double size) {
  ramps.push_back({time, axis, size});
  ramps.push_back({time + duration, axis, -size});
}

/// The gradients of an excitation: spoilers, slice selection, readout, crushers.
std::vector<Ramp> ordinarySlice(double duration) {
  constexpr double echoSpacing = 0.00068;
  std::vector<Ramp> ramps;
  addTrapezoid(ramps, 0.0005, 0.0022, 0, 1.2);
  addTrapezoid(ramps, 0.0006, 0.0024, 1, 1.5);
  addTrapezoid(ramps, 0.0045, 0.0041, 2, 1.5);
  addTrapezoid(ramps, 0.0092, 0.0015, 2, -1.2);
  double sign = 2;
  for (double time = 0.012; time < 0.75 * duration; time += echoSpacing, sign = -sign)
    ramps.push_back({time, 0, sign});
  addTrapezoid(ramps, 0.78 * duration, 0.0021, 2, 2.3);
  addTrapezoid(ramps, 0.78 * duration, 0.0023, 1, 1.1);
  return ramps;
}

std::vector<Ramp> additionToFirstSlice(double size) {
  std::vector<Ramp> ramps;
  addTrapezoid(ramps, 0.0032, 0.0027, 0, 4 * size);
  addTrapezoid(ramps, 0.0141, 0.0036, 1, -5 * size);
  addTrapezoid(ramps, 0.0303, 0.0031, 2, 4 * size);
  return ramps;
}

/// Adds a ramp's pulse, a Gaussian as wide as a low-pass of 0.15 of the sampling frequency makes it.
void addPulse(std::vector<double>& signal, double fs, double time, double size) {
  constexpr double width = 0.1325 / 0.15; // samples
  const double centre = time * fs;
  const auto n = static_cast<int64_t>(signal.size());
  const auto from = std::max<int64_t>(0, static_cast<int64_t>(std::ceil(centre - 6 * width)));
  const auto to = std::min(n, static_cast<int64_t>(std::ceil(centre + 6 * width)));
  for (int64_t i = from; i < to; i++) {
    const double u = (static_cast<double>(i) - centre) / width;
    signal[static_cast<size_t>(i)] += size * std::exp(-0.5 * u * u);
  }
}

} // namespace

std::vector<std::vector<double>> AxesScan::channels(int count) const {
  const auto n = static_cast<size_t>(seconds * fs);
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal;
  std::vector<std::vector<double>> axes(nrOfAxes, std::vector<double>(n, 0.0));
  const std::vector<Ramp> ordinary = ordinarySlice(sliceDuration);
  const std::vector<Ramp> addition = additionToFirstSlice(firstSliceAddition);
  for (int v = 0; v < nrOfVolumes; v++) {
    const double onset = firstOnset + v * volumeDuration() + jitter * normal(random);
    const double gain = 1 + amplitudeDrift * (static_cast<double>(v) / nrOfVolumes - 0.5);
    const auto add = [&](const std::vector<Ramp>& ramps, double at) {
      for (const Ramp& ramp : ramps)
        addPulse(axes[static_cast<size_t>(ramp.axis)], fs, at + ramp.time, gain * ramp.size);
    };
    for (int s = 0; s < nrOfSlices; s++) add(ordinary, onset + s * sliceDuration);
    add(addition, onset);
  }

  std::vector<std::vector<double>> result;
  for (int c = 0; c < count; c++) {
    std::vector<double> channel(n, 0.0);
    double peak = 0;
    for (const std::vector<double>& axis : axes) {
      const double share = normal(random);
      for (size_t i = 0; i < n; i++) channel[i] += share * axis[i];
    }
    for (const double value : channel) peak = std::max(peak, std::fabs(value));
    double slow = 0, fast = 0;
    for (size_t i = 0; i < n; i++) {
      slow += 6 / fs * (30 * std::sqrt(fs / 6) * normal(random) / 2 - slow);
      fast += 0.2 * (8 * normal(random) - fast);
      const double sinceBeat = std::fmod(static_cast<double>(i) / fs, 0.93);
      const double pulse = 50 * std::sin(2 * std::numbers::pi * 5 * sinceBeat) * std::exp(-6 * sinceBeat);
      channel[i] = (peak > 0 ? peakUv / peak * channel[i] : 0) + slow + fast + pulse + 0.7 * normal(random);
    }
    result.push_back(std::move(channel));
  }
  return result;
}

} // namespace emeg
