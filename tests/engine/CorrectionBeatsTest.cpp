#include "engine/store/MemoryStore.h"
#include "tests/engine/EngineRecordings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace emeg {
namespace {

CorrectionSettings beatSettings() {
  CorrectionSettings settings;
  settings.gradient = false;
  settings.heartBeats = true;
  return settings;
}

/// The same recording whose heart artifact is missing for ten seconds: no beat is found there.
EngineRecording heartWithAPause() {
  EngineRecording recording = heartAlone();
  for (size_t c = 0; c < recording.recorded.size(); ++c)
    for (size_t t = 30 * 500; t < 40 * 500; ++t) recording.recorded[c][t] -= recording.pulse[c][t];
  return recording;
}

/// As a correction finds them.
std::vector<double> beatTimesOf(const EngineRecording& recording) {
  return corrected(recording, beatSettings()).findings.pulseTimes;
}

TEST(HeartBeatsOfACorrection, AreFoundAndTheirArtifactIsRemoved) {
  const EngineRecording& recording = heartAlone();
  const Corrected result = corrected(recording, beatSettings());
  const Findings& findings = result.findings;
  EXPECT_NEAR(findings.beatsPerMinute, 65, 6);
  ASSERT_GT(findings.pulseTimes.size(), 65u);
  EXPECT_EQ(findings.pulseFigures.size(), recording.recorded.size());
  EXPECT_TRUE(findings.plausibility);
  const auto from = static_cast<int64_t>(5 * recording.rate());
  const auto to = static_cast<int64_t>(65 * recording.rate());
  for (size_t c = 0; c < recording.recorded.size(); ++c) {
    const double before = rmsOf(recording.pulse[c], from, to);
    const double left = rmsOf(differenceOf(result.channels[c], recording.clean[c]), from, to);
    EXPECT_LT(left, 0.6 * before) << c;
    EXPECT_LT(findings.pulseFigures[c].beatRmsAfter, 0.5 * findings.pulseFigures[c].beatRmsBefore);
  }
}

TEST(HeartBeatsOfACorrection, LeaveTheBitsOfSamplesOutsideTheModelledStretches) {
  const EngineRecording recording = heartWithAPause();
  CorrectionSettings settings = beatSettings();
  const std::vector<double> all = beatTimesOf(heartAlone());
  settings.beats.source = BeatSource::Markers;
  for (const double time : all)
    if (time > 8 && time < 60 && !(time > 29.5 && time < 40.5)) settings.beats.times.push_back(time);
  const Corrected with = corrected(recording, settings);
  settings.heartBeats = false;
  const Corrected without = corrected(recording, settings);
  ASSERT_GE(with.findings.withoutModel.size(), 2u);
  // Stretches are those of a typical channel: beats come earlier in one and later in another.
  const auto [least, most] =
      std::minmax_element(with.findings.pulseDelays.begin(), with.findings.pulseDelays.end());
  const double spread = *most - *least;
  ASSERT_LT(spread, 0.2);
  double secondsLeft = 0;
  for (const Stretch& stretch : with.findings.withoutModel) {
    secondsLeft += stretch.seconds();
    const auto from = static_cast<size_t>(std::ceil((stretch.start + spread) * recording.rate()));
    const auto to = static_cast<size_t>(std::floor((stretch.end - spread) * recording.rate()));
    for (size_t c = 0; c < recording.recorded.size(); ++c)
      for (size_t t = from; t < std::min(to, with.channels[c].size()); ++t)
        ASSERT_EQ(with.channels[c][t], without.channels[c][t]) << c << " " << t;
  }
  EXPECT_GT(secondsLeft, 12);
  EXPECT_LT(secondsLeft, 40);
}

TEST(HeartBeatsOfACorrection, MayBeMarkersWhoseDelayIsFitted) {
  const EngineRecording& recording = heartAlone();
  CorrectionSettings settings = beatSettings();
  settings.beats.source = BeatSource::Markers;
  for (const double time : beatTimesOf(recording)) settings.beats.times.push_back(time - 0.1);
  const Corrected result = corrected(recording, settings);
  EXPECT_EQ(result.findings.pulseDelays.size(), recording.recorded.size());
  const auto from = static_cast<int64_t>(5 * recording.rate());
  const auto to = static_cast<int64_t>(65 * recording.rate());
  for (size_t c = 0; c < recording.recorded.size(); ++c)
    EXPECT_LT(rmsOf(differenceOf(result.channels[c], recording.clean[c]), from, to),
              0.55 * rmsOf(recording.pulse[c], from, to))
        << c;
}

TEST(HeartBeatsOfACorrection, MayComeFromAnElectrocardiogramWhichKeepsItsSamples) {
  EngineRecording recording =
      simulateRecording(Preset::Bcg, 500, 60, 4, [](SimulationParameters& p) { p.ecg = EcgParameters(); });
  ChannelRole& ecg = recording.shape.roles.back();
  ecg.takesPartInPulses = ecg.showsSequence = ecg.takesPartInReference = false;
  ecg.showsHeartBeats = true;
  CorrectionSettings settings = beatSettings();
  settings.beats.source = BeatSource::Ecg;
  const Corrected result = corrected(recording, settings);
  EXPECT_NEAR(result.findings.beatsPerMinute, 65, 6);
  EXPECT_EQ(result.findings.pulseDelays.size(), 3u);
  EXPECT_EQ(result.channels[3], asStored(recording.recorded[3]));
  for (size_t c = 0; c < 3; ++c)
    EXPECT_LT(rmsOf(differenceOf(result.channels[c], recording.clean[c]), 2500, 27500),
              0.55 * rmsOf(recording.pulse[c], 2500, 27500))
        << c;
}

TEST(HeartBeatsOfACorrection, AreFoundBehindTheScanTheyWereRecordedIn) {
  const EngineRecording recording = simulateRecording(Preset::Both, 500, 80, 3);
  CorrectionSettings settings = settingsFor(recording);
  settings.heartBeats = true;
  const Corrected result = corrected(recording, settings);
  EXPECT_EQ(result.findings.timing.scans.size(), 1u);
  EXPECT_NEAR(result.findings.beatsPerMinute, 65, 8);
  const auto from = static_cast<int64_t>(8 * recording.rate());
  const auto to = static_cast<int64_t>(70 * recording.rate());
  for (size_t c = 0; c < 3; ++c)
    EXPECT_LT(rmsOf(differenceOf(result.channels[c], recording.clean[c]), from, to),
              0.8 * rmsOf(recording.pulse[c], from, to))
        << c;
}

TEST(HeartBeatsOfACorrection, AreKnownBeforeTheFirstCorrectedSample) {
  const EngineRecording& recording = heartAlone();
  const CorrectionSettings settings = beatSettings();
  MemoryStore store(recording.shape.nrOfChannels(), recording.length());
  Observer silent;
  Correction correction(settings, recording.shape, store, silent);
  takeInAll(correction, recording);
  EXPECT_GT(correction.find().pulseTimes.size(), 65u);
}

TEST(HeartBeatsOfACorrection, ThatAreTooFewLeaveTheRecordingAsItIs) {
  const EngineRecording& recording = heartAlone();
  CorrectionSettings settings = beatSettings();
  settings.beats.source = BeatSource::Markers;
  settings.beats.times = {10, 20};
  const Corrected result = corrected(recording, settings);
  ASSERT_EQ(result.findings.withoutModel.size(), 1u);
  EXPECT_EQ(result.findings.withoutModel[0].start, 0);
  EXPECT_NEAR(result.findings.withoutModel[0].end, 70, 0.01);
  for (size_t c = 0; c < recording.recorded.size(); ++c)
    EXPECT_EQ(result.channels[c], asStored(recording.recorded[c]));
}

} // namespace
} // namespace emeg
