#pragma once

#include "files/exchange/ScratchCopy.h"

#include <memory>
#include <string>

namespace emeg {

/// Looks through the elements of a MAT file of version 5 (MAT-File Format, The MathWorks): matio takes what
/// is missing at its end for zeros, and fails on pieces of compressed matrices. Returns an unpacked copy when
/// there are compressed elements, else null, also for a file of another kind. Throws RecordingError when the
/// file is cut off or damaged.
std::unique_ptr<ScratchCopy> unpackMatElements(const std::string& path);

} // namespace emeg
