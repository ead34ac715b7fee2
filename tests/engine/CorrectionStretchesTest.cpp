// A correction stretch after stretch against the same steps on whole channels.

#include "artifacts/gradient/templates/SegmentRemoval.h"
#include "dsp/PowerOfTen.h"
#include "engine/CorrectionFilters.h"
#include "engine/store/FileStore.h"
#include "engine/store/MemoryStore.h"
#include "engine/timing/ScanTiming.h"
#include "tests/TestFolder.h"
#include "tests/engine/EngineRecordings.h"

#include <gtest/gtest.h>

#include <cmath>

namespace emeg {
namespace {

Observer silent;

/// The scans as the correction finds them.
TimedScans scansOf(const EngineRecording& recording, const CorrectionSettings& settings) {
  MemoryStore store(recording.shape.nrOfChannels(), recording.length());
  std::vector<int> channels;
  for (int c = 0; c < recording.shape.nrOfChannels(); ++c) {
    const std::vector<double>& samples = recording.recorded[static_cast<size_t>(c)];
    store.write(c, 0, std::vector<float>(samples.begin(), samples.end()));
    channels.push_back(c);
  }
  CachedChannels cached(store, 0, recording.length());
  return findScans(cached, channels, recording.length(), recording.rate(), settings.timing, silent);
}

/// One channel, undivided.
std::vector<double> undivided(const std::vector<double>& recorded, double rate, const TimedScans& scans,
                              const CorrectionSettings& settings) {
  std::vector<double> channel = asStored(recorded);
  if (!scans.segments.empty()) {
    const std::vector<double> high = templateSplit(rate).apply(channel);
    std::vector<double> artifact(channel.size(), 0.0);
    SegmentRemoval(scans.segments, rate, scans.volumeWise, settings.timing.windowSlices)
        .estimate(high, artifact);
    channel = differenceOf(channel, artifact);
  }
  for (const SinusoidTracker& line : lineTrackers(settings, rate)) {
    std::vector<double> left = channel;
    line.subtract(wholeRecording(channel), {0, static_cast<int64_t>(channel.size())}, left);
    channel = left;
  }
  for (const FirFilter& filter : outputFilters(settings, rate)) channel = filter.apply(channel);
  if (const auto resampler = outputResampler(settings, rate)) channel = resampler->apply(channel);
  for (double& sample : channel) sample *= powerOfTen(settings.scalingOrder);
  return channel;
}

void expectUndivided(const EngineRecording& recording, const CorrectionSettings& settings) {
  const Corrected result = corrected(recording, settings);
  EXPECT_GE(result.counts.size(), 3u) << "stretches";
  const TimedScans scans = scansOf(recording, settings);
  EXPECT_EQ(scans.segments.size(), recording.timings.size());
  for (size_t c = 0; c < recording.recorded.size(); ++c) {
    const std::vector<double> whole = undivided(recording.recorded[c], recording.rate(), scans, settings);
    ASSERT_EQ(result.channels[c].size(), whole.size());
    const double most = 1e-6 * rmsOf(whole);
    for (size_t t = 0; t < whole.size(); ++t)
      ASSERT_NEAR(result.channels[c][t], whole[t], most + 1e-7 * std::abs(whole[t])) << c << " " << t;
  }
}

TEST(CorrectionInStretches, EqualsThatOfWholeChannelsVolumeWise) {
  expectUndivided(twoScans(), settingsFor(twoScans()));
}

TEST(CorrectionInStretches, EqualsThatOfWholeChannelsSliceWise) {
  CorrectionSettings settings = settingsFor(twoScans());
  settings.timing.volumeWise = false;
  expectUndivided(twoScans(), settings);
}

TEST(CorrectionInStretches, EqualsThatOfWholeChannelsWithLinesAndFilters) {
  CorrectionSettings settings = settingsFor(twoScans());
  settings.lineNoise = {50, 100};
  settings.highPass = 0.3;
  settings.lowPass = 70;
  settings.notches = {{30, 2}, {60, 1}};
  settings.scalingOrder = 2;
  expectUndivided(twoScans(), settings);
}

TEST(CorrectionInStretches, EqualsThatOfWholeChannelsAtOtherRates) {
  for (const double rate : {100.0, 97.3, 500.0, 512.0}) {
    SCOPED_TRACE(rate);
    CorrectionSettings settings = settingsFor(twoScans());
    settings.lineNoise = {50};
    settings.lowPass = 40;
    settings.rate = rate;
    expectUndivided(twoScans(), settings);
  }
}

TEST(CorrectionInStretches, ReadsTheSameFromTheStoreAtEveryRate) {
  const EngineRecording& recording = twoScans();
  for (const double rate : {0.0, 100.0, 97.3, 500.0, 512.0, 1000.0}) {
    SCOPED_TRACE(rate);
    CorrectionSettings settings = settingsFor(recording);
    settings.highPass = 0.3;
    settings.rate = rate;
    settings.averageReference = true;
    const Corrected direct = corrected(recording, settings);
    ASSERT_GE(direct.counts.size(), 3u);

    const int64_t length = Correction::storeLength(settings, recording.shape);
    const TestFolder folder;
    FileStore store(folder.path("channels"), length);
    Correction correction(settings, recording.shape, store, silent);
    takeInAll(correction, recording);
    correction.find();
    const std::vector<ValueBounds> bounds = correction.correctIntoStore();
    for (int reading = 0; reading < 2; ++reading) {
      KeepingSink sink(recording.shape.nrOfChannels());
      correction.readCorrected(sink);
      ASSERT_EQ(sink.channels, direct.channels);
    }
    for (size_t c = 0; c < direct.channels.size(); ++c) {
      const auto [low, high] = std::minmax_element(direct.channels[c].begin(), direct.channels[c].end());
      EXPECT_EQ(bounds[c].smallest, *low);
      EXPECT_EQ(bounds[c].largest, *high);
    }
    EXPECT_TRUE(correction.findings().quality.front());
  }
}

TEST(CorrectionInStretches, SubtractsTheReferenceOfEveryStretch) {
  const EngineRecording& recording = twoScans();
  CorrectionSettings settings = settingsFor(recording);
  settings.averageReference = true;
  settings.rate = 100;
  const Corrected result = corrected(recording, settings);
  const double size = rmsOf(result.channels[0]);
  for (size_t t = 0; t < result.channels[0].size(); ++t)
    ASSERT_NEAR(result.channels[0][t] + result.channels[1][t] + result.channels[2][t], 0, 1e-5 * size) << t;
}

TEST(CorrectionInStretches, TakesRecordingsOfFewSamples) {
  for (const size_t length : {1u, 2u, 3u, 17u, 100u}) {
    SCOPED_TRACE(length);
    EngineRecording recording = recordingOf(Channels(2, std::vector<double>(length, 3.5)), 250);
    for (const double rate : {0.0, 20.0, 1000.0}) {
      CorrectionSettings settings;
      settings.heartBeats = true;
      settings.lineNoise = {50};
      settings.lowPass = 8;
      settings.rate = rate;
      const Corrected result = corrected(recording, settings);
      for (const double sample : result.channels[1]) ASSERT_TRUE(std::isfinite(sample));
    }
  }
}

} // namespace
} // namespace emeg
