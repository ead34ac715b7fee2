#pragma once

#include "files/formats/CtcFile.h"
#include "files/formats/OutputFile.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace emeg {

/// A CTC file that is written block by block, in any readable type and organisation. It appears under its
/// name when it is committed. Failing operations return false with the error number set.
class CtcRecording {
public:
  /// A stored value is microvolts / microvoltsPerUnit; 16-bit values are rounded to the nearest integer,
  /// those beyond the range become its end.
  bool create(const std::string& path, const CtcHeader& header, double microvoltsPerUnit);
  /// Time points first ... first + count - 1 of all channels, channel after channel. Blocks follow each other
  /// without gaps.
  bool write(int64_t first, int64_t count, std::span<const double> microvolts);
  bool commit() { return file_.commit(); }

private:
  double stored(double microvolts) const;
  void storeAt(int64_t index, double microvolts);
  bool writeBuffer(size_t nrOfBytes);

  OutputFile file_;
  CtcHeader header_;
  double microvoltsPerUnit_ = 1;
  std::vector<unsigned char> buffer_;
};

} // namespace emeg
