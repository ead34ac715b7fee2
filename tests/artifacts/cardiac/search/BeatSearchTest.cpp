#include "artifacts/cardiac/search/BeatSearch.h"

#include "artifacts/cardiac/search/BeatCarrying.h"
#include "artifacts/cardiac/search/DetectionSignal.h"
#include "artifacts/cardiac/search/MeanBeats.h"
#include "artifacts/cardiac/search/PulseSelection.h"
#include "tests/artifacts/cardiac/SimulatedBcg.h"
#include "tests/artifacts/cardiac/TestRecordings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace emeg {
namespace {

SimulatedBcg recordingOf(double beatsPerMinute, uint64_t seed, double rmssd = 0.030, double alphaUv = 0,
                         double movementUv = 0) {
  SimulationParameters parameters = healthyHeart(beatsPerMinute, seed);
  parameters.seconds = 60;
  parameters.eeg.alphaPeakUv = alphaUv;
  parameters.heart->rmssd = rmssd;
  if (movementUv > 0) parameters.movement = MovementParameters{movementUv, 3};
  return simulateBcg(parameters);
}

std::vector<double> selectedBeats(const SimulatedBcg& recording) {
  return findBeats(recording.view()).positions;
}

/// Whether two positions are within a tenth of a second.
bool areOneBeat(double x, double y, const SimulatedBcg& recording) {
  return std::abs(x - y) <= 0.1 * static_cast<double>(recording.rate);
}

TEST(BeatSearch, IsPeriodSignalAndSelectionInTurn) {
  for (const TestRecording& recording : simulatedRecordings()) {
    SCOPED_TRACE(recording.name);
    const FoundBeats found = findBeats(recording.view());
    const HeartPeriod heart = estimateHeartPeriod(recording.view());
    const std::vector<float> signal = buildPulseDetectionSignal(recording.view(), heart);
    const HeartPulses pulses = selectHeartPulses(signal, recording.rate, 35, heart, 3000);
    EXPECT_EQ(found.period.period, heart.period);
    EXPECT_EQ(found.detectionSignal, signal);
    EXPECT_EQ(found.positions, pulses.positions);
    EXPECT_EQ(found.listIsFull, pulses.listIsFull);
    EXPECT_EQ(found.candidatesAreFull, pulses.candidatesAreFull);
    EXPECT_EQ(found.nrOfCarriedInFront, 0);
    EXPECT_EQ(found.nrOfCarriedBehind, 0);
  }
}

TEST(BeatSearch, CarriedBeatsStandAroundTheSelectedOnes) {
  int64_t nrOfCarried = 0;
  for (uint64_t seed = 11; seed < 15; ++seed) {
    const SimulatedBcg recording = recordingOf(70, seed);
    const std::vector<double> selected = selectedBeats(recording);
    const FoundBeats found = findBeats(recording.view(), unlimitedBeatSearch());
    ASSERT_EQ(found.positions.size(), selected.size() + static_cast<size_t>(found.nrOfCarriedInFront) +
                                          static_cast<size_t>(found.nrOfCarriedBehind));
    EXPECT_TRUE(
        std::equal(selected.begin(), selected.end(), found.positions.begin() + found.nrOfCarriedInFront));
    EXPECT_TRUE(std::is_sorted(found.positions.begin(), found.positions.end()));
    nrOfCarried += found.nrOfCarriedInFront + found.nrOfCarriedBehind;
  }
  EXPECT_GT(nrOfCarried, 3);
}

TEST(BeatSearch, TheListHoldsNoMoreThanItsCapacity) {
  const SimulatedBcg recording = recordingOf(70, 12);
  BeatSearchSettings settings = unlimitedBeatSearch();
  const FoundBeats all = findBeats(recording.view(), settings);
  EXPECT_FALSE(all.listIsFull);
  EXPECT_FALSE(all.candidatesAreFull);
  ASSERT_GT(all.nrOfCarriedInFront + all.nrOfCarriedBehind, 0);
  for (const size_t capacity : {size_t{0}, size_t{5}, size_t{20}, all.positions.size() - 1}) {
    settings.capacity = capacity;
    const FoundBeats some = findBeats(recording.view(), settings);
    EXPECT_LE(some.positions.size(), capacity);
    EXPECT_TRUE(some.listIsFull);
  }
  settings.capacity = all.positions.size();
  EXPECT_EQ(findBeats(recording.view(), settings).positions, all.positions);
}

TEST(BeatSearch, FewCandidatesEndTheBeatsEarlyAndNothingIsCarriedBehindThem) {
  const SimulatedBcg recording = recordingOf(70, 13);
  BeatSearchSettings settings = unlimitedBeatSearch();
  settings.candidatesPerSecond = 4.0f;
  const FoundBeats found = findBeats(recording.view(), settings);
  EXPECT_TRUE(found.candidatesAreFull);
  EXPECT_EQ(found.nrOfCarriedBehind, 0);
}

TEST(BeatSearch, WithoutAPeriodThereAreNoBeats) {
  for (const TestRecording& recording : shortRecordings()) {
    const FoundBeats found = findBeats(recording.view(), unlimitedBeatSearch());
    for (const double position : found.positions) {
      EXPECT_GE(position, 0);
      EXPECT_LT(position, recording.length);
    }
  }
  const std::vector<std::vector<double>> silent(2, std::vector<double>(5001, 0.0));
  EXPECT_TRUE(findBeats({silent, 5000, 250}, unlimitedBeatSearch()).positions.empty());
}

TEST(BeatSearch, StrangeRecordingsComeToAnEnd) {
  for (const auto& recordings : {impairedRecordings(), extremeRecordings(), tiedRecordings()})
    for (const TestRecording& recording : recordings) {
      SCOPED_TRACE(recording.name);
      const std::vector<double> positions = findBeats(recording.view(), unlimitedBeatSearch()).positions;
      for (size_t i = 0; i < positions.size(); ++i) {
        EXPECT_GE(positions[i], i > 0 ? positions[i - 1] + 1 : 0);
        EXPECT_LT(positions[i], recording.length);
      }
    }
}

/// Of the beats that were taken away at either end, those that come back; and those that are none.
struct Regained {
  int taken = 0;
  int found = 0;
  int wrong = 0;
};

Regained regainedAtTheEnds(const SimulatedBcg& recording, size_t count) {
  const std::vector<double> all = selectedBeats(recording);
  Regained regained;
  if (all.size() < 3 * count) return regained;
  const auto n = static_cast<std::ptrdiff_t>(count);
  const CarriedBeats carried =
      carryBeatsToEdges(recording.view(), std::vector<double>(all.begin() + n, all.end() - n));
  const auto isCarried = [&](double beat) {
    const auto isIt = [&](double x) { return areOneBeat(x, beat, recording); };
    return std::any_of(carried.inFront.begin(), carried.inFront.end(), isIt) ||
           std::any_of(carried.behind.begin(), carried.behind.end(), isIt);
  };
  const auto isOne = [&](double x) {
    return x < all.front() || x > all.back() ||
           std::any_of(all.begin(), all.end(), [&](double beat) { return areOneBeat(x, beat, recording); });
  };
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    regained.found += isCarried(all[static_cast<size_t>(i)]) ? 1 : 0;
    regained.found += isCarried(all[all.size() - 1 - static_cast<size_t>(i)]) ? 1 : 0;
  }
  regained.taken = static_cast<int>(2 * count);
  for (const auto* beats : {&carried.inFront, &carried.behind})
    for (const double x : *beats) regained.wrong += isOne(x) ? 0 : 1;
  return regained;
}

TEST(BeatCarrying, BeatsThatAreTakenAwayComeBack) {
  Regained sum;
  const auto add = [&sum](const SimulatedBcg& recording) {
    const Regained regained = regainedAtTheEnds(recording, 4);
    sum.taken += regained.taken;
    sum.found += regained.found;
    sum.wrong += regained.wrong;
  };
  for (const double rate : {50.0, 65.0, 80.0, 100.0}) add(recordingOf(rate, 21));
  add(recordingOf(65, 22, 0.005));
  add(recordingOf(65, 23, 0.030, 30));
  EXPECT_EQ(sum.taken, 48);
  EXPECT_GE(sum.found, 46);
  EXPECT_LE(sum.wrong, 1);
}

TEST(BeatCarrying, HardRecordingsGainNoWrongBeats) {
  Regained sum;
  for (uint64_t seed = 31; seed < 34; ++seed) {
    for (const SimulatedBcg& recording : {recordingOf(65, seed, 0.1), recordingOf(65, seed, 0.030, 0, 300)}) {
      const Regained regained = regainedAtTheEnds(recording, 4);
      sum.taken += regained.taken;
      sum.found += regained.found;
      sum.wrong += regained.wrong;
    }
  }
  EXPECT_GE(sum.found, sum.taken / 2);
  EXPECT_LE(sum.wrong, 2);
}

TEST(BeatCarrying, EndsWhereTheArtifactEnds) {
  SimulatedBcg recording = recordingOf(65, 41);
  const auto end = static_cast<size_t>(45 * recording.rate);
  for (size_t c = 0; c < recording.series.size(); ++c)
    for (size_t i = end; i < static_cast<size_t>(recording.length); ++i)
      recording.series[c][i] -= recording.artifact[c][i];
  std::vector<double> early;
  for (const double beat : selectedBeats(recordingOf(65, 41)))
    if (beat < 30 * static_cast<double>(recording.rate)) early.push_back(beat);
  const CarriedBeats carried = carryBeatsToEdges(recording.view(), early);
  ASSERT_GT(carried.behind.size(), 12U);
  EXPECT_NEAR(carried.behind.back(), static_cast<double>(end), static_cast<double>(recording.rate));
}

TEST(BeatCarrying, FindsNothingInNoiseOrFromFewBeats) {
  const SimulatedBcg recording = recordingOf(65, 42);
  const std::vector<double> all = selectedBeats(recording);
  const CarriedBeats ofFew =
      carryBeatsToEdges(recording.view(), std::vector<double>(all.begin() + 20, all.begin() + 27));
  EXPECT_TRUE(ofFew.inFront.empty() && ofFew.behind.empty());

  SimulatedBcg noise = recording;
  for (size_t c = 0; c < noise.series.size(); ++c)
    for (size_t i = 0; i < static_cast<size_t>(noise.length); ++i) noise.series[c][i] -= noise.artifact[c][i];
  const CarriedBeats ofNoise =
      carryBeatsToEdges(noise.view(), std::vector<double>(all.begin() + 10, all.end() - 10));
  EXPECT_LE(ofNoise.inFront.size() + ofNoise.behind.size(), 1U);
}

TEST(MeanBeats, TheLikenessIsTheMedianOfTheWeightedCorrelations) {
  const std::vector<double> wave = {0, 1, 3, 1, -2, -1, 0, 0, 0, 0};
  std::vector<std::vector<double>> channels(3);
  for (int i = 0; i < 200; ++i) {
    channels[0].push_back(wave[static_cast<size_t>(i % 10)]);
    channels[1].push_back(-2 * wave[static_cast<size_t>(i % 10)]);
    channels[2].push_back(0);
  }
  const BcgSeries series{channels, 200, 10};
  std::vector<double> beats;
  for (int i = 2; i < 200; i += 10) beats.push_back(i);
  const MeanBeats mean(series, beats, 10);
  for (const int64_t place : {0, 2, 102, 192, 199}) {
    const bool isBeat = place % 10 == 2;
    if (isBeat) {
      EXPECT_NEAR(mean.likenessAt(place), 1, 0.01) << place;
    } else {
      EXPECT_LT(mean.likenessAt(place), 0.9) << place;
    }
  }
  // By its definition, one off: a mean beat of many equal ones is the beat itself.
  double both = 0;
  double here = 0;
  double there = 0;
  for (int j = -7; j <= 7; ++j) {
    const double weight = std::exp(-(j / 4.0) * (j / 4.0));
    const double x = channels[0][static_cast<size_t>(103 + j)];
    const double m = channels[0][static_cast<size_t>(102 + j)];
    both += weight * x * m;
    here += weight * x * x;
    there += weight * m * m;
  }
  EXPECT_NEAR(mean.likenessAt(103), both / std::sqrt(here * there), 0.02);
}

} // namespace
} // namespace emeg
