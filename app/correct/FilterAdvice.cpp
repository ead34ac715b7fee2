#include "app/correct/FilterAdvice.h"

#include "dsp/FilterStages.h"
#include "dsp/FrequencyFilter.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace emeg {

namespace {

constexpr int32_t log2Points = 14;
constexpr size_t nrOfBins = size_t{1} << (log2Points - 1);
constexpr double usualOrder = 2;
constexpr double antiAliasOrder = 3;
constexpr double gainTolerance = 0.1;
constexpr double goodNotchGain = 0.1;

/// Gains from 0 Hz to the Nyquist frequency.
using Gains = std::vector<double>;

Gains gainsOf(const FilterStageList& stages) {
  const FilterResponse response = makeFilterResponse(stages, log2Points);
  Gains gains(nrOfBins);
  for (size_t k = 1; k < nrOfBins; ++k)
    gains[k] = static_cast<double>(response.gains()[2 * k]) * static_cast<double>(nrOfBins);
  gains[0] = static_cast<double>(response.gains()[0]) * static_cast<double>(nrOfBins);
  return gains;
}

/// One filter that a user thinks of: its edges alone, and added to those of all.
class FilterBuilder {
public:
  explicit FilterBuilder(double samplingFrequency) : nyquist_(samplingFrequency / 2), alone_(nrOfBins, 1.0) {}

  void begin() { own_.clear(); }
  void add(EdgeKind kind, double hz, double order) {
    own_.addFilterStage(kind, hz / nyquist_, order);
    all_.addFilterStage(kind, hz / nyquist_, order);
  }
  Gains end() {
    Gains gains = gainsOf(own_);
    for (size_t k = 0; k < nrOfBins; ++k) alone_[k] *= gains[k];
    return gains;
  }

  const Gains& alone() const { return alone_; }
  Gains together() const { return gainsOf(all_); }
  double hzOf(size_t bin) const {
    return nyquist_ * static_cast<double>(bin) / static_cast<double>(nrOfBins);
  }
  size_t binOf(double hz) const {
    return std::min(static_cast<size_t>(std::round(hz / nyquist_ * static_cast<double>(nrOfBins))),
                    nrOfBins - 1);
  }

private:
  double nyquist_;
  FilterStageList own_, all_;
  Gains alone_;
};

std::string remedyFor(const CorrectParameters& parameters, int decimationFactor, double samplingFrequency) {
  const double newNyquist = samplingFrequency / decimationFactor / 2;
  std::string remedy;
  if (!parameters.notches.empty())
    remedy += fmt::format(" Use --line-noise {:g} instead of --notch.", parameters.notches.front().frequency);
  if (parameters.lowPass > 0 && decimationFactor > 1)
    remedy += fmt::format(
        " Leave out --low-pass: decimation has a low-pass of its own at {:g} Hz; filter further in "
        "the program that reads the result.",
        newNyquist);
  if (remedy.empty())
    remedy = " Ask for fewer filters, and filter further in the program that reads the result.";
  return remedy;
}

} // namespace

FilterAdvice adviceOnFilters(const CorrectParameters& parameters, int decimationFactor,
                             double samplingFrequency) {
  FilterAdvice advice;
  FilterBuilder filters(samplingFrequency);
  if (decimationFactor > 1) {
    const double newNyquist = samplingFrequency / decimationFactor / 2;
    filters.begin();
    filters.add(EdgeKind::LowPass, newNyquist, antiAliasOrder);
    filters.end();
    advice.notes.push_back(
        fmt::format("the low-pass of the decimation halves amplitudes (-6 dB) at {:g} Hz, the new "
                    "Nyquist frequency: trust frequencies below about {:g} Hz.",
                    newNyquist, 0.7 * newNyquist));
  }
  if (parameters.highPass > 0) {
    filters.begin();
    filters.add(EdgeKind::HighPass, parameters.highPass, usualOrder);
    filters.end();
  }
  for (const Notch& notch : parameters.notches) {
    filters.begin();
    filters.add(EdgeKind::LowPass, notch.frequency - notch.width / 2, usualOrder);
    filters.add(EdgeKind::HighPass, notch.frequency + notch.width / 2, usualOrder);
    const Gains gains = filters.end();
    const double left = gains[filters.binOf(notch.frequency)];
    if (left > goodNotchGain)
      advice.notes.push_back(
          fmt::format("the notch at {:g} Hz, {:g} Hz wide, leaves {:.0f} % of the amplitude there; "
                      "--line-noise {:g} removes a line of constant amplitude.",
                      notch.frequency, notch.width, 100 * left, notch.frequency));
  }
  if (parameters.lowPass > 0) {
    filters.begin();
    filters.add(EdgeKind::LowPass, parameters.lowPass, usualOrder);
    filters.end();
  }

  const Gains together = filters.together();
  size_t worst = 0;
  double largest = 0;
  for (size_t k = 1; k < nrOfBins; ++k) {
    const double difference = std::abs(together[k] - filters.alone()[k]);
    if (difference <= largest) continue;
    largest = difference;
    worst = k;
  }
  if (largest > gainTolerance)
    advice.warnings.push_back(
        fmt::format("these filters do together what none of them does alone: at {:.1f} Hz {:.0f} "
                    "% of the amplitude passes instead of {:.0f} %.{}",
                    filters.hzOf(worst), 100 * together[worst], 100 * filters.alone()[worst],
                    remedyFor(parameters, decimationFactor, samplingFrequency)));
  for (const double hz : parameters.lineNoise)
    advice.notes.push_back(
        fmt::format("--line-noise {:g} subtracts one sinusoid of constant amplitude and phase per "
                    "channel; what changes during the recording stays.",
                    hz));
  return advice;
}

} // namespace emeg
