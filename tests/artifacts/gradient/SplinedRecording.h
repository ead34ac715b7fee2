#pragma once

#include "artifacts/CubicSplines.h"
#include "artifacts/gradient/SplinedSignal.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// A signal that owns its spline.
class SplinedRecording {
public:
  explicit SplinedRecording(std::vector<double> signal)
      : y_(std::move(signal)), b_(y_.size()), c_(y_.size()), d_(y_.size()) {
    computeSplineCoefficients(y_.data(), b_.data(), c_.data(), d_.data(), static_cast<int64_t>(y_.size()));
  }

  SplinedSignal view() const {
    return {y_.data(), b_.data(), c_.data(), d_.data(), static_cast<int64_t>(y_.size())};
  }
  const std::vector<double>& samples() const { return y_; }

private:
  std::vector<double> y_, b_, c_, d_;
};

} // namespace emeg
