#pragma once

#include "files/exchange/RecordingReader.h"
#include "files/exchange/RecordingWriter.h"

#include <string>
#include <vector>

namespace emeg {

/// A recording held in memory: what a test writes and compares with.
struct SampleRecording {
  RecordingHeader header;
  std::vector<double> values; ///< channel after channel

  double at(int channel, int64_t timePoint) const {
    return values[static_cast<size_t>(channel * header.nrOfTimePoints + timePoint)];
  }
};

/// `names` as channels whose values are different slow waves of some hundred microvolts.
SampleRecording makeRecording(const std::vector<std::string>& names, int64_t nrOfTimePoints,
                              double samplingFrequency);

RecordingMarker markerAt(double onset, const std::string& description, double duration = 0);

/// Options that announce the range of every channel.
WriteOptions withRanges(const SampleRecording& recording);

/// Writes a recording in blocks of uneven lengths; returns the writer's warnings.
std::vector<std::string> writeRecordingTo(const std::string& path, const SampleRecording& recording,
                                          const WriteOptions& options = {});

/// The whole recording, read in blocks of uneven lengths.
SampleRecording readRecordingFrom(const std::string& path, const OpenOptions& options = {});

/// The message of the RecordingError that opening (and reading) the file gives; empty when it gives none.
std::string refusalOf(const std::string& path, const OpenOptions& options = {});

/// The largest difference of two recordings' values; infinite when their sizes differ.
double largestDifference(const SampleRecording& one, const SampleRecording& other);

} // namespace emeg
