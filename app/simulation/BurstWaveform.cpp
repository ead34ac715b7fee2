#include "app/simulation/BurstWaveform.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace emeg {

namespace {

constexpr double twoPi = 2 * std::numbers::pi;

/// The window is cut off where its Gaussian edge has fallen to 3e-5.
constexpr double edgesKept = 4;
/// A Gaussian edge of standard deviation s has fallen by 1e-4 at this many radians / s from the sinusoid.
constexpr double spectralReach = 4.3;
constexpr double shortestEdge = 0.0016; // seconds
constexpr double usableBand = 0.45;     // of the sampling frequency

struct Component {
  double frequencyHz;
  double amplitude;
  double phase;
};

/// Slice selection, rephasing and spoilers; the phases keep the sum's peaks low for its RMS.
constexpr Component sliceGradients[] = {{31, 1.17, 4.60}, {67, 0.39, 1.38}, {103, 0.28, 1.40}};
/// About four tenths of the burst's peak; the frequency comes from the parameters.
constexpr Component readout = {0, 0.85, 3.94};
/// What the first slice of a volume has on top: preparation pulses.
constexpr Component preparation[] = {{43, 0.8, 1.7}, {83, 0.6, 5.2}, {59, 0.5, 3.3}};
constexpr double preparationReadout = 0.2;

/// Butterworth of order 4, magnitude only.
double amplifierGain(double frequencyHz, double lowPassHz) {
  const double ratio = frequencyHz / lowPassHz;
  return 1 / std::sqrt(1 + std::pow(ratio, 8));
}

constexpr int nrOfRulerPoints = 20000;

} // namespace

double BurstWaveform::edgeDuration(const GradientParameters& parameters, double samplingFrequency) {
  const double room = usableBand * samplingFrequency - parameters.readoutHz;
  return room > 0 ? std::max(shortestEdge, spectralReach / (twoPi * room)) : parameters.burstDuration;
}

double BurstWaveform::plateauDuration(const GradientParameters& parameters, double samplingFrequency) {
  return parameters.burstDuration - 2 * edgesKept * edgeDuration(parameters, samplingFrequency);
}

BurstWaveform::BurstWaveform(const GradientParameters& parameters, double samplingFrequency)
    : duration_(parameters.burstDuration), edge_(edgeDuration(parameters, samplingFrequency)),
      plateau_(plateauDuration(parameters, samplingFrequency)) {
  const auto sinusoid = [&](const Component& component, double frequencyHz) {
    return Sinusoid{twoPi * frequencyHz,
                    component.amplitude * amplifierGain(frequencyHz, parameters.lowPassHz), component.phase};
  };
  for (const Component& component : sliceGradients)
    ordinary_.sinusoids.push_back(sinusoid(component, component.frequencyHz));
  ordinary_.sinusoids.push_back(sinusoid(readout, parameters.readoutHz));
  ordinary_.pedestal = pedestalOf(ordinary_.sinusoids);
  const double scale = parameters.peakUv / peak(ordinary_);
  for (Sinusoid& s : ordinary_.sinusoids) s.amplitude *= scale;
  ordinary_.pedestal *= scale;

  Sum addition;
  for (const Component& component : preparation)
    addition.sinusoids.push_back(sinusoid(component, component.frequencyHz));
  addition.sinusoids.push_back(
      sinusoid({0, preparationReadout, readout.phase + std::numbers::pi / 2}, parameters.readoutHz));
  addition.pedestal = pedestalOf(addition.sinusoids);
  const double additionRms = rms(addition);
  const double share = additionRms > 0 ? parameters.firstSliceDifference * rms(ordinary_) / additionRms : 0;
  first_ = ordinary_;
  for (Sinusoid s : addition.sinusoids) {
    s.amplitude *= share;
    first_.sinusoids.push_back(s);
  }
  first_.pedestal += share * addition.pedestal;
}

/// A rectangle of the plateau's length convolved with a Gaussian.
double BurstWaveform::window(double fromCentre) const {
  const double scale = 1 / (edge_ * std::numbers::sqrt2);
  return 0.5 *
         (std::erf((fromCentre + plateau_ / 2) * scale) - std::erf((fromCentre - plateau_ / 2) * scale));
}

double BurstWaveform::valueOf(const Sum& sum, double fromCentre) const {
  double value = sum.pedestal;
  for (const Sinusoid& s : sum.sinusoids)
    value += s.amplitude * std::sin(s.angularFrequency * fromCentre + s.phase);
  return value * window(fromCentre);
}

/// The window's Fourier transform at w is 2 sin(w plateau / 2) / w exp(-(w edge)^2 / 2), the plateau's length
/// at 0.
double BurstWaveform::pedestalOf(const std::vector<Sinusoid>& sinusoids) const {
  double integral = 0;
  for (const Sinusoid& s : sinusoids) {
    const double w = s.angularFrequency;
    const double transform = 2 * std::sin(w * plateau_ / 2) / w * std::exp(-0.5 * w * edge_ * w * edge_);
    integral += s.amplitude * std::sin(s.phase) * transform;
  }
  return -integral / plateau_;
}

double BurstWaveform::rms(const Sum& sum) const {
  double total = 0;
  for (int i = 0; i <= nrOfRulerPoints; i++) {
    const double v = valueOf(sum, (static_cast<double>(i) / nrOfRulerPoints - 0.5) * duration_);
    total += v * v;
  }
  return std::sqrt(total / (nrOfRulerPoints + 1));
}

double BurstWaveform::peak(const Sum& sum) const {
  double largest = 0;
  for (int i = 0; i <= nrOfRulerPoints; i++)
    largest = std::max(largest,
                       std::abs(valueOf(sum, (static_cast<double>(i) / nrOfRulerPoints - 0.5) * duration_)));
  return largest;
}

double BurstWaveform::value(Slice slice, double time) const {
  if (time < 0 || time > duration_) return 0;
  return valueOf(slice == Slice::First ? first_ : ordinary_, time - duration_ / 2);
}

} // namespace emeg
