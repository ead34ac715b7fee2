#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

struct FilterDialogue : ::testing::Test {
  FilterDialogue() {
    pretendInput(converter, 2, 1000, 200);
    converter.options.applyFilters = true;
  }
  void expectStage(int index, EdgeKind kind, double cutOff, double order) {
    ASSERT_LT(index, converter.filters.stages.count());
    const FilterStage& stage = converter.filters.stages[index];
    EXPECT_EQ(stage.kind, kind) << index;
    EXPECT_DOUBLE_EQ(stage.cutOff, cutOff) << index;
    EXPECT_EQ(stage.order, order) << index;
    EXPECT_EQ(stage.enabled, 1u) << index;
    EXPECT_EQ(stage.tag, 0) << index;
  }
  ScriptedHost host;
  QuietConverter converter;
};

TEST_F(FilterDialogue, AsksForDecimationNotchesHighPassAndLowPassInThisOrder) {
  host.integerAnswers = {1, 1};
  host.floatAnswers = {40, 4, 0.5f, 70};
  EXPECT_TRUE(converter.askFilters());
  EXPECT_EQ(host.calls,
            (Lines{"parameter 3",
                   "integer Please provide a decimation factor if you want to downsample the data.<br>"
                   "- 1 will preserve the original sampling frequency of 200.00 Hz<br>"
                   "- 2 will result in a sampling frequency of 100.00 Hz<br>"
                   "- 10 will result in a sampling frequency of 20.00 Hz [1, 1, 20]",
                   "parameter 0", "parameter 1", "parameter 2",
                   "integer Please provide the required number of notches. [0, 0, 20]",
                   "float Please provide the frequency [0-100.00] for notch #1. [0, 0, 100]",
                   "float Please provide the width [0-40.00] for notch #1. [0, 0, 40]",
                   "float Please provide the cut-frequency [0-100.00] of the high-pass filter\n"
                   "(leave 0 for no high-pass filtering). [0, 0, 100]",
                   "float Please provide the cut-frequency [0-100.00] of the low-pass filter\n"
                   "(leave 0 for no low-pass filtering). [0, 0, 100]",
                   "parameter 3"}));
  EXPECT_EQ(converter.filters.highPassCutOff, 0.5);
  EXPECT_EQ(converter.filters.lowPassCutOff, 70.0);
  EXPECT_EQ(converter.filters.notchFrequencies, std::vector<double>{40});
  EXPECT_EQ(converter.filters.notchWidths, std::vector<double>{4});
  EXPECT_EQ(converter.filters.filterOrder, 2);
  ASSERT_EQ(converter.filters.stages.count(), 4);
  expectStage(0, EdgeKind::HighPass, 0.5 * 2 / 200, 2);
  expectStage(1, EdgeKind::LowPass, 38.0 * 2 / 200, 2);
  expectStage(2, EdgeKind::HighPass, 42.0 * 2 / 200, 2);
  expectStage(3, EdgeKind::LowPass, 70.0 * 2 / 200, 2);
}

TEST_F(FilterDialogue, BoundsTheWidthOfANotchAboveAQuarterOfTheRateByTheNyquistFrequency) {
  host.integerAnswers = {1, 3};
  host.floatAnswers = {60, 5, 50, 5, 40, 5, 0, 0};
  EXPECT_TRUE(converter.askFilters());
  const Lines floats = host.texts("float");
  ASSERT_EQ(floats.size(), 8u);
  EXPECT_EQ(floats[1], "Please provide the width [0-40.00] for notch #1. [0, 0, 40]");
  EXPECT_EQ(floats[2], "Please provide the frequency [0-100.00] for notch #2. [0, 0, 100]");
  EXPECT_EQ(floats[3], "Please provide the width [0-50.00] for notch #2. [0, 0, 50]");
  EXPECT_EQ(floats[5], "Please provide the width [0-40.00] for notch #3. [0, 0, 40]");
}

TEST_F(FilterDialogue, DecimationAddsAnAntiAliasingEdgeOfOrderThree) {
  host.integerAnswers = {4, 0};
  host.floatAnswers = {0, 0};
  EXPECT_TRUE(converter.askFilters());
  EXPECT_EQ(converter.filters.decimationFactor, 4);
  ASSERT_EQ(converter.filters.stages.count(), 1);
  expectStage(0, EdgeKind::LowPass, 0.25, 3);
}

TEST_F(FilterDialogue, EdgesAreSortedByCutOffWithTheAntiAliasingEdgeFirstAmongEquals) {
  host.integerAnswers = {4, 0};
  host.floatAnswers = {5, 25};
  EXPECT_TRUE(converter.askFilters());
  ASSERT_EQ(converter.filters.stages.count(), 3);
  expectStage(0, EdgeKind::HighPass, 0.05, 2);
  expectStage(1, EdgeKind::LowPass, 0.25, 3);
  expectStage(2, EdgeKind::LowPass, 0.25, 2);
}

TEST_F(FilterDialogue, WithoutDialogueParametersIndexThreeIsBothDecimationAndOrder) {
  host.dialogIntegers = {{0, 1}, {1, 2}, {2, 1}, {3, 5}};
  host.dialogFloats = {{1, 30.0f}};
  EXPECT_TRUE(converter.askFilters());
  EXPECT_TRUE(host.questions().empty());
  EXPECT_EQ(converter.filters.decimationFactor, 5);
  EXPECT_EQ(converter.filters.filterOrder, 5);
  ASSERT_EQ(converter.filters.stages.count(), 2);
  expectStage(0, EdgeKind::LowPass, 0.2, 3);
  expectStage(1, EdgeKind::LowPass, 0.3, 5);
}

TEST_F(FilterDialogue, WithDialogueParametersTheDecimationHasAnIndexOfItsOwn) {
  converter.options.parametersFromDialog = true;
  host.dialogIntegers = {{0, 2}, {1, 2}, {2, 2}, {3, 4}, {4, 2}};
  host.dialogFloats = {{0, 1.0f}, {1, 40.0f}, {2, 50.0f}, {3, 2.0f}};
  EXPECT_TRUE(converter.askFilters());
  EXPECT_EQ(host.calls,
            (Lines{"parameter 4", "parameter 0", "parameter 1", "parameter 2", "float parameter 2",
                   "float parameter 3", "float parameter 0", "float parameter 1", "parameter 3"}));
  EXPECT_EQ(converter.filters.decimationFactor, 2);
  EXPECT_EQ(converter.filters.filterOrder, 4);
  EXPECT_EQ(converter.filters.nrOfNotches, 1);
  EXPECT_EQ(converter.filters.notchFrequencies, std::vector<double>{50});
  EXPECT_EQ(converter.filters.notchWidths, std::vector<double>{2});
  ASSERT_EQ(converter.filters.stages.count(), 5);
  expectStage(0, EdgeKind::HighPass, 0.01, 4);
  expectStage(1, EdgeKind::LowPass, 0.4, 4);
  expectStage(2, EdgeKind::LowPass, 0.49, 4);
  expectStage(3, EdgeKind::LowPass, 0.5, 3);
  expectStage(4, EdgeKind::HighPass, 0.51, 4);
}

TEST_F(FilterDialogue, AnOrderOfZeroIsKeptAndANegativeOneGivesTwo) {
  converter.options.parametersFromDialog = true;
  host.dialogIntegers = {{0, 1}, {1, 1}, {2, 1}, {3, 0}, {4, 1}};
  EXPECT_TRUE(converter.askFilters());
  EXPECT_EQ(converter.filters.filterOrder, 0);
  host.dialogIntegers[3] = -7;
  EXPECT_TRUE(converter.askFilters());
  EXPECT_EQ(converter.filters.filterOrder, 2);
}

TEST_F(FilterDialogue, NothingFromTheHostsDialogueGivesNoFilter) {
  host.dialogIntegers = {{0, 1}, {1, 1}, {2, 1}, {3, 1}};
  EXPECT_TRUE(converter.askFilters());
  EXPECT_TRUE(host.questions().empty());
  EXPECT_EQ(converter.filters.stages.count(), 0);
  EXPECT_EQ(converter.filters.highPassCutOff, 0);
  EXPECT_EQ(converter.filters.nrOfNotches, 0);
}

TEST_F(FilterDialogue, NegativeCutOffsFromTheHostsDialogueAbort) {
  for (const int index : {0, 1}) {
    host.calls.clear();
    host.dialogIntegers = {{0, 1}, {1, 1}, {2, 1}, {3, 1}};
    host.dialogIntegers[index] = 2;
    host.dialogFloats = {{index, -2.0f}};
    EXPECT_FALSE(converter.askFilters()) << index;
    EXPECT_EQ(host.logLines(), (Lines{"", line("Plugin execution was aborted.")}));
  }
}

TEST_F(FilterDialogue, CancellingAnyPromptAborts) {
  const std::vector<std::pair<std::deque<int>, std::deque<float>>> scripts = {
      {{-1}, {}},         {{0}, {}},      {{1, -1}, {}},     {{1, 1}, {-1}},
      {{1, 1}, {50, -1}}, {{1, 0}, {-1}}, {{1, 0}, {0, -1}},
  };
  for (const auto& [integers, floats] : scripts) {
    host.calls.clear();
    host.integerAnswers = integers;
    host.floatAnswers = floats;
    EXPECT_FALSE(converter.askFilters());
    EXPECT_TRUE(host.integerAnswers.empty() && host.floatAnswers.empty()) << "cancelled too early";
    EXPECT_EQ(host.logLines(), (Lines{"", line("Plugin execution was aborted.")}));
  }
}

TEST_F(FilterDialogue, IsSkippedWhereFiltersAreOff) {
  converter.options.applyFilters = false;
  converter.switches.removeLineSinusoids = true;
  converter.filters.stages.addFilterStage(EdgeKind::LowPass, 0.5, 2);
  EXPECT_TRUE(converter.askFilters());
  EXPECT_TRUE(host.calls.empty());
  EXPECT_FALSE(converter.switches.removeLineSinusoids);
  EXPECT_EQ(converter.filters.stages.count(), 0);
}

TEST_F(FilterDialogue, ANotchAtZeroAddsNoLowerEdge) {
  host.integerAnswers = {1, 1};
  host.floatAnswers = {0, 0, 0, 0};
  EXPECT_TRUE(converter.askFilters());
  EXPECT_EQ(converter.filters.stages.count(), 0);
  EXPECT_EQ(converter.filters.nrOfNotches, 1);
}

TEST_F(FilterDialogue, SixteenNotchesFitTheStageList) {
  host.integerAnswers = {0, 1, 16}; // the artifact choice first
  for (int k = 1; k <= 16; ++k) {
    host.floatAnswers.push_back(5.0f * static_cast<float>(k));
    host.floatAnswers.push_back(1.0f);
  }
  host.floatAnswers.insert(host.floatAnswers.end(), {0.0f, 0.0f});
  EXPECT_TRUE(converter.askParameters());
  EXPECT_EQ(converter.filters.stages.count(), 32);
}

TEST_F(FilterDialogue, TwentyNotchesEndInOneMessageBox) {
  host.integerAnswers = {0, 1, 20};
  for (int k = 1; k <= 20; ++k) {
    host.floatAnswers.push_back(4.0f * static_cast<float>(k));
    host.floatAnswers.push_back(1.0f);
  }
  host.floatAnswers.insert(host.floatAnswers.end(), {0.0f, 0.0f});
  EXPECT_FALSE(converter.askParameters());
  ASSERT_EQ(host.boxes().size(), 1u);
  EXPECT_NE(host.boxes()[0].find("32"), std::string::npos);
}

TEST_F(FilterDialogue, AnAnswerAboveTheNumberOfNotchesAborts) {
  host.integerAnswers = {1, 1000000};
  EXPECT_FALSE(converter.askFilters());
  EXPECT_TRUE(host.logged(line("Plugin execution was aborted.")));
}

} // namespace
} // namespace emeg
