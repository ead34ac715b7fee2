#include "tests/windows/WindowsRecording.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace emeg::test {
namespace {

using testing::ElementsAre;

class WindowsException : public WindowsRecordingTest {
protected:
  /// A host that leaves its log function after some chunk files were made, in the given way, then executes
  /// again and cancels.
  WindowsResult leave(const std::string& way) const {
    const std::filesystem::path recording = recordingIn("recording");
    return runHost({"ccd=" + windowsPath(recording / "run1.ccd"), "leaveAt=Creating chunk #4", "leave=" + way,
                    "executions=2", "watch=" + windowsPath(recording / "run1Chunk00.tmp")});
  }

  std::vector<std::string> leftBehind() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path("recording")))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
};

TEST_F(WindowsException, ThatTheHostThrowsEndsTheRunWithAMessageAndStaysInThePlugin) {
  const WindowsResult result = leave("throw");
  ASSERT_TRUE(result.isDone()) << result.output;
  EXPECT_THAT(result.linesOf("execute"), ElementsAre("0", "0"));
  EXPECT_THAT(result.linesOf("box"), ElementsAre("The run was ended by an unexpected error: the workstation "
                                                 "reported an error of its own",
                                                 "This plugin requires a CTC file."));
  EXPECT_THAT(result.linesOf("watched file"), ElementsAre("gone", "gone", "gone"));
  EXPECT_THAT(leftBehind(), ElementsAre("run1.ccd", "run1.ctc", "run1.prt"));
}

TEST_F(WindowsException, IsCaughtWhicheverHostFunctionItComesFrom) {
  const std::filesystem::path recording = recordingIn("recording");
  for (const char* place : {"version", "Please select a CCD file", "update", "Defining parameters",
                            "artifact correction", "volume-wise", "Window half-length", "Writing CCD"}) {
    SCOPED_TRACE(place);
    const WindowsResult result =
        runHost({"ccd=" + windowsPath(recording / "run1.ccd"), std::string("leaveAt=") + place});
    ASSERT_TRUE(result.isDone()) << result.output;
    EXPECT_THAT(result.linesOf("execute"), ElementsAre("0")) << result.output;
    for (const std::string& name : leftBehind()) {
      EXPECT_EQ(name.find("Chunk"), std::string::npos) << name;
      EXPECT_EQ(name.find(".part"), std::string::npos) << name;
    }
  }
}

TEST_F(WindowsException, FromTheMessageBoxIsCaughtToo) {
  const WindowsResult result = runHost({"leaveAt=This plugin requires a CTC file."});
  ASSERT_TRUE(result.isDone()) << result.output;
  EXPECT_THAT(result.linesOf("execute"), ElementsAre("0"));
}

// A structured exception is the host's to handle. It skips the plug-in's destructors, and the next execution
// makes good.
TEST_F(WindowsException, OfTheSystemPassesAndWhatItLeftGoesWithTheNextExecution) {
  const WindowsResult result = leave("raise");
  ASSERT_TRUE(result.isDone()) << result.output;
  EXPECT_THAT(result.lines(), testing::Contains("execute was left by a structured exception"));
  EXPECT_THAT(result.linesOf("execute"), ElementsAre("0"));
  EXPECT_THAT(result.linesOf("watched file"), ElementsAre("there", "gone", "gone"));
  EXPECT_THAT(leftBehind(), ElementsAre("run1.ccd", "run1.ctc", "run1.prt"));
}

TEST_F(WindowsException, OfTheSystemLeavesNothingBehindWhenTheLibraryIsUnloaded) {
  const std::filesystem::path recording = recordingIn("recording");
  const WindowsResult result =
      runHost({"ccd=" + windowsPath(recording / "run1.ccd"), "leaveAt=Creating chunk #4", "leave=raise",
               "watch=" + windowsPath(recording / "run1Chunk00.tmp")});
  ASSERT_TRUE(result.isDone()) << result.output;
  EXPECT_THAT(result.linesOf("watched file"), ElementsAre("there", "gone"));
  EXPECT_THAT(leftBehind(), ElementsAre("run1.ccd", "run1.ctc", "run1.prt"));
}

} // namespace
} // namespace emeg::test
