#include "tests/artifacts/reference/LiteralPathSearch.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr int searchDepth = 3;

template <typename T>
const T& at(const std::vector<T>& values, int32_t i) {
  return values[static_cast<std::size_t>(i)];
}

template <typename T>
int32_t countOf(const std::vector<T>& values) {
  return static_cast<int32_t>(values.size());
}

} // namespace

int32_t LiteralPathSearch::forward(int32_t c, double q, int depth) {
  pathMarkSum = 0.0;
  pathLength = 0.0;
  if (depth <= 0) return c;
  const int32_t count = countOf(candidates);
  const double p = at(candidates, c);
  const double low = p + std::max(q * std::pow(2.0, -toleranceExponent), static_cast<double>(shortest));
  const double high = std::min(
      p + std::min(q * std::pow(2.0, toleranceExponent), static_cast<double>(longest)), length - 1.0);

  int32_t first = c + 1;
  while (first < count && at(candidates, first) < low) ++first;
  if (first == count) return c;
  if (at(candidates, first) > high) return at(marks, first) < at(marks, first - 1) ? first : first - 1;

  int32_t winner = c;
  double winningSum = 0.0;
  double winningLength = 0.0;
  for (int32_t x = first; x < count && at(candidates, x) <= high; ++x) {
    forward(x, at(candidates, x) - p, depth - 1);
    const double sum = pathMarkSum + at(marks, x);
    const double number = pathLength + 1.0;
    if (winner == c || sum / number < winningSum / winningLength) {
      winner = x;
      winningSum = sum;
      winningLength = number;
    }
  }
  pathMarkSum = winningSum;
  pathLength = winningLength;
  return winner;
}

int32_t LiteralPathSearch::backward(int32_t c, double q, int depth) {
  pathMarkSum = 0.0;
  pathLength = 0.0;
  if (depth <= 0) return c;
  const double p = at(candidates, c);
  const double high = p - std::max(q * std::pow(2.0, -toleranceExponent), static_cast<double>(shortest));
  const double low =
      std::max(p - std::min(q * std::pow(2.0, toleranceExponent), static_cast<double>(longest)), 0.0);

  int32_t first = c - 1;
  while (first >= 0 && at(candidates, first) > high) --first;
  if (first < 0) return c;
  if (at(candidates, first) < low) return at(marks, first) < at(marks, first + 1) ? first : first + 1;

  int32_t winner = c;
  double winningSum = 0.0;
  double winningLength = 0.0;
  for (int32_t x = first; x >= 0 && at(candidates, x) >= low; --x) {
    backward(x, p - at(candidates, x), depth - 1);
    const double sum = pathMarkSum + at(marks, x);
    const double number = pathLength + 1.0;
    if (winner == c || sum / number < winningSum / winningLength) {
      winner = x;
      winningSum = sum;
      winningLength = number;
    }
  }
  pathMarkSum = winningSum;
  pathLength = winningLength;
  return winner;
}

std::vector<int32_t> literalForwardPath(LiteralPathSearch& search, const LiteralChain& earlier,
                                        const LiteralChain& later) {
  std::vector<int32_t> path{earlier.back()};
  int32_t before = at(earlier, countOf(earlier) - 2);
  while (path.back() < later.front()) {
    const int32_t c = path.back();
    const int32_t next =
        search.forward(c, at(search.candidates, c) - at(search.candidates, before), searchDepth);
    if (next == c) break;
    path.push_back(next);
    before = c;
  }
  return path;
}

std::vector<int32_t> literalBackwardPath(LiteralPathSearch& search, const LiteralChain& earlier,
                                         const LiteralChain& later) {
  std::vector<int32_t> walked{later.front()};
  int32_t behind = at(later, 1);
  while (walked.back() > earlier.back()) {
    const int32_t c = walked.back();
    const int32_t next =
        search.backward(c, at(search.candidates, behind) - at(search.candidates, c), searchDepth);
    if (next == c) break;
    walked.push_back(next);
    behind = c;
  }
  return std::vector<int32_t>(walked.rbegin(), walked.rend());
}

std::vector<int32_t> literalSharedRun(const std::vector<int32_t>& forwardPath,
                                      const std::vector<int32_t>& backwardPath) {
  std::size_t f = 0;
  std::size_t b = 0;
  while (f < forwardPath.size() && b < backwardPath.size() && forwardPath[f] != backwardPath[b]) {
    if (forwardPath[f] < backwardPath[b]) {
      ++f;
    } else {
      ++b;
    }
  }
  std::vector<int32_t> run;
  for (; f < forwardPath.size() && b < backwardPath.size() && forwardPath[f] == backwardPath[b]; ++f, ++b)
    run.push_back(forwardPath[f]);
  return run;
}

} // namespace emeg
