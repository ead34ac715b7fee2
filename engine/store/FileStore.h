#pragma once

#include "engine/store/ChannelStore.h"
#include "files/formats/BinaryFile.h"

#include <string>

namespace emeg {

/// A store in one file, channel after channel, floats in machine byte order. The file is created (it must not
/// be anything else's) and stays when the store goes: whoever chose the name removes it.
class FileStore : public ChannelStore {
public:
  /// Throws StoreError when the file cannot be created.
  FileStore(const std::string& path, int64_t nrOfSamples);

  void read(int channel, int64_t first, std::span<float> samples) override;
  void write(int channel, int64_t first, std::span<const float> samples) override;

private:
  void seek(int channel, int64_t first, bool isWriting);
  [[noreturn]] void fail(bool whileWriting) const;

  std::string path_;
  int64_t nrOfSamples_;
  BinaryFile file_;
};

} // namespace emeg
