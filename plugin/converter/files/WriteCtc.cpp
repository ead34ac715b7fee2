#include "files/formats/OutputFile.h"
#include "plugin/converter/Converter.h"

#include <algorithm>
#include <vector>

namespace emeg {

namespace {

constexpr const char* cannotWrite = "Error writing file: ";
constexpr int32_t multiplexed = 2;

/// Files are little-endian whatever the machine is.
void toFileOrder(std::vector<unsigned char>& samples, int64_t nrOfBytes, int64_t sampleSize) {
  if (!hostIsLittleEndian && sampleSize > 1)
    swapByteGroups(samples.data(), static_cast<size_t>(nrOfBytes), static_cast<int>(sampleSize));
}

} // namespace

bool LMTRPluginEMEGFileConverter::writeCtc(int32_t dataType, int32_t dataOrganisation) {
  if (!switches.processingNeeded) return true;
  log.logProgress("Writing CTC");
  const std::string outputPath = outputPathBuffer.withEnding(values.outputSuffix + ".ctc");
  channels.channelDescription.header.setCtcFileName(namePartOf(outputPath));

  CtcHeader header;
  header.dataType = dataType;
  header.dataOrganisation = dataOrganisation;
  header.nrOfChannels = selection.nrOfSelectedChannels;
  header.nrOfTimePoints = static_cast<int32_t>(span.nrOfOutputTimePoints);
  header.samplingFrequency = static_cast<float>(values.samplingFrequency);
  const auto headerBytes = encodeCtcHeader(header);
  OutputFile file;
  if (!file.create(outputPath) || !file.write(headerBytes.data(), headerBytes.size()))
    return reportFileError(cannotWrite);

  const int64_t sampleSize = bytesPerWrittenSample(dataType);
  if (sampleSize == 0) {
    chunkFiles.keepOnDisk();
    return false;
  }

  const int64_t perChunk = span.timePointsPerChunk;
  const int64_t selected = selection.nrOfSelectedChannels;
  std::vector<float> samples(static_cast<size_t>(perChunk * selected));
  std::vector<unsigned char> out(static_cast<size_t>(perChunk * selected * sampleSize));
  int chunk = 0;
  for (int64_t start = 0; start < span.nrOfOutputTimePoints; start += perChunk, ++chunk) {
    const int64_t count = std::min(perChunk, span.nrOfOutputTimePoints - start);
    if (!chunkFiles.readChunk(chunk, samples.data())) return reportFileError("Error reading file: ");
    for (int64_t k = 0; k < selected; ++k) {
      const auto channel = static_cast<size_t>(selection.selectedChannels[static_cast<size_t>(k)]);
      const double scale = channels.channelScale[channel];
      const double offset = channels.channelOffset[channel];
      const float* const from = samples.data() + k * perChunk;
      for (int64_t j = 0; j < count; ++j) {
        const double value = static_cast<double>(from[j]) * scale + offset;
        storeSample(dataType, value, out.data(), dataOrganisation == multiplexed ? j * selected + k : j);
      }
      if (dataOrganisation == multiplexed) continue;
      toFileOrder(out, count * sampleSize, sampleSize);
      const int64_t position =
          static_cast<int64_t>(ctcHeaderSize) + (k * span.nrOfOutputTimePoints + start) * sampleSize;
      if (!file.seek(position) || !file.write(out.data(), static_cast<size_t>(count * sampleSize)))
        return reportFileError(cannotWrite);
    }
    if (dataOrganisation != multiplexed) continue;
    toFileOrder(out, count * selected * sampleSize, sampleSize);
    if (!file.write(out.data(), static_cast<size_t>(count * selected * sampleSize)))
      return reportFileError(cannotWrite);
  }
  if (!file.commit()) return reportFileError(cannotWrite);
  chunkFiles.closeAndRemove();
  return true;
}

} // namespace emeg
