#pragma once

#include "files/formats/BinaryFile.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// The temporary files that hold the processed samples of a run: 32 files beside the input, each with a time
/// slice of every selected channel as floats in machine byte order, channel after channel within the slice
/// (timePointsPerChunk x nrOfSelectedChannels floats, the same size for every file).
class ChunkFiles {
public:
  static constexpr int nrOfChunks = 32;

  /// Closes all streams. Files are removed too unless keepOnDisk() was called.
  ~ChunkFiles();

  /// `stem` is the input path without its last four characters; files are "<stem>Chunk%02d.tmp".
  void setLayout(const std::string& stem, int64_t timePointsPerChunk, int nrOfSelectedChannels);
  std::string pathOf(int chunk) const;
  int64_t timePointsPerChunk() const { return timePointsPerChunk_; }

  /// Creates (or empties) chunk file `chunk` and leaves it open for update.
  bool create(int chunk);
  /// Writes a whole chunk (timePointsPerChunk x nrOfSelectedChannels floats) from the start of its file.
  bool writeChunk(int chunk, const float* samples);
  /// Reads a whole chunk.
  bool readChunk(int chunk, float* samples);

  /// Fills `samples` with the first `nrOfSamples` samples of output channel `channel`, walking over the
  /// chunks. A channel or a number of samples outside the layout is refused (EINVAL).
  bool readChannel(int channel, int64_t nrOfSamples, float* samples);
  /// Writes them back the same way.
  bool writeChannel(int channel, int64_t nrOfSamples, const float* samples);

  /// The files stay where they are when this object goes.
  void keepOnDisk() { removeFiles_ = false; }
  /// Closes and deletes every file that create() made.
  void closeAndRemove();

private:
  size_t bytesPerChunk() const;
  /// Calls transfer(file, first sample, bytes) for each chunk's share of a channel, the file positioned
  /// there.
  template <typename Transfer>
  bool walkChannel(int channel, int64_t nrOfSamples, const Transfer& transfer);

  std::string stem_;
  int64_t timePointsPerChunk_ = 0;
  int nrOfSelectedChannels_ = 0;
  bool removeFiles_ = true;
  std::array<BinaryFile, nrOfChunks> files_;
  std::array<std::string, nrOfChunks> createdPaths_; ///< empty: not made by this object
};

} // namespace emeg
