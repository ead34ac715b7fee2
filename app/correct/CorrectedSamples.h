#pragma once

#include "app/correct/CorrectionPlan.h"
#include "app/correct/RecordingSource.h"
#include "dsp/OutputInstants.h"
#include "engine/Correction.h"
#include "files/exchange/RecordingWriter.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace emeg {

/// Takes what a correction sends straight into the output. Channels that the correction's 32-bit floats do
/// not hold exactly come from the input once more: of each output the last sample at or before its instant.
class CorrectedSamples : public CorrectedSink {
public:
  /// `progress` is told the written part and may throw.
  CorrectedSamples(RecordingWriter& writer, RecordingSource& input, const CorrectionPlan& plan,
                   std::function<void(double)> progress);

  void take(int64_t count, std::span<const double> values) override;

private:
  void readAgain(int64_t count, std::span<double> values);
  void readPart(int64_t firstOutput, int64_t start, int64_t partLength, int64_t count,
                std::span<double> values);

  RecordingWriter& writer_;
  RecordingSource& input_;
  const CorrectionPlan& plan_;
  std::function<void(double)> progress_;
  OutputInstants instants_;
  int64_t done_ = 0;
  std::vector<double> block_, inputBlock_;
};

} // namespace emeg
