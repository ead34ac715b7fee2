#pragma once

#include "files/exchange/RecordingReader.h"
#include "files/formats/BinaryFile.h"
#include "files/formats/CtcFile.h"

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace emeg {

/// A recording or its truth cannot be read; the message names the file.
class UnreadableFile : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// True for a CTC file, by its extension.
bool isCtcFile(const std::string& path);

/// Reads a recording block by block: a CTC file of any readable type and organisation as it is stored, any
/// other format in microvolts.
class EvaluatedRecording {
public:
  /// Throws UnreadableFile when the file is not there, is no recording, or is shorter than its header says.
  explicit EvaluatedRecording(const std::string& path);

  const std::string& path() const { return path_; }
  int64_t nrOfChannels() const { return nrOfChannels_; }
  int64_t nrOfTimePoints() const { return nrOfTimePoints_; }
  double samplingFrequency() const { return samplingFrequency_; }
  /// Microvolts per unit of what read() gives, where a unit of the simulated CTC recording is `ofCtc`
  /// microvolts.
  double microvoltsPerUnit(double ofCtc) const { return reader_ == nullptr ? ofCtc : 1.0; }

  /// `count` samples of every channel from time point `first` on, channel after channel.
  void read(int64_t first, int64_t count, std::vector<float>& samples);

private:
  void openCtc();
  void openOther();
  void readCtc(int64_t first, int64_t count, std::vector<float>& samples);
  void readBytes(int64_t position, int64_t nrOfBytes);

  std::string path_;
  int64_t nrOfChannels_ = 0;
  int64_t nrOfTimePoints_ = 0;
  double samplingFrequency_ = 0;

  /// Of a format other than CTC, else null.
  std::unique_ptr<RecordingReader> reader_;
  std::vector<double> values_;

  BinaryFile file_;
  CtcHeader header_;
  SampleFormat format_ = SampleFormat::Unsupported;
  std::vector<unsigned char> bytes_;
};

/// Throws UnreadableFile when two recordings differ in channels, time points or sampling frequency.
void requireSameShape(const EvaluatedRecording& one, const EvaluatedRecording& other);

} // namespace emeg
