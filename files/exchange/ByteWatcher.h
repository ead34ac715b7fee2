#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace emeg {

/// Is shown the bytes of a recording's data file as its reader reads them.
class ByteWatcher {
public:
  virtual ~ByteWatcher() = default;
  ByteWatcher() = default;
  ByteWatcher(const ByteWatcher&) = delete;
  ByteWatcher& operator=(const ByteWatcher&) = delete;

  /// `bytes` stand in the file at `position`.
  virtual void bytesRead(const std::string& path, int64_t position, std::span<const unsigned char> bytes) = 0;
};

} // namespace emeg
