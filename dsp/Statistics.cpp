#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace emeg {

namespace {

/// Those that count.
template <typename Value>
std::vector<double> numbersOf(std::span<const Value> values) {
  std::vector<double> numbers;
  numbers.reserve(values.size());
  for (const Value value : values)
    if (!std::isnan(value)) numbers.push_back(static_cast<double>(value));
  return numbers;
}

/// The element with that index in order of size; those before it are not larger afterwards.
double elementAt(std::span<double> numbers, std::size_t index) {
  const auto element = numbers.begin() + static_cast<std::ptrdiff_t>(index);
  std::nth_element(numbers.begin(), element, numbers.end());
  return *element;
}

double middleOf(std::vector<double> numbers) {
  if (numbers.empty()) return 0;
  const std::size_t half = numbers.size() / 2;
  const double upper = elementAt(numbers, half);
  if (numbers.size() % 2 == 1) return upper;
  const double lower =
      *std::max_element(numbers.begin(), numbers.begin() + static_cast<std::ptrdiff_t>(half));
  return 0.5 * lower + 0.5 * upper;
}

} // namespace

double median(std::span<const double> values) {
  return middleOf(numbersOf(values));
}

double median(std::span<const float> values) {
  return middleOf(numbersOf(values));
}

double upperMedian(std::span<const double> values) {
  std::vector<double> copy(values.begin(), values.end());
  return upperMedianReordering(copy);
}

double upperMedianReordering(std::span<double> values) {
  const auto end = std::partition(values.begin(), values.end(), [](double v) { return !std::isnan(v); });
  const auto numbers = values.first(static_cast<std::size_t>(end - values.begin()));
  return numbers.empty() ? 0 : elementAt(numbers, numbers.size() / 2);
}

double lowerPercentile(std::span<const double> values, double share) {
  std::vector<double> numbers = numbersOf(values);
  if (numbers.empty()) return 0;
  const double within = share > 0 ? std::min(share, 1.0) : 0;
  return elementAt(numbers, static_cast<std::size_t>(within * static_cast<double>(numbers.size() - 1)));
}

double rootMeanSquare(std::span<const double> values) {
  double squares = 0;
  std::size_t count = 0;
  for (const double value : values) {
    if (std::isnan(value)) continue;
    squares += value * value;
    ++count;
  }
  return count > 0 ? std::sqrt(squares / static_cast<double>(count)) : 0;
}

} // namespace emeg
