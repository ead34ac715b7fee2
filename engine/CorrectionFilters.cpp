#include "engine/CorrectionFilters.h"

#include "dsp/FirDesign.h"

namespace emeg {

FirFilter templateSplit(double rate) {
  constexpr double edge = 1;
  return FirFilter(highPassTaps(edge, defaultHighPassTransition(edge, rate), rate));
}

std::vector<FirFilter> outputFilters(const CorrectionSettings& settings, double rate) {
  std::vector<FirFilter> filters;
  if (settings.highPass > 0)
    filters.emplace_back(
        highPassTaps(settings.highPass, defaultHighPassTransition(settings.highPass, rate), rate));
  if (settings.lowPass > 0)
    filters.emplace_back(
        lowPassTaps(settings.lowPass, defaultLowPassTransition(settings.lowPass, rate), rate));
  for (const Notch& notch : settings.notches) {
    const double low = notch.frequency - notch.width / 2;
    const double high = notch.frequency + notch.width / 2;
    filters.emplace_back(bandStopTaps(low, high, defaultBandStopTransition(low, high, rate), rate));
  }
  return filters;
}

std::vector<SinusoidTracker> lineTrackers(const CorrectionSettings& settings, double rate) {
  std::vector<SinusoidTracker> trackers;
  for (const double frequency : settings.lineNoise) trackers.emplace_back(frequency, rate);
  return trackers;
}

PairedEdges pairedEdges(const CorrectionSettings& settings, double rate) {
  constexpr double antiAliasOrder = 3;
  constexpr double order = 2;
  PairedEdges edges;
  const double dt = 1 / rate;
  const auto add = [&](EdgeKind kind, double hz) {
    if (!edges.stages.addFilterStage(kind, hz * 2 * dt, order)) edges.isComplete = false;
  };
  const auto answered = [](double number) { return static_cast<double>(static_cast<float>(number)); };
  if (settings.decimation > 1)
    edges.stages.addFilterStage(EdgeKind::LowPass, 1.0 / settings.decimation, antiAliasOrder);
  if (settings.highPass > 0) add(EdgeKind::HighPass, answered(settings.highPass));
  for (const Notch& notch : settings.notches) {
    const double halfWidth = answered(notch.width) / 2;
    add(EdgeKind::LowPass, answered(notch.frequency) - halfWidth);
    add(EdgeKind::HighPass, answered(notch.frequency) + halfWidth);
  }
  if (settings.lowPass > 0) add(EdgeKind::LowPass, answered(settings.lowPass));
  return edges;
}

std::optional<Resampler> outputResampler(const CorrectionSettings& settings, double rate) {
  if (settings.rate <= 0 || settings.rate == rate) return std::nullopt;
  return Resampler(rate, settings.rate);
}

} // namespace emeg
