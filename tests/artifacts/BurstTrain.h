#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace emeg {

/// A small recording with gradient bursts at exactly known real times on top of noise. The waveform is a
/// formula evaluated at every sample's distance from the onset, so that nothing is tied to the sampling grid.
struct BurstTrain {
  double samplingFrequency = 2000.0; ///< Hz
  double seconds = 16.0;
  int32_t nrOfVolumes = 12;
  int32_t nrOfSlicesPerVolume = 10;
  double sliceDuration = 0.0750142;  ///< seconds
  double volumeDuration = 1.0003371; ///< seconds
  double firstOnset = 1.61803;       ///< seconds
  double burstDuration = 0.048;      ///< seconds
  double readoutFrequency = 430.0;   ///< Hz; smooth edges keep the spectrum close to it
  double peak = 2500.0;              ///< microvolts, roughly
  double firstSliceFactor = 1.15;    ///< the first slice of a volume differs by this
  double noiseRms = 15.0;            ///< microvolts, roughly: white noise and alpha waves
  uint64_t seed = 1;

  static BurstTrain withGaps() { return BurstTrain{}; }

  /// Slices follow each other without a pause but for 4.3 ms at the end of each volume. There are more than
  /// 300 of them: with fewer, the quiet before and after the scan counts as the gap between volumes.
  static BurstTrain continuous() {
    BurstTrain train;
    train.nrOfSlicesPerVolume = 14;
    train.sliceDuration = 0.0720227;
    train.volumeDuration = 14 * 0.0720227 + 0.0043;
    train.nrOfVolumes = 24;
    train.seconds = 27.0;
    return train;
  }

  /// The same without any quiet around it: the recording begins just before a volume and ends within one.
  static BurstTrain continuousWithoutQuiet(double seconds) {
    BurstTrain train = continuous();
    train.firstOnset = 0.0303; // as quiet as a slice's end, so that it counts as one
    train.seconds = seconds;
    return train;
  }

  std::size_t nrOfTimePoints() const { return static_cast<std::size_t>(seconds * samplingFrequency); }

  /// Onset of a slice in seconds.
  double onset(int32_t volume, int32_t slice) const {
    return firstOnset + static_cast<double>(volume) * volumeDuration +
           static_cast<double>(slice) * sliceDuration;
  }

  /// The burst `t` seconds after its onset, peak about 1. Odd sines under an even window: it integrates to
  /// zero.
  double waveform(double t) const {
    if (t <= 0.0 || t >= burstDuration) return 0.0;
    const double edge = 0.002;
    const double fromCentre = t - burstDuration / 2.0;
    const double half = burstDuration / 2.0 - 3.0 * edge;
    const double window = 0.5 * (std::erf((fromCentre + half) / edge) - std::erf((fromCentre - half) / edge));
    const double w = 2.0 * pi() * readoutFrequency * fromCentre;
    return window * (0.7 * std::sin(w) + 0.3 * std::sin(0.377 * w) + 0.2 * std::sin(1.19 * w));
  }

  /// Only the bursts, microvolts.
  std::vector<double> artifact() const {
    std::vector<double> signal(nrOfTimePoints(), 0.0);
    for (int32_t v = 0; v < nrOfVolumes; ++v) {
      for (int32_t s = 0; s < nrOfSlicesPerVolume; ++s) {
        const double amplitude = s == 0 ? peak * firstSliceFactor : peak;
        const double start = onset(v, s) * samplingFrequency;
        const auto first = static_cast<int64_t>(std::floor(start));
        const auto last = static_cast<int64_t>(std::ceil(start + burstDuration * samplingFrequency));
        for (int64_t i = first; i <= last; ++i) {
          if (i < 0 || i >= static_cast<int64_t>(signal.size())) continue;
          signal[static_cast<std::size_t>(i)] +=
              amplitude * waveform((static_cast<double>(i) - start) / samplingFrequency);
        }
      }
    }
    return signal;
  }

  /// Only the signal that should remain, microvolts. The same seed gives the same noise.
  std::vector<double> noise() const {
    std::mt19937_64 generator(seed);
    const auto uniform = [&] { return (static_cast<double>(generator() >> 11) + 0.5) / 9007199254740992.0; };
    std::vector<double> signal(nrOfTimePoints());
    const double alphaPhase = 2.0 * pi() * uniform();
    for (std::size_t i = 0; i < signal.size(); ++i) {
      const double white = std::sqrt(-2.0 * std::log(uniform())) * std::cos(2.0 * pi() * uniform());
      const double t = static_cast<double>(i) / samplingFrequency;
      signal[i] = noiseRms * (0.5 * white + 1.2247 * std::sin(2.0 * pi() * 10.3 * t + alphaPhase) *
                                                (0.75 + 0.25 * std::sin(2.0 * pi() * 0.21 * t)));
    }
    return signal;
  }

  std::vector<double> recording() const {
    std::vector<double> signal = noise();
    const std::vector<double> bursts = artifact();
    for (std::size_t i = 0; i < signal.size(); ++i) signal[i] += bursts[i];
    return signal;
  }

private:
  static double pi() { return 3.14159265358979323846; }
};

} // namespace emeg
