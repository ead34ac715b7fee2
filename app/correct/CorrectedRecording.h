#pragma once

#include "app/correct/CorrectionPlan.h"
#include "files/exchange/RecordingReader.h"
#include "files/exchange/RecordingWriter.h"

#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace emeg {

/// The result as a recording: corrected channels from the converter's output, untouched ones from the input
/// (every decimationFactor-th sample of the interval), in the input's order, with the input's names, units
/// and texts.
class CorrectedRecording : public RecordingReader {
public:
  CorrectedRecording(RecordingReader& input, RecordingReader& corrected, const CorrectionPlan& plan,
                     std::vector<RecordingMarker> markers);

private:
  void readBlock(int64_t first, int64_t count, std::span<double> values) override;

  void readUntouched(int64_t first, size_t length, std::span<double> values);

  RecordingReader& input_;
  RecordingReader& corrected_;
  const CorrectionPlan& plan_;
  bool hasUntouched_ = false;
  std::vector<double> inputBlock_, correctedBlock_;
};

/// Writes a whole recording. `progress` is told the finished part and may throw.
void copyRecording(RecordingReader& from, RecordingWriter& to, const std::function<void(double)>& progress);

} // namespace emeg
