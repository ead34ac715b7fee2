#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace emeg {

/// A file for data on their way that stands in no folder: it disappears with this object, or with the program
/// however that ends. It lies in the system's folder for temporary files (TMPDIR chooses another one). Throws
/// RecordingError.
class ScratchCopy {
public:
  /// `purpose` says in an error what the file is for ("Unpacking ...").
  explicit ScratchCopy(std::string purpose);

  void append(const void* bytes, size_t nrOfBytes);
  void flush();
  /// A path under which this program can open the file.
  std::string path() const;

private:
  [[noreturn]] void fail() const;
  struct Closer {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };

  std::string purpose_, folder_;
  std::unique_ptr<std::FILE, Closer> stream_;
};

} // namespace emeg
