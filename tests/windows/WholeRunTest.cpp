#include "tests/plugin/converter/Recordings.h"
#include "tests/run/DescriptionBytes.h"
#include "tests/run/HostRun.h"
#include "tests/windows/WindowsRecording.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>

namespace emeg::test {
namespace {

using testing::Contains;
using testing::ElementsAre;

/// The line that names the input's path, as far as the next line.
std::string withoutPathLine(std::string protocol) {
  const size_t start = protocol.find("Experiment: ");
  if (start == std::string::npos) return protocol + "(no path line)";
  return protocol.erase(start, protocol.find("\r\n", start) - start);
}

class WindowsRun : public WindowsRecordingTest {
protected:
  WindowsResult runOnWindows(const std::filesystem::path& recording, int correction) const {
    return runHost(
        {"ccd=" + windowsPath(recording / "run1.ccd"), "correction=" + std::to_string(correction)});
  }

  static HostRunResult runOnLinux(const std::filesystem::path& recording, int correction) {
    HostRun host;
    host.plugin = EMEG_PLUGIN_PATH;
    host.workFolder = recording;
    return host.withAnswers({{"files", {{"*.ccd", (recording / "run1.ccd").string()}}},
                             {"prompts",
                              {{{"prompt", "artifact correction"}, {"answer", correction}},
                               {{"prompt", "volume-wise"}, {"answer", "no"}},
                               {{"prompt", "Window half-length"}, {"answer", "default"}}}}});
  }

  /// What the two libraries make of the same recording.
  void expectSameResults(int correction, const std::string& suffix) const {
    const std::filesystem::path windows = recordingIn("windows");
    const std::filesystem::path reference = recordingIn("linux");
    const WindowsResult run = runOnWindows(windows, correction);
    ASSERT_TRUE(run.isDone()) << run.output;
    ASSERT_THAT(run.linesOf("execute"), ElementsAre("1")) << run.output;
    const HostRunResult referenceRun = runOnLinux(reference, correction);
    ASSERT_EQ(referenceRun.exitStatus, 0) << referenceRun.standardOutput << referenceRun.standardError;

    EXPECT_EQ(run.linesOf("log"), referenceRun.logLines());
    EXPECT_EQ(namesIn(windows), namesIn(reference));
    const std::string output = "run1" + suffix;
    EXPECT_EQ(readFile(windows / (output + ".ccd")), readFile(reference / (output + ".ccd")));
    for (const char* ending : {".prt", "_ArtifactsTriggers.prt"}) {
      const std::string made = readFile(windows / (output + ending));
      EXPECT_EQ(withoutPathLine(made), withoutPathLine(readFile(reference / (output + ending)))) << ending;
      EXPECT_NE(made.find("Experiment:         Z:\\"), std::string::npos) << ending;
    }
    expectSameSamples(windows / (output + ".ctc"), reference / (output + ".ctc"));
  }

  /// The mathematical functions of the two C libraries may differ in a double's last bit; files hold 32-bit
  /// floats.
  static void expectSameSamples(const std::filesystem::path& actualFile,
                                const std::filesystem::path& expectedFile) {
    const Recording actual = readOutput(actualFile.string());
    const Recording expected = readOutput(expectedFile.string());
    ASSERT_EQ(actual.samples.size(), expected.samples.size());
    ASSERT_EQ(actual.nrOfTimePoints(), expected.nrOfTimePoints());
    double largest = 0;
    double difference = 0;
    for (size_t c = 0; c < actual.samples.size(); ++c)
      for (size_t t = 0; t < actual.samples[c].size(); ++t) {
        largest = std::max(largest, std::fabs(expected.samples[c][t]));
        difference = std::max(difference, std::fabs(actual.samples[c][t] - expected.samples[c][t]));
      }
    constexpr double lastBitOfFloat = 0x1p-23;
    EXPECT_GT(largest, 10) << "microvolts";
    EXPECT_LE(difference, largest * lastBitOfFloat);
    RecordProperty("largestDifference", std::to_string(difference));
  }

  static std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      if (entry.is_regular_file()) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
};

TEST_F(WindowsRun, RemovesTheGradientArtifactAsTheLinuxLibraryDoes) {
  expectSameResults(1, "_GRA");
}

TEST_F(WindowsRun, RemovesBothArtifactsAsTheLinuxLibraryDoes) {
  expectSameResults(2, "_GRA_BCG");
}

TEST_F(WindowsRun, ReplacesTheFilesOfAnEarlierRunAndLeavesNothingElse) {
  const std::filesystem::path recording = recordingIn("twice");
  for (const char* older : {"run1_GRA.ctc", "run1_GRA.ccd"})
    writeFile(recording / older, "of an earlier run");
  const std::string input = readFile(recording / "run1.ctc");
  const WindowsResult run = runOnWindows(recording, 1);
  ASSERT_TRUE(run.isDone()) << run.output;
  EXPECT_THAT(namesIn(recording),
              ElementsAre("run1.ccd", "run1.ctc", "run1.prt", "run1_GRA.ccd", "run1_GRA.ctc", "run1_GRA.prt",
                          "run1_GRA_ArtifactsTriggers.prt"));
  EXPECT_EQ(readFile(recording / "run1_GRA.ctc").size(), input.size());
  EXPECT_EQ(readFile(recording / "run1.ctc"), input);
}

// The bytes that a host of the western European code page hands over: 0xe4 for ä, 0x80 for the euro sign.
TEST_F(WindowsRun, FindsAndNamesFilesInAFolderWithSpacesAndLettersBeyondAscii) {
  const std::filesystem::path recording = recordingIn("Messung ä 5 €");
  const WindowsResult run = runOnWindows(recording, 1);
  ASSERT_TRUE(run.isDone()) << run.output;
  EXPECT_THAT(run.linesOf("execute"), ElementsAre("1"));
  EXPECT_THAT(run.linesOf("file"), Contains(testing::HasSubstr("\\Messung \xe4 5 \x80\\run1.ccd")))
      << "the host did not use an 8-bit code page";
  EXPECT_THAT(namesIn(recording), Contains("run1_GRA.ctc"));
  EXPECT_NE(readFile(recording / "run1_GRA.prt").find("\\Messung \xe4 5 \x80\\run1.ctc\r\n"),
            std::string::npos);
}

TEST_F(WindowsRun, TakesEverySeparatorAndDrivesWithAndWithoutAFolder) {
  const std::filesystem::path recording = recordingIn("folder");
  std::string slashes = windowsPath(recording / "run1.ctc");
  std::replace(slashes.begin(), slashes.end(), '\\', '/');
  const std::string mixed = windowsPath(recording) + "/run1.ctc";
  for (const std::string& path :
       {windowsPath(recording / "run1.ctc"), slashes, mixed, std::string("folder\\run1.ctc"),
        std::string("folder/run1.ctc"), std::string("Z:folder\\run1.ctc")}) {
    SCOPED_TRACE(path);
    std::filesystem::remove(recording / "run1_GRA.ctc");
    std::filesystem::remove(recording / "run1_GRA.ccd");
    const WindowsResult run = runHost({"ctc=" + path});
    ASSERT_TRUE(run.isDone()) << run.output;
    EXPECT_THAT(run.linesOf("execute"), ElementsAre("1")) << run.output;
    EXPECT_THAT(namesIn(recording), Contains("run1_GRA.ctc"));
    // The description names its recording without a folder.
    EXPECT_EQ(readFile(recording / "run1_GRA.ccd").find("run1_GRA.ctc"), ctcNameOffset);
  }
}

} // namespace
} // namespace emeg::test
