#pragma once

#include <cstdint>
#include <span>

namespace emeg {

/// Positions begin, begin + 1 ... end - 1 of a series, counted from its first sample.
struct PositionRange {
  int64_t begin = 0;
  int64_t end = 0;

  int64_t length() const { return end - begin; }
  friend bool operator==(const PositionRange&, const PositionRange&) = default;
};

/// Consecutive samples of one channel, and where they lie in its recording.
///
/// Filters need samples beyond both ends of the recording. There the signal continues by odd reflection,
/// x[-i] = 2 x[0] - x[i] and x[n - 1 + i] = 2 x[n - 1] - x[n - 1 - i] for i = 1 ... n - 1, and then by the
/// last reflected value. So neither an offset nor a drift makes a step.
struct RecordingStretch {
  std::span<const double> samples;
  /// Position of samples[0] in the recording.
  int64_t first = 0;
  /// Number of samples n of the whole recording.
  int64_t recordingLength = 0;

  PositionRange positions() const { return {first, first + static_cast<int64_t>(samples.size())}; }
};

/// A stretch that is the whole recording.
RecordingStretch wholeRecording(std::span<const double> samples);

/// std::invalid_argument unless the stretch lies in its recording.
void checkStretch(const RecordingStretch& stretch);

/// The samples at positions from, from + 1 ... of the continued signal, as many as `out` takes.
/// std::invalid_argument if the stretch does not lie in its recording or lacks a sample that is needed;
/// positions near an end need what is reflected into them.
void copyContinued(const RecordingStretch& stretch, int64_t from, std::span<double> out);

/// `range` made `context` samples longer at both ends, without what lies outside of a recording of
/// `recordingLength` samples: the positions that copyContinued needs for it. Nothing for an empty range.
PositionRange withContext(PositionRange range, int64_t context, int64_t recordingLength);

/// std::invalid_argument unless 0 <= begin <= end <= length and `places` is the number of positions.
void checkOutputs(PositionRange outputs, int64_t length, std::size_t places);

} // namespace emeg
