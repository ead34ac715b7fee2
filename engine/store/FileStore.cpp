#include "engine/store/FileStore.h"

#include <cerrno>
#include <cstring>

namespace emeg {

FileStore::FileStore(const std::string& path, int64_t nrOfSamples) : path_(path), nrOfSamples_(nrOfSamples) {
  if (!file_.createForUpdate(path)) fail(true);
}

void FileStore::read(int channel, int64_t first, std::span<float> samples) {
  seek(channel, first, false);
  if (!file_.read(samples.data(), samples.size_bytes())) fail(false);
}

void FileStore::write(int channel, int64_t first, std::span<const float> samples) {
  seek(channel, first, true);
  if (!file_.write(samples.data(), samples.size_bytes())) fail(true);
}

void FileStore::seek(int channel, int64_t first, bool isWriting) {
  const int64_t sample = channel * nrOfSamples_ + first;
  if (!file_.seek(sample * static_cast<int64_t>(sizeof(float)))) fail(isWriting);
}

void FileStore::fail(bool whileWriting) const {
  const int error = errno;
  const std::string reason = error != 0 ? std::strerror(error) : "the file ends too early";
  throw StoreError("The temporary file \"" + path_ + "\" cannot be " +
                       (whileWriting ? "written: " : "read: ") + reason + ".",
                   whileWriting, error);
}

} // namespace emeg
