#include "tests/host/RunTestPlugin.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace emeg::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class TypedRun : public HostedRun {};

int occurrences(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST_F(TypedRun, ShowsQuestionsWithBoundsAndDefault) {
  HostRun hosted = run("integer");
  hosted.environment["EMEG_TEST_PROMPT"] = "Choose<br>  1: <i>this</i><br/>  2: that\nnow";
  const HostRunResult result = hosted.withTyped("2\n");
  EXPECT_THAT(result.standardOutput, HasSubstr("Choose\n  1: this\n  2: that\nnow\n[1 to 20, default 3] > "));
  EXPECT_EQ(result.questions().at(0).at("prompt"), hosted.environment["EMEG_TEST_PROMPT"]);
  EXPECT_THAT(result.logLines(), ElementsAre("integer = 2"));
}

TEST_F(TypedRun, TakesDefaultsFromEmptyLines) {
  const HostRunResult result = run("all questions").withTyped("\n\n\r\n\n\n");
  EXPECT_THAT(result.logLines(), ElementsAre("yes/no = 1", "integer = 3", "float = 0.5", "text = the default",
                                             "guards = 1", "chosen = 0", "path = ", "guards = 1",
                                             "integer parameter = -1", "float parameter = -1"));
}

TEST_F(TypedRun, CancelsAtTheEndOfTheInput) {
  const HostRunResult result = run("all questions").withTyped("");
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.logLines(),
              ElementsAre("yes/no = -1", "integer = -1", "float = -1", "text = ", "guards = 1", "chosen = 0",
                          "path = ", "guards = 1", "integer parameter = -1", "float parameter = -1"));
  EXPECT_EQ(occurrences(result.standardOutput, "(cancelled)"), 5);
}

TEST_F(TypedRun, TakesALastLineWithoutAnEnd) {
  EXPECT_THAT(run("integer").withTyped("17").logLines(), ElementsAre("integer = 17"));
}

TEST_F(TypedRun, AsksAgainWhenAnIntegerIsOutOfBoundsOrNone) {
  const HostRunResult result = run("integer").withTyped("0\n21\nfive\n2.5\n99999999999\n +20 \n");
  EXPECT_THAT(result.logLines(), ElementsAre("integer = 20"));
  EXPECT_THAT(result.standardOutput,
              AllOf(HasSubstr("0 is out of bounds. Please type a number from 1 to 20."),
                    HasSubstr("21 is out of bounds."), HasSubstr("\"five\" is not a number"),
                    HasSubstr("\"2.5\" is not a number"), HasSubstr("\"99999999999\" is not a number")));
  EXPECT_EQ(result.questions().size(), 1u) << "asking again is one question to the plug-in";
}

TEST_F(TypedRun, AsksAgainWhenAFloatIsOutOfBoundsOrNone) {
  const HostRunResult result = run("float").withTyped("-0.5\n100.5\nnan\ninf\n1,5\n1e9999\n1.25\n");
  EXPECT_THAT(result.logLines(), ElementsAre("float = 1.25"));
  EXPECT_EQ(occurrences(result.standardOutput, "is out of bounds"), 4);
  EXPECT_EQ(occurrences(result.standardOutput, "is not a number"), 2);
}

TEST_F(TypedRun, TakesYesAndNoInWordsAndLetters) {
  const auto answered = [&](const std::string& typed) {
    return run("yes/no").withTyped(typed).logLines().at(0);
  };
  EXPECT_EQ(answered("y\n"), "yes/no = 1");
  EXPECT_EQ(answered("YES\n"), "yes/no = 1");
  EXPECT_EQ(answered("n\n"), "yes/no = 0");
  EXPECT_EQ(answered("maybe\n1\n No \n"), "yes/no = 0");
}

TEST_F(TypedRun, TakesTextsAsTheyAreTyped) {
  EXPECT_THAT(run("text").withTyped("  two words \r\n").logLines(),
              ElementsAre("text =   two words ", "guards = 1"));
}

TEST_F(TypedRun, AsksAgainForAPathThatDoesNotExist) {
  std::ofstream(folder_ / "run 1.ctc") << "x";
  const HostRunResult result = run("file").withTyped("nowhere.ctc\nrun 1.ctc\n");
  EXPECT_THAT(result.logLines(), ElementsAre("chosen = 1", "path = run 1.ctc", "guards = 1"));
  EXPECT_THAT(result.standardOutput, AllOf(HasSubstr("Please select a CTC file...\n[CTC files (*.ctc)"),
                                           HasSubstr("\"nowhere.ctc\" does not exist.")));
}

TEST_F(TypedRun, RefusesAPathThatIsTooLongForTheDialogue) {
  const HostRunResult result = run("file").withTyped(std::string(300, 'p') + "\n");
  EXPECT_THAT(result.logLines(), ElementsAre("chosen = 0", "path = ", "guards = 1"));
  EXPECT_THAT(result.standardError, HasSubstr("a path of 300 characters is refused"));
}

TEST_F(TypedRun, GivesUpOnEndlessInput) {
  std::string nonsense;
  for (int i = 0; i < 1000; ++i) nonsense += "nonsense\n";
  HostRunResult result = run("integer").withTyped(nonsense);
  EXPECT_THAT(result.logLines(), ElementsAre("integer = -1"));
  EXPECT_EQ(occurrences(result.standardOutput, "is not a number"), 100);

  result = run("all questions").withTyped(std::string(200000, '7'));
  EXPECT_EQ(occurrences(result.standardOutput, "nothing more is read"), 1);
  EXPECT_THAT(result.logLines(), testing::Contains("integer = -1"));
}

TEST_F(TypedRun, ShowsBreaksAndKeepsTheTerminalSafeFromControlCharacters) {
  const HostRunResult result = run("unusual texts").withTyped("");
  EXPECT_THAT(result.standardOutput, AllOf(HasSubstr("! one\ntwothree\n"),
                                           HasSubstr("bell ? and escape ?[2J"), Not(HasSubstr("\x1b"))));
}

TEST_F(TypedRun, QuestionsAreShownEvenQuietly) {
  HostRun hosted = run("everything");
  hosted.arguments = {"--quiet"};
  EXPECT_THAT(hosted.withTyped("").standardOutput,
              AllOf(HasSubstr("Please answer."), Not(HasSubstr("a log line")), Not(HasSubstr("a message"))));
}

} // namespace
} // namespace emeg::test
