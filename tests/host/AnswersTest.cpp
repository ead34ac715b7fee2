#include "host/Answers.h"
#include "tests/host/RunTestPlugin.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace emeg {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

Answers parsed(const json& document) {
  std::string problem;
  std::optional<Answers> answers = Answers::parse(document, problem);
  EXPECT_TRUE(answers) << problem;
  return answers.value_or(Answers());
}

std::string problemWith(const json& document) {
  std::string problem;
  EXPECT_FALSE(Answers::parse(document, problem)) << document;
  return problem;
}

json nextOf(Answers& answers, const std::string& prompt) {
  const json* answer = answers.next(prompt);
  return answer != nullptr ? *answer : json("nothing is left");
}

TEST(Answers, ReportVersion2_1_0WhenNothingIsGiven) {
  EXPECT_THAT(parsed(json::object()).version(), ElementsAre(2, 1, 0));
  EXPECT_THAT(parsed({{"version", {1, 9, 8}}}).version(), ElementsAre(1, 9, 8));
}

TEST(Answers, InOrderAreUsedOneAfterTheOther) {
  Answers answers = parsed({{"inOrder", {1, "no", nullptr}}});
  EXPECT_EQ(nextOf(answers, "a"), 1);
  EXPECT_EQ(nextOf(answers, "b"), "no");
  EXPECT_EQ(nextOf(answers, "c"), nullptr);
  EXPECT_EQ(nextOf(answers, "d"), "nothing is left");
}

TEST(Answers, ByPromptGoBeforeThoseInOrderAndAreUsedOnce) {
  Answers answers = parsed({{"prompts", {{{"prompt", "slices"}, {"answer", 7}}}}, {"inOrder", {1, 2}}});
  EXPECT_EQ(nextOf(answers, "How many volumes?"), 1);
  EXPECT_EQ(nextOf(answers, "How many slices?"), 7);
  EXPECT_EQ(nextOf(answers, "How many slices?"), 2);
}

TEST(Answers, ByPromptMayRepeat) {
  Answers answers = parsed({{"prompts", {{{"prompt", "slices"}, {"answer", 7}, {"repeat", true}}}}});
  EXPECT_EQ(nextOf(answers, "slices"), 7);
  EXPECT_EQ(nextOf(answers, "slices"), 7);
}

TEST(Answers, ToTheSamePromptAreUsedInTheirOrder) {
  Answers answers =
      parsed({{"prompts", {{{"prompt", "slices"}, {"answer", 1}}, {{"prompt", "slices"}, {"answer", 2}}}}});
  EXPECT_EQ(nextOf(answers, "slices"), 1);
  EXPECT_EQ(nextOf(answers, "slices"), 2);
}

TEST(Answers, KnowFilesByThePatternOfTheDialogue) {
  const Answers answers = parsed({{"files", {{"*.ccd", nullptr}, {"*.ctc", "run1.ctc"}}}});
  EXPECT_EQ(answers.file("*.ctc"), "run1.ctc");
  EXPECT_EQ(answers.file("*.ccd"), std::nullopt);
  EXPECT_EQ(answers.file("*.prt"), std::nullopt);
}

TEST(Answers, KnowDialogueParametersByIndex) {
  const Answers answers =
      parsed({{"parameters", {{"integers", {{"0", 150}, {"12", -3}}}, {"floats", {{"2", 1.5}, {"3", 4}}}}}});
  EXPECT_EQ(answers.integerParameter(0), 150);
  EXPECT_EQ(answers.integerParameter(12), -3);
  EXPECT_EQ(answers.integerParameter(2), std::nullopt);
  EXPECT_EQ(answers.floatParameter(2), 1.5f);
  EXPECT_EQ(answers.floatParameter(3), 4.0f);
  EXPECT_EQ(answers.floatParameter(0), std::nullopt);
}

TEST(Answers, NameUnknownKeysOnEveryLevel) {
  EXPECT_THAT(problemWith({{"file", {}}}), HasSubstr("\"file\""));
  EXPECT_THAT(problemWith({{"files", {{"*.ctx", "a"}}}}), HasSubstr("\"*.ctx\""));
  EXPECT_THAT(problemWith({{"parameters", {{"ints", {}}}}}), HasSubstr("\"ints\""));
  EXPECT_THAT(problemWith({{"parameters", {{"integers", {{"first", 1}}}}}}), HasSubstr("\"first\""));
  EXPECT_THAT(problemWith({{"parameters", {{"floats", {{"-1", 1}}}}}}), HasSubstr("\"-1\""));
  EXPECT_THAT(problemWith({{"prompts", {{{"prompt", "x"}, {"answer", 1}, {"once", true}}}}}),
              HasSubstr("\"once\""));
}

TEST(Answers, RefuseValuesOfTheWrongKind) {
  EXPECT_THAT(problemWith(json::array()), HasSubstr("must be an object"));
  EXPECT_THAT(problemWith({{"version", {2, 1}}}), HasSubstr("\"version\""));
  EXPECT_THAT(problemWith({{"version", {2, 1, "0"}}}), HasSubstr("\"version\""));
  EXPECT_THAT(problemWith({{"files", {{"*.ctc", 3}}}}), HasSubstr("\"*.ctc\""));
  EXPECT_THAT(problemWith({{"files", 3}}), HasSubstr("\"files\""));
  EXPECT_THAT(problemWith({{"parameters", {{"integers", {{"0", 1.5}}}}}}), HasSubstr("\"0\""));
  EXPECT_THAT(problemWith({{"parameters", {{"integers", {{"0", 3000000000u}}}}}}), HasSubstr("\"0\""));
  EXPECT_THAT(problemWith({{"parameters", {{"floats", {{"0", 1e300}}}}}}), HasSubstr("\"0\""));
  EXPECT_THAT(problemWith({{"parameters", {{"floats", 2}}}}), HasSubstr("\"floats\""));
  EXPECT_THAT(problemWith({{"inOrder", 1}}), HasSubstr("\"inOrder\""));
  EXPECT_THAT(problemWith({{"inOrder", {1, json::array()}}}), HasSubstr("entry 2"));
  EXPECT_THAT(problemWith({{"prompts", {{{"prompt", "x"}}}}}), HasSubstr("needs an \"answer\""));
  EXPECT_THAT(problemWith({{"prompts", {{{"answer", 1}}}}}), HasSubstr("needs a text \"prompt\""));
  EXPECT_THAT(problemWith({{"prompts", {{{"prompt", "x"}, {"answer", 1}, {"repeat", 1}}}}}),
              HasSubstr("\"repeat\""));
}

TEST(Answers, TellWhichOfThemNoQuestionUsed) {
  Answers answers = parsed({{"prompts", {{{"prompt", "slices"}, {"answer", 7}}}}, {"inOrder", {1, 2}}});
  nextOf(answers, "volumes");
  EXPECT_THAT(answers.unused(), ElementsAre(HasSubstr("\"slices\""), HasSubstr("only 1 of the 2")));
  nextOf(answers, "slices");
  nextOf(answers, "volumes");
  EXPECT_THAT(answers.unused(), ElementsAre());
}

TEST(Answers, NumbersAreCheckedAgainstTheirTypes) {
  EXPECT_EQ(integerIn(2147483647), 2147483647);
  EXPECT_EQ(integerIn(json(2147483648LL)), std::nullopt);
  EXPECT_EQ(integerIn(json(-2147483649LL)), std::nullopt);
  EXPECT_EQ(integerIn(json(18446744073709551615ULL)), std::nullopt);
  EXPECT_EQ(integerIn(1.0), std::nullopt);
  EXPECT_EQ(integerIn("1"), std::nullopt);
  EXPECT_EQ(floatIn(json(0.25)), 0.25f);
  EXPECT_EQ(floatIn(json(1e39)), std::nullopt);
  EXPECT_EQ(floatIn(true), std::nullopt);
}

class AnswersFile : public test::WithFolder {
protected:
  /// Why a file with this contents is refused.
  std::string problemWithFile(const std::string& contents) {
    const std::filesystem::path file = folder_ / "answers.json";
    std::ofstream(file, std::ios::binary) << contents;
    return problemWithPath(file);
  }
  static std::string problemWithPath(const std::filesystem::path& file) {
    std::string problem;
    EXPECT_FALSE(Answers::load(file, problem));
    EXPECT_THAT(problem, HasSubstr(file.string()));
    return problem;
  }
};

TEST_F(AnswersFile, ThatIsMissingOrAFolderIsRefused) {
  EXPECT_THAT(problemWithPath(folder_ / "nowhere.json"), HasSubstr("cannot be opened"));
  EXPECT_THAT(problemWithPath(folder_), HasSubstr("is a folder"));
}

TEST_F(AnswersFile, ThatIsNoJSONIsRefused) {
  EXPECT_THAT(problemWithFile(""), HasSubstr("not valid JSON"));
  EXPECT_THAT(problemWithFile("{\"inOrder\": [1,}"), HasSubstr("not valid JSON"));
  EXPECT_THAT(problemWithFile("{\"inOrder\": [\"\xff\"]}"), HasSubstr("not valid JSON"));
}

TEST_F(AnswersFile, ThatIsNestedDeeplyOrEndlessIsRefused) {
  const std::string deep = "{\"inOrder\": " + std::string(200000, '[') + std::string(200000, ']') + "}";
  EXPECT_THAT(problemWithFile(deep), HasSubstr("entry 1"));
  EXPECT_THAT(problemWithFile(std::string(2 * 1024 * 1024, ' ')), HasSubstr("larger than 1 MiB"));
  EXPECT_THAT(problemWithPath("/dev/zero"), HasSubstr("larger than 1 MiB"));
}

} // namespace
} // namespace emeg
