#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {

/// Minima of the detection signal that may be heart pulses, in ascending order, and how strongly each stands
/// out.
struct PulseCandidates {
  std::vector<int32_t> positions; ///< samples of the series
  std::vector<float> values;      ///< of the detection signal there
  std::vector<int8_t> marks;      ///< -7 (deepest of its surroundings) to -1; 0: never marked
  bool listIsFull = false;        ///< there are more minima than the list has room for

  int32_t count() const { return static_cast<int32_t>(positions.size()); }
  int32_t position(int32_t index) const { return positions[static_cast<size_t>(index)]; }
  float value(int32_t index) const { return values[static_cast<size_t>(index)]; }
  int mark(int32_t index) const { return marks[static_cast<size_t>(index)]; }
};

/// All strict local minima, the first `capacity` of them; nothing is marked.
PulseCandidates findCandidates(const std::vector<float>& detectionSignal, size_t capacity);

/// Marks in seven passes, -7 to -1, every candidate without a smaller or equal one among those that earlier
/// passes left within `shortestInterval` samples. Returns the indices of the candidates of the first pass, in
/// order.
std::vector<int32_t> markCandidates(PulseCandidates& candidates, int32_t shortestInterval);

} // namespace emeg
