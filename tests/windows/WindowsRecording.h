#pragma once

#include "tests/windows/WindowsProgram.h"

namespace emeg::test {

/// A test with one simulated recording (scan and heart, with channel description and protocol), which stays
/// the same.
class WindowsRecordingTest : public WindowsTest {
protected:
  /// Copies the recording as run1.ctc, run1.ccd and run1.prt into a new folder below the test's.
  std::filesystem::path recordingIn(const std::string& folder) const;
};

} // namespace emeg::test
