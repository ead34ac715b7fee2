#pragma once

#include <string>

namespace emeg {

/// A path that remembers the position four characters before its end, where ".ctc" stands, and from which
/// other names are made by writing over that position.
class PathBuffer {
public:
  PathBuffer() = default;
  explicit PathBuffer(const std::string& path)
      : path_(path), endingAt_(path.size() < endingLength ? 0 : path.size() - endingLength) {}

  const std::string& path() const { return path_; }
  /// The name that another ending makes; the path itself stays.
  std::string withEnding(const std::string& ending) const { return path_.substr(0, endingAt_) + ending; }
  /// Turns the path into that name. The remembered position stays.
  void setEnding(const std::string& ending) { path_ = withEnding(ending); }

  static constexpr size_t endingLength = 4;

private:
  std::string path_;
  size_t endingAt_ = 0;
};

/// What ends a folder's name in a path. A drive may stand before a name without a folder ("D:run1.ctc").
#if defined(_WIN32)
constexpr const char* pathSeparators = "/\\:";
#else
constexpr const char* pathSeparators = "/\\";
#endif

/// The part of a path behind its last separator.
inline std::string namePartOf(const std::string& path) {
  const size_t separator = path.find_last_of(pathSeparators);
  return separator == std::string::npos ? path : path.substr(separator + 1);
}

/// Everything up to and including the last separator.
inline std::string folderPartOf(const std::string& path) {
  return path.substr(0, path.size() - namePartOf(path).size());
}

} // namespace emeg
