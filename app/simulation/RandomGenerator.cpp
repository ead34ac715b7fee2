#include "app/simulation/RandomGenerator.h"

#include <cmath>
#include <numbers>

namespace emeg {

namespace {

uint64_t splitMix(uint64_t& state) {
  state += 0x9e3779b97f4a7c15u;
  uint64_t z = state;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
  return z ^ (z >> 31);
}

uint64_t rotateLeft(uint64_t x, int k) {
  return (x << k) | (x >> (64 - k));
}

} // namespace

RandomGenerator::RandomGenerator(uint64_t seed, Purpose purpose, uint64_t index) {
  // Each number is scrambled before the next one enters: neighbouring seeds and indices give unrelated
  // streams.
  uint64_t mix = seed;
  mix = splitMix(mix) ^ static_cast<uint64_t>(purpose);
  mix = splitMix(mix) ^ index;
  for (uint64_t& word : state_) word = splitMix(mix);
}

uint64_t RandomGenerator::nextBits() {
  const uint64_t result = rotateLeft(state_[1] * 5, 7) * 9;
  const uint64_t t = state_[1] << 17;
  state_[2] ^= state_[0];
  state_[3] ^= state_[1];
  state_[1] ^= state_[2];
  state_[0] ^= state_[3];
  state_[2] ^= t;
  state_[3] = rotateLeft(state_[3], 45);
  return result;
}

double RandomGenerator::uniform() {
  return static_cast<double>(nextBits() >> 11) * 0x1.0p-53;
}

double RandomGenerator::normal() {
  if (hasSpareNormal_) {
    hasSpareNormal_ = false;
    return spareNormal_;
  }
  const double radius = std::sqrt(-2 * std::log(1 - uniform()));
  const double angle = 2 * std::numbers::pi * uniform();
  spareNormal_ = radius * std::sin(angle);
  hasSpareNormal_ = true;
  return radius * std::cos(angle);
}

} // namespace emeg
