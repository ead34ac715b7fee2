#include "plugin/converter/Converter.h"
#include "plugin/converter/messages/Text.h"

#include <algorithm>
#include <cerrno>

namespace emeg {

namespace {

constexpr const char* cannotRead = "Error reading file: ";

/// Reads the bytes of one block of whole time points. What lies behind the end of the file becomes 0.
bool readBlock(BinaryFile& file, int64_t fileSize, int64_t byteOffset, int bytesPerSample,
               std::vector<unsigned char>& bytes) {
  const int64_t wanted = static_cast<int64_t>(bytes.size());
  int64_t there = std::clamp<int64_t>(fileSize - byteOffset, 0, wanted);
  there -= there % bytesPerSample;
  std::fill(bytes.begin() + there, bytes.end(), static_cast<unsigned char>(0));
  return there == 0 || (file.seek(byteOffset) && file.read(bytes.data(), static_cast<size_t>(there)));
}

} // namespace

bool LMTRPluginEMEGFileConverter::createChunks() {
  if (!switches.processingNeeded) return true;
  if (nrOfMissingTimePoints() > 0) {
    log.logProgress("Input file ends early: %d of %d time points are missing and were set to 0.",
                    static_cast<int>(nrOfMissingTimePoints()), static_cast<int>(input.nrOfTimePoints));
  }

  const int64_t perChunk = span.timePointsPerChunk;
  chunkFiles.setLayout(inputPathBuffer.withEnding(""), perChunk, selection.nrOfSelectedChannels);
  std::vector<float> chunkSamples(static_cast<size_t>(perChunk * selection.nrOfSelectedChannels));
  for (int chunk = 0; chunk < ChunkFiles::nrOfChunks; ++chunk) {
    if (!fillChunk(chunk, chunkSamples)) return reportFileError(cannotRead);
    log.logProgress("Creating chunk #%d/%d", chunk + 1, ChunkFiles::nrOfChunks);
    if (!chunkFiles.create(chunk)) {
      const int errorNumber = errno;
      chunkFiles.keepOnDisk();
      return showError(formatText("Error #%d while creating chunk %d.", errorNumber, chunk));
    }
    if (!chunkFiles.writeChunk(chunk, chunkSamples.data())) return reportFileError("Error writing file: ");
  }
  return true;
}

/// Time points that the header counts and a multiplexed file does not hold whole.
int64_t LMTRPluginEMEGFileConverter::nrOfMissingTimePoints() const {
  if (!input.multiplexedInput) return 0;
  const int64_t bytesPerTimePoint = int64_t{channels.nrOfChannels} * input.bytesPerSample;
  const int64_t there = std::max<int64_t>(input.fileSize - input.dataOffset, 0) / bytesPerTimePoint;
  return std::max<int64_t>(input.nrOfTimePoints - there, 0);
}

/// A file that stores channel after channel must hold each of them to its end: what is missing cannot be told
/// from the next channel.
bool LMTRPluginEMEGFileConverter::holdsSelectedChannels() const {
  if (input.multiplexedInput) return true;
  const int64_t bytesPerChannel = (span.lastProcessedTimePoint + 1) * input.bytesPerSample;
  return std::all_of(
      selection.selectedChannels.begin(), selection.selectedChannels.end(), [&](int32_t channel) {
        return input.channelDataOffsets[static_cast<size_t>(channel)] + bytesPerChannel <= input.fileSize;
      });
}

/// Fills the selected channels' samples of one chunk. Positions behind the processed range keep what they
/// hold.
bool LMTRPluginEMEGFileConverter::fillChunk(int chunk, std::vector<float>& chunkSamples) {
  const int64_t perChunk = span.timePointsPerChunk;
  const int64_t start = span.firstProcessedTimePoint + chunk * perChunk;
  const int64_t count = std::min(perChunk, span.lastProcessedTimePoint - start + 1);
  if (count < 1) return true; // a short recording does not reach this chunk
  return input.multiplexedInput ? fillFromBlocks(chunk, chunkSamples)
                                : fillFromChannels(start, count, chunkSamples);
}

bool LMTRPluginEMEGFileConverter::fillFromBlocks(int chunk, std::vector<float>& chunkSamples) {
  const ChunkSource& source = chunkLayout.sources[static_cast<size_t>(chunk)];
  const int sampleSize = input.bytesPerSample;
  const int64_t nrOfChannels = channels.nrOfChannels;
  std::vector<unsigned char> bytes;
  int64_t filled = 0;
  for (int64_t block = source.firstSourceChunk; block <= source.lastSourceChunk; ++block) {
    const SourceChunk& from = chunkLayout.sourceChunks[static_cast<size_t>(block)];
    const int64_t first = block == source.firstSourceChunk ? source.offsetInFirst : 0;
    const int64_t last =
        block == source.lastSourceChunk ? source.offsetInLast : chunkLayout.sourceChunkLength - 1;
    const int64_t count = last - first + 1;
    bytes.resize(static_cast<size_t>(count * nrOfChannels * sampleSize));
    if (!readBlock(*from.stream, from.stream == &input.ctcFile ? input.fileSize : from.stream->size(),
                   from.byteOffset + first * nrOfChannels * sampleSize, sampleSize, bytes))
      return false;
    if (swapBytes) swapByteGroups(bytes.data(), bytes.size(), sampleSize);
    for (int32_t k = 0; k < selection.nrOfSelectedChannels; ++k) {
      const int64_t channel = selection.selectedChannels[static_cast<size_t>(k)];
      convertSamplesToFloat(input.inputSampleFormat, bytes.data() + channel * sampleSize, nrOfChannels, count,
                            chunkSamples.data() + k * span.timePointsPerChunk + filled);
    }
    filled += count;
  }
  return true;
}

bool LMTRPluginEMEGFileConverter::fillFromChannels(int64_t start, int64_t count,
                                                   std::vector<float>& chunkSamples) {
  const int sampleSize = input.bytesPerSample;
  std::vector<unsigned char> bytes(static_cast<size_t>(count * sampleSize));
  for (int32_t k = 0; k < selection.nrOfSelectedChannels; ++k) {
    const int32_t channel = selection.selectedChannels[static_cast<size_t>(k)];
    const int64_t offset = input.channelDataOffsets[static_cast<size_t>(channel)] + start * sampleSize;
    if (!input.ctcFile.seek(offset) || !input.ctcFile.read(bytes.data(), bytes.size())) return false;
    if (swapBytes) swapByteGroups(bytes.data(), bytes.size(), sampleSize);
    convertSamplesToFloat(input.inputSampleFormat, bytes.data(), 1, count,
                          chunkSamples.data() + k * span.timePointsPerChunk);
  }
  return true;
}

} // namespace emeg
