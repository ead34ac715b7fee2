#pragma once

#include "artifacts/gradient/timing/pauses/SequenceDetection.h"

#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <random>
#include <span>
#include <vector>

namespace emeg {

constexpr double twoPi = 2 * std::numbers::pi;

/// 30 volumes of 2.0003 s from 3 s on, slices of 0.1 s.
inline MRSequence scanOf30Volumes() {
  MRSequence sequence;
  sequence.nrOfVolumes = 30;
  sequence.nrOfSlicesPerVolume = 20;
  sequence.volumeDuration = 2.0003;
  sequence.sliceDuration = 0.100015;
  sequence.firstTriggerTime = 3;
  return sequence;
}

using Signal = std::function<double(double seconds)>;

inline std::vector<double> sampled(const Signal& signal, double samplingFrequency, double seconds) {
  std::vector<double> values(static_cast<size_t>(seconds * samplingFrequency));
  for (size_t t = 0; t < values.size(); ++t) values[t] = signal(static_cast<double>(t) / samplingFrequency);
  return values;
}

/// White noise; the time does not matter.
inline Signal noiseOf(double rms, uint32_t seed = 1) {
  return [generator = std::mt19937(seed), normal = std::normal_distribution<double>(0, rms)](double) mutable {
    return normal(generator);
  };
}

/// A sinusoid that is 0 at the scan's first volume.
inline Signal lineAt(double hz, double amplitude) {
  return [hz, amplitude](double seconds) { return amplitude * std::sin(twoPi * hz * (seconds - 3)); };
}

/// A short wave in every slice of the sequence (microvolts), from `begin` to `end`; nothing elsewhere.
inline Signal slicesOf(const MRSequence& sequence, double amplitude, double begin, double end) {
  return [=](double seconds) {
    if (seconds < begin || seconds >= end) return 0.0;
    const double slices = (seconds - sequence.firstTriggerTime) / sequence.sliceDuration;
    const double within = slices - std::floor(slices);
    const double inVolume = (seconds - sequence.firstTriggerTime) / sequence.volumeDuration;
    const double size = 1 + 0.3 * std::cos(twoPi * inVolume);
    return amplitude * size * std::sin(twoPi * 4 * within) * std::exp(-5 * within);
  };
}

/// Hands a channel out in stretches of 1 ... `longest` samples: `take(stretch)`.
template <typename Take>
void inStretches(std::span<const double> channel, size_t longest, uint32_t seed, const Take& take) {
  std::mt19937 generator(seed);
  std::uniform_int_distribution<size_t> lengths(1, longest);
  while (!channel.empty()) {
    const size_t count = std::min(lengths(generator), channel.size());
    take(channel.first(count));
    channel = channel.subspan(count);
  }
}

} // namespace emeg
