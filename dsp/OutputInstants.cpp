#include "dsp/OutputInstants.h"

#include <cmath>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace emeg {

namespace {

struct Fraction {
  int64_t numerator = 0;
  int64_t denominator = 0;
};

/// The fraction of two whole numbers of up to 2^20 that a positive ratio is to rounding, by its continued
/// fraction; 0 and 0 if there is none. Two such fractions lie at least 2^-40 apart.
Fraction fractionOf(double ratio) {
  constexpr double largest = 1048576;
  const double tolerance = 4 * std::numeric_limits<double>::epsilon() * ratio;
  double numerators[2] = {0, 1};
  double denominators[2] = {1, 0};
  double rest = ratio;
  while (true) {
    const double whole = std::floor(rest);
    const double numerator = whole * numerators[1] + numerators[0];
    const double denominator = whole * denominators[1] + denominators[0];
    if (numerator > largest || denominator > largest) return {};
    if (std::abs(numerator / denominator - ratio) <= tolerance)
      return {static_cast<int64_t>(numerator), static_cast<int64_t>(denominator)};
    numerators[0] = numerators[1];
    numerators[1] = numerator;
    denominators[0] = denominators[1];
    denominators[1] = denominator;
    rest = 1 / (rest - whole);
  }
}

void checkRates(double oldRate, double newRate) {
  const double ratio = newRate / oldRate;
  const auto possible = [](double rate) { return rate >= 1e-9 && rate <= 1e9; };
  if (possible(oldRate) && possible(newRate) && ratio <= OutputInstants::steepestRatio &&
      ratio >= 1 / OutputInstants::steepestRatio)
    return;
  std::ostringstream sentence;
  sentence << "A sampling rate can be changed between 1e-9 and 1e9 Hz where one rate is at most "
           << OutputInstants::steepestRatio << " times the other, not from " << oldRate << " Hz to "
           << newRate << " Hz.";
  throw std::invalid_argument(sentence.str());
}

} // namespace

OutputInstants::OutputInstants(double oldRate, double newRate) : oldRate_(oldRate), newRate_(newRate) {
  checkRates(oldRate, newRate);
  const Fraction fraction = fractionOf(newRate / oldRate);
  numerator_ = fraction.numerator;
  denominator_ = fraction.denominator;
}

OutputInstant OutputInstants::operator[](int64_t k) const {
  if (numerator_ > 0) {
    const int64_t phase = k % numerator_ * denominator_ % numerator_;
    const int64_t whole = k / numerator_ * denominator_ + k % numerator_ * denominator_ / numerator_;
    return {whole, static_cast<double>(phase) / static_cast<double>(numerator_), phase};
  }
  const double instant = static_cast<double>(k) * oldRate_ / newRate_;
  const double whole = std::floor(instant);
  return {static_cast<int64_t>(whole), instant - whole, 0};
}

int64_t OutputInstants::countBelow(int64_t position) const {
  if (numerator_ > 0) {
    const int64_t rest = position % denominator_ * numerator_;
    return position / denominator_ * numerator_ + (rest + denominator_ - 1) / denominator_;
  }
  return static_cast<int64_t>(std::ceil(static_cast<double>(position) * newRate_ / oldRate_));
}

int64_t OutputInstants::countUpTo(int64_t position) const {
  if (numerator_ > 0)
    return position / denominator_ * numerator_ + position % denominator_ * numerator_ / denominator_ + 1;
  // An instant that rounding puts behind the sample that it falls on counts.
  const double tolerance = 1 + 4 * std::numeric_limits<double>::epsilon();
  return static_cast<int64_t>(std::floor(static_cast<double>(position) * newRate_ / oldRate_ * tolerance)) +
         1;
}

} // namespace emeg
