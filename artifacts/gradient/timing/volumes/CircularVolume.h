#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// Running sums of a circular series.
class CircularSums {
public:
  explicit CircularSums(const std::vector<double>& values);

  /// Of `count` values from `begin` on; both at most the series' length.
  double of(int64_t begin, int64_t count) const {
    return sums_[static_cast<size_t>(begin + count)] - sums_[static_cast<size_t>(begin)];
  }

private:
  std::vector<double> sums_;
};

/// The average volume as a closed circle of samples. It refers to the average of two volumes in a row.
class CircularVolume {
public:
  CircularVolume(std::span<const double> twoVolumes, double volumeDuration, double samplingFrequency);

  int64_t length() const { return length_; }
  double duration() const { return duration_; }
  double power() const { return power_; }
  double meanPower() const { return power_ / static_cast<double>(length_); }
  double at(int64_t t) const { return twoVolumes_[static_cast<size_t>(t)]; }
  /// From 1 to the volume's length.
  int64_t samples(double seconds) const;

  /// Values from `position` on, wrapped around.
  std::vector<double> from(double position, int64_t count) const;

  /// How much the volume resembles itself `lag` samples later.
  double correlation(int64_t lag) const;
  double correlation(double lag) const;

  static double square(double value) { return value * value; }

private:
  std::span<const double> twoVolumes_;
  double duration_;
  double fs_;
  int64_t length_;
  double power_ = 0;
};

} // namespace emeg
