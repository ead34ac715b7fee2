#include "tests/artifacts/reference/LiteralPulseSelection.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr std::size_t maxNrOfChains = 10000;
constexpr double lowPassHz = 35.0;
constexpr std::size_t shortestSharedRun = 3;

template <typename T>
const T& at(const std::vector<T>& values, int32_t i) {
  return values[static_cast<std::size_t>(i)];
}

template <typename T>
int32_t countOf(const std::vector<T>& values) {
  return static_cast<int32_t>(values.size());
}

using ChainIndex = std::vector<LiteralChain>::difference_type;

} // namespace

std::vector<int32_t> literalCandidates(const std::vector<float>& signal, float rate) {
  const int32_t length = countOf(signal);
  const double capacity = std::floor(length / static_cast<double>(rate) * lowPassHz);
  std::vector<int32_t> candidates;
  for (int32_t i = 1; i <= length - 2; ++i) {
    if (!(at(signal, i - 1) > at(signal, i) && at(signal, i + 1) > at(signal, i))) continue;
    if (static_cast<double>(candidates.size()) < capacity) candidates.push_back(i);
  }
  return candidates;
}

LiteralMarks literalMarks(const std::vector<float>& signal, const std::vector<int32_t>& candidates,
                          int32_t shortest) {
  const int32_t length = countOf(signal);
  const int32_t count = countOf(candidates);
  LiteralMarks result;
  result.marks.assign(candidates.size(), int8_t{0});
  for (int mark = -7; mark <= -1; ++mark) {
    for (int32_t i = 0; i < count; ++i) {
      if (at(result.marks, i) != 0) continue;
      const int32_t p = at(candidates, i);
      const float v = at(signal, p);
      const auto stopsIt = [&](int32_t j) {
        const bool ofThisPass = at(result.marks, j) == 0 || at(result.marks, j) == mark;
        return ofThisPass && at(signal, at(candidates, j)) <= v;
      };
      bool found = false;
      for (int32_t j = i - 1; j >= 0 && at(candidates, j) >= std::max(p - shortest, 0); --j)
        found = found || stopsIt(j);
      for (int32_t j = i + 1; j < count && at(candidates, j) <= std::min(p + shortest, length - 1); ++j)
        found = found || stopsIt(j);
      if (found) continue;
      result.marks[static_cast<std::size_t>(i)] = static_cast<int8_t>(mark);
      const bool room = shortest <= 0 || countOf(result.seeds) < length / shortest;
      if (mark == -7 && room) result.seeds.push_back(i);
    }
  }
  return result;
}

std::vector<LiteralChain> literalSeedChains(const std::vector<int32_t>& candidates,
                                            const std::vector<int32_t>& seeds, int32_t longest) {
  std::vector<double> d;
  for (int32_t k = 0; k + 1 < countOf(seeds); ++k)
    d.push_back(at(candidates, at(seeds, k + 1)) - at(candidates, at(seeds, k)));
  const int32_t count = countOf(d);

  const auto similar = [&](int32_t neighbour, int32_t k) {
    return at(d, neighbour) < longest &&
           std::fabs(std::log(at(d, neighbour) / at(d, k))) <= 0.25 * std::log(2.0);
  };
  std::vector<bool> consistent;
  for (int32_t k = 0; k < count; ++k) {
    consistent.push_back(at(d, k) < longest && (k == 0 || similar(k - 1, k)) &&
                         (k == count - 1 || similar(k + 1, k)));
  }

  std::vector<LiteralChain> chains;
  for (int32_t k = 0; k < count;) {
    if (!consistent[static_cast<std::size_t>(k)]) {
      ++k;
      continue;
    }
    int32_t end = k;
    while (end < count && consistent[static_cast<std::size_t>(end)]) ++end;
    if (end - k > 1 && chains.size() < maxNrOfChains) {
      LiteralChain chain;
      for (int32_t seed = k; seed <= end; ++seed) chain.push_back(at(seeds, seed));
      chains.push_back(chain);
    }
    k = end;
  }
  return chains;
}

std::vector<LiteralChain> literalLinkChainsOnce(LiteralPathSearch& search, std::vector<LiteralChain> chains) {
  std::size_t k = 1;
  while (k < chains.size()) {
    const LiteralChain earlier = chains[k - 1];
    const LiteralChain later = chains[k];
    const std::vector<int32_t> run = literalSharedRun(literalForwardPath(search, earlier, later),
                                                      literalBackwardPath(search, earlier, later));
    if (run.size() < shortestSharedRun) {
      ++k;
      continue;
    }
    const bool atTail = run.front() == earlier.back();
    const bool atHead = run.back() == later.front();
    if (atTail && atHead) {
      LiteralChain merged = earlier;
      merged.insert(merged.end(), run.begin() + 1, run.end() - 1);
      merged.insert(merged.end(), later.begin(), later.end());
      chains[k - 1] = merged;
      chains.erase(chains.begin() + static_cast<ChainIndex>(k));
    } else if (atTail) {
      chains[k - 1].insert(chains[k - 1].end(), run.begin() + 1, run.end());
      ++k;
    } else if (atHead) {
      chains[k].insert(chains[k].begin(), run.begin(), run.end() - 1);
      ++k;
    } else if (chains.size() < maxNrOfChains) {
      chains.insert(chains.begin() + static_cast<ChainIndex>(k), run);
      k += 2;
    } else {
      ++k;
    }
  }
  return chains;
}

std::vector<LiteralChain> literalLinkChains(LiteralPathSearch& search, std::vector<LiteralChain> chains) {
  for (const double exponent : {0.25, 0.30, 0.35}) {
    search.toleranceExponent = exponent;
    chains = literalLinkChainsOnce(search, chains);
  }
  return chains;
}

double literalForwardScore(const LiteralPathSearch& search, const std::vector<int32_t>& path,
                           const LiteralChain& later) {
  if (path.size() < 2) return 0.0;
  if (path.back() != later.front() && path.back() != at(later, 1)) return 0.0;
  double sum = 0.0;
  for (int32_t i = 0; i < countOf(path) - 1; ++i) sum += at(search.marks, at(path, i));
  return sum / (countOf(path) - 1);
}

double literalBackwardScore(const LiteralPathSearch& search, const std::vector<int32_t>& path,
                            const LiteralChain& earlier) {
  if (path.size() < 2) return 0.0;
  if (path.front() != earlier.back() && path.front() != at(earlier, countOf(earlier) - 2)) return 0.0;
  double sum = 0.0;
  for (int32_t i = 1; i < countOf(path); ++i) sum += at(search.marks, at(path, i));
  return sum / (countOf(path) - 1);
}

LiteralGapPlan literalGapPlan(double gap, double halfBefore, double halfBehind) {
  LiteralGapPlan plan;
  plan.nrOfSteps = static_cast<int32_t>(std::floor(2.0 * gap / (halfBefore + halfBehind) + 0.5));
  if (plan.nrOfSteps < 2) return plan;
  const double change = (halfBehind - halfBefore) / (plan.nrOfSteps - 1);
  plan.firstStep = gap / plan.nrOfSteps + (halfBefore - halfBehind) * 0.5;
  plan.lastStep = plan.firstStep + (plan.nrOfSteps - 1) * change;
  return plan;
}

int32_t literalGapChoice(const std::vector<float>& signal, const std::vector<int32_t>& candidates,
                         double expected, double step, int32_t start, int32_t end) {
  const double root = std::pow(2.0, 0.25);
  const double inverse = std::pow(2.0, -0.25);
  const double kappa = (root - inverse) / (root + 2.0 + inverse);
  const double low = expected - step * kappa;
  const double high = expected + step * kappa;
  const int32_t count = countOf(candidates);
  const auto value = [&](int32_t i) { return static_cast<double>(at(signal, at(candidates, i))); };
  const auto inside = [&](int32_t i) { return i > start && i < end; };

  int32_t after = 0; // the first candidate behind the window's lower edge
  while (after < count && at(candidates, after) < low) ++after;
  const int32_t before = after - 1;

  int32_t choice = -1;
  double lowest = 1e30;
  for (int32_t i = after; i < count && at(candidates, i) <= high; ++i) {
    if (value(i) < lowest) {
      lowest = value(i);
      choice = i;
    }
  }
  if (choice < 0) {
    if (after == count) {
      choice = before;
    } else if (before < 0) {
      choice = after;
    } else {
      choice = value(after) < value(before) ? after : before;
    }
  }
  if (inside(choice)) return choice;
  const int32_t other = choice == after ? before : after;
  return inside(other) ? other : -1;
}

std::vector<int32_t> literalInterpolatedBeats(const std::vector<float>& signal,
                                              const std::vector<int32_t>& candidates,
                                              const LiteralChain& earlier, const LiteralChain& later) {
  const auto position = [&](int32_t i) { return static_cast<double>(at(candidates, i)); };
  int32_t start = earlier.back();
  int32_t end = later.front();
  double halfBefore = (position(start) - position(at(earlier, countOf(earlier) - 2))) * 0.5;
  double halfBehind = (position(at(later, 1)) - position(end)) * 0.5;
  std::vector<int32_t> front;
  std::vector<int32_t> back;
  bool fromFront = true;
  for (;;) {
    const LiteralGapPlan plan = literalGapPlan(position(end) - position(start), halfBefore, halfBehind);
    if (plan.nrOfSteps < 2) break;
    if (fromFront) {
      const double expected = position(start) + plan.firstStep;
      const int32_t beat = literalGapChoice(signal, candidates, expected, plan.firstStep, start, end);
      if (beat < 0) break;
      halfBefore = (position(beat) - position(start) + halfBefore) * 0.5;
      front.push_back(beat);
      start = beat;
    } else {
      const double expected = position(end) - plan.lastStep;
      const int32_t beat = literalGapChoice(signal, candidates, expected, plan.lastStep, start, end);
      if (beat < 0) break;
      halfBehind = (position(end) - position(beat) + halfBehind) * 0.5;
      back.push_back(beat);
      end = beat;
    }
    fromFront = !fromFront;
  }
  front.insert(front.end(), back.rbegin(), back.rend());
  return front;
}

LiteralChain literalFilledPair(const std::vector<float>& signal, LiteralPathSearch& search,
                               const LiteralChain& earlier, const LiteralChain& later) {
  const std::vector<int32_t> forwardPath = literalForwardPath(search, earlier, later);
  const std::vector<int32_t> backwardPath = literalBackwardPath(search, earlier, later);
  const double forwardScore = literalForwardScore(search, forwardPath, later);
  const double backwardScore = literalBackwardScore(search, backwardPath, earlier);

  std::vector<int32_t> filling;
  if (backwardScore > forwardScore) {
    filling = forwardPath;
  } else if (forwardScore > backwardScore || forwardScore > 0.0) {
    filling = backwardPath;
  } else {
    filling = literalInterpolatedBeats(signal, search.candidates, earlier, later);
    filling.insert(filling.begin(), earlier.back());
    filling.push_back(later.front());
  }

  // A path may end on the neighbour of the other chain's end, which then drops out.
  LiteralChain filled;
  for (const int32_t i : earlier) {
    if (i < filling.front()) filled.push_back(i);
  }
  filled.insert(filled.end(), filling.begin(), filling.end());
  for (const int32_t i : later) {
    if (i > filling.back()) filled.push_back(i);
  }
  return filled;
}

std::vector<LiteralChain> literalFillGaps(const std::vector<float>& signal, LiteralPathSearch& search,
                                          std::vector<LiteralChain> chains) {
  while (chains.size() > 1) {
    chains[0] = literalFilledPair(signal, search, chains[0], chains[1]);
    chains.erase(chains.begin() + 1);
  }
  return chains;
}

std::vector<double> literalPulsePositions(const std::vector<float>& signal, int32_t length, float rate,
                                          const LiteralPeriod& heart, int32_t capacity) {
  std::vector<double> positions;
  if (heart.period <= 0 || signal.empty()) return positions;
  const std::vector<int32_t> candidates = literalCandidates(signal, rate);
  const LiteralMarks marked = literalMarks(signal, candidates, heart.shortest);
  LiteralPathSearch search{candidates, marked.marks, length, heart.shortest, heart.longest};
  std::vector<LiteralChain> chains = literalSeedChains(candidates, marked.seeds, heart.longest);
  chains = literalLinkChains(search, chains);
  chains = literalFillGaps(signal, search, chains);
  for (const LiteralChain& chain : chains) {
    for (const int32_t i : chain) {
      if (countOf(positions) < capacity) positions.push_back(at(candidates, i));
    }
  }
  return positions;
}

} // namespace emeg
