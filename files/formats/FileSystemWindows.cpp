// The narrow calls throughout: the host hands over paths in its own 8-bit code page, which std::filesystem
// would convert by the C locale instead.

#include "files/formats/FileSystem.h"

#include <cerrno>
#include <memory>
#include <windows.h>

namespace emeg {

namespace {

struct HandleCloser {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const {
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
  }
};

int errorNumberOf(DWORD error) {
  switch (error) {
  case ERROR_FILE_NOT_FOUND:
  case ERROR_PATH_NOT_FOUND:
  case ERROR_INVALID_NAME:
    return ENOENT;
  case ERROR_ACCESS_DENIED:
  case ERROR_SHARING_VIOLATION:
  case ERROR_LOCK_VIOLATION:
  case ERROR_WRITE_PROTECT:
    return EACCES;
  case ERROR_DISK_FULL:
  case ERROR_HANDLE_DISK_FULL:
    return ENOSPC;
  case ERROR_FILENAME_EXCED_RANGE:
    return ENAMETOOLONG;
  default:
    return EIO;
  }
}

} // namespace

PathKind pathKind(const std::string& path) {
  // Without any access: neither waits for a pipe's other end nor minds who else has the file open. Reserved
  // names of devices ("NUL") are found in every folder this way.
  const std::unique_ptr<HANDLE, HandleCloser> handle(
      CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (handle.get() == INVALID_HANDLE_VALUE) return PathKind::Missing;
  switch (GetFileType(handle.get())) {
  case FILE_TYPE_DISK:
    break;
  case FILE_TYPE_PIPE:
    return PathKind::Pipe;
  default:
    return PathKind::Device;
  }
  BY_HANDLE_FILE_INFORMATION information{};
  if (GetFileInformationByHandle(handle.get(), &information) == 0) return PathKind::Device;
  return (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? PathKind::Folder
                                                                        : PathKind::RegularFile;
}

bool replaceFile(const std::string& from, const std::string& to) {
  if (MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0) return true;
  errno = errorNumberOf(GetLastError());
  return false;
}

} // namespace emeg
