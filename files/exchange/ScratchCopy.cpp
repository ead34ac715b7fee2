#include "files/exchange/ScratchCopy.h"

#include "files/exchange/Recording.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <unistd.h>
#include <utility>

namespace emeg {

ScratchCopy::ScratchCopy(std::string purpose) : purpose_(std::move(purpose)) {
  std::error_code problem;
  folder_ = std::filesystem::temp_directory_path(problem).string();
  if (problem) {
    if (const char* const chosen = std::getenv("TMPDIR")) folder_ = chosen;
    errno = problem.value();
    fail();
  }
  std::string path = folder_ + "/emeg-XXXXXX";
  const int file = mkstemp(path.data());
  if (file < 0) fail();
  std::remove(path.c_str());
  stream_.reset(fdopen(file, "w+b"));
  if (!stream_) {
    close(file);
    fail();
  }
}

void ScratchCopy::append(const void* bytes, size_t nrOfBytes) {
  if (std::fwrite(bytes, 1, nrOfBytes, stream_.get()) != nrOfBytes) fail();
}

void ScratchCopy::flush() {
  if (std::fflush(stream_.get()) != 0) fail();
}

std::string ScratchCopy::path() const {
  return "/proc/self/fd/" + std::to_string(fileno(stream_.get()));
}

void ScratchCopy::fail() const {
  throw RecordingError(purpose_ + " needs room in \"" + folder_ + "\": " + std::strerror(errno) +
                       ". Make room there, or set TMPDIR to a folder on another disk.");
}

} // namespace emeg
