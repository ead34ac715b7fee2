#include "artifacts/cardiac/search/PulseCandidates.h"

namespace emeg {

namespace {

constexpr int8_t firstMark = -7;

/// Whether an unmarked candidate, or one of this pass, lies as deep as `index` within `reach` samples on the
/// side that `step` walks to.
bool meetsRival(const PulseCandidates& candidates, int32_t index, int32_t step, int64_t reach, int8_t pass) {
  for (int32_t j = index + step; j >= 0 && j < candidates.count(); j += step) {
    const int64_t distance = int64_t{step} * (int64_t{candidates.position(j)} - candidates.position(index));
    if (distance > reach) return false;
    const int mark = candidates.mark(j);
    if ((mark == 0 || mark == pass) && candidates.value(j) <= candidates.value(index)) return true;
  }
  return false;
}

} // namespace

PulseCandidates findCandidates(const std::vector<float>& signal, size_t capacity) {
  PulseCandidates candidates;
  for (size_t i = 1; i + 1 < signal.size(); ++i) {
    if (!(signal[i - 1] > signal[i] && signal[i + 1] > signal[i])) continue;
    candidates.listIsFull = candidates.positions.size() >= capacity;
    if (candidates.listIsFull) break;
    candidates.positions.push_back(static_cast<int32_t>(i));
    candidates.values.push_back(signal[i]);
  }
  candidates.marks.assign(candidates.positions.size(), 0);
  return candidates;
}

std::vector<int32_t> markCandidates(PulseCandidates& candidates, int32_t shortestInterval) {
  std::vector<int32_t> seeds;
  for (int8_t pass = firstMark; pass < 0; ++pass) {
    for (int32_t i = 0; i < candidates.count(); ++i) {
      if (candidates.mark(i) != 0 || meetsRival(candidates, i, -1, shortestInterval, pass) ||
          meetsRival(candidates, i, 1, shortestInterval, pass))
        continue;
      candidates.marks[static_cast<size_t>(i)] = pass;
      if (pass == firstMark) seeds.push_back(i);
    }
  }
  return seeds;
}

} // namespace emeg
