#include "engine/stages/StageList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace emeg {
namespace {

using Names = std::vector<std::string>;

class NoTiming : public TimingStrategy {
public:
  std::optional<MRSequence> find(const TimingQuestion&, Observer&) override { return std::nullopt; }
};

/// Names of the stages that are on for a channel of such a plan.
Names stagesFor(const RunPlan& plan, int pulseChannel = -1, StretchState* stretch = nullptr) {
  SharedState shared;
  Workspace work;
  Observer observer;
  NoTiming timing;
  StageRun run{plan, shared, work, observer, timing};
  run.pulseChannel = pulseChannel;
  run.stretch = stretch;
  Names names;
  for (const Stage& stage : correctionStages())
    if (stage.isOn(run)) names.emplace_back(stage.name);
  return names;
}

RunPlan planWithEverything() {
  RunPlan plan;
  plan.roles.resize(1);
  plan.correctSaturations = plan.correctGradient = plan.correctBCG = plan.splitsLowFrequencies = true;
  plan.removeLineSinusoids = plan.filteringNeeded = plan.useAverageReference = true;
  return plan;
}

const Names all = {"samples that are not numbers",
                   "saturated samples",
                   "low frequencies are split off",
                   "gradient artifact",
                   "line noise",
                   "series for the search for heart beats",
                   "heart beat artifact",
                   "low frequencies come back",
                   "filters",
                   "sampling rate",
                   "average reference"};

TEST(StageList, IsInTheOrderOfTheMethod) {
  Names names;
  for (const Stage& stage : correctionStages()) names.emplace_back(stage.name);
  EXPECT_EQ(names, all);
}

TEST(StageList, HasTheSearchForHeartBeatsBetweenItsTwoSides) {
  bool isBehind = false;
  for (const Stage& stage : correctionStages()) {
    if (isBehind) {
      EXPECT_EQ(stage.pass, Pass::BehindBeats) << stage.name;
    }
    if (std::string(stage.name) == "series for the search for heart beats") {
      EXPECT_EQ(stage.pass, Pass::BeforeBeats);
      isBehind = true;
    }
  }
  EXPECT_TRUE(isBehind);
  EXPECT_EQ(correctionStages().front().pass, Pass::BeforeBeats);
}

TEST(StageList, IsOnFromEndToEndWhereEverythingIsAskedFor) {
  EXPECT_EQ(stagesFor(planWithEverything(), 0), all);
}

TEST(StageList, TakesTheRateAndLooksForNumbersWhateverIsAskedFor) {
  RunPlan plan;
  plan.roles.resize(1);
  EXPECT_EQ(stagesFor(plan), (Names{"samples that are not numbers", "sampling rate"}));
}

TEST(StageList, SwitchesEveryOtherStageByASettingOfItsOwn) {
  const auto without = [](auto change) {
    RunPlan plan = planWithEverything();
    change(plan);
    return stagesFor(plan, 0);
  };
  using testing::Contains;
  using testing::Not;
  EXPECT_THAT(without([](RunPlan& p) { p.correctSaturations = false; }), Not(Contains("saturated samples")));
  EXPECT_THAT(without([](RunPlan& p) { p.correctGradient = false; }), Not(Contains("gradient artifact")));
  EXPECT_THAT(without([](RunPlan& p) { p.removeLineSinusoids = false; }), Not(Contains("line noise")));
  EXPECT_THAT(without([](RunPlan& p) { p.filteringNeeded = false; }), Not(Contains("filters")));
  EXPECT_THAT(without([](RunPlan& p) { p.useAverageReference = false; }), Not(Contains("average reference")));
  const Names unsplit = without([](RunPlan& p) { p.splitsLowFrequencies = false; });
  EXPECT_EQ(unsplit.size(), all.size() - 2);
  EXPECT_THAT(unsplit, Not(Contains("low frequencies are split off")));
  EXPECT_THAT(unsplit, Not(Contains("low frequencies come back")));
}

TEST(StageList, KeepsTheElectrocardiogramWithoutRemovingItsBeats) {
  RunPlan plan = planWithEverything();
  plan.roles[0].takesPartInPulses = false;
  EXPECT_THAT(stagesFor(plan), testing::Not(testing::Contains("series for the search for heart beats")));
  plan.roles[0].showsHeartBeats = true;
  EXPECT_THAT(stagesFor(plan), testing::Contains("series for the search for heart beats"));
  EXPECT_THAT(stagesFor(plan), testing::Not(testing::Contains("heart beat artifact")));
}

TEST(StageList, KeepsNoSeriesStretchByStretch) {
  const RunPlan plan = planWithEverything();
  const StretchPlan stretchPlan;
  StretchState stretch{stretchPlan, SegmentRemoval({}, 250, true, 150), {}, {}, {}, {}, {}, {}, {}};
  const Names names = stagesFor(plan, 0, &stretch);
  EXPECT_EQ(names.size(), all.size() - 1);
  EXPECT_THAT(names, testing::Not(testing::Contains("series for the search for heart beats")));
}

} // namespace
} // namespace emeg
