#pragma once

#include "files/formats/BinaryFile.h"
#include "files/formats/CtcFile.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace emeg {

/// A recording or its truth cannot be read; the message names the file.
class UnreadableFile : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Reads a CTC file of any readable type and organisation, block by block.
class CtcReader {
public:
  /// Throws UnreadableFile when the file is not there, is no CTC file, or is shorter than its header says.
  explicit CtcReader(const std::string& path);

  const std::string& path() const { return path_; }
  const CtcHeader& header() const { return header_; }

  /// `count` samples of every channel from time point `first` on, channel after channel, as stored.
  void read(int64_t first, int64_t count, std::vector<float>& samples);

private:
  void readBytes(int64_t position, int64_t nrOfBytes);

  std::string path_;
  BinaryFile file_;
  CtcHeader header_;
  SampleFormat format_ = SampleFormat::Unsupported;
  std::vector<unsigned char> bytes_;
};

/// Throws UnreadableFile when two recordings differ in channels, time points or sampling frequency.
void requireSameShape(const CtcReader& one, const CtcReader& other);

} // namespace emeg
