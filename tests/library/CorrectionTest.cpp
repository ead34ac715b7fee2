#include "tests/library/SimulatedSignal.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <thread>

namespace {

constexpr int64_t samples = SimulatedSignal::samples;

/// A correction that still waits for its samples.
CorrectionHandle emptyCorrection(const RecordingHandle& recording) {
  emeg_correction* created = nullptr;
  EXPECT_EQ(emeg_correction_create(newSettings().get(), recording.get(), nullptr, &created), EMEG_OK);
  return CorrectionHandle(created);
}

/// The signal as floats in volts, time point after time point.
std::vector<float> multiplexedVolts(const SimulatedSignal& signal) {
  std::vector<float> volts;
  for (int64_t t = 0; t < samples; ++t)
    for (int c = 0; c < signal.channels; ++c)
      volts.push_back(static_cast<float>(signal.recorded[static_cast<size_t>(c * samples + t)] * 1e-6));
  return volts;
}

int readSignal(void* user, int64_t first, int64_t count, double* microvolts) {
  const auto& signal = *static_cast<const SimulatedSignal*>(user);
  for (int c = 0; c < signal.channels; ++c)
    std::copy_n(signal.recorded.begin() + c * samples + first, count, microvolts + c * count);
  return 0;
}

struct Written {
  std::vector<double> values = std::vector<double>(static_cast<size_t>(2 * samples));
  int64_t next = 0;
};

int writeInto(void* user, int64_t first, int64_t count, const double* microvolts) {
  auto& written = *static_cast<Written*>(user);
  EXPECT_EQ(first, written.next);
  written.next = first + count;
  for (int c = 0; c < 2; ++c)
    std::copy_n(microvolts + c * count, count, written.values.begin() + c * samples + first);
  return 0;
}

int cancel(void* /*user*/, const char* /*step*/, int /*channel*/, double /*part*/) {
  return 1;
}

} // namespace

TEST(LibraryCorrection, RemovesTheArtifactAndKeepsTheBrain) {
  const SimulatedSignal signal;
  const std::vector<double> result = resultOf(correctionOf(signal).get(), signal.channels);
  const double artifact = rms(difference(signal.recorded, signal.brain));
  const double left = rms(difference(result, signal.brain));
  EXPECT_LT(left, 0.02 * artifact);
}

TEST(LibraryCorrection, BlocksAndCallbacksGiveTheSameBits) {
  SimulatedSignal signal;
  const std::vector<double> expected = resultOf(correctionOf(signal).get(), signal.channels);
  const RecordingHandle recording = describe(signal);
  const CorrectionHandle correction = emptyCorrection(recording);
  const emeg_layout layout{EMEG_DOUBLE, 1, samples, 1};
  ASSERT_EQ(emeg_correction_give(correction.get(), signal.recorded.data(), &layout, 0), EMEG_OK);
  ASSERT_EQ(emeg_correction_give(correction.get(), signal.recorded.data(), &layout, 777), EMEG_OK);
  ASSERT_EQ(emeg_correction_read(correction.get(), readSignal, &signal), EMEG_OK);
  Written written;
  ASSERT_EQ(emeg_correction_write(correction.get(), writeInto, &written), EMEG_OK);
  EXPECT_EQ(written.next, samples);
  EXPECT_EQ(written.values, expected);
}

TEST(LibraryCorrection, StridesAndUnitsSayWhereSamplesLieAndWhatTheyMean) {
  const SimulatedSignal signal;
  const std::vector<double> expected = resultOf(correctionOf(signal).get(), signal.channels);
  const RecordingHandle recording = describe(signal);
  const CorrectionHandle correction = emptyCorrection(recording);
  std::vector<float> volts = multiplexedVolts(signal);
  const emeg_layout layout{EMEG_FLOAT, signal.channels, 1, 1e6};
  ASSERT_EQ(emeg_correction_give(correction.get(), volts.data(), &layout, samples), EMEG_OK);
  ASSERT_EQ(emeg_correction_run(correction.get(), volts.data(), &layout, samples), EMEG_OK);
  double largest = 0;
  for (int c = 0; c < signal.channels; ++c)
    for (int64_t t = 0; t < samples; ++t)
      largest = std::max(largest, std::abs(1e6 * static_cast<double>(volts[static_cast<size_t>(2 * t + c)]) -
                                           expected[static_cast<size_t>(c * samples + t)]));
  EXPECT_LT(largest, 0.05); // microvolts: volts were rounded to floats of another grid
}

TEST(LibraryCorrection, DifferentOnesMayRunInDifferentThreads) {
  const SimulatedSignal signal;
  const std::vector<double> expected = resultOf(correctionOf(signal).get(), signal.channels);
  std::vector<std::vector<double>> results(4);
  std::vector<std::thread> threads;
  for (std::vector<double>& result : results)
    threads.emplace_back([&] { result = resultOf(correctionOf(signal).get(), signal.channels); });
  for (std::thread& thread : threads) thread.join();
  for (const std::vector<double>& result : results) EXPECT_EQ(result, expected);
}

TEST(LibraryCorrection, AScratchFileChangesNothingAndLeavesNothing) {
  const SimulatedSignal signal;
  const std::string path = testing::TempDir() + "emeg-library-scratch";
  std::filesystem::remove(path);
  const std::vector<double> expected = resultOf(correctionOf(signal).get(), signal.channels);
  EXPECT_EQ(resultOf(correctionOf(signal, nullptr, path.c_str()).get(), signal.channels), expected);
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(LibraryCorrection, LeavesFilesOfOthersAlone) {
  const std::string path = testing::TempDir() + "emeg-library-precious";
  std::ofstream(path) << "precious";
  const SimulatedSignal signal(1);
  emeg_correction* created = nullptr;
  EXPECT_EQ(emeg_correction_create(newSettings().get(), describe(signal).get(), path.c_str(), &created),
            EMEG_FILE_FAILED);
  const CorrectionHandle correction(created);
  EXPECT_NE(std::string(emeg_correction_error(created)).find(path), std::string::npos);
  EXPECT_EQ(std::filesystem::file_size(path), 8u);
  std::filesystem::remove(path);
}

TEST(LibraryCorrection, PassesTriggersUnchangedWhateverTheUnit) {
  const SimulatedSignal signal;
  const RecordingHandle recording = describe(signal);
  ASSERT_EQ(emeg_recording_add_channel(recording.get(), "Status", EMEG_TRIGGER), EMEG_OK);
  const CorrectionHandle correction = emptyCorrection(recording);
  std::vector<double> volts(static_cast<size_t>(3 * samples));
  for (size_t i = 0; i < signal.recorded.size(); ++i) volts[i] = signal.recorded[i] * 1e-6;
  for (size_t t = 0; t < static_cast<size_t>(samples); ++t)
    volts[2 * static_cast<size_t>(samples) + t] = t % 2100 == 0 ? 65281 : 0;
  const std::vector<double> triggers(volts.begin() + 2 * samples, volts.end());
  const emeg_layout layout{EMEG_DOUBLE, 1, samples, 1e6};
  ASSERT_EQ(emeg_correction_give(correction.get(), volts.data(), &layout, samples), EMEG_OK);
  ASSERT_EQ(emeg_correction_run(correction.get(), volts.data(), &layout, samples), EMEG_OK);
  EXPECT_EQ(std::vector<double>(volts.begin() + 2 * samples, volts.end()), triggers);
}

TEST(LibraryCorrection, EndsWhereTheProgressFunctionSaysSo) {
  const SimulatedSignal signal;
  const CorrectionHandle correction = correctionOf(signal);
  ASSERT_EQ(emeg_correction_set_progress(correction.get(), cancel, nullptr), EMEG_OK);
  EXPECT_EQ(emeg_correction_find(correction.get()), EMEG_CANCELLED);
  emeg_correction_set_progress(correction.get(), nullptr, nullptr);
  EXPECT_EQ(emeg_correction_find(correction.get()), EMEG_WRONG_ORDER);
}

TEST(LibraryCorrection, RefusesCallsInTheWrongOrder) {
  const SimulatedSignal signal;
  const RecordingHandle recording = describe(signal);
  const CorrectionHandle correction = emptyCorrection(recording);
  const emeg_layout layout{EMEG_DOUBLE, 1, samples, 1};
  std::vector<double> values = signal.recorded;
  const char* json = nullptr;
  EXPECT_EQ(emeg_correction_find(correction.get()), EMEG_WRONG_ORDER);
  EXPECT_EQ(emeg_correction_run(correction.get(), values.data(), &layout, samples), EMEG_WRONG_ORDER);
  EXPECT_EQ(emeg_correction_findings(correction.get(), &json), EMEG_WRONG_ORDER);
  ASSERT_EQ(emeg_correction_give(correction.get(), values.data(), &layout, samples), EMEG_OK);
  EXPECT_EQ(emeg_correction_give(correction.get(), values.data(), &layout, 1), EMEG_WRONG_ORDER);
  EXPECT_EQ(emeg_correction_run(correction.get(), values.data(), &layout, samples - 1), EMEG_BAD_ARGUMENT);
  ASSERT_EQ(emeg_correction_run(correction.get(), values.data(), &layout, samples), EMEG_OK);
  EXPECT_EQ(emeg_correction_run(correction.get(), values.data(), &layout, samples), EMEG_WRONG_ORDER);
}

TEST(LibraryCorrection, SaysWhichEcgChannelIsMissing) {
  const SettingsHandle settings = newSettings();
  ASSERT_EQ(emeg_settings_set(settings.get(), "bcg", "1"), EMEG_OK);
  ASSERT_EQ(emeg_settings_set(settings.get(), "ecg", "Heart"), EMEG_OK);
  emeg_correction* created = nullptr;
  EXPECT_EQ(emeg_correction_create(settings.get(), describe(SimulatedSignal(1)).get(), nullptr, &created),
            EMEG_BAD_SETTING);
  const CorrectionHandle correction(created);
  EXPECT_STREQ(emeg_correction_error(created), "The recording has no channel \"Heart\" to be the ECG.");
  EXPECT_EQ(emeg_correction_find(created), EMEG_WRONG_ORDER);
}

TEST(LibraryCorrection, ARecordingLargerThanMemoryIsAnError) {
  emeg_recording* created = nullptr;
  ASSERT_EQ(emeg_recording_create(5000, std::numeric_limits<int64_t>::max(), &created), EMEG_OK);
  const RecordingHandle recording(created);
  for (int c = 0; c < 4; ++c) emeg_recording_add_channel(created, "EEG", EMEG_EEG);
  emeg_correction* correction = nullptr;
  const emeg_status status = emeg_correction_create(newSettings().get(), created, nullptr, &correction);
  EXPECT_TRUE(status == EMEG_NO_MEMORY || status == EMEG_BAD_SETTING) << status;
  emeg_correction_free(correction);
}

TEST(LibraryCorrection, RaisesTheRateAndSaysHowLongTheResultIs) {
  const SimulatedSignal signal;
  const SettingsHandle settings = newSettings();
  ASSERT_EQ(emeg_settings_set(settings.get(), "rate", "3000"), EMEG_OK);
  const CorrectionHandle correction = correctionOf(signal, settings.get());
  EXPECT_EQ(resultOf(correction.get(), signal.channels).size(),
            static_cast<size_t>(2 * ((samples - 1) * 3 / 2 + 1)));
}

TEST(LibraryCorrection, AsThePluginDividesTheRate) {
  const SimulatedSignal signal;
  const SettingsHandle settings = newSettings();
  ASSERT_EQ(emeg_settings_set(settings.get(), "as-plugin", "1"), EMEG_OK);
  ASSERT_EQ(emeg_settings_set(settings.get(), "rate", "500"), EMEG_OK);
  const CorrectionHandle correction = correctionOf(signal, settings.get());
  EXPECT_EQ(resultOf(correction.get(), signal.channels).size(), static_cast<size_t>(2 * samples / 4));
  ASSERT_EQ(emeg_settings_set(settings.get(), "rate", "600"), EMEG_OK);
  emeg_correction* created = nullptr;
  EXPECT_EQ(emeg_correction_create(settings.get(), describe(signal).get(), nullptr, &created),
            EMEG_BAD_SETTING);
  emeg_correction_free(created);
}
