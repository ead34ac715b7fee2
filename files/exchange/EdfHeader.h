#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

struct EdfSignal {
  std::string label, transducer, unit, prefilter;
  int64_t samplesPerRecord = 0;
  int64_t byteInRecord = 0; ///< where its samples begin in a data record
  double physicalMinimum = 0, physicalMaximum = 0;
  int64_t digitalMinimum = 0, digitalMaximum = 0;
  bool isAnnotations = false;
};

/// The header of an EDF(+) or BDF(+) file (Kemp et al. 1992; Kemp and Olivan 2003). Texts are in UTF-8.
struct EdfHeader {
  bool is24Bit = false;         ///< BDF
  bool isDiscontinuous = false; ///< EDF+D, BDF+D
  bool isPlus = false;          ///< EDF+, BDF+
  std::string patient, recording;
  std::string startDate, startTime; ///< "dd.mm.yy", "hh.mm.ss"
  int64_t nrOfBytes = 0;            ///< of the header; the first data record begins there
  int64_t nrOfRecords = 0;
  double recordDuration = 0; ///< seconds
  std::vector<EdfSignal> signals;

  int bytesPerSample() const { return is24Bit ? 3 : 2; }
  int64_t bytesPerRecord() const;
};

/// Reads a header and checks it against the file. Throws RecordingError that names the field and what to do.
EdfHeader readEdfHeader(const std::string& path);

} // namespace emeg
