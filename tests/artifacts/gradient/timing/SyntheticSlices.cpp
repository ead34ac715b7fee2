#include "tests/artifacts/gradient/timing/SyntheticSlices.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace emeg {

namespace {

constexpr double size = 50;
constexpr double fade = 0.008;      // seconds, at either end of a slice
constexpr double dutyOfSlice = 0.9; // the rest is quiet

struct Sinusoid {
  double frequency, phase;
};

void add(std::vector<double>& recording, double fs, const SyntheticSlices& scan) {
  std::mt19937_64 random(scan.seed);
  std::uniform_real_distribution<double> frequency(40, 180), phase(0, 2 * std::numbers::pi),
      difference(-1, 1);
  std::normal_distribution<double> late(0, 1);
  std::vector<Sinusoid> sinusoids(30);
  for (auto& [f, p] : sinusoids) {
    f = frequency(random);
    p = phase(random);
  }
  std::vector<double> sizes(static_cast<size_t>(scan.nrOfSlices));
  for (double& s : sizes) s = size * (1 + scan.modulation * difference(random)) / std::sqrt(15.0);
  const double duration = dutyOfSlice * scan.sliceDuration;
  for (int volume = 0; volume < scan.nrOfVolumes; volume++) {
    const double onset = scan.begin + volume * scan.volumeDuration + scan.jitter * late(random);
    for (int slice = 0; slice < scan.nrOfSlices; slice++) {
      const double start = onset + slice * scan.sliceDuration;
      const auto n = static_cast<int64_t>(recording.size());
      const auto last = std::min(n, static_cast<int64_t>((start + duration) * fs) + 1);
      for (auto i = std::max<int64_t>(0, static_cast<int64_t>(start * fs)); i < last; i++) {
        const double t = static_cast<double>(i) / fs - start;
        const double gain = std::clamp(std::min(t, duration - t) / fade, 0.0, 1.0);
        double value = 0;
        for (const auto& [f, p] : sinusoids) value += std::sin(2 * std::numbers::pi * f * t + p);
        recording[static_cast<size_t>(i)] += sizes[static_cast<size_t>(slice)] * gain * value;
      }
    }
  }
}

} // namespace

std::vector<double> syntheticRecording(double samplingFrequency, double seconds,
                                       const std::vector<SyntheticSlices>& scans) {
  std::mt19937_64 random(99);
  std::normal_distribution<double> noise(0, 1);
  std::vector<double> recording(static_cast<size_t>(samplingFrequency * seconds));
  for (double& value : recording) value = noise(random);
  for (const SyntheticSlices& scan : scans) add(recording, samplingFrequency, scan);
  return recording;
}

} // namespace emeg
