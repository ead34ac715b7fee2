#include "engine/stages/StretchPlan.h"

#include <algorithm>

namespace emeg {

namespace {

PositionRange unionOf(PositionRange a, PositionRange b) {
  return {std::min(a.begin, b.begin), std::max(a.end, b.end)};
}

} // namespace

StretchRanges rangesFor(const StretchPlan& plan, PositionRange outputs, bool hasScans) {
  const int64_t n = plan.recordingLength;
  StretchRanges ranges;
  ranges.outputs = outputs;
  ranges.filtered = plan.resampler ? plan.resampler->inputFor(outputs, n) : outputs;
  ranges.signal = ranges.filtered;
  for (auto filter = plan.filters.rbegin(); filter != plan.filters.rend(); ++filter)
    ranges.signal = filter->inputFor(ranges.signal, n);
  ranges.withLines = ranges.signal;
  for (const SinusoidTracker& line : plan.lines)
    ranges.withLines = unionOf(ranges.withLines, line.inputFor(ranges.signal, n));
  // A line is fitted to what the line before it has left.
  for (size_t i = 1; i < plan.lines.size(); ++i)
    ranges.withLines = unionOf(ranges.withLines, plan.lines[i].inputFor(ranges.withLines, n));
  ranges.input = ranges.high = ranges.withLines;
  if (hasScans) {
    ranges.high = withContext(ranges.withLines, plan.templateContext, n);
    ranges.input = plan.split.inputFor(ranges.high, n);
  }
  return ranges;
}

} // namespace emeg
