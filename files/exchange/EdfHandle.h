#pragma once

#include <edflib.h>
#include <utility>

namespace emeg {

/// A file that EDFlib has opened; closes itself.
class EdfHandle {
public:
  EdfHandle() = default;
  explicit EdfHandle(int handle) : handle_(handle) {}
  ~EdfHandle() { close(); }
  EdfHandle(EdfHandle&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}
  EdfHandle& operator=(EdfHandle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }

  int get() const { return handle_; }
  /// False when data could not be stored, or when nothing was open.
  bool close() { return handle_ >= 0 && edfclose_file(std::exchange(handle_, -1)) == 0; }

private:
  int handle_ = -1;
};

} // namespace emeg
