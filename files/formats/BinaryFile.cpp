#include "files/formats/BinaryFile.h"

#include "files/formats/FileSystem.h"

#include <cerrno>

namespace emeg {

namespace {

/// 0 when the path may be opened, else the error number to report. What does not exist or cannot be looked at
/// is left to fopen, which knows the reason.
int refusalForReading(const std::string& path) {
  switch (pathKind(path)) {
  case PathKind::Folder:
    return EISDIR;
  case PathKind::Pipe:
  case PathKind::Device:
    return EINVAL;
  default:
    return 0;
  }
}

/// Opening a pipe for writing would wait for a reader.
int refusalForWriting(const std::string& path) {
  switch (pathKind(path)) {
  case PathKind::Folder:
    return EISDIR;
  case PathKind::Pipe:
    return EINVAL;
  default:
    return 0;
  }
}

bool seekTo(std::FILE* stream, int64_t offset, int origin) {
  return fseeko(stream, static_cast<off_t>(offset), origin) == 0;
}

int64_t positionOf(std::FILE* stream) {
  return static_cast<int64_t>(ftello(stream));
}

} // namespace

void BinaryFile::Closer::operator()(std::FILE* stream) const {
  const int reason = errno;
  std::fclose(stream);
  errno = reason;
}

bool BinaryFile::open(const std::string& path, const char* mode, int refusal) {
  stream_.reset();
  lastTransfer_ = Transfer::None;
  writeError_ = 0;
  errno = refusal;
  if (refusal == 0) stream_.reset(std::fopen(path.c_str(), mode));
  return isOpen();
}

bool BinaryFile::openForReading(const std::string& path) {
  return open(path, "rb", refusalForReading(path));
}

bool BinaryFile::create(const std::string& path) {
  return open(path, "wb", refusalForWriting(path));
}

bool BinaryFile::createForUpdate(const std::string& path) {
  return open(path, "w+b", refusalForWriting(path));
}

bool BinaryFile::ready() {
  errno = isOpen() ? 0 : EBADF;
  return isOpen();
}

// The C library demands a change of position between reading and writing on one stream.
bool BinaryFile::turnTo(Transfer transfer) {
  if (lastTransfer_ != Transfer::None && lastTransfer_ != transfer && !seekTo(stream_.get(), 0, SEEK_CUR)) {
    noteFailedWrite();
    return false;
  }
  lastTransfer_ = transfer;
  return true;
}

void BinaryFile::noteFailedWrite() {
  if (errno == 0) errno = EIO;
  if (lastTransfer_ == Transfer::Write && writeError_ == 0) writeError_ = errno;
}

int64_t BinaryFile::size() {
  if (!ready()) return -1;
  std::FILE* stream = stream_.get();
  const int64_t position = positionOf(stream);
  if (position < 0) return -1;
  if (!seekTo(stream, 0, SEEK_END)) {
    noteFailedWrite();
    return -1;
  }
  const int64_t end = positionOf(stream);
  if (!seekTo(stream, position, SEEK_SET)) return -1;
  lastTransfer_ = Transfer::None;
  return end;
}

bool BinaryFile::seek(int64_t position) {
  if (!ready()) return false;
  if (position < 0) {
    errno = EINVAL;
    return false;
  }
  if (!seekTo(stream_.get(), position, SEEK_SET)) {
    noteFailedWrite();
    return false;
  }
  lastTransfer_ = Transfer::None;
  return true;
}

int64_t BinaryFile::tell() {
  return ready() ? positionOf(stream_.get()) : -1;
}

size_t BinaryFile::readSome(void* buffer, size_t nrOfBytes) {
  if (!ready() || !turnTo(Transfer::Read)) return 0;
  std::clearerr(stream_.get());
  const size_t nrOfReadBytes = std::fread(buffer, 1, nrOfBytes, stream_.get());
  if (std::ferror(stream_.get()) == 0) {
    errno = 0;
  } else if (errno == 0) {
    errno = EIO;
  }
  return nrOfReadBytes;
}

bool BinaryFile::read(void* buffer, size_t nrOfBytes) {
  return readSome(buffer, nrOfBytes) == nrOfBytes;
}

bool BinaryFile::write(const void* buffer, size_t nrOfBytes) {
  if (!ready() || !turnTo(Transfer::Write)) return false;
  if (std::fwrite(buffer, 1, nrOfBytes, stream_.get()) == nrOfBytes) return true;
  noteFailedWrite();
  return false;
}

bool BinaryFile::flush() {
  if (!ready()) return false;
  if (lastTransfer_ != Transfer::Write || std::fflush(stream_.get()) == 0) return true;
  noteFailedWrite();
  return false;
}

bool BinaryFile::close() {
  errno = 0;
  if (!isOpen()) return true;
  flush();
  if (std::fclose(stream_.release()) != 0 && writeError_ == 0) writeError_ = errno != 0 ? errno : EIO;
  errno = writeError_;
  return writeError_ == 0;
}

} // namespace emeg
