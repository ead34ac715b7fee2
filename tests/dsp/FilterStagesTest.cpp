#include "dsp/FilterStages.h"

#include <gtest/gtest.h>

#include <limits>

namespace emeg {
namespace {

TEST(FilterStages, StagesAreSortedByCutOff) {
  FilterStageList stages;
  for (const double cutOff : {0.5, 0.1, 0.9, 0.3})
    EXPECT_TRUE(stages.addFilterStage(EdgeKind::LowPass, cutOff, 4));
  ASSERT_EQ(stages.count(), 4);
  EXPECT_EQ(stages[0].cutOff, 0.1);
  EXPECT_EQ(stages[1].cutOff, 0.3);
  EXPECT_EQ(stages[2].cutOff, 0.5);
  EXPECT_EQ(stages[3].cutOff, 0.9);
}

TEST(FilterStages, EqualCutOffsKeepTheirOrderOfInsertion) {
  FilterStageList stages;
  stages.addFilterStage(EdgeKind::LowPass, 0.2, 4, 1, 1);
  stages.addFilterStage(EdgeKind::HighPass, 0.2, 4, 1, 2);
  stages.addFilterStage(EdgeKind::LowPass, 0.1, 4, 1, 3);
  stages.addFilterStage(EdgeKind::LowPass, 0.2, 4, 1, 4);
  ASSERT_EQ(stages.count(), 4);
  EXPECT_EQ(stages[0].tag, 3);
  EXPECT_EQ(stages[1].tag, 1);
  EXPECT_EQ(stages[2].tag, 2);
  EXPECT_EQ(stages[3].tag, 4);
}

TEST(FilterStages, AStageKeepsWhatItWasGiven) {
  FilterStageList stages;
  stages.addFilterStage(EdgeKind::HighPass, 0.25, 8.5, 0, -7);
  ASSERT_EQ(stages.count(), 1);
  EXPECT_EQ(stages[0].kind, EdgeKind::HighPass);
  EXPECT_EQ(stages[0].cutOff, 0.25);
  EXPECT_EQ(stages[0].order, 8.5);
  EXPECT_EQ(stages[0].enabled, 0U);
  EXPECT_EQ(stages[0].tag, -7);
}

TEST(FilterStages, CutOffsThatAreNotPositiveAddNoStage) {
  FilterStageList stages;
  for (const double cutOff :
       {0.0, -0.0, -0.5, -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
    EXPECT_TRUE(stages.addFilterStage(EdgeKind::LowPass, cutOff, 4));
  EXPECT_EQ(stages.count(), 0);
}

TEST(FilterStages, A33rdStageIsRefusedAndChangesNothing) {
  FilterStageList stages;
  for (int i = 1; i <= FilterStageList::capacity; ++i)
    ASSERT_TRUE(stages.addFilterStage(EdgeKind::LowPass, 0.01 * i, 4, 1, i));
  EXPECT_FALSE(stages.addFilterStage(EdgeKind::LowPass, 0.005, 4));
  EXPECT_TRUE(stages.addFilterStage(EdgeKind::LowPass, 0.0, 4));
  ASSERT_EQ(stages.count(), 32);
  for (int i = 0; i < 32; ++i) EXPECT_EQ(stages[i].tag, i + 1);
}

TEST(FilterStages, AClearedListTakesStagesAgain) {
  FilterStageList stages;
  for (int i = 1; i <= FilterStageList::capacity; ++i) stages.addFilterStage(EdgeKind::LowPass, 0.01 * i, 4);
  stages.clear();
  EXPECT_EQ(stages.count(), 0);
  EXPECT_TRUE(stages.addFilterStage(EdgeKind::HighPass, 0.5, 4));
  EXPECT_EQ(stages.count(), 1);
}

} // namespace
} // namespace emeg
