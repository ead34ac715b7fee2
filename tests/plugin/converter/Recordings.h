#pragma once

#include "tests/TestFolder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

using Channels = std::vector<std::vector<double>>; ///< [channel][time point]

/// A recording as a test wants it; what the header says may differ from what follows it.
struct Recording {
  Channels samples;
  double samplingFrequency = 100;
  int32_t dataType = 1;
  int32_t dataOrganisation = 2;

  int nrOfChannels() const { return static_cast<int>(samples.size()); }
  int64_t nrOfTimePoints() const { return samples.empty() ? 0 : static_cast<int64_t>(samples[0].size()); }
  /// Header and samples, little-endian.
  std::string bytes() const;
  /// The samples alone.
  std::string sampleBytes() const;
};

/// Channel c at time t is 1000 c + t.
Recording countingRecording(int nrOfChannels, int nrOfTimePoints, double samplingFrequency = 100);
/// Slow and fast waves with an offset, different in every channel; exactly representable as floats.
Recording wavyRecording(int nrOfChannels, int nrOfTimePoints, double samplingFrequency);

/// A header with any fields, in front of any bytes.
std::string ctcBytes(int32_t dataType, int32_t dataOrganisation, int nrOfChannels, int32_t nrOfTimePoints,
                     float samplingFrequency, const std::string& sampleBytes);

void writeFile(const std::string& path, const std::string& bytes);
std::string readFile(const std::string& path);
bool exists(const std::string& path);

/// A file as the run writes it: 32-bit floats, multiplexed. Throws when it is anything else or has another
/// length than its header says.
Recording readOutput(const std::string& path);

/// A protocol file with one interval per condition and no more than a reader needs.
std::string protocolText(const std::string& resolution, const std::vector<std::string>& conditions);

} // namespace emeg
