#include "tests/engine/EngineRecordings.h"

#include <gtest/gtest.h>

#include <thread>

namespace emeg {
namespace {

EngineRecording recordingWith(uint64_t seed) {
  return simulateRecording(Preset::Both, 500, 60, 2, [&](SimulationParameters& p) { p.seed = seed; });
}

CorrectionSettings everything(const EngineRecording& recording) {
  CorrectionSettings settings = settingsFor(recording);
  settings.heartBeats = true;
  settings.highPass = 0.5;
  settings.lowPass = 45;
  settings.notches = {{30, 2}};
  settings.lineNoise = {50};
  settings.rate = 128;
  return settings;
}

TEST(CorrectionsInThreads, GiveTheSameBitsAsOneAfterTheOther) {
  const EngineRecording first = recordingWith(1);
  const EngineRecording second = recordingWith(2);
  CorrectionSettings firstSettings = everything(first);
  CorrectionSettings secondSettings; // the whole search
  secondSettings.heartBeats = true;
  secondSettings.method = asThePluginDoes;
  secondSettings.lowPass = 30;
  Corrected inThread[3];
  {
    std::thread one([&] { inThread[0] = corrected(first, firstSettings); });
    std::thread two([&] { inThread[1] = corrected(second, secondSettings); });
    std::thread three([&] { inThread[2] = corrected(second, everything(second)); });
    one.join();
    two.join();
    three.join();
  }
  EXPECT_EQ(inThread[0].channels, corrected(first, firstSettings).channels);
  EXPECT_EQ(inThread[1].channels, corrected(second, secondSettings).channels);
  EXPECT_EQ(inThread[2].channels, corrected(second, everything(second)).channels);
  EXPECT_FALSE(inThread[0].findings.pulseTimes.empty());
  EXPECT_FALSE(inThread[1].findings.pulseTimes.empty());
}

} // namespace
} // namespace emeg
