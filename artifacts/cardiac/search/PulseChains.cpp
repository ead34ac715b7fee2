#include "artifacts/cardiac/search/PulseChains.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr int pathDepth = 3;
constexpr size_t shortestSharedRun = 3;
const double seedTolerance = 0.25 * std::log(2.0);

/// Candidates that both paths visit one after the other, from their first common one on.
std::vector<int32_t> sharedRun(const GapPaths& paths) {
  auto f = paths.forward.begin();
  auto b = paths.backward.begin();
  while (f != paths.forward.end() && b != paths.backward.end() && *f != *b) ++(*f < *b ? f : b);
  std::vector<int32_t> run;
  for (; f != paths.forward.end() && b != paths.backward.end() && *f == *b; ++f, ++b) run.push_back(*f);
  return run;
}

/// What becomes of the chains k - 1 and k. Returns the index at which the walk over the pairs goes on.
size_t linkPair(PulseChains& chains, size_t k, const std::vector<int32_t>& run) {
  PulseChain& before = chains[k - 1];
  PulseChain& after = chains[k];
  const auto place = chains.begin() + static_cast<std::ptrdiff_t>(k);
  const bool fromTail = run.front() == before.back();
  const bool toHead = run.back() == after.front();
  if (fromTail && toHead) {
    before.insert(before.end(), run.begin() + 1, run.end() - 1);
    before.insert(before.end(), after.begin(), after.end());
    chains.erase(place);
    return k; // the merged chain and the next one
  }
  if (fromTail) {
    before.insert(before.end(), run.begin() + 1, run.end());
  } else if (toHead) {
    after.insert(after.begin(), run.begin(), run.end() - 1);
  } else if (chains.size() < maxNrOfChains) {
    chains.insert(place, run);
    return k + 2; // not the new chain and the one behind it
  }
  return k + 1;
}

} // namespace

PulseChains makeSeedChains(const PulseCandidates& candidates, const std::vector<int32_t>& seeds,
                           int32_t longestInterval) {
  std::vector<int32_t> intervals;
  for (size_t k = 1; k < seeds.size(); ++k)
    intervals.push_back(candidates.position(seeds[k]) - candidates.position(seeds[k - 1]));
  const auto isLike = [&](size_t neighbour, size_t k) {
    if (neighbour >= intervals.size()) return true; // in front of the first or behind the last one
    const double ratio = static_cast<double>(intervals[neighbour]) / intervals[k];
    return intervals[neighbour] < longestInterval && std::abs(std::log(ratio)) <= seedTolerance;
  };
  const auto isConsistent = [&](size_t k) {
    return intervals[k] < longestInterval && isLike(k - 1, k) && isLike(k + 1, k);
  };

  PulseChains chains;
  for (size_t first = 0; first < intervals.size() && chains.size() < maxNrOfChains;) {
    size_t end = first;
    while (end < intervals.size() && isConsistent(end)) ++end;
    if (end - first > 1)
      chains.emplace_back(seeds.begin() + static_cast<std::ptrdiff_t>(first),
                          seeds.begin() + static_cast<std::ptrdiff_t>(end) + 1);
    first = end + 1;
  }
  return chains;
}

GapPaths findGapPaths(const PulseCandidates& candidates, PulsePathSearch& search, const PulseChain& before,
                      const PulseChain& after) {
  const auto interval = [&](int32_t from, int32_t to) {
    return static_cast<double>(candidates.position(to)) - static_cast<double>(candidates.position(from));
  };
  const int32_t tail = before.back();
  const int32_t head = after.front();
  GapPaths paths;

  paths.forward = {tail};
  double step = interval(before[before.size() - 2], tail);
  while (paths.forward.back() < head) {
    const int32_t current = paths.forward.back();
    const int32_t next = search.followPathForward(current, step, pathDepth);
    if (next == current) break;
    step = interval(current, next);
    paths.forward.push_back(next);
  }

  paths.backward = {head};
  step = interval(head, after[1]);
  while (paths.backward.back() > tail) {
    const int32_t current = paths.backward.back();
    const int32_t next = search.followPathBackward(current, step, pathDepth);
    if (next == current) break;
    step = interval(next, current);
    paths.backward.push_back(next);
  }
  std::reverse(paths.backward.begin(), paths.backward.end());
  return paths;
}

void linkChains(PulseChains& chains, const PulseCandidates& candidates, PulsePathSearch& search) {
  for (const double tolerance : linkingTolerances) {
    search.setTolerance(tolerance);
    for (size_t k = 1; k < chains.size();) {
      const std::vector<int32_t> run = sharedRun(findGapPaths(candidates, search, chains[k - 1], chains[k]));
      k = run.size() >= shortestSharedRun ? linkPair(chains, k, run) : k + 1;
    }
  }
}

} // namespace emeg
