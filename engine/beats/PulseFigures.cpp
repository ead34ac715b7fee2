#include "engine/beats/PulseFigures.h"

#include "dsp/Statistics.h"

#include <algorithm>
#include <span>

namespace emeg {

namespace {

/// The mean waveform from every pulse on for the length of the shortest interval, without its own mean.
double beatRmsOf(const std::vector<double>& signal, const std::vector<double>& pulses, int64_t length) {
  double shortest = static_cast<double>(length);
  for (size_t i = 1; i < pulses.size(); ++i) shortest = std::min(shortest, pulses[i] - pulses[i - 1]);
  const auto width = static_cast<int64_t>(shortest);
  if (width < 2) return 0;
  std::vector<double> mean(static_cast<size_t>(width), 0.0);
  const auto nrOfBeats = static_cast<double>(pulses.size() - 1);
  for (size_t i = 0; i + 1 < pulses.size(); ++i) {
    const auto start = static_cast<int64_t>(pulses[i]);
    for (int64_t j = 0; j < width && start + j < length; ++j)
      mean[static_cast<size_t>(j)] += signal[static_cast<size_t>(start + j)] / nrOfBeats;
  }
  double level = 0;
  for (const double value : mean) level += value / static_cast<double>(width);
  for (double& value : mean) value -= level;
  return rootMeanSquare(mean);
}

} // namespace

PulseChannelFigures measurePulseFigures(const std::vector<double>& series,
                                        const std::vector<double>& estimate,
                                        const std::vector<double>& pulsePositions, int64_t length) {
  PulseChannelFigures figures;
  if (pulsePositions.size() < 2) return figures;
  const auto first = static_cast<int64_t>(pulsePositions.front());
  const auto last = std::max(first, std::min(static_cast<int64_t>(pulsePositions.back()), length));
  std::vector<double> left(series.size(), 0.0);
  for (size_t i = 0; i < left.size() && i < estimate.size(); ++i) left[i] = series[i] - estimate[i];
  figures.rmsBefore = rootMeanSquare(std::span<const double>(series.begin() + first, series.begin() + last));
  figures.rmsAfter = rootMeanSquare(std::span<const double>(left.begin() + first, left.begin() + last));
  figures.beatRmsBefore = beatRmsOf(series, pulsePositions, length);
  figures.beatRmsAfter = beatRmsOf(left, pulsePositions, length);
  return figures;
}

} // namespace emeg
