#include <emeg/emeg.hpp>

#include "tests/library/SimulatedSignal.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

emeg::Recording recordingOf(const SimulatedSignal& signal) {
  emeg::Recording recording{SimulatedSignal::rate, SimulatedSignal::samples, {}};
  for (int c = 0; c < signal.channels; ++c)
    recording.channels.push_back({"EEG" + std::to_string(c), EMEG_EEG});
  return recording;
}

const emeg::Layout layout{1, SimulatedSignal::samples, 1};

struct OutOfPatience {};

} // namespace

TEST(Wrapper, CorrectsAsTheCFunctionsDo) {
  const SimulatedSignal signal;
  emeg::Correction correction(emeg::Settings(), recordingOf(signal));
  correction.give(signal.recorded.data(), layout, SimulatedSignal::samples);
  ASSERT_EQ(correction.find().scans.size(), 1u);
  EXPECT_NEAR(correction.findings().scans[0].onset(2),
              SimulatedSignal::firstOnset + 2 * SimulatedSignal::volumeDuration, 0.02);
  std::vector<double> result(signal.recorded.size());
  correction.run(result.data(), layout, correction.nrOfOutputs());
  EXPECT_EQ(result, resultOf(correctionOf(signal).get(), signal.channels));
}

TEST(Wrapper, SettingsTakeTextsNumbersAndTruths) {
  emeg::Settings settings;
  settings.set("notch", "50:2,100").set("scale", 0).set("window", 30).set("bcg", true).set("low-pass", 70.5);
  settings.setBeats({1, 2, 3}).setVolumeOnsets({0, 1, 2});
  const emeg::Settings copy = settings;
  EXPECT_NE(copy.handle(), settings.handle());
  try {
    settings.set("window", -1);
    FAIL();
  } catch (const emeg::Error& error) {
    EXPECT_EQ(error.status(), EMEG_BAD_SETTING);
    EXPECT_STREQ(error.what(), "The setting \"window\" cannot be \"-1\"; it takes: integer, 1 to 1000.");
  }
}

TEST(Wrapper, WhatACallbackThrowsArrives) {
  const SimulatedSignal signal;
  emeg::Correction correction(emeg::Settings(), recordingOf(signal));
  EXPECT_THROW(correction.read([](auto, auto, double*) { throw OutOfPatience(); }), OutOfPatience);
  emeg::Correction another(emeg::Settings(), recordingOf(signal));
  another.give(signal.recorded.data(), layout, SimulatedSignal::samples);
  another.setProgress([](const char*, int, double) -> bool { throw OutOfPatience(); });
  EXPECT_THROW(another.find(), OutOfPatience);
}

TEST(Wrapper, ACancelledCorrectionSaysSo) {
  const SimulatedSignal signal;
  emeg::Correction correction(emeg::Settings(), recordingOf(signal));
  correction.give(signal.recorded.data(), layout, SimulatedSignal::samples);
  correction.setProgress([](const char*, int, double) { return false; });
  try {
    correction.find();
    FAIL();
  } catch (const emeg::Error& error) {
    EXPECT_EQ(error.status(), EMEG_CANCELLED);
  }
}

TEST(Wrapper, ACorrectionCanBeMovedWhileItHasCallbacks) {
  const SimulatedSignal signal;
  int calls = 0;
  emeg::Correction first(emeg::Settings(), recordingOf(signal));
  first.setProgress([&calls](const char*, int, double) { return ++calls > 0; });
  emeg::Correction second = std::move(first);
  second.give(signal.recorded.data(), layout, SimulatedSignal::samples);
  std::vector<double> written;
  second.write([&written](std::int64_t, std::int64_t count, const double* microvolts) {
    written.insert(written.end(), microvolts, microvolts + 2 * count);
  });
  EXPECT_EQ(written.size(), signal.recorded.size());
  EXPECT_GT(calls, 0);
}

TEST(Wrapper, RefusesARecordingWithoutSamples) {
  EXPECT_THROW(emeg::Correction(emeg::Settings(), emeg::Recording()), emeg::Error);
}
