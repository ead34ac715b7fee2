#include "tests/windows/WindowsProgram.h"

#include "tests/run/ChildProcess.h"

#include <algorithm>
#include <sstream>

namespace emeg::test {
namespace {

constexpr std::chrono::seconds timeLimit{300};

} // namespace

bool WindowsResult::isDone() const {
  const std::vector<std::string> all = lines();
  return exitStatus == 0 && !all.empty() && all.back() == "done";
}

std::vector<std::string> WindowsResult::lines() const {
  std::vector<std::string> found;
  std::istringstream stream(output);
  for (std::string line; std::getline(stream, line);) found.push_back(line);
  return found;
}

std::vector<std::string> WindowsResult::linesOf(const std::string& label) const {
  std::vector<std::string> found;
  for (const std::string& line : lines())
    if (line.rfind(label + ": ", 0) == 0) found.push_back(line.substr(label.size() + 2));
  return found;
}

WindowsResult runWindowsProgram(const std::string& program, const std::vector<std::string>& arguments,
                                const std::filesystem::path& folder) {
  const TestFolder outputs;
  ChildProcess wine;
  wine.program = EMEG_WINE;
  wine.arguments = {windowsBuild(program).string()};
  wine.arguments.insert(wine.arguments.end(), arguments.begin(), arguments.end());
  wine.folder = folder;
  // The locale decides the code page; winedbg would make a success of a page fault.
  wine.environment = {{"WINEPREFIX", EMEG_WINE_PREFIX},
                      {"WINEARCH", "win64"},
                      {"WINEDEBUG", "-all"},
                      {"WINEDLLOVERRIDES", "mscoree=;mshtml=;winedbg.exe=d"},
                      {"WINEPATH", windowsPath(windowsBuild(""))},
                      {"LC_ALL", "C.UTF-8"}};
  wine.timeLimit = timeLimit;

  WindowsResult result;
  result.exitStatus = runChild(wine, outputs / "out", outputs / "errors").exitStatus;
  result.output = contentsOf(outputs / "out");
  result.output.erase(std::remove(result.output.begin(), result.output.end(), '\r'), result.output.end());
  return result;
}

std::string windowsPath(const std::filesystem::path& path) {
  std::string name = "Z:" + std::filesystem::absolute(path).string();
  std::replace(name.begin(), name.end(), '/', '\\');
  return name;
}

std::filesystem::path windowsBuild(const std::string& name) {
  return std::filesystem::path(EMEG_WINDOWS_BUILD) / name;
}

void WindowsTest::SetUp() {
  if (std::string(EMEG_WINE).empty()) GTEST_SKIP() << "this build was configured without the Windows tests";
}

WindowsResult WindowsTest::runHost(std::vector<std::string> settings, const std::string& host) const {
  settings.push_back("plugin=" + windowsPath(windowsBuild("EMEGArtifactPlugin.dll")));
  return runWindowsProgram("hosts/" + host, settings, folder_.path());
}

} // namespace emeg::test
