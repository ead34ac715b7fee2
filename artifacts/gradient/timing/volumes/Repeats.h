#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// Where a waveform repeats: repeat v begins at onset + v period (samples, real numbers).
struct RepeatLine {
  double onset = 0;
  double period = 0;
  double at(double repeat) const { return onset + repeat * period; }
};

/// Repeats `first` to `last`, both included.
struct RepeatRange {
  int64_t first = 0;
  int64_t last = -1;
  int64_t count() const { return last - first + 1; }
};

/// How one repeat compares to the average one.
struct RepeatFit {
  double delay = 0;      ///< samples by which it comes late
  double similarity = 0; ///< correlation coefficient; 0 where nothing is left of it within the signal
};

/// The repeats inside [begin, end) that are there as a whole.
RepeatRange wholeRepeats(const RepeatLine& line, double begin, double end);

/// Average of the repeats, `length` samples from each onset on (which may be more than a period). Repeats
/// whose flag is false, or which the signal does not hold, are left out; no flags: all count.
std::vector<double> averageRepeat(std::span<const double> signal, const RepeatLine& line, RepeatRange range,
                                  int64_t length, const std::vector<bool>& used = {});

/// Compares repeats with an average; the delay is the least-squares one, for delays well below a period of
/// the highest frequency.
class RepeatComparison {
public:
  explicit RepeatComparison(std::vector<double> average);

  RepeatFit compare(std::span<const double> signal, double position) const;
  const std::vector<double>& average() const { return average_; }

private:
  std::vector<double> average_;
  std::vector<double> slope_;
};

/// A line through repeats that fits as well as it goes, and which of them it fits.
struct FittedRepeats {
  RepeatLine line;
  RepeatRange range;
  std::vector<bool> used;
  double similarity = 0; ///< median of all repeats

  RepeatFit compareOutside(std::span<const double> signal, const RepeatComparison& comparison,
                           int64_t repeat) const {
    return comparison.compare(signal, line.at(static_cast<double>(repeat)));
  }
};

/// Aligns repeats at growing distance from the middle of the range with their average and fits a straight
/// line through their delays; repeats that do not resemble the others (spikes, dropouts) or lie off the line
/// do not count. The period may at first be wrong by some tenths of a sample, the result by some thousandths
/// of a sample over the whole range.
FittedRepeats fitRepeats(std::span<const double> signal, const RepeatLine& line, RepeatRange range);

} // namespace emeg
