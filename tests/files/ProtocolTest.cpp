#include "files/formats/Protocol.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace emeg {
namespace {

using Names = std::vector<std::string>;
using Times = std::vector<double>;

Names namesOf(const Protocol& protocol) {
  Names names;
  for (const Condition& condition : protocol.conditions) names.push_back(condition.conditionName);
  return names;
}

std::string numbered(std::string stem, int number) {
  return stem += std::to_string(number);
}

/// A started protocol with the conditions named, each with the interval [1, 2].
Protocol protocolWith(const Names& names) {
  Protocol protocol;
  protocol.startConditions();
  for (const std::string& name : names) {
    protocol.findOrAddCondition(name, 1, -1, -1, -1);
    protocol.addInterval(1, 2);
  }
  return protocol;
}

void expectColour(const std::optional<Colour>& colour, int r, int g, int b) {
  ASSERT_TRUE(colour.has_value());
  EXPECT_EQ(colour->r, r);
  EXPECT_EQ(colour->g, g);
  EXPECT_EQ(colour->b, b);
}

TEST(Protocol, ANewOneHasNoSlots) {
  const Protocol protocol(true, "_Suffix", TimeResolution::Msec);
  EXPECT_TRUE(protocol.interactive);
  EXPECT_EQ(protocol.name, "_Suffix");
  EXPECT_EQ(protocol.resolutionOfTime, TimeResolution::Msec);
  EXPECT_EQ(protocol.nrOfConditions(), 0);
  EXPECT_EQ(protocol.currentCondition(), -1);
  const Protocol plain;
  EXPECT_FALSE(plain.interactive);
  EXPECT_EQ(plain.resolutionOfTime, TimeResolution::Usec);
}

TEST(Protocol, StartsWithAnEmptyPlaceholder) {
  Protocol protocol;
  protocol.startConditions();
  ASSERT_EQ(protocol.nrOfConditions(), 1);
  EXPECT_EQ(protocol.conditions[0].conditionName, "");
  EXPECT_EQ(protocol.conditions[0].nrOfIntervals(), 0);
}

TEST(Protocol, KeepsConditionsInAscendingByteOrder) {
  const Protocol protocol = protocolWith({"b", "a", "c", "B", "\xc3\xa4", "ab"});
  EXPECT_EQ(namesOf(protocol), (Names{"", "B", "a", "ab", "b", "c", "\xc3\xa4"}));
}

TEST(Protocol, AnInsertedConditionBecomesCurrent) {
  Protocol protocol = protocolWith({"a", "c"});
  protocol.findOrAddCondition("b", -1, 1, 2, 3);
  EXPECT_EQ(protocol.currentCondition(), 2);
  protocol.addInterval(10, 20);
  EXPECT_EQ(protocol.conditions[2].onsets, Times{10});
  EXPECT_EQ(protocol.conditions[2].offsets, Times{20});
  expectColour(protocol.conditions[2].colour, 1, 2, 3);
  EXPECT_EQ(protocol.conditions[3].conditionName, "c");
  EXPECT_EQ(protocol.conditions[3].onsets, Times{1}) << "intervals move with their condition";
}

TEST(Protocol, AKnownConditionKeepsColourAndIntervals) {
  Protocol protocol = protocolWith({"a"});
  protocol.findOrAddCondition("b", 5, 1, 2, 3);
  protocol.addInterval(3, 4);
  protocol.findOrAddCondition("a", 5, 9, 9, 9);
  EXPECT_EQ(protocol.currentCondition(), 1);
  EXPECT_FALSE(protocol.conditions[1].colour.has_value());
  protocol.findOrAddCondition("b", 5, 9, 9, 9);
  protocol.addInterval(5, 6);
  EXPECT_EQ(protocol.nrOfConditions(), 3);
  expectColour(protocol.conditions[2].colour, 1, 2, 3);
  EXPECT_EQ(protocol.conditions[2].onsets, (Times{3, 5}));
}

TEST(Protocol, NamesAreComparedExactly) {
  EXPECT_EQ(protocolWith({"a", "A", "a "}).nrOfConditions(), 4);
}

TEST(Protocol, ThatWasNotStartedGetsItsPlaceholderFirst) {
  Protocol protocol;
  protocol.findOrAddCondition("a", -1, -1, -1, -1);
  EXPECT_EQ(namesOf(protocol), (Names{"", "a"}));
}

TEST(Protocol, HoldsMoreIntervalsThanItsCapacity) {
  Protocol protocol;
  protocol.startConditions();
  protocol.findOrAddCondition("a", 2, -1, -1, -1);
  for (int i = 0; i < 5000; ++i) protocol.addInterval(i, i + 1);
  ASSERT_EQ(protocol.conditions[1].nrOfIntervals(), 5000);
  EXPECT_EQ(protocol.conditions[1].onsets.back(), 4999);
}

TEST(Protocol, AHugeCapacityReservesLittle) {
  Protocol protocol;
  protocol.startConditions();
  protocol.findOrAddCondition("a", std::numeric_limits<int64_t>::max(), -1, -1, -1);
  EXPECT_LE(protocol.conditions[1].onsets.capacity(), 1000000u);
  protocol.findOrAddCondition("b", std::numeric_limits<int64_t>::min(), -1, -1, -1);
  EXPECT_LE(protocol.conditions[2].onsets.capacity(), 1000000u);
}

TEST(Protocol, WithAllSlotsInUseHasNoCurrentConditionAndIgnoresIntervals) {
  Names names;
  for (int i = 0; i < 255; ++i) names.push_back(numbered("c", i));
  Protocol protocol = protocolWith(names);
  ASSERT_EQ(protocol.nrOfConditions(), 256);
  protocol.findOrAddCondition("one too many", 10, -1, -1, -1);
  EXPECT_EQ(protocol.currentCondition(), -1);
  protocol.addInterval(100, 200);
  EXPECT_EQ(protocol.nrOfConditions(), 256);
  for (size_t c = 1; c < 256; ++c) EXPECT_EQ(protocol.conditions[c].onsets, Times{1});
  protocol.findOrAddCondition("c7", 10, -1, -1, -1);
  EXPECT_EQ(protocol.conditions[static_cast<size_t>(protocol.currentCondition())].conditionName, "c7");
}

TEST(Protocol, RemovingAConditionKeepsTheCurrentOneCurrent) {
  Protocol protocol = protocolWith({"a", "b", "c"});
  ASSERT_EQ(protocol.currentCondition(), 3);
  protocol.removeCondition(1);
  EXPECT_EQ(namesOf(protocol), (Names{"", "b", "c"}));
  EXPECT_EQ(protocol.currentCondition(), 2);
  protocol.removeCondition(2);
  EXPECT_EQ(protocol.currentCondition(), -1);
  protocol.removeCondition(7);
  protocol.removeCondition(-1);
  EXPECT_EQ(namesOf(protocol), (Names{"", "b"}));
}

TEST(ProtocolColours, OfTwoConditionsAreRedAndCyan) {
  Protocol protocol = protocolWith({"a", "b"});
  assignMissingColours(protocol);
  EXPECT_FALSE(protocol.conditions[0].colour.has_value());
  expectColour(protocol.conditions[1].colour, 255, 0, 0);
  expectColour(protocol.conditions[2].colour, 0, 255, 255);
}

TEST(ProtocolColours, AreEvenlySpacedHues) {
  Protocol protocol = protocolWith({"a", "b", "c", "d", "e", "f"});
  assignMissingColours(protocol);
  expectColour(protocol.conditions[1].colour, 255, 0, 0);
  expectColour(protocol.conditions[2].colour, 255, 255, 0);
  expectColour(protocol.conditions[3].colour, 0, 255, 0);
  expectColour(protocol.conditions[4].colour, 0, 255, 255);
  expectColour(protocol.conditions[5].colour, 0, 0, 255);
  expectColour(protocol.conditions[6].colour, 255, 0, 255);
}

TEST(ProtocolColours, ThatAreGivenStayAndStillCountInTheSpacing) {
  Protocol protocol = protocolWith({"a", "c"});
  protocol.findOrAddCondition("b", 1, 12, -5, 300);
  assignMissingColours(protocol);
  expectColour(protocol.conditions[1].colour, 255, 0, 0);
  expectColour(protocol.conditions[2].colour, 12, -5, 300);
  expectColour(protocol.conditions[3].colour, 0, 0, 255);
}

TEST(ProtocolColours, HalvesAreRoundedUp) {
  expectColour(colourOfHue(30), 255, 128, 0);
  expectColour(colourOfHue(18), 255, 77, 0); // 76.5
  expectColour(colourOfHue(90), 128, 255, 0);
  expectColour(colourOfHue(210), 0, 128, 255);
  expectColour(colourOfHue(345), 255, 0, 64);
}

TEST(ProtocolColours, HuesRepeatEveryTurn) {
  expectColour(colourOfHue(360), 255, 0, 0);
  expectColour(colourOfHue(360 + 30), 255, 128, 0);
  expectColour(colourOfHue(-120), 0, 0, 255);
  expectColour(colourOfHue(std::numeric_limits<double>::infinity()), 255, 0, 0);
}

TEST(ProtocolColours, OfNoConditionsAreNone) {
  Protocol empty;
  assignMissingColours(empty);
  EXPECT_EQ(empty.nrOfConditions(), 0);
  empty.startConditions();
  assignMissingColours(empty);
  EXPECT_FALSE(empty.conditions[0].colour.has_value());
}

TEST(ProtocolInterval, CutsShiftsAndDropsIntervals) {
  Protocol protocol;
  protocol.startConditions();
  protocol.findOrAddCondition("a", 8, -1, -1, -1);
  protocol.addInterval(0, 99);    // before
  protocol.addInterval(0, 98);    // before, right behind a dropped one
  protocol.addInterval(50, 150);  // straddles the start
  protocol.addInterval(100, 100); // a marker on the start
  protocol.addInterval(120, 130); // inside
  protocol.addInterval(180, 250); // straddles the end
  protocol.addInterval(200, 200); // a marker on the end
  protocol.addInterval(201, 300); // behind
  protocol.addInterval(0, 1000);  // around
  cutToInterval(protocol, 100, 200);
  EXPECT_EQ(protocol.conditions[1].onsets, (Times{0, 0, 20, 80, 100, 0}));
  EXPECT_EQ(protocol.conditions[1].offsets, (Times{50, 0, 30, 100, 100, 100}));
}

TEST(ProtocolInterval, AConditionLeftEmptyIsDroppedAndLaterOnesMoveUp) {
  Protocol protocol;
  protocol.startConditions();
  for (const auto& [name, time] :
       {std::pair("a", 5.0), {"b", 500.0}, {"c", 600.0}, {"d", 6.0}, {"e", 700.0}}) {
    protocol.findOrAddCondition(name, 1, -1, -1, -1);
    protocol.addInterval(time, time + 1);
  }
  assignMissingColours(protocol);
  cutToInterval(protocol, 0, 100);
  EXPECT_EQ(namesOf(protocol), (Names{"", "a", "d"}));
  EXPECT_EQ(protocol.conditions[2].onsets, Times{6});
  const Colour hueOfTheFourth = colourOfHue(3 * 72.0);
  expectColour(protocol.conditions[2].colour, hueOfTheFourth.r, hueOfTheFourth.g, hueOfTheFourth.b);
  protocol.addInterval(1, 2);
  EXPECT_EQ(protocol.currentCondition(), -1) << "the current condition went with the cut";
}

TEST(ProtocolInterval, AConditionWithoutIntervalsIsDroppedEvenWhenNothingIsCut) {
  Protocol protocol = protocolWith({"a"});
  protocol.findOrAddCondition("empty", 1, -1, -1, -1);
  cutToInterval(protocol, 0, 1e12);
  EXPECT_EQ(namesOf(protocol), (Names{"", "a"}));
}

TEST(ProtocolInterval, ThePlaceholderIsNeverDropped) {
  Protocol protocol;
  protocol.startConditions();
  cutToInterval(protocol, 0, 1);
  EXPECT_EQ(protocol.nrOfConditions(), 1);
}

TEST(ProtocolTimes, FactorsOfTheUnits) {
  EXPECT_EQ(timeFactorOf(TimeResolution::Usec, 5000), 1.0);
  EXPECT_EQ(timeFactorOf(TimeResolution::Msec, 5000), 0.001);
  EXPECT_EQ(timeFactorOf(TimeResolution::Volumes, 5000), 5000 * 0.000001);
}

TEST(ProtocolTimes, ScaleWithEveryInterval) {
  Protocol protocol = protocolWith({"a", "b"});
  scaleTimes(protocol, 1000);
  for (const size_t c : {1u, 2u}) {
    EXPECT_EQ(protocol.conditions[c].onsets, Times{1000});
    EXPECT_EQ(protocol.conditions[c].offsets, Times{2000});
  }
}

std::string labelOf(const std::string& name, bool interactive = false) {
  Protocol protocol = protocolWith({name});
  protocol.interactive = interactive;
  return conditionLabel(protocol, 1);
}

TEST(ProtocolLabel, JoinsTheCodeAndItsNumber) {
  EXPECT_EQ(labelOf("Code 12"), "Code12");
  EXPECT_EQ(labelOf("Code   1 2"), "Code1_2");
  EXPECT_EQ(labelOf("Code"), "Code");
  EXPECT_EQ(labelOf("Codec 1"), "Codec_1");
  EXPECT_EQ(labelOf("code 1"), "code_1");
}

TEST(ProtocolLabel, ReplacesBlanksAndDropsLeadingOnes) {
  EXPECT_EQ(labelOf("left hand  up "), "left_hand__up_");
  EXPECT_EQ(labelOf("  face"), "face");
  EXPECT_EQ(labelOf("   "), "");
  EXPECT_EQ(labelOf("tab\tstays"), "tab\tstays");
}

TEST(ProtocolLabel, NumbersTheConditionsOfAnInteractiveProtocol) {
  EXPECT_EQ(labelOf("face", true), "Condition01_face");
  EXPECT_EQ(labelOf("Code 12", true), "Condition01_Code12");
  Names names;
  for (int i = 0; i < 120; ++i) names.push_back(numbered("c", 1000 + i));
  Protocol protocol = protocolWith(names);
  protocol.interactive = true;
  EXPECT_EQ(conditionLabel(protocol, 120), "Condition120_c1119");
}

TEST(ProtocolLabel, HasAtMost127Characters) {
  EXPECT_EQ(labelOf(std::string(500, 'x')), std::string(127, 'x'));
  EXPECT_EQ(labelOf(std::string(500, 'x'), true), "Condition01_" + std::string(115, 'x'));
}

TEST(ProtocolLabel, OfNoSlotIsEmpty) {
  const Protocol protocol = protocolWith({"a"});
  EXPECT_EQ(conditionLabel(protocol, -1), "");
  EXPECT_EQ(conditionLabel(protocol, 2), "");
}

} // namespace
} // namespace emeg
