#include "files/exchange/RecordingReader.h"

#include "files/exchange/BrainVisionReader.h"
#include "files/exchange/ChannelSubset.h"
#include "files/exchange/CtcRecordingReader.h"
#include "files/exchange/EdfReader.h"
#include "files/exchange/EegLabReader.h"
#include "files/exchange/FileExtension.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr int64_t valuesPerBlock = 1 << 20;
constexpr int64_t longestBlock = 1 << 16;

} // namespace

void RecordingReader::read(int64_t first, int64_t count, std::span<double> values) {
  const bool inside =
      first >= 0 && count >= 0 && first <= header_.nrOfTimePoints && count <= header_.nrOfTimePoints - first;
  if (!inside) throw std::out_of_range("a stretch outside the recording was asked for");
  if (values.size() != static_cast<size_t>(count) * header_.channels.size())
    throw std::out_of_range("the buffer does not fit the stretch that was asked for");
  if (count > 0) readBlock(first, count, values);
}

std::unique_ptr<RecordingReader> openRecording(const std::string& path, const OpenOptions& options) {
  const std::string extension = extensionOf(path);
  std::unique_ptr<RecordingReader> reader;
  if (extension == ".ctc") {
    reader = openCtcRecording(path);
  } else if (extension == ".vhdr") {
    reader = openBrainVisionRecording(path);
  } else if (extension == ".edf" || extension == ".bdf") {
    return openEdfRecording(path, options.channels);
  } else if (extension == ".set") {
    reader = openEegLabRecording(path);
  } else {
    throw RecordingError(refusalOfExtension(path));
  }
  return options.channels.empty() ? std::move(reader) : chooseChannels(std::move(reader), options.channels);
}

int64_t convenientBlockLength(int nrOfChannels) {
  return std::clamp<int64_t>(valuesPerBlock / std::max(nrOfChannels, 1), 1, longestBlock);
}

std::vector<ValueRange> measureRanges(RecordingReader& reader, const std::function<void(double)>& progress) {
  const RecordingHeader& header = reader.header();
  const int64_t blockLength = convenientBlockLength(header.nrOfChannels());
  std::vector<ValueRange> ranges(header.channels.size());
  std::vector<bool> seen(header.channels.size());
  std::vector<double> values;
  for (int64_t first = 0; first < header.nrOfTimePoints; first += blockLength) {
    const int64_t count = std::min(blockLength, header.nrOfTimePoints - first);
    values.resize(static_cast<size_t>(count) * header.channels.size());
    reader.read(first, count, values);
    for (size_t c = 0; c < ranges.size(); ++c) {
      for (const double value :
           std::span(values).subspan(c * static_cast<size_t>(count), static_cast<size_t>(count))) {
        if (!std::isfinite(value)) continue;
        if (!seen[c]) ranges[c] = {value, value};
        seen[c] = true;
        ranges[c].smallest = std::min(ranges[c].smallest, value);
        ranges[c].largest = std::max(ranges[c].largest, value);
      }
    }
    progress(static_cast<double>(first + count) / static_cast<double>(header.nrOfTimePoints));
  }
  return ranges;
}

} // namespace emeg
