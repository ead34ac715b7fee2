#include "tests/host/RunTestPlugin.h"
#include "tests/run/ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace emeg::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class LumetraProgram : public HostedRun {
protected:
  struct Outcome {
    int exitStatus;
    std::string standardOutput, standardError;
  };

  Outcome start(const std::vector<std::string>& arguments, const std::string& script = "nothing") const {
    ChildProcess child;
    child.program = EMEG_LUMETRA_PROGRAM;
    child.arguments = arguments;
    child.folder = folder_;
    child.environment = {{"EMEG_TEST_SCRIPT", script}};
    const int status = runChild(child, folder_ / "stdout.txt", folder_ / "stderr.txt").exitStatus;
    return {status, contentsOf(folder_ / "stdout.txt"), contentsOf(folder_ / "stderr.txt")};
  }

  std::string file(const std::string& name, const std::string& contents) const {
    std::ofstream(folder_ / name, std::ios::binary) << contents;
    return name;
  }
};

TEST_F(LumetraProgram, IntroducesThePluginAndSucceedsWhenExecuteReturnsTrue) {
  const Outcome outcome = start({EMEG_TEST_PLUGIN});
  EXPECT_EQ(outcome.exitStatus, 0);
  EXPECT_THAT(outcome.standardOutput,
              AllOf(HasSubstr("Test plug-in ..."), HasSubstr("Does what a test asks for."), HasSubstr("0.9"),
                    HasSubstr("Somebody"), Not(HasSubstr("<i>"))));
}

TEST_F(LumetraProgram, EndsWith1WhenExecuteReturnsFalse) {
  const HostRunResult result = run("false").withAnswers(json::object());
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.transcript, ElementsAre(json{{"call", "execute"}, {"answer", false}}));
}

TEST_F(LumetraProgram, DeletesTheObjectThroughTheInterfaceHoweverExecuteEnds) {
  for (const char* script : {"nothing", "false", "throw"})
    EXPECT_THAT(start({EMEG_TEST_PLUGIN}, script).standardError, HasSubstr("the object was deleted"))
        << script;
}

TEST_F(LumetraProgram, ReportsAnExceptionThatLeavesExecute) {
  const HostRunResult result = run("throw").withAnswers(json::object());
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.standardError, HasSubstr("a wilful exception"));
  EXPECT_THAT(result.transcript, ElementsAre(json{{"call", "execute"}, {"answer", false}}));
}

TEST_F(LumetraProgram, EndsWith2WhenThePluginCannotBeUsed) {
  Outcome outcome = start({"/nowhere/Plugin.so"});
  EXPECT_EQ(outcome.exitStatus, 2);
  EXPECT_THAT(outcome.standardError, AllOf(HasSubstr("/nowhere/Plugin.so"), HasSubstr("No such file")));

  outcome = start({folder_.string()});
  EXPECT_EQ(outcome.exitStatus, 2);
  EXPECT_THAT(outcome.standardError, HasSubstr("it is not a file"));

  outcome = start({file("text.so", "this is no library")});
  EXPECT_EQ(outcome.exitStatus, 2);
  EXPECT_THAT(outcome.standardError, HasSubstr("cannot load the plug-in text.so"));

  outcome = start({EMEG_NO_PLUGIN});
  EXPECT_EQ(outcome.exitStatus, 2);
  EXPECT_THAT(outcome.standardError, HasSubstr("does not export createPlugin"));

  outcome = start({EMEG_TEST_PLUGIN}, "no object");
  EXPECT_EQ(outcome.exitStatus, 2);
  EXPECT_THAT(outcome.standardError, HasSubstr("created no object"));
}

TEST_F(LumetraProgram, FindsAPluginInTheCurrentFolderByItsNameAlone) {
  std::filesystem::copy_file(EMEG_TEST_PLUGIN, folder_ / "Here.so");
  EXPECT_EQ(start({"Here.so"}).exitStatus, 0);
}

TEST_F(LumetraProgram, EndsWith2OnWrongUsage) {
  EXPECT_EQ(start({}).exitStatus, 2);
  EXPECT_EQ(start({EMEG_TEST_PLUGIN, "--unknown"}).exitStatus, 2);
  EXPECT_EQ(start({EMEG_TEST_PLUGIN, "--answers"}).exitStatus, 2);
  EXPECT_EQ(start({EMEG_TEST_PLUGIN, "another"}).exitStatus, 2);
  EXPECT_THAT(start({EMEG_TEST_PLUGIN, "--unknown"}).standardError, HasSubstr("--unknown"));
}

TEST_F(LumetraProgram, EndsWith2OnAnswersThatCannotBeUsedBeforeThePluginRuns) {
  const auto refused = [&](const std::string& answers) {
    const Outcome outcome = start({EMEG_TEST_PLUGIN, "--answers", answers});
    EXPECT_EQ(outcome.exitStatus, 2);
    EXPECT_THAT(outcome.standardOutput, IsEmpty());
    return outcome.standardError;
  };
  EXPECT_THAT(refused("nowhere.json"), AllOf(HasSubstr("nowhere.json"), HasSubstr("cannot be opened")));
  EXPECT_THAT(refused(file("broken.json", "{")), HasSubstr("not valid JSON"));
  EXPECT_THAT(refused(file("unknown.json", R"({"fils": {}})")), HasSubstr("unknown key \"fils\""));
  EXPECT_THAT(refused(file("list.json", "[1]")), HasSubstr("must be an object"));
}

TEST_F(LumetraProgram, EndsWith2OnATranscriptThatCannotBeWritten) {
  Outcome outcome = start({EMEG_TEST_PLUGIN, "--transcript", "/nowhere/calls.jsonl"});
  EXPECT_EQ(outcome.exitStatus, 2);
  EXPECT_THAT(outcome.standardError, HasSubstr("/nowhere/calls.jsonl cannot be written"));

  outcome = start({EMEG_TEST_PLUGIN, "--transcript", "/dev/full"}, "long log");
  EXPECT_EQ(outcome.exitStatus, 2);
  EXPECT_THAT(outcome.standardError, HasSubstr("/dev/full is incomplete"));
}

TEST_F(LumetraProgram, DoesNotOverwriteTheAnswersWithTheTranscript) {
  const std::string answers = file("answers.json", "{}");
  const Outcome outcome = start({EMEG_TEST_PLUGIN, "--answers", answers, "--transcript", "./answers.json"});
  EXPECT_EQ(outcome.exitStatus, 2);
  EXPECT_EQ(contentsOf(folder_ / answers), "{}");
}

TEST_F(LumetraProgram, HelpTeachesByAnExampleThatCanBeUsed) {
  const Outcome outcome = start({"--help"});
  EXPECT_EQ(outcome.exitStatus, 0);
  EXPECT_THAT(outcome.standardOutput, AllOf(HasSubstr("--answers"), HasSubstr("--transcript"),
                                            HasSubstr("--quiet"), HasSubstr("Exit status")));

  // The example's answers are taken from the help text and given to the program.
  const std::size_t begin = outcome.standardOutput.find("  {\n");
  const std::size_t end = outcome.standardOutput.find("\n  }\n", begin);
  ASSERT_NE(begin, std::string::npos);
  ASSERT_NE(end, std::string::npos);
  const std::string example = outcome.standardOutput.substr(begin, end + 4 - begin);
  EXPECT_EQ(start({EMEG_TEST_PLUGIN, "--answers", file("example.json", example)}).exitStatus, 0);
}

TEST_F(LumetraProgram, OutputIsReadableWithoutATranscript) {
  const Outcome outcome =
      start({EMEG_TEST_PLUGIN, "--answers", file("answers.json", R"({"inOrder": [4]})")}, "integer");
  EXPECT_EQ(outcome.exitStatus, 0);
  EXPECT_THAT(outcome.standardOutput, HasSubstr("> 4\ninteger = 4\n"));
}

} // namespace
} // namespace emeg::test
