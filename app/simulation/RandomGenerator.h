#pragma once

#include <array>
#include <cstdint>

namespace emeg {

/// The simulator's own random numbers: xoshiro256** (Blackman and Vigna: Scrambled linear pseudorandom number
/// generators, ACM TOMS 47, 2021), seeded through splitmix64. The distributions are written out here as well,
/// because those of the standard library differ between implementations.
class RandomGenerator {
public:
  /// What a stream of random numbers is for. Every use has streams of its own, so that no part of a recording
  /// depends on how many numbers another part drew.
  enum class Purpose : uint64_t {
    SharedBackground = 1,
    OwnBackground,
    BackgroundWeights,
    Alpha,
    SensorNoise,
    ScanOnset,
    GradientGain,
    Drift,
    HeartBeats,
    BeatShape,
    PulseTopography,
    LinePhase,
    EctopicBeats,
    Movement,
    MovementGain,
    VolumeJitter,
    Disturbances
  };

  /// The stream number `index` (a channel, a source) of a purpose.
  RandomGenerator(uint64_t seed, Purpose purpose, uint64_t index = 0);

  /// The next 64 random bits.
  uint64_t nextBits();
  /// Evenly distributed in [0, 1), a multiple of 2^-53.
  double uniform();
  /// Evenly distributed in [low, high).
  double uniform(double low, double high) { return low + (high - low) * uniform(); }
  /// Standard normal (Box and Muller 1958).
  double normal();
  /// +1 or -1 with equal chance.
  double sign() { return (nextBits() >> 63) != 0 ? 1.0 : -1.0; }

private:
  std::array<uint64_t, 4> state_{};
  double spareNormal_ = 0;
  bool hasSpareNormal_ = false;
};

} // namespace emeg
