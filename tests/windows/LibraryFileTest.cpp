#include "tests/run/ChildProcess.h"
#include "tests/windows/WindowsProgram.h"

#include <gmock/gmock.h>

#include <set>
#include <sstream>

namespace emeg::test {
namespace {

using testing::HasSubstr;

class WindowsLibraryFile : public WindowsTest {
protected:
  std::string outputOf(const std::string& program, const std::vector<std::string>& arguments) const {
    ChildProcess child;
    child.program = program;
    child.arguments = arguments;
    child.folder = EMEG_SOURCE_DIR;
    EXPECT_EQ(runChild(child, folder_ / "out", folder_ / "errors").exitStatus, 0)
        << contentsOf(folder_ / "errors");
    return contentsOf(folder_ / "out");
  }
  std::string objdump(const std::vector<std::string>& options) const {
    std::vector<std::string> arguments = options;
    arguments.push_back(windowsBuild("EMEGArtifactPlugin.dll").string());
    return outputOf(EMEG_OBJDUMP, arguments);
  }
};

// The C functions; of both classes what Microsoft's compiler exports with a whole class: constructors (??0),
// destructor
// (??1), assignment (??4), virtual table (??_7) and member functions.
const std::set<std::string> expectedExports = {
    "createPlugin",
    "getAuthor",
    "getGUIScript",
    "getHelpFile",
    "getPluginDescription",
    "getPluginName",
    "getPluginVersion",
    "??0LMTRPluginInterface@@QEAA@XZ",
    "??0LMTRPluginInterface@@QEAA@AEBV0@@Z",
    "??1LMTRPluginInterface@@UEAA@XZ",
    "??4LMTRPluginInterface@@QEAAAEAV0@AEBV0@@Z",
    "??_7LMTRPluginInterface@@6B@",
    "??0EMEGArtifactPlugin@@QEAA@XZ",
    "??0EMEGArtifactPlugin@@QEAA@AEBV0@@Z",
    "??1EMEGArtifactPlugin@@UEAA@XZ",
    "??4EMEGArtifactPlugin@@QEAAAEAV0@AEBV0@@Z",
    "??_7EMEGArtifactPlugin@@6B@",
    "?execute@EMEGArtifactPlugin@@UEAA_NXZ",
    "?initPlugin@EMEGArtifactPlugin@@UEAA_NXZ",
};

TEST_F(WindowsLibraryFile, ExportsTheListedNamesAndNothingElse) {
  std::istringstream lines(objdump({"-p"}));
  std::set<std::string> names;
  std::string line;
  while (std::getline(lines, line) && line.find("[Ordinal/Name Pointer] Table") == std::string::npos) {
  }
  while (std::getline(lines, line) && line.find(']') != std::string::npos)
    names.insert(line.substr(line.find_last_of(" \t") + 1));
  EXPECT_EQ(names, expectedExports);
}

TEST_F(WindowsLibraryFile, NeedsOnlyLibrariesOfTheSystem) {
  std::istringstream words(objdump({"-p"}));
  std::set<std::string> needed;
  std::string word;
  while (words >> word)
    if (word == "Name:" && words >> word) needed.insert(word);
  EXPECT_EQ(needed, (std::set<std::string>{"KERNEL32.dll", "msvcrt.dll"}));
}

TEST_F(WindowsLibraryFile, IsFor64BitWindows) {
  EXPECT_THAT(objdump({"-f"}), HasSubstr("pei-x86-64"));
}

// Windows aligns the stack to 16 bytes: code for wider registers must not demand more of what it keeps there.
TEST_F(WindowsLibraryFile, HasCodeForWideRegistersWhoseMovesNeedNoAlignment) {
  std::istringstream lines(objdump({"-d", "--no-show-raw-insn"}));
  int nrOfMoves = 0;
  std::string line;
  while (std::getline(lines, line)) {
    const bool wide = line.find("%ymm") != std::string::npos || line.find("%zmm") != std::string::npos;
    const bool memory = line.find('(') != std::string::npos;
    if (!wide || !memory) continue;
    if (line.find("vmovup") != std::string::npos) ++nrOfMoves;
    for (const char* aligned : {"vmovaps", "vmovapd", "vmovdqa", "vmovnt"})
      EXPECT_EQ(line.find(aligned), std::string::npos) << line;
  }
  EXPECT_GT(nrOfMoves, 100);
}

// The file layer with positions beyond 4 GiB, and every SIMD level that this machine has. The longest
// transforms are left to the Linux tests: they take most of a minute.
TEST_F(WindowsLibraryFile, IsMadeOfSourcesWhoseOwnTestsPassOnWindows) {
  const WindowsResult result =
      runWindowsProgram("tests_windows.exe", {"--gtest_filter=-*LargestFFT*"}, folder_.path());
  EXPECT_EQ(result.exitStatus, 0) << result.output;
  EXPECT_THAT(result.output, HasSubstr("[  PASSED  ]"));
  EXPECT_THAT(result.output, testing::Not(HasSubstr("FAILED")));
  EXPECT_THAT(result.output, HasSubstr("WindowsFiles.HavePositionsBeyondFourGigabytes"));
  EXPECT_THAT(result.output, HasSubstr("/Baseline"));
}

TEST_F(WindowsLibraryFile, IsPackedWithReadmeAndLicenceToBeUnpackedBesideOtherPlugins) {
  outputOf(EMEG_CMAKE, {"--build", "--preset", "windows", "--target", "package"});
  const std::filesystem::path zip = windowsBuild("EMEGArtifactPlugin-1.0-windows-x64.zip");
  std::istringstream lines(outputOf(EMEG_CMAKE, {"-E", "tar", "tf", zip.string()}));
  std::set<std::string> names;
  std::string line;
  while (std::getline(lines, line)) names.insert(line);
  EXPECT_THAT(names, testing::IsSupersetOf({"EMEGArtifactPlugin.dll", "EMEGArtifactPlugin/README.md",
                                            "EMEGArtifactPlugin/LICENSE"}));
  EXPECT_EQ(names.count("EMEGArtifactPlugin.dll"), 1u);
  for (const std::string& name : names)
    EXPECT_EQ(name.rfind("EMEGArtifactPlugin", 0), 0u) << name << " would mix with other plug-ins";
}

} // namespace
} // namespace emeg::test
