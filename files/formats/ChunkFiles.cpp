#include "files/formats/ChunkFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace emeg {

namespace {

constexpr int64_t bytesPerFloat = sizeof(float);

bool isChunk(int chunk) {
  if (chunk >= 0 && chunk < ChunkFiles::nrOfChunks) return true;
  errno = EINVAL;
  return false;
}

} // namespace

ChunkFiles::~ChunkFiles() {
  const int reason = errno;
  if (removeFiles_) closeAndRemove();
  errno = reason;
}

void ChunkFiles::setLayout(const std::string& stem, int64_t timePointsPerChunk, int nrOfSelectedChannels) {
  stem_ = stem;
  timePointsPerChunk_ = std::max<int64_t>(timePointsPerChunk, 0);
  nrOfSelectedChannels_ = std::max(nrOfSelectedChannels, 0);
}

std::string ChunkFiles::pathOf(int chunk) const {
  std::array<char, 32> ending{};
  std::snprintf(ending.data(), ending.size(), "Chunk%02d.tmp", chunk);
  return stem_ + ending.data();
}

bool ChunkFiles::create(int chunk) {
  if (!isChunk(chunk)) return false;
  const auto index = static_cast<size_t>(chunk);
  std::string path = pathOf(chunk); // kept: removing the file must not need memory
  if (!files_[index].createForUpdate(path)) return false;
  createdPaths_[index].swap(path);
  return true;
}

size_t ChunkFiles::bytesPerChunk() const {
  return static_cast<size_t>(timePointsPerChunk_ * nrOfSelectedChannels_ * bytesPerFloat);
}

bool ChunkFiles::writeChunk(int chunk, const float* samples) {
  if (!isChunk(chunk)) return false;
  BinaryFile& file = files_[static_cast<size_t>(chunk)];
  return file.seek(0) && file.write(samples, bytesPerChunk()) && file.flush();
}

bool ChunkFiles::readChunk(int chunk, float* samples) {
  if (!isChunk(chunk)) return false;
  BinaryFile& file = files_[static_cast<size_t>(chunk)];
  return file.seek(0) && file.read(samples, bytesPerChunk());
}

template <typename Transfer>
bool ChunkFiles::walkChannel(int channel, int64_t nrOfSamples, const Transfer& transfer) {
  if (channel < 0 || channel >= nrOfSelectedChannels_ || nrOfSamples > timePointsPerChunk_ * nrOfChunks) {
    errno = EINVAL;
    return false;
  }
  const int64_t position = channel * timePointsPerChunk_ * bytesPerFloat;
  int64_t first = 0;
  for (BinaryFile& file : files_) {
    if (first >= nrOfSamples) break;
    const int64_t count = std::min(timePointsPerChunk_, nrOfSamples - first);
    if (!file.seek(position) || !transfer(file, first, static_cast<size_t>(count * bytesPerFloat)))
      return false;
    first += count;
  }
  return true;
}

bool ChunkFiles::readChannel(int channel, int64_t nrOfSamples, float* samples) {
  return walkChannel(channel, nrOfSamples, [&](BinaryFile& file, int64_t first, size_t nrOfBytes) {
    return file.read(samples + first, nrOfBytes);
  });
}

bool ChunkFiles::writeChannel(int channel, int64_t nrOfSamples, const float* samples) {
  return walkChannel(channel, nrOfSamples, [&](BinaryFile& file, int64_t first, size_t nrOfBytes) {
    return file.write(samples + first, nrOfBytes) && file.flush();
  });
}

void ChunkFiles::closeAndRemove() {
  for (size_t index = 0; index < files_.size(); ++index) {
    files_[index].close();
    if (!createdPaths_[index].empty()) std::remove(createdPaths_[index].c_str());
    createdPaths_[index].clear();
  }
}

} // namespace emeg
