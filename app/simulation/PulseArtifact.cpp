#include "app/simulation/PulseArtifact.h"

#include "app/simulation/RandomGenerator.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

using Purpose = RandomGenerator::Purpose;

struct Deflection {
  double centre; ///< seconds after the onset, at the mean interval
  double width;  ///< standard deviation, seconds
  double weight;
};

constexpr std::array<Deflection, 4> shape = {
    {{0.07, 0.024, 0.55}, {0.14, 0.028, -1.0}, {0.22, 0.036, 0.8}, {0.34, 0.060, -0.4}}};

constexpr double topographySpread = 0.2; // of a deflection's weight, from channel to channel
constexpr double peakSpread = 0.25;      // of the mean peak, from channel to channel
constexpr double stretchExponent = 0.35; // how much of a longer interval the deflections follow
constexpr double fillingExponent = 0.25; // a longer filled heart ejects more
constexpr double breathInfluence = 0.05; // on the size
constexpr double shortestStretch = 0.7;
constexpr double longestStretch = 1.4;
constexpr double widthsKept = 6;

double gaussian(double x) {
  return std::exp(-0.5 * x * x);
}

/// End of the last deflection (seconds after the onset) at the longest stretch.
constexpr double longestDuration = longestStretch * (0.34 + widthsKept * 0.060);

} // namespace

PulseArtifact::PulseArtifact(const SimulationParameters& parameters)
    : samplingFrequency_(parameters.samplingFrequency), delay_(parameters.heart->pulseDelay),
      meanInterval_(60 / parameters.heart->beatsPerMinute),
      beats_(HeartBeats::draw(*parameters.heart, parameters.seed, parameters.seconds)) {
  static_assert(shape.size() == nrOfDeflections);
  RandomGenerator beatShape(parameters.seed, Purpose::BeatShape);
  for (size_t i = 0; i < beats_.times.size(); i++) {
    const double jitter = 1 + parameters.heart->amplitudeJitter * beatShape.normal();
    const double filling = std::pow(beats_.intervals[i] / meanInterval_, fillingExponent);
    beatSizes_.push_back(jitter * filling * (1 + breathInfluence * std::sin(breathPhase(beats_.times[i]))));
    const auto& weak = parameters.heart->weak;
    if (weak && onset(i) >= weak->start && onset(i) < weak->start + weak->duration)
      beatSizes_.back() *= weak->factor;
  }

  for (int c = 0; c < parameters.nrOfChannels; c++) {
    RandomGenerator random(parameters.seed, Purpose::PulseTopography, static_cast<uint64_t>(c));
    Topography topography{};
    for (size_t k = 0; k < nrOfDeflections; k++)
      topography[k] = shape[k].weight * (1 + topographySpread * random.normal());
    double largest = 0;
    for (int millisecond = 0; millisecond < longestDuration * 1000; millisecond++) {
      const double time = millisecond * 0.001;
      double value = 0;
      for (size_t k = 0; k < nrOfDeflections; k++)
        value += topography[k] * gaussian((time - shape[k].centre) / shape[k].width);
      largest = std::max(largest, std::abs(value));
    }
    double peak = parameters.heart->peakUv * random.uniform(1 - peakSpread, 1 + peakSpread);
    if (parameters.isDead(c) || parameters.isEcg(c)) peak = 0;
    const double scale = random.sign() * peak / largest;
    for (double& weight : topography) weight *= scale;
    topographies_.push_back(topography);
    peaks_.push_back(peak);
  }
}

void PulseArtifact::fill(int64_t first, int64_t count, std::span<double> samples) {
  const auto length = static_cast<size_t>(count);
  deflections_.assign(nrOfDeflections * length, 0.0);
  const double blockStart = static_cast<double>(first) / samplingFrequency_;
  const double blockEnd = static_cast<double>(first + count) / samplingFrequency_;
  const auto begin =
      std::lower_bound(beats_.times.begin(), beats_.times.end(), blockStart - delay_ - longestDuration);
  for (auto beat = static_cast<size_t>(begin - beats_.times.begin()); beat < beats_.times.size(); beat++) {
    const double start = onset(beat);
    const double stretch = std::clamp(std::pow(beats_.intervals[beat] / meanInterval_, stretchExponent),
                                      shortestStretch, longestStretch);
    if (start - widthsKept * longestStretch * shape[0].width > blockEnd) break;
    for (size_t k = 0; k < nrOfDeflections; k++) {
      const double centre = start + stretch * shape[k].centre;
      const double width = stretch * shape[k].width;
      const double from = (centre - widthsKept * width) * samplingFrequency_;
      const double to = (centre + widthsKept * width) * samplingFrequency_;
      const auto i0 = std::max<int64_t>(first, static_cast<int64_t>(std::ceil(from)));
      const auto i1 = std::min<int64_t>(first + count - 1, static_cast<int64_t>(std::floor(to)));
      for (int64_t i = i0; i <= i1; i++) {
        const double time = static_cast<double>(i) / samplingFrequency_;
        deflections_[k * length + static_cast<size_t>(i - first)] +=
            beatSizes_[beat] * gaussian((time - centre) / width);
      }
    }
  }

  for (size_t c = 0; c < topographies_.size(); c++) {
    for (size_t t = 0; t < length; t++) {
      double value = 0;
      for (size_t k = 0; k < nrOfDeflections; k++)
        value += topographies_[c][k] * deflections_[k * length + t];
      samples[c * length + t] = value;
    }
  }
}

} // namespace emeg
