// What a correction allocates beside its store, against what it says before.

#include "engine/store/MemoryStore.h"
#include "tests/engine/EngineRecordings.h"
#include "tests/engine/PeakMemory.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace emeg {
namespace {

constexpr uint64_t anyRun = 4 << 20; // tables of transforms and the like, whatever the recording's length

/// Takes what comes and forgets it.
class NoSink : public CorrectedSink {
  void take(int64_t, std::span<const double>) override {}
};

void expectEnough(const EngineRecording& recording, const CorrectionSettings& settings, bool intoStore) {
  MemoryStore store(recording.shape.nrOfChannels(), Correction::storeLength(settings, recording.shape));
  Observer silent;
  constexpr size_t length = 100;
  std::vector<double> block;
  block.reserve(length * recording.recorded.size());
  beginPeakOfMemory();
  Correction correction(settings, recording.shape, store, silent);
  for (size_t t = 0; t < recording.recorded[0].size(); t += length) {
    const size_t count = std::min(length, recording.recorded[0].size() - t);
    block.clear();
    for (const std::vector<double>& channel : recording.recorded)
      block.insert(block.end(), channel.begin() + static_cast<std::ptrdiff_t>(t),
                   channel.begin() + static_cast<std::ptrdiff_t>(t + count));
    correction.takeIn(static_cast<int64_t>(count), block);
  }
  correction.find();
  NoSink sink;
  if (intoStore)
    correction.correctIntoStore();
  else
    correction.correct(sink);
  const uint64_t said = Correction::memoryFor(settings, recording.shape);
  EXPECT_LE(peakOfMemory(), said + anyRun)
      << (peakOfMemory() >> 20) << " MB, and " << (said >> 20) << " MB were said";
}

const EngineRecording& scan() {
  static const EngineRecording recording = simulateRecording(Preset::Both, 1000, 400, 2);
  return recording;
}

TEST(MemoryOfACorrection, IsWhatItSays) {
  expectEnough(scan(), CorrectionSettings(), false);
  expectEnough(scan(), CorrectionSettings(), true);
}

TEST(MemoryOfACorrection, IsWhatItSaysWithHeartBeats) {
  CorrectionSettings settings;
  settings.heartBeats = true;
  expectEnough(scan(), settings, false);
}

TEST(MemoryOfACorrection, IsWhatItSaysWithFiltersAndAnotherRate) {
  CorrectionSettings settings;
  settings.highPass = 0.5;
  settings.lowPass = 70;
  settings.lineNoise = {50};
  settings.rate = 256;
  expectEnough(scan(), settings, false);
}

TEST(MemoryOfACorrection, IsWhatItSaysWithAVeryLowHighPass) {
  CorrectionSettings settings;
  settings.gradient = false;
  settings.highPass = 0.01;
  expectEnough(scan(), settings, false);
}

TEST(MemoryOfACorrection, IsWhatItSaysAtAHigherRate) {
  CorrectionSettings settings;
  settings.rate = 5000;
  expectEnough(scan(), settings, false);
  expectEnough(scan(), settings, true);
}

TEST(MemoryOfACorrection, IsWhatItSaysWithALongWindow) {
  CorrectionSettings settings = settingsFor(scan());
  settings.timing.windowSlices = 1000;
  expectEnough(scan(), settings, false);
}

TEST(MemoryOfACorrection, IsWhatItSaysAsThePluginDoes) {
  CorrectionSettings settings;
  settings.method = asThePluginDoes;
  expectEnough(scan(), settings, false);
  settings.heartBeats = true;
  settings.lowPass = 70;
  expectEnough(scan(), settings, false);
}

TEST(MemoryOfACorrection, IsWhatItSaysWithManyChannelsWhoseStretchesAreShort) {
  const EngineRecording few = simulateRecording(Preset::Continuous, 1000, 150, 2);
  EngineRecording recording = few;
  recording.shape.roles.resize(128);
  for (size_t c = 2; c < 128; ++c) recording.recorded.push_back(few.recorded[c % 2]);
  const CorrectionSettings settings = settingsFor(recording);
  expectEnough(recording, settings, false);
  expectEnough(recording, settings, true);
}

} // namespace
} // namespace emeg
