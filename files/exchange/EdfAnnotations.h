#pragma once

#include "files/exchange/EdfHeader.h"
#include "files/formats/BinaryFile.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace emeg {

/// A time-stamped annotation of EDF+ (Kemp and Olivan 2003).
struct EdfAnnotation {
  double onset = 0;    ///< seconds from the time of day in the header
  double duration = 0; ///< seconds
  std::string text;    ///< UTF-8; empty: the entry that tells when its data record begins
};

/// The annotations in the bytes that a data record has for them. What cannot be understood is left out and
/// counted in `nrOfOdd`.
std::vector<EdfAnnotation> parseEdfAnnotations(std::string_view bytes, int64_t& nrOfOdd);

/// What the annotation signals of a file say.
struct EdfAnnotations {
  std::vector<EdfAnnotation> annotations; ///< onsets counted from the first sample
  double firstRecordOnset = 0;            ///< seconds from the time of day in the header, below one
  int64_t nrOfOdd = 0;
};

/// Reads all annotations; `file` is open. Throws RecordingError.
EdfAnnotations readEdfAnnotations(BinaryFile& file, const std::string& path, const EdfHeader& header);

} // namespace emeg
