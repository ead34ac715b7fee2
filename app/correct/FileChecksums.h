#pragma once

#include "files/exchange/ByteWatcher.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace emeg {

/// A file that was read.
struct InputFile {
  std::string path;
  std::string sha256; ///< in hexadecimal digits; empty when it could not be computed
};

/// Checksums of files that are taken while somebody else reads them from front to back. What was not shown,
/// or not in the order of the file, is read again.
class FileChecksums : public ByteWatcher {
public:
  explicit FileChecksums(const std::vector<std::string>& files);
  ~FileChecksums() override;

  void bytesRead(const std::string& path, int64_t position, std::span<const unsigned char> bytes) override;

  /// Reads what is missing. `watch` is called now and then and may throw. Nothing can be shown afterwards.
  std::vector<InputFile> finish(const std::function<void()>& watch);

private:
  class File;
  std::vector<std::unique_ptr<File>> files_;
};

} // namespace emeg
