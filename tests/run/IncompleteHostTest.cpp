#include "tests/run/ChildProcess.h"
#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

#include <sstream>

namespace emeg::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

struct SmallHostResult {
  int exitStatus = -1;
  std::vector<std::string> calls;

  int count(const std::string& function) const {
    int found = 0;
    for (const std::string& call : calls) found += call.rfind(function + ":", 0) == 0 ? 1 : 0;
    return found;
  }
};

/// Hosts that lack a function, or whose functions throw. All have version 3.0.0, choose the given recording
/// and take every default.
class SmallHostRun : public PluginRun {
protected:
  SmallHostResult runIn(const std::string& program, const std::vector<std::string>& arguments) const {
    ChildProcess child;
    child.program = std::string(EMEG_SMALL_HOSTS) + "/" + program;
    child.arguments = {pluginPath};
    child.arguments.insert(child.arguments.end(), arguments.begin(), arguments.end());
    child.environment = sanitizerEnvironment();
    SmallHostResult result;
    const std::string output = folder_.path("stdout.txt");
    result.exitStatus = runChild(child, output, folder_.path("stderr.txt")).exitStatus;
    EXPECT_EQ(contentsOf(folder_.path("stderr.txt")), "");
    std::istringstream lines(contentsOf(output));
    for (std::string line; std::getline(lines, line);) result.calls.push_back(line);
    return result;
  }

  const std::vector<std::string> complete{"run1.ctc", "run1_GRA.ccd", "run1_GRA.ctc",
                                          "run1_GRA_ArtifactsTriggers.prt"};
};

class IncompleteHost : public SmallHostRun {
protected:
  SmallHostResult runWithout(const std::string& function) const {
    return runIn("HostWithout_" + function, {path("run1.ctc")});
  }
  void SetUp() override { write(scannedWithVolumeGaps().recording); }
};

TEST_F(IncompleteHost, AProgramWithoutHostFunctionsIsLeftInSilence) {
  const SmallHostResult result = runIn("HostWithNothing", {path("run1.ctc")});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.calls, IsEmpty());
  EXPECT_THAT(names(), ElementsAre("run1.ctc"));
}

TEST_F(IncompleteHost, WithoutAVersionIsNoHost) {
  const SmallHostResult result = runWithout("lmGetVersionOfLumetra");
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.calls, IsEmpty());
}

TEST_F(IncompleteHost, WithNothingButAVersionHasCancelledEverything) {
  const SmallHostResult result = runIn("HostWithVersionOnly", {path("run1.ctc")});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.calls, ElementsAre("lmGetVersionOfLumetra: ", "lmGetVersionOfLumetra: "));
}

TEST_F(IncompleteHost, WithEverythingRunsToTheEnd) {
  const SmallHostResult result = runIn("HostWithEverything", {path("run1.ctc")});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(names(), complete);
}

TEST_F(IncompleteHost, RunsToTheEndWithoutALog) {
  EXPECT_EQ(runWithout("lmLogText").exitStatus, 0);
  EXPECT_EQ(names(), complete);
}

TEST_F(IncompleteHost, RunsToTheEndWithoutWhatAHealthyRunDoesNotCall) {
  for (const char* function : {"lmMessageBox", "lmGetFloatInput", "lmGetTextInput", "lmGetDlgFloatParameter"})
    EXPECT_EQ(runWithout(function).exitStatus, 0) << function;
  EXPECT_EQ(names(), complete);
}

TEST_F(IncompleteHost, RunsToTheEndWithoutAWindowToRepaint) {
  EXPECT_EQ(runWithout("lmUpdateActiveWindow").exitStatus, 0);
  EXPECT_EQ(names(), complete);
}

TEST_F(IncompleteHost, IsAskedForTheWindowWhenItHasNoDialogueParameters) {
  const SmallHostResult result = runWithout("lmGetDlgIntegerParameter");
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.count("lmGetIntegerInput"), 2);
}

TEST_F(IncompleteHost, CorrectsVolumeWiseWhenItCannotBeAsked) {
  EXPECT_EQ(runWithout("lmYesNoMessageBox").exitStatus, 0);
  const std::string output = readFile(path("run1_GRA.ctc"));
  EXPECT_EQ(run(answers(path("run1.ctc"), "", "", true)).exitStatus, 0);
  EXPECT_TRUE(readFile(path("run1_GRA.ctc")) == output);
}

TEST_F(IncompleteHost, HasCancelledTheCorrectionChoiceWhenItCannotBeAsked) {
  const SmallHostResult result = runWithout("lmGetIntegerInput");
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.calls, Contains("lmLogText: // EMEG artifacts > No choice made. Exiting plugin."));
  EXPECT_EQ(result.calls.back(), "lmLogText: // EMEG artifacts > No processing is required: exiting plugin.");
  EXPECT_THAT(names(), ElementsAre("run1.ctc"));
}

TEST_F(IncompleteHost, HasChosenNoFileWhenItCannotBeAsked) {
  const SmallHostResult result = runWithout("lmGetOpenFileName");
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.calls.back(), "lmMessageBox: This plugin requires a CTC file.");
  EXPECT_EQ(result.count("lmUpdateActiveWindow"), 0);
}

class ThrowingHost : public SmallHostRun {
protected:
  SmallHostResult runWithThrowing(const std::string& function) const {
    return runIn("HostWithEverything", {path("run1.ctc"), function});
  }
};

TEST_F(ThrowingHost, NoExceptionLeavesExecuteAndNothingIsLeftOfTheRun) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  const std::string input = readFile(ctc);
  for (const char* function : {"lmGetVersionOfLumetra", "lmLogText", "lmYesNoMessageBox", "lmGetIntegerInput",
                               "lmGetOpenFileName", "lmUpdateActiveWindow", "lmGetDlgIntegerParameter"}) {
    const SmallHostResult result = runWithThrowing(function);
    EXPECT_EQ(result.exitStatus, 1) << function;
    EXPECT_THAT(result.calls, Not(Contains("an exception left execute"))) << function;
    EXPECT_THAT(names(), ElementsAre("run1.ctc")) << function;
  }
  EXPECT_EQ(readFile(ctc), input);
}

TEST_F(ThrowingHost, IsToldInOneMessageBoxWhatHappened) {
  write(scannedWithVolumeGaps().recording);
  for (const char* function : {"lmLogText", "lmGetIntegerInput", "lmGetDlgIntegerParameter"}) {
    const SmallHostResult result = runWithThrowing(function);
    EXPECT_EQ(result.count("lmMessageBox"), 1) << function;
    EXPECT_THAT(result.calls.back(), testing::HasSubstr("the host failed")) << function;
  }
}

TEST_F(ThrowingHost, MayThrowFromItsMessageBoxToo) {
  write("run1.ctc", "not a recording");
  const SmallHostResult result = runWithThrowing("lmMessageBox");
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.calls, Not(Contains("an exception left execute")));
  EXPECT_THAT(result.calls,
              Contains("lmMessageBox: Error reading file: <br>Attempt to read beyond the end of file."));
}

} // namespace
} // namespace emeg::test
