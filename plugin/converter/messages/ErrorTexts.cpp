#include "plugin/converter/messages/Messages.h"

#include <cerrno>

namespace emeg {

namespace {

struct ErrorText {
  int number;
  const char* text;
};

// By meaning, not by number: the numbers above 34 differ between platforms, the texts do not.
constexpr ErrorText errorTexts[] = {
    {EPERM, "Operation not permitted"},
    {ENOENT, "No such file or directory"},
    {ESRCH, "No such process"},
    {EINTR, "Interrupted function"},
    {EIO, "I/O error"},
    {ENXIO, "No such device or address"},
    {E2BIG, "Argument list too long"},
    {ENOEXEC, "Exec format error"},
    {EBADF, "Bad file number"},
    {ECHILD, "No spawned processes"},
    {EAGAIN, "No more processes or not enough memory or maximum nesting level reached"},
    {ENOMEM, "Not enough memory"},
    {EACCES, "Permission denied"},
    {EFAULT, "Bad address"},
    {EBUSY, "Device or resource busy"},
    {EEXIST, "File exists"},
    {EXDEV, "Cross-device link"},
    {ENODEV, "No such device"},
    {ENOTDIR, "Not a directory"},
    {EISDIR, "Is a directory"},
    {EINVAL, "Invalid argument"},
    {ENFILE, "Too many files open in system"},
    {EMFILE, "Too many open files"},
    {ENOTTY, "Inappropriate I/O control operation"},
    {EFBIG, "File too large"},
    {ENOSPC, "No space left on device"},
    {ESPIPE, "Invalid seek"},
    {EROFS, "Read-only file system"},
    {EMLINK, "Too many links"},
    {EPIPE, "Broken pipe"},
    {EDOM, "Math argument"},
    {ERANGE, "Result too large"},
    {EDEADLK, "Resource deadlock would occur"},
    {ENAMETOOLONG, "Filename too long"},
    {ENOLCK, "No locks available"},
    {ENOSYS, "Function not supported"},
    {ENOTEMPTY, "Directory not empty"},
    {EILSEQ, "Illegal byte sequence"},
#if defined(STRUNCATE)
    {STRUNCATE, "String was truncated"},
#endif
#if defined(EDQUOT)
    // A full quota is a full disk to the user.
    {EDQUOT, "No space left on device"},
#endif
};

} // namespace

const char* errorTextOf(int errorNumber) {
  for (const ErrorText& entry : errorTexts)
    if (entry.number == errorNumber) return entry.text;
  return "Attempt to read beyond the end of file";
}

} // namespace emeg
