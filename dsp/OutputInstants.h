#pragma once

#include <cstdint>

namespace emeg {

/// Where an output lies between the samples: at sample `whole` + `fraction`, 0 <= fraction < 1.
struct OutputInstant {
  int64_t whole = 0;
  double fraction = 0;
  /// Number of the fraction among those that occur, where the rates have a small common measure; else 0.
  int64_t phase = 0;
};

/// Instants k x oldRate / newRate, k = 0, 1 ..., in samples. Where the rates' ratio is that of two whole
/// numbers of up to 2^20 (to rounding), from whole numbers and exact to rounding of the fraction; otherwise
/// from one product, within 2^-51 of the instant. Never from a sum that grows.
class OutputInstants {
public:
  /// std::invalid_argument for rates outside of 1e-9 ... 1e9 Hz, or of which one is more than steepestRatio
  /// times the other.
  OutputInstants(double oldRate, double newRate);

  static constexpr double steepestRatio = 10000;

  OutputInstant operator[](int64_t k) const;
  /// Number of instants below `position`, a whole number of samples from 0 on.
  int64_t countBelow(int64_t position) const;
  /// Number of instants at or before sample `position`.
  int64_t countUpTo(int64_t position) const;

  /// Number of different fractions; 0 if there is no common measure.
  int64_t phases() const { return numerator_; }

private:
  double oldRate_;
  double newRate_;
  /// newRate / oldRate in lowest terms, or 0 and 0.
  int64_t numerator_ = 0;
  int64_t denominator_ = 0;
};

} // namespace emeg
