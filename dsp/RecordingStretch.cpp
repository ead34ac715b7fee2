#include "dsp/RecordingStretch.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace emeg {

namespace {

/// The sample at a position of the recording.
double sampleAt(const RecordingStretch& stretch, int64_t position) {
  const PositionRange held = stretch.positions();
  if (position < held.begin || position >= held.end)
    throw std::invalid_argument("A filter needs sample " + std::to_string(position) +
                                ", but was given samples " + std::to_string(held.begin) + " to " +
                                std::to_string(held.end - 1) + ".");
  return stretch.samples[static_cast<std::size_t>(position - held.begin)];
}

double beforeFirst(const RecordingStretch& stretch, int64_t distance) {
  const int64_t mirror = std::min(distance, stretch.recordingLength - 1);
  return 2 * sampleAt(stretch, 0) - sampleAt(stretch, mirror);
}

double behindLast(const RecordingStretch& stretch, int64_t distance) {
  const int64_t last = stretch.recordingLength - 1;
  return 2 * sampleAt(stretch, last) - sampleAt(stretch, last - std::min(distance, last));
}

} // namespace

RecordingStretch wholeRecording(std::span<const double> samples) {
  return {samples, 0, static_cast<int64_t>(samples.size())};
}

void checkStretch(const RecordingStretch& stretch) {
  const auto count = static_cast<int64_t>(stretch.samples.size());
  if (stretch.first < 0 || stretch.recordingLength < count || stretch.first > stretch.recordingLength - count)
    throw std::invalid_argument("A stretch of " + std::to_string(count) + " samples from sample " +
                                std::to_string(stretch.first) + " on does not lie in a recording of " +
                                std::to_string(stretch.recordingLength) + " samples.");
}

void copyContinued(const RecordingStretch& stretch, int64_t from, std::span<double> out) {
  checkStretch(stretch);
  if (out.empty()) return;
  if (stretch.recordingLength == 0)
    throw std::invalid_argument("A recording without samples has no continuation.");
  const int64_t end = from + static_cast<int64_t>(out.size());
  const int64_t insideBegin = std::clamp<int64_t>(0, from, end);
  const int64_t insideEnd = std::clamp(stretch.recordingLength, insideBegin, end);
  double* place = out.data();
  for (int64_t p = from; p < insideBegin; ++p) *place++ = beforeFirst(stretch, -p);
  if (insideBegin < insideEnd) {
    static_cast<void>(sampleAt(stretch, insideBegin));
    static_cast<void>(sampleAt(stretch, insideEnd - 1));
    place =
        std::copy_n(stretch.samples.data() + (insideBegin - stretch.first), insideEnd - insideBegin, place);
  }
  for (int64_t p = std::max(insideEnd, from); p < end; ++p)
    *place++ = behindLast(stretch, p - (stretch.recordingLength - 1));
}

PositionRange withContext(PositionRange range, int64_t context, int64_t recordingLength) {
  if (range.begin >= range.end) return {};
  return {std::max<int64_t>(range.begin - context, 0), std::min(range.end + context, recordingLength)};
}

void checkOutputs(PositionRange outputs, int64_t length, std::size_t places) {
  if (outputs.begin < 0 || outputs.end < outputs.begin || outputs.end > length)
    throw std::invalid_argument("Outputs " + std::to_string(outputs.begin) + " to " +
                                std::to_string(outputs.end) + " do not lie in a series of " +
                                std::to_string(length) + " samples.");
  if (static_cast<std::size_t>(outputs.length()) != places)
    throw std::invalid_argument("There is room for " + std::to_string(places) + " outputs instead of " +
                                std::to_string(outputs.length()) + ".");
}

} // namespace emeg
