#include "tests/files/exchange/SampleRecordings.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace emeg {

namespace {

/// Calls use(first, count, block of all channels) with blocks whose lengths differ.
template <typename Use>
void walkInUnevenBlocks(int64_t nrOfTimePoints, size_t nrOfChannels, const Use& use) {
  int64_t length = 1;
  std::vector<double> block;
  for (int64_t first = 0; first < nrOfTimePoints;) {
    const int64_t count = std::min(length, nrOfTimePoints - first);
    block.resize(static_cast<size_t>(count) * nrOfChannels);
    use(first, count, block);
    first += count;
    length = length % 1009 + 97;
  }
}

} // namespace

SampleRecording makeRecording(const std::vector<std::string>& names, int64_t nrOfTimePoints,
                              double samplingFrequency) {
  SampleRecording recording;
  recording.header.samplingFrequency = samplingFrequency;
  recording.header.nrOfTimePoints = nrOfTimePoints;
  for (const std::string& name : names) {
    RecordingChannel channel;
    channel.name = name;
    channel.unit = "\xC2\xB5V";
    channel.kind = guessChannelKind(name, "", true).kind;
    const auto c = static_cast<double>(recording.header.channels.size());
    for (int64_t t = 0; t < nrOfTimePoints; ++t)
      recording.values.push_back(300 * std::sin(0.01 * (1 + c) * static_cast<double>(t) + c) - 10 * c);
    recording.header.channels.push_back(channel);
  }
  return recording;
}

RecordingMarker markerAt(double onset, const std::string& description, double duration) {
  RecordingMarker marker;
  marker.onset = onset;
  marker.description = description;
  marker.duration = duration;
  return marker;
}

WriteOptions withRanges(const SampleRecording& recording) {
  WriteOptions options;
  const auto length = recording.header.nrOfTimePoints;
  for (int c = 0; c < recording.header.nrOfChannels(); ++c) {
    ValueRange range{recording.at(c, 0), recording.at(c, 0)};
    for (int64_t t = 0; t < length; ++t) {
      range.smallest = std::min(range.smallest, recording.at(c, t));
      range.largest = std::max(range.largest, recording.at(c, t));
    }
    options.ranges.push_back(range);
  }
  return options;
}

std::vector<std::string> writeRecordingTo(const std::string& path, const SampleRecording& recording,
                                          const WriteOptions& options) {
  const auto writer = createRecording(path, recording.header, options);
  const size_t nrOfChannels = recording.header.channels.size();
  walkInUnevenBlocks(recording.header.nrOfTimePoints, nrOfChannels,
                     [&](int64_t first, int64_t count, std::vector<double>& block) {
                       for (size_t c = 0; c < nrOfChannels; ++c)
                         for (int64_t t = 0; t < count; ++t)
                           block[c * static_cast<size_t>(count) + static_cast<size_t>(t)] =
                               recording.at(static_cast<int>(c), first + t);
                       writer->write(count, block);
                     });
  writer->finish();
  return writer->warnings();
}

SampleRecording readRecordingFrom(const std::string& path, const OpenOptions& options) {
  const auto reader = openRecording(path, options);
  SampleRecording recording;
  recording.header = reader->header();
  const size_t nrOfChannels = recording.header.channels.size();
  const auto length = static_cast<size_t>(recording.header.nrOfTimePoints);
  recording.values.resize(nrOfChannels * length);
  walkInUnevenBlocks(recording.header.nrOfTimePoints, nrOfChannels,
                     [&](int64_t first, int64_t count, std::vector<double>& block) {
                       reader->read(first, count, block);
                       for (size_t c = 0; c < nrOfChannels; ++c)
                         std::copy_n(block.begin() + static_cast<int64_t>(c) * count, count,
                                     recording.values.begin() + static_cast<int64_t>(c * length) + first);
                     });
  return recording;
}

std::string refusalOf(const std::string& path, const OpenOptions& options) {
  try {
    readRecordingFrom(path, options);
  } catch (const RecordingError& error) {
    return error.what();
  }
  return "";
}

double largestDifference(const SampleRecording& one, const SampleRecording& other) {
  if (one.values.size() != other.values.size()) return std::numeric_limits<double>::infinity();
  double largest = 0;
  for (size_t i = 0; i < one.values.size(); ++i)
    largest = std::max(largest, std::abs(one.values[i] - other.values[i]));
  return largest;
}

} // namespace emeg
