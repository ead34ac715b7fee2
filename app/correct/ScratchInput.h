#pragma once

#include "app/correct/CorrectionPlan.h"
#include "files/exchange/RecordingReader.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace emeg {

/// Sample type of the scratch file that the converter reads.
enum class ScratchSamples { Float32, Float64 };

constexpr int64_t bytesPerSampleOf(ScratchSamples samples) {
  return samples == ScratchSamples::Float32 ? 4 : 8;
}

/// What copying a recording into the scratch file showed.
struct ScratchContent {
  int64_t nrOfNotFinite = 0; ///< samples that are no numbers; the converter takes them as 0
};

/// Copies the interval of the channels that are corrected into a CTC file, channel after channel, in
/// microvolts. Memory does not grow with the recording's length. Throws RecordingError when the recording
/// cannot be read, FailedRun when the file cannot be written. `progress` is told the finished part and may
/// throw.
ScratchContent writeScratchInput(RecordingReader& recording, const CorrectionPlan& plan,
                                 ScratchSamples samples, const std::string& path,
                                 const std::function<void(double)>& progress);

/// Reads or replaces one channel of such a file.
class ScratchChannel {
public:
  ScratchChannel(const std::string& path, ScratchSamples samples, int64_t nrOfTimePoints);
  ~ScratchChannel();
  ScratchChannel(const ScratchChannel&) = delete;
  ScratchChannel& operator=(const ScratchChannel&) = delete;

  void read(int channel, int64_t first, std::span<double> values);
  void write(int channel, int64_t first, std::span<const double> values);
  /// Throws FailedRun when anything could not be stored.
  void close();

private:
  struct File;
  std::unique_ptr<File> file_;
};

} // namespace emeg
