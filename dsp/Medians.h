#pragma once

#include <cstdint>

namespace emeg {

/// Sorts `values` ascending in place (stable) and returns the element at index count / 2, the upper one of
/// the two middle elements of an even count. An empty series has the median 0. Straight insertion: for short
/// lists.
double sortMedian(double* values, int32_t count);

/// Approximate median of a long series by repeated refinement of a 1000-bin histogram that starts at one
/// standard deviation around the mean. The data are only read. An empty series has the median 0; one with
/// values that are not finite, or whose squares are not, has a result that is not finite.
double histogramMedian(const double* values, int32_t count);

/// The same, and how safe the result is: `margin` is the smallest distance of any value from any bin edge on
/// the way. Where values, mean and standard deviation change by much less, every value stays in its bin. 0
/// when the spread decided alone.
double histogramMedian(const double* values, int32_t count, double& margin);

} // namespace emeg
