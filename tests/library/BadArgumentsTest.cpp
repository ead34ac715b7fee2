#include "tests/library/SimulatedSignal.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

// Every function with every pointer that must not be null, one at a time.

TEST(BadArguments, NullPointersOfSettingsAreErrors) {
  const SettingsHandle settings = newSettings();
  emeg_settings* copy = nullptr;
  EXPECT_EQ(emeg_settings_create(nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_settings_copy(nullptr, &copy), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_settings_copy(settings.get(), nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_settings_set(nullptr, "bcg", "1"), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_settings_set(settings.get(), nullptr, "1"), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_settings_set(settings.get(), "bcg", nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_STREQ(emeg_settings_error(settings.get()), "value is a null pointer.");
  EXPECT_EQ(emeg_settings_set_number(nullptr, "bcg", 1), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_settings_set_number(settings.get(), nullptr, 1), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_settings_set_volume_onsets(nullptr, nullptr, 0), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_settings_set_slice_onsets(nullptr, nullptr, 0), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_settings_set_beats(nullptr, nullptr, 0), EMEG_BAD_ARGUMENT);
  EXPECT_STREQ(emeg_settings_error(nullptr), "");
  emeg_settings_free(nullptr);
}

TEST(BadArguments, OfARecordingAreErrors) {
  const RecordingHandle recording = describe(SimulatedSignal(1));
  emeg_recording* created = nullptr;
  EXPECT_EQ(emeg_recording_create(1000, 10, nullptr), EMEG_BAD_ARGUMENT);
  for (const double rate : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()})
    EXPECT_EQ(emeg_recording_create(rate, 10, &created), EMEG_BAD_ARGUMENT) << rate;
  EXPECT_EQ(emeg_recording_create(1000, 0, &created), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(created, nullptr);
  EXPECT_EQ(emeg_recording_add_channel(nullptr, "Cz", EMEG_EEG), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_recording_add_channel(recording.get(), nullptr, EMEG_EEG), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_recording_add_channel(recording.get(), "Cz", 4), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_recording_set_integers(nullptr, 0, 1, 0, -10, 10), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_recording_set_integers(recording.get(), 1, 1, 0, -10, 10), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_recording_set_integers(recording.get(), -1, 1, 0, -10, 10), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_recording_set_integers(recording.get(), 0, 0, 0, -10, 10), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_recording_set_integers(recording.get(), 0, 1, 0, 10, 10), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_recording_set_integers(recording.get(), 0, 1, 0, -10, 10), EMEG_OK);
  EXPECT_STREQ(emeg_recording_error(nullptr), "");
  emeg_recording_free(nullptr);
}

TEST(BadArguments, NullPointersOfACorrectionAreErrors) {
  const SimulatedSignal signal(1);
  const CorrectionHandle handle = correctionOf(signal);
  emeg_correction* const correction = handle.get();
  const emeg_layout layout{EMEG_DOUBLE, 1, 1, 1};
  std::vector<double> values(10);
  const double* beats = nullptr;
  const char* json = nullptr;
  emeg_scan scan;
  size_t count = 0;
  emeg_correction* created = nullptr;
  EXPECT_EQ(emeg_correction_create(newSettings().get(), describe(signal).get(), nullptr, nullptr),
            EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_create(nullptr, describe(signal).get(), nullptr, &created), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_create(newSettings().get(), nullptr, nullptr, &created), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_set_progress(nullptr, nullptr, nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_give(nullptr, values.data(), &layout, 1), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_give(correction, nullptr, &layout, 1), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_give(correction, values.data(), nullptr, 1), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_read(nullptr, nullptr, nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_read(correction, nullptr, nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_find(nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_output(nullptr, nullptr, nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_output(correction, nullptr, nullptr), EMEG_OK);
  EXPECT_EQ(emeg_correction_run(nullptr, values.data(), &layout, 1), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_run(correction, nullptr, &layout, 1), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_run(correction, values.data(), nullptr, 1), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_write(nullptr, nullptr, nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_write(correction, nullptr, nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_scans(nullptr, &count), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_scans(correction, nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_scan(nullptr, 0, &scan), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_scan(correction, 0, nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_beats(nullptr, &beats, &count), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_beats(correction, nullptr, &count), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_beats(correction, &beats, nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_findings(nullptr, &json), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_correction_findings(correction, nullptr), EMEG_BAD_ARGUMENT);
  EXPECT_STREQ(emeg_correction_error(nullptr), "");
  emeg_correction_free(nullptr);
}

TEST(BadArguments, LayoutsThatMakeNoSenseAreErrors) {
  const SimulatedSignal signal(1);
  const CorrectionHandle correction = correctionOf(signal);
  std::vector<double> values(static_cast<size_t>(SimulatedSignal::samples));
  for (const emeg_layout& layout :
       {emeg_layout{2, 1, 1, 1}, emeg_layout{EMEG_DOUBLE, 0, 1, 1}, emeg_layout{EMEG_DOUBLE, 1, 1, 0},
        emeg_layout{EMEG_DOUBLE, 1, 1, std::nan("")}})
    EXPECT_EQ(emeg_correction_run(correction.get(), values.data(), &layout, SimulatedSignal::samples),
              EMEG_BAD_ARGUMENT);
}

TEST(BadArguments, StatusesHaveTextsEvenWhereTheyAreNone) {
  EXPECT_STREQ(emeg_status_text(EMEG_CANCELLED), "cancelled");
  EXPECT_STREQ(emeg_status_text(99), "unknown status");
}
