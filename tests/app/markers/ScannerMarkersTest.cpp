#include "app/markers/ScannerMarkers.h"

#include "app/markers/NamedMarkers.h"
#include "tests/app/markers/MarkerHeaders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace emeg {

namespace {

constexpr double fs = 5000;

/// What recordings in the scanner hold beside its own markers: the start, the clock's report, stimuli and
/// answers at irregular times, heart beats.
RecordingHeader sessionWithoutScanner(double syncInterval, unsigned seed) {
  RecordingHeader header = headerOf(400, fs);
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> uniform(0, 1);
  std::normal_distribution<double> normal;
  addMarker(header, "New Segment", "", 0);
  addRegularMarkers(header, "SyncStatus", "Sync On", static_cast<int>(380 / syncInterval), syncInterval, 1.9);
  for (double t = 6; t < 390; t += 2 + 3 * uniform(random)) {
    addMarker(header, "Stimulus", uniform(random) < 0.8 ? "S  1" : "S  2", std::floor(t * fs));
    addMarker(header, "Response", "R  1", std::floor((t + 0.3 + 0.2 * uniform(random)) * fs));
  }
  for (double t = 1; t < 390; t += 0.9 + 0.03 * normal(random) + 0.05 * std::sin(t / 4))
    addMarker(header, "Comment", "beat", std::floor(t * fs));
  return header;
}

struct Name {
  std::string type, description;
  std::string option; ///< what is given to select them
};

void PrintTo(const Name& name, std::ostream* out) {
  *out << name.type << "/" << name.description;
}

class ScannerNames : public testing::TestWithParam<Name> {};

TEST_P(ScannerNames, AreFoundAmongStimuliAnswersHeartBeatsAndSyncMarkers) {
  for (const double syncInterval : {1.0, 2.0}) {
    RecordingHeader header = sessionWithoutScanner(syncInterval, 3);
    addRegularMarkers(header, GetParam().type, GetParam().description, 200, 1.8003371);
    const std::vector<ScannerMarkers> guesses = guessScannerMarkers(header);
    ASSERT_EQ(guesses.size(), 1u);
    EXPECT_EQ(guesses[0].name, GetParam().option);
    EXPECT_EQ(guesses[0].kind, MarkerKind::Volume);
    EXPECT_TRUE(guesses[0].hasKnownName);
    EXPECT_EQ(guesses[0].nrOfMarkers, 200);
    EXPECT_EQ(guesses[0].nrOfMissing, 0);
    EXPECT_EQ(guesses[0].nrOfStray, 0);
    EXPECT_EQ(guesses[0].nrOfStretches, 1);
    EXPECT_NEAR(guesses[0].interval, 1.8003371, 1e-5);
    EXPECT_EQ(onsetsOfMarkers(header, guesses[0].name).size(), 200u);
  }
}

INSTANTIATE_TEST_SUITE_P(ScannerMarkers, ScannerNames,
                         testing::Values(Name{"Response", "R128", "R128"}, Name{"Stimulus", "R128", "R128"},
                                         Name{"Scanner", "T  1", "T  1"}, Name{"Toggle", "T  1", "T  1"},
                                         Name{"", "Response/R128", "Response/R128"},
                                         Name{"Volume", "V  1", "V  1"}, Name{"", "Volume", "Volume"},
                                         Name{"", "TR", "TR"}, Name{"Comment", "fMRI", "fMRI"},
                                         Name{"Scanner", "", "Scanner"}, Name{"Stimulus", "S128", "S128"}));

TEST(ScannerMarkers, NothingIsGuessedWhereTheScannerLeftNone) {
  for (unsigned seed = 1; seed <= 10; seed++) {
    EXPECT_TRUE(guessScannerMarkers(sessionWithoutScanner(1, seed)).empty());
    EXPECT_TRUE(guessScannerMarkers(sessionWithoutScanner(2, seed)).empty());
  }
  EXPECT_TRUE(guessScannerMarkers(headerOf(400, fs)).empty());
}

TEST(ScannerMarkers, AnUnknownNameIsGuessedByItsInterval) {
  RecordingHeader header = sessionWithoutScanner(1, 1);
  addRegularMarkers(header, "Stimulus", "S  9", 150, 2.1);
  const std::vector<ScannerMarkers> guesses = guessScannerMarkers(header);
  ASSERT_EQ(guesses.size(), 1u);
  EXPECT_EQ(guesses[0].name, "S  9");
  EXPECT_FALSE(guesses[0].hasKnownName);
}

TEST(ScannerMarkers, AKnownNameIsPreferredToMoreRegularStimuli) {
  RecordingHeader header = sessionWithoutScanner(1, 1);
  addRegularMarkers(header, "Stimulus", "S  9", 300, 1.25);
  addRegularMarkers(header, "Response", "R128", 100, 2.5);
  const std::vector<ScannerMarkers> guesses = guessScannerMarkers(header);
  ASSERT_EQ(guesses.size(), 1u);
  EXPECT_EQ(guesses[0].name, "R128");
}

TEST(ScannerMarkers, StimuliOfAFixedRasterAreNotTheScanner) {
  RecordingHeader header = headerOf(400, fs);
  std::mt19937 random(1);
  std::uniform_real_distribution<double> uniform(0, 1);
  for (int i = 0; i < 180; i++)
    addMarker(header, "Stimulus", uniform(random) < 0.8 ? "S  1" : "S  2", std::floor((5 + 2.0 * i) * fs));
  for (int i = 0; i < 12; i++) addMarker(header, "Stimulus", "S 10", std::floor((5 + 30.0 * i) * fs));
  EXPECT_TRUE(guessScannerMarkers(header).empty());
}

TEST(ScannerMarkers, IrregularMarkersOfAKnownNameAreNotTheScanners) {
  RecordingHeader header = headerOf(400, fs);
  std::mt19937 random(1);
  std::uniform_real_distribution<double> uniform(0, 1);
  for (double t = 6; t < 390; t += 1 + 4 * uniform(random))
    addMarker(header, "Response", "R128", std::floor(t * fs));
  EXPECT_TRUE(guessScannerMarkers(header).empty());
}

TEST(ScannerMarkers, TheHeartIsNotTheScannerEvenWhereItIsRegularAndTheRateLow) {
  for (const double rate : {100.0, 250.0, 5000.0}) {
    RecordingHeader header = headerOf(600, rate);
    std::mt19937 random(2);
    std::normal_distribution<double> normal;
    for (double t = 1; t < 590; t += 0.9 + 0.01 * normal(random) + 0.02 * std::sin(t / 4))
      addMarker(header, "Stimulus", "S  5", std::floor(t * rate));
    EXPECT_TRUE(guessScannerMarkers(header).empty()) << rate;
  }
}

TEST(ScannerMarkers, MissingDoubledAndStrayOnesAreCounted) {
  RecordingHeader header = headerOf(400, fs);
  for (int i = 0; i < 150; i++) {
    if (i == 20 || i == 70 || i == 71) continue;
    const double onset = std::ceil((5 + i * 2.0001) * fs);
    addMarker(header, "Response", "R128", onset);
    if (i == 40 || i == 90) addMarker(header, "Response", "R128", onset + 3);
    if (i == 100) addMarker(header, "Response", "R128", onset + 4321);
  }
  const std::vector<ScannerMarkers> guesses = guessScannerMarkers(header);
  ASSERT_EQ(guesses.size(), 1u);
  EXPECT_EQ(guesses[0].nrOfMarkers, 150);
  EXPECT_EQ(guesses[0].nrOfMissing, 3);
  EXPECT_EQ(guesses[0].nrOfStray, 3);
  EXPECT_NEAR(guesses[0].interval, 2.0001, 1e-5);
}

TEST(ScannerMarkers, MarkersThatComeInPairsAreFound) {
  RecordingHeader header = headerOf(400, fs);
  for (int i = 0; i < 150; i++) {
    addMarker(header, "Response", "R128", std::ceil((5 + i * 2.0) * fs));
    addMarker(header, "Response", "R128", std::ceil((5.005 + i * 2.0) * fs));
  }
  const std::vector<ScannerMarkers> guesses = guessScannerMarkers(header);
  ASSERT_EQ(guesses.size(), 1u);
  EXPECT_NEAR(guesses[0].interval, 2, 1e-5);
  EXPECT_EQ(guesses[0].nrOfStray, 150);
}

TEST(ScannerMarkers, SeveralScansAreStretchesThoughTheirIntervalsDiffer) {
  RecordingHeader header = headerOf(1000, fs);
  addRegularMarkers(header, "Response", "R128", 100, 2, 10);
  addRegularMarkers(header, "Response", "R128", 100, 2, 300.7);
  addRegularMarkers(header, "Response", "R128", 60, 3.1, 600.2);
  const std::vector<ScannerMarkers> guesses = guessScannerMarkers(header);
  ASSERT_EQ(guesses.size(), 1u);
  EXPECT_EQ(guesses[0].nrOfStretches, 3);
  EXPECT_EQ(guesses[0].nrOfMissing, 0);
  EXPECT_EQ(guesses[0].nrOfStray, 0);
  EXPECT_NEAR(guesses[0].interval, 2, 1e-5);
}

struct SliceTiming {
  int slices;
  double interval, deadTime;
};

class SliceMarkers : public testing::TestWithParam<SliceTiming> {};

TEST_P(SliceMarkers, AreToldFromVolumesAndTheDeadTimeIsNotTakenForMissingOnes) {
  const SliceTiming timing = GetParam();
  RecordingHeader header = sessionWithoutScanner(1, 1);
  for (int v = 0; v < 100; v++)
    for (int s = 0; s < timing.slices; s++) {
      const double time = 5 + v * (timing.slices * timing.interval + timing.deadTime) + s * timing.interval;
      addMarker(header, "Response", "R128", std::ceil(time * fs));
    }
  const std::vector<ScannerMarkers> guesses = guessScannerMarkers(header);
  ASSERT_EQ(guesses.size(), 1u);
  EXPECT_EQ(guesses[0].kind, MarkerKind::Slice);
  EXPECT_NEAR(guesses[0].interval, timing.interval, 1 / fs);
  EXPECT_EQ(guesses[0].nrOfMarkers, 100 * timing.slices);
  EXPECT_EQ(guesses[0].nrOfMissing, 0);
}

INSTANTIATE_TEST_SUITE_P(ScannerMarkers, SliceMarkers,
                         testing::Values(SliceTiming{30, 0.06, 0}, SliceTiming{25, 0.0720227, 0.0043},
                                         SliceTiming{20, 0.0750142, 0.3000531},
                                         SliceTiming{12, 0.0625113, 0.9}, SliceTiming{120, 0.0250061, 0.05}));

TEST(ScannerMarkers, MissingSlicesAreCounted) {
  RecordingHeader header = headerOf(400, fs);
  for (int v = 0; v < 100; v++)
    for (int s = 0; s < 20; s++)
      if (v % 10 != 3 || s != 7)
        addMarker(header, "", "slice", std::ceil((5 + v * 1.8003371 + s * 0.0750142) * fs));
  const std::vector<ScannerMarkers> guesses = guessScannerMarkers(header);
  ASSERT_EQ(guesses.size(), 1u);
  EXPECT_EQ(guesses[0].nrOfMissing, 10);
}

TEST(ScannerMarkers, VolumesAndSlicesAreBothGuessed) {
  RecordingHeader header = headerOf(400, fs);
  addRegularMarkers(header, "Scanner", "Volume", 100, 1.8, 5);
  addRegularMarkers(header, "Scanner", "Slice", 3000, 0.06, 5);
  const std::vector<ScannerMarkers> guesses = guessScannerMarkers(header);
  ASSERT_EQ(guesses.size(), 2u);
  EXPECT_EQ(guesses[0].name, "Slice");
  EXPECT_EQ(guesses[0].kind, MarkerKind::Slice);
  EXPECT_EQ(guesses[1].name, "Volume");
  EXPECT_EQ(guesses[1].kind, MarkerKind::Volume);
}

TEST(ScannerMarkers, ANameSaysMoreThanTheInterval) {
  RecordingHeader fast = headerOf(400, fs);
  addRegularMarkers(fast, "", "Volume", 1000, 0.1);
  ASSERT_EQ(guessScannerMarkers(fast).size(), 1u);
  EXPECT_EQ(guessScannerMarkers(fast)[0].kind, MarkerKind::Volume);
  RecordingHeader slow = headerOf(400, fs);
  addRegularMarkers(slow, "", "Slice", 500, 0.5);
  ASSERT_EQ(guessScannerMarkers(slow).size(), 1u);
  EXPECT_EQ(guessScannerMarkers(slow)[0].kind, MarkerKind::Slice);
}

TEST(ScannerMarkers, NumberedVolumesGoByTheirType) {
  RecordingHeader header = headerOf(400, fs);
  for (int i = 0; i < 100; i++)
    addMarker(header, "Scanner", "Volume " + std::to_string(i), std::ceil((5 + 2 * i) * fs));
  const std::vector<ScannerMarkers> guesses = guessScannerMarkers(header);
  ASSERT_EQ(guesses.size(), 1u);
  EXPECT_EQ(guesses[0].name, "Scanner");
  EXPECT_EQ(guesses[0].nrOfMarkers, 100);
}

TEST(ScannerMarkers, ADescriptionThatTwoTypesShareIsGivenWithItsType) {
  RecordingHeader header = headerOf(400, fs);
  addRegularMarkers(header, "Response", "R128", 100, 2);
  addMarker(header, "Comment", "R128", 7);
  const std::vector<ScannerMarkers> guesses = guessScannerMarkers(header);
  ASSERT_EQ(guesses.size(), 1u);
  EXPECT_EQ(guesses[0].name, "Response/R128");
}

TEST(ScannerMarkers, WhatACorrectionAddedIsNotGuessed) {
  RecordingHeader header = headerOf(400, fs);
  addRegularMarkers(header, "Comment", "MRGradientTriggers", 4000, 0.075);
  addRegularMarkers(header, "", "HeartPulseTriggers", 300, 1);
  EXPECT_TRUE(guessScannerMarkers(header).empty());
}

TEST(ScannerMarkers, OddOnsetsDoNoHarm) {
  RecordingHeader header = headerOf(400, fs);
  for (int i = 0; i < 1000; i++) addMarker(header, "Response", "R128", 100);
  EXPECT_TRUE(guessScannerMarkers(header).empty());
  for (const double onset :
       {std::numeric_limits<double>::quiet_NaN(), 1e300, -1e300, std::numeric_limits<double>::infinity()})
    addMarker(header, "Response", "R128", onset);
  EXPECT_TRUE(guessScannerMarkers(header).empty());
}

TEST(ScannerMarkers, AMarkerAtEverySampleIsNoneAtAll) {
  RecordingHeader header = headerOf(400, fs);
  for (int i = 0; i < 100000; i++) addMarker(header, "", "TR", i);
  EXPECT_TRUE(guessScannerMarkers(header).empty());
}

} // namespace

} // namespace emeg
