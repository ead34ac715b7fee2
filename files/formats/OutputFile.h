#pragma once

#include "files/formats/BinaryFile.h"

#include <string>

namespace emeg {

/// An output file that appears under its final name only when it is complete: it is written as "<name>.part"
/// in the same folder (a name too long for that loses its end) and renamed by commit(); whatever was not
/// committed is removed by the destructor. An older file of the final name is replaced by commit(), and stays
/// untouched until then.
class OutputFile {
public:
  OutputFile() = default;
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// False with the error number set when the temporary file cannot be created. A final path that names a
  /// folder fails here already (EISDIR), as does one that names a device or pipe (EINVAL), which must not be
  /// replaced.
  bool create(const std::string& finalPath);
  bool seek(int64_t position) { return file_.seek(position); }
  bool write(const void* buffer, size_t nrOfBytes) { return file_.write(buffer, nrOfBytes); }
  /// Closes and renames. False with the error number set, also when an earlier write failed; the temporary
  /// file is then removed.
  bool commit();

private:
  void discard();
  std::string finalPath_;
  std::string temporaryPath_; ///< made early: removing the file must not need memory
  BinaryFile file_;
};

} // namespace emeg
