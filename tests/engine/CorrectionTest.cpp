#include "engine/Correction.h"

#include "engine/store/FileStore.h"
#include "engine/store/MemoryStore.h"
#include "tests/TestFolder.h"
#include "tests/engine/EngineRecordings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace emeg {
namespace {

Observer silent;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// A short scan, so that every test can afford one.
const EngineRecording& shortScan() {
  static const EngineRecording recording = simulateRecording(Preset::Continuous, 500, 45, 4);
  return recording;
}

/// Everything that a correction can do.
CorrectionSettings allSettings(const EngineRecording& recording) {
  CorrectionSettings settings = settingsFor(recording);
  settings.heartBeats = true;
  settings.highPass = 0.5;
  settings.lowPass = 60;
  settings.notches = {{40, 2}};
  settings.lineNoise = {50};
  settings.rate = 180;
  settings.averageReference = true;
  settings.scalingOrder = 1;
  return settings;
}

Channels noise(int nrOfChannels, size_t length, uint32_t seed = 1) {
  std::mt19937 generator(seed);
  std::normal_distribution<double> normal(0, 10);
  Channels channels(static_cast<size_t>(nrOfChannels));
  for (std::vector<double>& channel : channels)
    for (size_t t = 0; t < length; ++t) channel.push_back(normal(generator));
  return channels;
}

TEST(Correction, TakesTheScanOutOfTheEegAndSaysWhatItFound) {
  const EngineRecording& recording = shortScan();
  const Corrected result = corrected(recording, settingsFor(recording));
  const ScanTiming& timing = recording.timings.front();
  ASSERT_EQ(result.findings.timing.scans.size(), 1u);
  EXPECT_EQ(result.findings.timing.source, TimingSource::VolumeMarkers);
  const FoundScan& scan = result.findings.timing.longest();
  EXPECT_EQ(scan.sequence.nrOfVolumes, timing.nrOfVolumes);
  EXPECT_NEAR(scan.sequence.firstTriggerTime, timing.firstVolumeOnset, 0.01);
  EXPECT_NEAR(scan.end, timing.end(), 0.2);
  ASSERT_EQ(result.findings.quality.size(), 1u);
  EXPECT_TRUE(result.findings.quality.front());
  const auto from = static_cast<int64_t>((timing.firstVolumeOnset + 2) * recording.rate());
  const auto to = static_cast<int64_t>((timing.end() - 2) * recording.rate());
  for (size_t c = 0; c < recording.recorded.size(); ++c) {
    const double before = rmsOf(differenceOf(recording.recorded[c], recording.clean[c]), from, to);
    const double after = rmsOf(differenceOf(result.channels[c], recording.clean[c]), from, to);
    EXPECT_LT(after, 0.05 * before) << c;
  }
}

TEST(Correction, FindsAScanOfWhichNothingIsKnown) {
  const EngineRecording& recording = shortScan();
  const Corrected result = corrected(recording, CorrectionSettings());
  ASSERT_EQ(result.findings.timing.scans.size(), 1u);
  EXPECT_NEAR(result.findings.timing.longest().sequence.volumeDuration,
              recording.timings.front().volumeDuration, 1e-3);
}

TEST(Correction, GivesTheSameBitsHoweverTheSamplesAreHandedIn) {
  const EngineRecording& recording = shortScan();
  const CorrectionSettings settings = allSettings(recording);
  const auto inBlocksOf = [&](int64_t length) {
    MemoryStore store(recording.shape.nrOfChannels(), Correction::storeLength(settings, recording.shape));
    return corrected(recording, settings, store, silent, length);
  };
  const Corrected atOnce = inBlocksOf(recording.length());
  EXPECT_EQ(inBlocksOf(0).channels, atOnce.channels);
  EXPECT_EQ(inBlocksOf(997).channels, atOnce.channels);
}

TEST(Correction, GivesTheSameBitsWithAStoreInMemoryAndInAFile) {
  const EngineRecording& recording = shortScan();
  const CorrectionSettings settings = allSettings(recording);
  const int64_t length = Correction::storeLength(settings, recording.shape);
  const TestFolder folder;
  FileStore file(folder.path("channels"), length);
  EXPECT_EQ(corrected(recording, settings, file, silent).channels, corrected(recording, settings).channels);
}

TEST(Correction, LeavesARecordingWithoutAScanAsItIs) {
  const EngineRecording recording = recordingOf(noise(3, 20000), 500);
  const Corrected result = corrected(recording, CorrectionSettings());
  EXPECT_TRUE(result.findings.timing.scans.empty());
  EXPECT_EQ(result.findings.timing.source, TimingSource::None);
  for (size_t c = 0; c < 3; ++c) EXPECT_EQ(result.channels[c], asStored(recording.recorded[c]));
}

TEST(Correction, LooksForTheScanInTheOtherChannelsWhereTheFirstIsDead) {
  EngineRecording recording = shortScan();
  recording.recorded[0].assign(recording.recorded[0].size(), 0.0);
  CorrectionSettings settings;
  const Corrected blind = corrected(recording, settings);
  ASSERT_EQ(blind.findings.timing.scans.size(), 1u);
  for (const double sample : blind.channels[0]) ASSERT_EQ(sample, 0);
  const auto from = static_cast<int64_t>(5 * recording.rate());
  const auto to = static_cast<int64_t>(35 * recording.rate());
  const double before = rmsOf(differenceOf(recording.recorded[1], recording.clean[1]), from, to);
  EXPECT_LT(rmsOf(differenceOf(blind.channels[1], recording.clean[1]), from, to), 0.05 * before);
}

TEST(Correction, CountsSamplesThatAreNotNumbersAndTakesThemAsZero) {
  EngineRecording recording = recordingOf(noise(2, 5000), 500);
  EngineRecording zeroed = recording;
  recording.recorded[0][17] = nan;
  recording.recorded[1][4999] = std::numeric_limits<double>::infinity();
  recording.recorded[1][0] = 1e300; // beyond 32-bit floats
  zeroed.recorded[0][17] = zeroed.recorded[1][4999] = zeroed.recorded[1][0] = 0;
  CorrectionSettings settings;
  settings.lowPass = 40;
  const Corrected result = corrected(recording, settings);
  EXPECT_EQ(result.findings.nrOfNotFinite, 3);
  EXPECT_EQ(result.channels, corrected(zeroed, settings).channels);
}

TEST(Correction, RepairsSaturatedSamplesOfChannelsThatWereIntegers) {
  EngineRecording recording = recordingOf(Channels(2), 500);
  for (int t = 0; t < 5000; ++t)
    for (std::vector<double>& channel : recording.recorded)
      channel.push_back(std::floor(3500 * std::sin(2 * std::numbers::pi * 3 * t / 500.0)) * 10);
  recording.shape.nrOfSamples = 5000;
  const std::vector<double> truth = recording.recorded[0];
  for (double& sample : recording.recorded[0]) sample = std::min(sample, 32767.0);
  recording.shape.integers = {IntegerRange(), std::nullopt};
  CorrectionSettings settings;
  settings.gradient = false;
  settings.repairSaturation = true;
  const Corrected result = corrected(recording, settings);
  ASSERT_EQ(result.findings.repaired.size(), 1u);
  EXPECT_EQ(result.findings.repaired[0].channel, 0);
  EXPECT_GT(result.findings.repaired[0].nrOfRepaired, 100);
  EXPECT_LT(rmsOf(differenceOf(result.channels[0], truth)), 60);
  EXPECT_EQ(result.channels[1], asStored(recording.recorded[1]));
}

TEST(Correction, ChannelsThatPassUnchangedKeepTheirValuesAtEveryRate) {
  EngineRecording recording = shortScan();
  std::vector<double>& triggers = recording.recorded[2];
  for (size_t t = 0; t < triggers.size(); ++t) triggers[t] = static_cast<double>(t % 1009);
  recording.shape.roles[2].passesUnchanged = true;
  for (const double rate : {0.0, 250.0, 180.0, 1000.0, 333.3}) {
    SCOPED_TRACE(rate);
    CorrectionSettings settings = allSettings(recording);
    settings.rate = rate;
    const Corrected result = corrected(recording, settings);
    for (size_t k = 0; k < result.channels[2].size(); ++k) {
      const double instant = static_cast<double>(k) * recording.rate() / result.rate;
      const auto nearest = std::min(static_cast<size_t>(std::floor(instant + 0.5)), triggers.size() - 1);
      ASSERT_EQ(result.channels[2][k], triggers[nearest]) << k;
    }
  }
}

TEST(Correction, SubtractsTheAverageOfTheChannelsThatBelongToIt) {
  const EngineRecording plain = recordingOf(noise(4, 3000), 500);
  EngineRecording recording = plain;
  recording.shape.roles[1].takesPartInReference = false;
  recording.shape.roles[3].passesUnchanged = true;
  CorrectionSettings settings;
  settings.gradient = false;
  settings.averageReference = true;
  const Corrected result = corrected(recording, settings);
  for (size_t t = 0; t < 3000; ++t) {
    const double mean = (plain.recorded[0][t] + plain.recorded[2][t]) / 2;
    ASSERT_NEAR(result.channels[0][t], plain.recorded[0][t] - mean, 1e-5);
    ASSERT_NEAR(result.channels[2][t], plain.recorded[2][t] - mean, 1e-5);
    ASSERT_NEAR(result.channels[1][t], plain.recorded[1][t], 1e-5);
    ASSERT_NEAR(result.channels[3][t], plain.recorded[3][t], 1e-5);
  }
}

TEST(Correction, ScalesByPowersOfTen) {
  EngineRecording recording = recordingOf(noise(2, 1000), 500);
  recording.shape.roles[1].passesUnchanged = true;
  for (const int order : {-3, 2}) {
    CorrectionSettings settings;
    settings.scalingOrder = order;
    const Corrected result = corrected(recording, settings);
    const double factor = std::pow(10.0, order);
    for (size_t t = 0; t < 1000; ++t)
      ASSERT_NEAR(result.channels[0][t], recording.recorded[0][t] * factor, 1e-5 * factor);
    EXPECT_EQ(result.channels[1], asStored(recording.recorded[1]));
  }
}

TEST(Correction, RemovesLineNoiseWhoseAmplitudeChangesSlowlyAndKeepsTheEegBesideIt) {
  constexpr double rate = 250;
  const Channels eeg = noise(1, 250 * 100);
  EngineRecording recording = recordingOf(eeg, rate);
  std::vector<double> line;
  for (size_t t = 0; t < eeg[0].size(); ++t) {
    const double seconds = static_cast<double>(t) / rate;
    line.push_back(40 * (1 + 0.3 * std::sin(2 * std::numbers::pi * seconds / 200)) *
                   std::sin(2 * std::numbers::pi * 50 * seconds + 0.4));
    recording.recorded[0][t] += line.back();
  }
  CorrectionSettings settings;
  settings.lineNoise = {50};
  const std::vector<double> both = corrected(recording, settings).channels[0];
  // What it takes from the EEG alone is what it leaves beside the line: the fit is linear.
  const std::vector<double> eegAlone = corrected(recordingOf(eeg, rate), settings).channels[0];
  EXPECT_LT(rmsOf(differenceOf(both, eegAlone)), 0.01 * rmsOf(line)) << "40 dB";
  EXPECT_LT(rmsOf(differenceOf(eegAlone, eeg[0])), 0.1 * rmsOf(eeg[0]));
}

TEST(Correction, AWindowOfFewSlicesGivesAnotherResultThanOneOfMore) {
  const EngineRecording& recording = shortScan();
  Channels results;
  for (const int slices : {1, 5, 11}) {
    CorrectionSettings settings = settingsFor(recording);
    settings.timing.volumeWise = false;
    settings.timing.windowSlices = slices;
    results.push_back(corrected(recording, settings).channels[0]);
  }
  EXPECT_GT(rmsOf(differenceOf(results[0], results[1])), 0.05);
  EXPECT_GT(rmsOf(differenceOf(results[1], results[2])), 0.05);
}

TEST(Correction, AsThePluginDoesFillsTheFindings) {
  const EngineRecording recording = simulateRecording(Preset::Both, 500, 80, 3);
  CorrectionSettings settings;
  settings.method = asThePluginDoes;
  settings.heartBeats = true;
  settings.decimation = 2;
  const Corrected result = corrected(recording, settings);
  EXPECT_EQ(result.rate, 250);
  ASSERT_EQ(result.findings.timing.scans.size(), 1u);
  EXPECT_EQ(result.findings.timing.source, TimingSource::QuietBetweenSlices);
  const MRSequence& sequence = result.findings.timing.longest().sequence;
  EXPECT_EQ(sequence.nrOfVolumes, recording.timings.front().nrOfVolumes);
  EXPECT_GT(sequence.windowHalfLength, 0);
  EXPECT_EQ(sequence.windowHalfLength, std::floor(sequence.windowHalfLength)) << "whole seconds";
  EXPECT_NEAR(result.findings.beatsPerMinute, 65, 8);
  EXPECT_GT(result.findings.pulseTimes.size(), 60u);
  EXPECT_EQ(result.findings.pulseSampleRate, 250);
  EXPECT_EQ(result.findings.withoutModel.size(), 2u);
}

} // namespace
} // namespace emeg
