#include "tests/host/RunTestPlugin.h"
#include "tests/run/ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class AnsweredRun : public HostedRun {};

TEST_F(AnsweredRun, RecordsEveryCallInOrderWithArgumentsAndAnswer) {
  const HostRunResult result =
      run("everything")
          .withAnswers({{"inOrder", {"yes", 12, 2.5, "typed text"}},
                        {"files", {{"*.ctc", "run1.ctc"}}},
                        {"parameters", {{"integers", {{"0", 150}}}, {"floats", {{"2", 50.5}}}}}});
  EXPECT_EQ(result.exitStatus, 0);
  const auto told = [](const char* text) { return json{{"call", "lmLogText"}, {"text", text}}; };
  EXPECT_THAT(result.transcript,
              ElementsAre(json{{"call", "lmGetVersionOfLumetra"}, {"answer", {2, 1, 0}}},
                          told("version = 2.1.0"), told("a log line"),
                          json{{"call", "lmMessageBox"}, {"text", "a message"}},
                          json{{"call", "lmYesNoMessageBox"}, {"prompt", "Please answer."}, {"answer", 1}},
                          told("yes/no = 1"),
                          json{{"call", "lmGetIntegerInput"},
                               {"prompt", "Please answer."},
                               {"default", 3},
                               {"minimum", 1},
                               {"maximum", 20},
                               {"answer", 12}},
                          told("integer = 12"),
                          json{{"call", "lmGetFloatInput"},
                               {"prompt", "Please answer."},
                               {"default", 0.5},
                               {"minimum", 0.0},
                               {"maximum", 100.0},
                               {"answer", 2.5}},
                          told("float = 2.5"),
                          json{{"call", "lmGetTextInput"},
                               {"prompt", "Please answer."},
                               {"default", "the default"},
                               {"answer", "typed text"}},
                          told("text = typed text"), told("guards = 1"),
                          json{{"call", "lmGetOpenFileName"},
                               {"title", "Please select a CTC file..."},
                               {"pattern", "*.ctc"},
                               {"description", "CTC files (*.ctc)"},
                               {"answer", 1},
                               {"path", "run1.ctc"}},
                          told("chosen = 1"), told("path = run1.ctc"), told("guards = 1"),
                          json{{"call", "lmGetDlgIntegerParameter"}, {"index", 0}, {"answer", 150}},
                          told("integer parameter = 150"),
                          json{{"call", "lmGetDlgFloatParameter"}, {"index", 2}, {"answer", 50.5}},
                          told("float parameter = 50.5"), json{{"call", "lmUpdateActiveWindow"}},
                          json{{"call", "execute"}, {"answer", true}}));
}

TEST_F(AnsweredRun, CancelsWhatHasNoAnswerAndSaysSo) {
  const HostRunResult result = run("all questions").withAnswers(json::object());
  EXPECT_THAT(result.logLines(),
              ElementsAre("yes/no = -1", "integer = -1", "float = -1", "text = ", "guards = 1", "chosen = 0",
                          "path = ", "guards = 1", "integer parameter = -1", "float parameter = -1"));
  EXPECT_THAT(result.standardError, HasSubstr("no answer is given for the question \"Please answer.\""));
  EXPECT_EQ(result.questions().size(), 5u);
  EXPECT_EQ(result.questions()[4].at("answer"), 0);
  EXPECT_EQ(result.questions()[4].at("path"), "");
}

TEST_F(AnsweredRun, CancelsOnNullWithoutANote) {
  const HostRunResult result =
      run("all questions")
          .withAnswers({{"inOrder", {nullptr, nullptr, nullptr, nullptr}},
                        {"files", {{"*.ctc", nullptr}}},
                        {"parameters", {{"integers", {{"0", nullptr}}}, {"floats", {{"2", nullptr}}}}}});
  EXPECT_THAT(result.logLines(),
              ElementsAre("yes/no = -1", "integer = -1", "float = -1", "text = ", "guards = 1", "chosen = 0",
                          "path = ", "guards = 1", "integer parameter = -1", "float parameter = -1"));
  EXPECT_THAT(result.standardError, Not(HasSubstr("lumetra:")));
}

TEST_F(AnsweredRun, TakesTheDefaultOnTheWordDefault) {
  const HostRunResult result =
      run("all questions")
          .withAnswers({{"prompts", {{{"prompt", ""}, {"answer", "default"}, {"repeat", true}}}}});
  EXPECT_THAT(result.logLines(), AllOf(Contains("yes/no = 1"), Contains("integer = 3"),
                                       Contains("float = 0.5"), Contains("text = the default")));
}

TEST_F(AnsweredRun, FindsAnswersByAPartOfThePrompt) {
  const HostRunResult result =
      run("three integers")
          .withAnswers({{"prompts", {{{"prompt", "slices"}, {"answer", 7}}}}, {"inOrder", {1, 2}}});
  EXPECT_THAT(result.logLines(),
              ElementsAre("How many slices? = 7", "How many volumes? = 1", "How many slices again? = 2"));
}

TEST_F(AnsweredRun, TellsOfAnswersThatNobodyAskedFor) {
  const HostRunResult result = run("integer").withAnswers({{"inOrder", {1, 2, 3}}});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.standardError, HasSubstr("only 1 of the 3 answers in order were asked for"));
}

TEST_F(AnsweredRun, AcceptsEveryWayToSayYesAndNo) {
  const auto answered = [&](const json& answer) {
    return run("yes/no").withAnswers({{"inOrder", json::array({answer})}}).logLines().at(0);
  };
  EXPECT_EQ(answered("no"), "yes/no = 0");
  EXPECT_EQ(answered(false), "yes/no = 0");
  EXPECT_EQ(answered(true), "yes/no = 1");
  EXPECT_EQ(answered(-5), "yes/no = -5");
}

TEST_F(AnsweredRun, HandsNumbersOverEvenOutOfBoundsWithANote) {
  const HostRunResult result = run("integer").withAnswers({{"inOrder", {0}}});
  EXPECT_THAT(result.logLines(), ElementsAre("integer = 0"));
  EXPECT_THAT(result.standardError, HasSubstr("out of bounds (1 to 20)"));
}

TEST_F(AnsweredRun, CancelsWhenAnAnswerIsOfAnotherKind) {
  const HostRunResult result = run("all questions").withAnswers({{"inOrder", {"maybe", 1.5, "much", 3}}});
  EXPECT_THAT(result.logLines(), AllOf(Contains("yes/no = -1"), Contains("integer = -1"),
                                       Contains("float = -1"), Contains("text = ")));
  EXPECT_THAT(result.standardError,
              AllOf(HasSubstr("should be yes, no"), HasSubstr("should be a whole number"),
                    HasSubstr("should be a number"), HasSubstr("should be a text")));
}

TEST_F(AnsweredRun, ChoosesFilesByPattern) {
  const HostRunResult result =
      run("all files").withAnswers({{"files", {{"*.prt", "a.prt"}, {"*.ctc", "/data/b.ctc"}}}});
  EXPECT_THAT(result.logLines(),
              ElementsAre("*.ccd = 0 ", "*.prt = 1 a.prt", "*.ctc = 1 /data/b.ctc", "*.xyz = 0 "));
}

TEST_F(AnsweredRun, NeverFillsMoreThan256CharactersOfABuffer) {
  const std::string longest(255, 'p'), tooLong(256, 'p');
  HostRunResult result = run("file").withAnswers({{"files", {{"*.ctc", longest}}}});
  EXPECT_THAT(result.logLines(), ElementsAre("chosen = 1", "path = " + longest, "guards = 1"));

  result = run("file").withAnswers({{"files", {{"*.ctc", tooLong}}}});
  EXPECT_THAT(result.logLines(), ElementsAre("chosen = 0", "path = ", "guards = 1"));
  EXPECT_THAT(result.standardError, HasSubstr("a path of 256 characters is refused"));
  EXPECT_EQ(result.questions().at(0).at("path"), "");

  result = run("text").withAnswers({{"inOrder", {longest}}});
  EXPECT_THAT(result.logLines(), ElementsAre("text = " + longest, "guards = 1"));

  result = run("text").withAnswers({{"inOrder", {std::string(100000, 't')}}});
  EXPECT_THAT(result.logLines(), ElementsAre("text = ", "guards = 1"));
  EXPECT_THAT(result.standardError, HasSubstr("a text of 100000 characters is refused"));
}

TEST_F(AnsweredRun, RefusesNullCharactersInsideTexts) {
  const HostRunResult result = run("text").withAnswers({{"inOrder", {std::string("a\0b", 3)}}});
  EXPECT_THAT(result.logLines(), ElementsAre("text = ", "guards = 1"));
  EXPECT_THAT(result.standardError, HasSubstr("null character"));
}

TEST_F(AnsweredRun, LetsDefaultAndResultOfATextBeOneBuffer) {
  HostRunResult result = run("text in place").withAnswers({{"inOrder", {"default"}}});
  EXPECT_THAT(result.logLines(), ElementsAre("text = label"));
  result = run("text in place").withAnswers({{"inOrder", {"other"}}});
  EXPECT_THAT(result.logLines(), ElementsAre("text = other"));
  EXPECT_EQ(result.questions().at(0).at("default"), "label");
}

TEST_F(AnsweredRun, ReportsTheVersionThatItIsTold) {
  const HostRunResult result = run("version").withAnswers({{"version", {1, 9, 8}}});
  EXPECT_THAT(result.transcript.at(0), (json{{"call", "lmGetVersionOfLumetra"}, {"answer", {1, 9, 8}}}));
  EXPECT_THAT(result.logLines(), ElementsAre("version = 1.9.8"));
}

TEST_F(AnsweredRun, ToleratesNullPointers) {
  const HostRunResult result =
      run("null pointers").withAnswers({{"inOrder", {1, 2, 1.5, "text"}}, {"files", {{"*.ctc", "a.ctc"}}}});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.transcript.at(1), (json{{"call", "lmLogText"}, {"text", nullptr}}));
  EXPECT_EQ(result.questions().at(0).at("prompt"), nullptr);
  EXPECT_EQ(result.questions().at(3).at("default"), nullptr);
  EXPECT_EQ(result.calls("lmGetOpenFileName").at(0).at("answer"), 0) << "no buffer, no choice";
}

TEST_F(AnsweredRun, RecordsTextsThatAreNotUTF8WithReplacementCharacters) {
  const HostRunResult result = run("unusual texts").withAnswers({{"inOrder", {2}}});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.logLines().at(0), "caf\xef\xbf\xbd \xef\xbf\xbd\xef\xbf\xbd");
  EXPECT_THAT(result.messageBoxes(), ElementsAre("one<br>two<i>three</i>"));
  EXPECT_THAT(result.questions().at(0).at("prompt").get<std::string>(), HasSubstr("\xef\xbf\xbd"));
}

TEST_F(AnsweredRun, ServesBoundsAndDefaultsThatMakeNoSense) {
  const HostRunResult result = run("unusual numbers").withAnswers({{"inOrder", {"default", "default"}}});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.questions().at(0).at("default"), nullptr);
  EXPECT_THAT(result.logLines(), Contains("integer = -2147483648"));
  EXPECT_THAT(result.logLines(), Contains("parameter = -1"));
}

TEST_F(AnsweredRun, ShowsLogMessagesAndAnsweredQuestions) {
  HostRun hosted = run("everything");
  const json answers{{"inOrder", {"yes", 12, 2.5, "typed text"}}};
  EXPECT_THAT(hosted.withAnswers(answers).standardOutput,
              AllOf(HasSubstr("a log line\n"), HasSubstr("! a message\n"),
                    HasSubstr("Please answer.\n[1 to 20, default 3] > 12\n"),
                    HasSubstr("[CTC files (*.ctc), empty line: none] > (cancelled)\n")));
  hosted.arguments = {"--quiet"};
  const HostRunResult quiet = hosted.withAnswers(answers);
  EXPECT_THAT(quiet.standardOutput, AllOf(HasSubstr("Test plug-in"), Not(HasSubstr("a log line")),
                                          Not(HasSubstr("a message")), Not(HasSubstr("Please answer"))));
  EXPECT_THAT(quiet.logLines(), Contains("a log line")) << "the transcript keeps everything";
}

TEST_F(AnsweredRun, WritesTheTranscriptAsItHappens) {
  const HostRunResult result = run("crash").withAnswers(json::object());
  EXPECT_EQ(result.exitStatus, 77);
  EXPECT_THAT(result.transcript, ElementsAre(json{{"call", "lmLogText"}, {"text", "before the end"}}));
}

} // namespace
} // namespace emeg::test
