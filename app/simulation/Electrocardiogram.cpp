#include "app/simulation/Electrocardiogram.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace emeg {

namespace {

constexpr double widthsKept = 6;
constexpr double reach = 0.9; // seconds from an R peak to the end of its last wave, and more

} // namespace

Electrocardiogram::Electrocardiogram(const SimulationParameters& parameters, HeartBeats beats)
    : samplingFrequency_(parameters.samplingFrequency), beats_(std::move(beats)) {
  const EcgParameters& ecg = *parameters.ecg;
  const double r = ecg.rPeakUv;
  const double t = ecg.tWave * r;
  normal_ = {{-0.17, 0.020, 0.12 * r},
             {-0.028, 0.008, -0.12 * r},
             {0, 0.010, r},
             {0.030, 0.009, -0.25 * r},
             {0.27, 0.050, t}};
  ectopic_ = {{0, 0.024, -1.1 * r}, {0.060, 0.030, 0.4 * r}, {0.30, 0.060, t}};
}

void Electrocardiogram::addWave(const Wave& wave, double rPeak, int64_t first,
                                std::span<double> samples) const {
  const double centre = rPeak + wave.centre;
  const auto end = first + static_cast<int64_t>(samples.size()) - 1;
  const auto from = static_cast<int64_t>(std::ceil((centre - widthsKept * wave.width) * samplingFrequency_));
  const auto to = static_cast<int64_t>(std::floor((centre + widthsKept * wave.width) * samplingFrequency_));
  for (int64_t i = std::max(from, first); i <= std::min(to, end); ++i) {
    const double x = (static_cast<double>(i) / samplingFrequency_ - centre) / wave.width;
    samples[static_cast<size_t>(i - first)] += wave.height * std::exp(-0.5 * x * x);
  }
}

void Electrocardiogram::add(int64_t first, std::span<double> samples) const {
  const double begin = static_cast<double>(first) / samplingFrequency_ - reach;
  const double end =
      static_cast<double>(first + static_cast<int64_t>(samples.size())) / samplingFrequency_ + reach;
  const auto nearest = std::lower_bound(beats_.times.begin(), beats_.times.end(), begin);
  for (auto i = static_cast<size_t>(nearest - beats_.times.begin());
       i < beats_.times.size() && beats_.times[i] < end; ++i) {
    const bool isEctopic = std::binary_search(beats_.ectopic.begin(), beats_.ectopic.end(), i);
    for (const Wave& wave : isEctopic ? ectopic_ : normal_) addWave(wave, beats_.times[i], first, samples);
  }
}

} // namespace emeg
