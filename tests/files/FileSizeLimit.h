#pragma once

#include <csignal>
#include <stdexcept>
#include <sys/resource.h>

namespace emeg {

/// While it lives no file of this process grows beyond `nrOfBytes` (writing further fails with EFBIG): a disk
/// that is full. Expectations are stated after its scope, so that a report redirected to a file is not cut.
class FileSizeLimit {
public:
  explicit FileSizeLimit(rlim_t nrOfBytes) : oldHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
    if (getrlimit(RLIMIT_FSIZE, &oldLimit_) != 0) throw std::runtime_error("no file size limit to read");
    rlimit limit = oldLimit_;
    limit.rlim_cur = nrOfBytes;
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) throw std::runtime_error("the file size cannot be limited");
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &oldLimit_);
    std::signal(SIGXFSZ, oldHandler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
  rlimit oldLimit_{};
  void (*oldHandler_)(int);
};

} // namespace emeg
