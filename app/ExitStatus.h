#pragma once

namespace emeg {

/// What the program says to the shell when it ends.
enum ExitStatus : int {
  succeeded = 0,
  failed = 1,           ///< the work could not be done; nothing is written
  unusable = 2,         ///< arguments that are wrong, or an input that cannot be used; nothing is written
  doneWithWarnings = 3, ///< written, and there is something to read about it
  endedBySignal = 128   ///< plus the signal's number, which is what shells make of it; nothing is written
};

} // namespace emeg
