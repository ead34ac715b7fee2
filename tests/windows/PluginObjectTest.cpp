#include "tests/windows/WindowsProgram.h"

#include <gmock/gmock.h>

namespace emeg::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class WindowsPluginObject : public WindowsTest {};

TEST_F(WindowsPluginObject, TellsTheHostWhatThePluginIs) {
  const WindowsResult result = runHost({"executions=0"});
  ASSERT_TRUE(result.isDone()) << result.output;
  EXPECT_THAT(result.linesOf("getPluginName"),
              ElementsAre("EEG-fMRI Artifact removal (MR gradients, heart pulses) ..."));
  EXPECT_THAT(result.linesOf("getPluginDescription"), ElementsAre("EMEG Artifact Plugin."));
  EXPECT_THAT(result.linesOf("getAuthor"), ElementsAre("<i>The EMEG Artifact Plugin developers</i>"));
  EXPECT_THAT(result.linesOf("getHelpFile"), ElementsAre(""));
  EXPECT_THAT(result.linesOf("getGUIScript"), ElementsAre(""));
  EXPECT_THAT(result.linesOf("getPluginVersion"), ElementsAre("1.0"));
  EXPECT_THAT(result.linesOf("help file and script"), ElementsAre("one function"));
}

TEST_F(WindowsPluginObject, IsInitialisedAndDeletedThroughTheInterfaceWithoutTouchingTheHost) {
  const WindowsResult result = runHost({"executions=0"});
  ASSERT_TRUE(result.isDone()) << result.output;
  EXPECT_THAT(result.linesOf("virtual table"), ElementsAre("the exported one"));
  EXPECT_THAT(result.linesOf("initPlugin"), ElementsAre("1"));
  EXPECT_THAT(result.lines(), Contains("deleted"));
  EXPECT_THAT(result.linesOf("unloaded"), ElementsAre("1"));
  EXPECT_THAT(result.lines(), testing::Not(Contains("version")));
}

TEST_F(WindowsPluginObject, ServesAHostThatIsLinkedToItsMembers) {
  const WindowsResult result = runHost({}, "linked/Lumetra.exe");
  ASSERT_TRUE(result.isDone()) << result.output;
  EXPECT_THAT(result.output, testing::Not(HasSubstr(": no\n")));
  for (const char* shown : {"assignment gives the object", "object is its virtual table pointer",
                            "copy has the same virtual table", "copy initialises",
                            "built-in plug-in executes", "interface assignment gives the object",
                            "interface assignment copies nothing", "copied built-in plug-in keeps its value",
                            "dynamic_cast finds the plug-in's class", "dynamic_cast refuses another class"})
    EXPECT_THAT(result.linesOf(shown), ElementsAre("yes")) << shown;
  EXPECT_THAT(result.linesOf("box"), ElementsAre("This plugin requires a CTC file."));
  EXPECT_THAT(result.linesOf("execute"), ElementsAre("0"));
}

struct HostVersion {
  int major, minor, revision;
  const char* message;
};

TEST_F(WindowsPluginObject, ChecksTheHostsVersionTwice) {
  constexpr const char* first = "Can not execute this plugin - Lumetra version 1.9.9 or higher required.";
  constexpr const char* second = "Can not execute this plugin - Lumetra version 2.1.0 or higher required.";
  constexpr const char* noFile = "This plugin requires a CTC file.";
  for (const HostVersion& host : {HostVersion{1, 9, 8, first}, HostVersion{1, 9, 9, second},
                                  HostVersion{2, 0, 9, second}, HostVersion{2, 1, 0, noFile}}) {
    const WindowsResult result =
        runHost({"major=" + std::to_string(host.major), "minor=" + std::to_string(host.minor),
                 "revision=" + std::to_string(host.revision)});
    SCOPED_TRACE(result.output);
    ASSERT_TRUE(result.isDone());
    EXPECT_THAT(result.linesOf("box"), ElementsAre(host.message));
    EXPECT_THAT(result.linesOf("execute"), ElementsAre("0"));
    EXPECT_EQ(result.linesOf("file").size(), host.message == noFile ? 3u : 0u);
  }
}

TEST_F(WindowsPluginObject, DoesNothingInAProgramOfAnotherName) {
  const WindowsResult result = runHost({}, "other/Other.exe");
  ASSERT_TRUE(result.isDone()) << result.output;
  EXPECT_THAT(result.linesOf("execute"), ElementsAre("0"));
  EXPECT_THAT(result.lines(), testing::Not(Contains("version")));
  EXPECT_THAT(result.linesOf("box"), IsEmpty());
}

TEST_F(WindowsPluginObject, CanBeExecutedAgain) {
  const WindowsResult result = runHost({"executions=3"});
  ASSERT_TRUE(result.isDone()) << result.output;
  EXPECT_THAT(result.linesOf("execute"), ElementsAre("0", "0", "0"));
}

} // namespace
} // namespace emeg::test
