#pragma once

#include <span>

namespace emeg {

/// Exact order statistics and the root mean square. Values that are NaN do not count, infinite ones do. Of
/// nothing at all every figure is 0. (The heart beat detection has medians of its own in dsp/Medians.h.)

/// The middle value in order of size; of an even count the mean of both middle ones.
double median(std::span<const double> values);
double median(std::span<const float> values);

/// The same, but of an even count the upper one of both middle values: a value that occurs. For intervals of
/// which some are twice as long as the others, where the mean of two would be neither.
double upperMedian(std::span<const double> values);

/// The same without a copy; the values are in another order afterwards.
double upperMedianReordering(std::span<double> values);

/// The value at index floor(share x (count - 1)) in order of size, share = 0 ... 1 (what lies outside is
/// taken as the nearer limit, NaN as 0): a value that occurs, the smallest with 0, the largest with 1.
double lowerPercentile(std::span<const double> values, double share);

/// The square root of the mean square.
double rootMeanSquare(std::span<const double> values);

} // namespace emeg
