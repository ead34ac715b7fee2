#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace emeg {

/// A C stream with 64-bit positions that closes itself. Failing operations return false (or fewer bytes) and
/// leave the C library's error number set to the reason; it is 0 when a read met the end of the file. Every
/// operation clears the error number first, so that it never speaks of an older failure.
class BinaryFile {
public:
  BinaryFile() = default;

  /// Opens an existing regular file for reading. A folder gives EISDIR, another special file EINVAL.
  bool openForReading(const std::string& path);
  /// Creates or empties a file for writing ("wb"). A folder gives EISDIR, a pipe EINVAL.
  bool create(const std::string& path);
  /// Creates or empties a file for reading and writing ("w+b"); reads and writes may alternate freely.
  bool createForUpdate(const std::string& path);

  bool isOpen() const { return stream_ != nullptr; }
  /// Size in bytes, found by seeking to the end; -1 on failure. The position is kept.
  int64_t size();
  bool seek(int64_t position);
  int64_t tell();
  /// Reads up to nrOfBytes; returns the number read.
  size_t readSome(void* buffer, size_t nrOfBytes);
  /// Reads exactly nrOfBytes; false on a short read.
  bool read(void* buffer, size_t nrOfBytes);
  /// Writes through a buffer: a full disk may show only in a later write, flush, seek or close.
  bool write(const void* buffer, size_t nrOfBytes);
  bool flush();
  /// Flushes and closes; false when any data written since opening could not be stored, with the error number
  /// of the first such failure. Closing a closed file is a success.
  bool close();

private:
  enum class Transfer { None, Read, Write };
  /// Keeps the error number, so that a stream that goes out of scope does not hide why its user failed.
  struct Closer {
    void operator()(std::FILE* stream) const;
  };

  bool open(const std::string& path, const char* mode, int refusal);
  bool ready();
  bool turnTo(Transfer transfer);
  void noteFailedWrite();

  std::unique_ptr<std::FILE, Closer> stream_;
  Transfer lastTransfer_ = Transfer::None; ///< since the last change of position
  int writeError_ = 0;                     ///< error number of the first write that failed
};

} // namespace emeg
