#pragma once

#include "app/simulation/SimulationParameters.h"
#include "app/simulation/Truth.h"

#include <functional>
#include <string>

namespace emeg {

/// Where a simulated recording goes and which files accompany it.
struct RecordingTarget {
  std::string path; ///< of the recording; its extension is ".ctc", ".vhdr", ".edf" or ".bdf"
  SampleStorage storage;
  bool withCcd = true;   ///< with ".ctc" only
  bool withPrt = true;   ///< with another format than ".ctc": markers
  bool withTruth = true; ///< the truth text, the clean signal and the pure heart beat artifact
  bool overwrite = false;
};

/// True when a recording's files can be named after `path`.
bool isRecordingPath(const std::string& path);

/// Simulates a recording and writes its files beside each other: OUT.ctc, OUT.ccd, OUT.prt (or the files of
/// another format), OUT_truth.json, OUT_clean.ctc and, with a heart, OUT_pulse.ctc (the last two as
/// multiplexed floats in microvolts). Memory holds some megabytes whatever the recording's length is.
/// `progress` is told the finished part (0 ... 1) now and then.
///
/// Returns an empty text, or a sentence that says what failed; then none of the files is left, half-written
/// or whole.
std::string writeRecording(const SimulationParameters& parameters, const RecordingTarget& target,
                           const std::function<void(double)>& progress);

} // namespace emeg
