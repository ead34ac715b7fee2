#pragma once

#include "tests/TestFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace emeg::test {

/// What a Windows program left behind. Texts are in the Windows code page 1252; line ends are "\n".
struct WindowsResult {
  int exitStatus = -1;
  std::string output;

  /// Whether it came to its own end: a program that Windows ended may report success.
  bool isDone() const;
  std::vector<std::string> lines() const;
  /// What stands behind "`label`: " in the lines that begin so.
  std::vector<std::string> linesOf(const std::string& label) const;
};

/// Runs a program of the Windows build under wine, in `folder`.
WindowsResult runWindowsProgram(const std::string& program, const std::vector<std::string>& arguments,
                                const std::filesystem::path& folder = ".");

/// A file's name as Windows programs here know it: drive Z is the whole file system.
std::string windowsPath(const std::filesystem::path& path);

/// File in the folder of the Windows build.
std::filesystem::path windowsBuild(const std::string& name);

/// A test that needs wine and what the Windows build needs; skipped where they are missing.
class WindowsTest : public testing::Test {
protected:
  void SetUp() override;
  /// The host that loads the plug-in, with further settings (tests/windows/host/Settings.h).
  WindowsResult runHost(std::vector<std::string> settings,
                        const std::string& host = "loading/Lumetra.exe") const;

  TestFolder folder_;
};

} // namespace emeg::test
