#include "plugin/converter/Converter.h"

#include <algorithm>

namespace emeg {

bool LMTRPluginEMEGFileConverter::computeChunkLayout() {
  input.bytesPerSample = bytesPerSampleOf(input.inputSampleFormat);
  ChunkLayout& layout = chunkLayout;
  const bool sourceIsGiven = layout.nrOfSourceChunks != 0;
  if (!sourceIsGiven) {
    if (!input.multiplexedInput) return true;
    layout.sourceChunkLength = span.timePointsPerChunk;
    layout.nrOfSourceChunks = ChunkFiles::nrOfChunks;
  }

  const int64_t first = span.firstProcessedTimePoint;
  const int64_t last = span.lastProcessedTimePoint;
  const int64_t step = span.timePointsPerChunk;
  const int64_t length = layout.sourceChunkLength;
  layout.sources.clear();
  for (int64_t start = first; start <= last; start += step) {
    // Time points of this chunk counted from where the source begins: a given source begins with the
    // recording.
    const int64_t from = sourceIsGiven ? start : start - first;
    const int64_t to = std::min(start + step - 1, last) - (start - from);
    layout.sources.push_back({from / length, to / length, from % length, to % length});
  }
  if (layout.valuesPerSourceChunk == 0) layout.valuesPerSourceChunk = length * channels.nrOfChannels;
  if (!sourceIsGiven) {
    layout.sourceChunks.clear();
    for (int64_t i = 0; i < layout.nrOfSourceChunks; ++i) {
      const int64_t samplesBefore = first * channels.nrOfChannels + i * layout.valuesPerSourceChunk;
      layout.sourceChunks.push_back(
          {&input.ctcFile, samplesBefore * input.bytesPerSample + input.dataOffset});
    }
  }
  return true;
}

} // namespace emeg
