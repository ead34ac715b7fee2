#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

struct EdfSignalSummary {
  std::string label;
  int64_t samplesPerRecord = 0;
  double physicalMinimum = 0, physicalMaximum = 0;
  int64_t digitalMinimum = 0, digitalMaximum = 0;
  bool isAnnotations = false;
};

/// The layout that the header of an EDF(+) or BDF(+) file promises (Kemp et al. 1992; Kemp and Olivan 2003).
struct EdfSummary {
  bool is24Bit = false;         ///< BDF
  bool isDiscontinuous = false; ///< EDF+D, BDF+D
  int64_t nrOfRecords = 0;
  double recordDuration = 0; ///< seconds
  std::vector<EdfSignalSummary> signals;

  int64_t bytesPerRecord() const;
};

/// Reads a header and checks it against the file: EDFlib refuses a file that contradicts itself without
/// saying where. Throws RecordingError that names the field and what to do.
EdfSummary readEdfSummary(const std::string& path);

} // namespace emeg
