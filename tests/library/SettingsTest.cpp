#include "tests/library/SimulatedSignal.h"

#include <gtest/gtest.h>
#include <limits>
#include <utility>

namespace {

emeg_status set(const SettingsHandle& settings, const char* name, const char* value) {
  return emeg_settings_set(settings.get(), name, value);
}

} // namespace

TEST(LibrarySettings, TakeTheValuesOfTheCommandLine) {
  const SettingsHandle settings = newSettings();
  const std::vector<std::pair<const char*, const char*>> values = {{"bcg", "1"},
                                                                   {"ecg", "ECG"},
                                                                   {"slice-wise", "1"},
                                                                   {"volume-wise", "1"},
                                                                   {"window", "25"},
                                                                   {"notch", "50:2"},
                                                                   {"line-noise", "50,100"},
                                                                   {"repair-saturation", "1"},
                                                                   {"as-plugin", "1"},
                                                                   {"tr", "2.5"},
                                                                   {"slices", "36"},
                                                                   {"first", "4.2"},
                                                                   {"high-pass", "0.5"},
                                                                   {"low-pass", "70"},
                                                                   {"decimate", "4"},
                                                                   {"rate", "250"},
                                                                   {"scale", "3"},
                                                                   {"average-reference", "0"}};
  for (const auto& [name, value] : values)
    EXPECT_EQ(set(settings, name, value), EMEG_OK) << name << ": " << emeg_settings_error(settings.get());
}

TEST(LibrarySettings, RefuseNamesThatAreNoneAndThoseOfFilesAndChannels) {
  const SettingsHandle settings = newSettings();
  for (const char* const name : {"hi-pass", "", "--bcg", "output", "force", "channels", "interval"}) {
    EXPECT_EQ(set(settings, name, "1"), EMEG_BAD_SETTING) << name;
    EXPECT_NE(std::string(emeg_settings_error(settings.get())).find(name), std::string::npos);
  }
}

TEST(LibrarySettings, RefuseValuesOutsideTheirRangeAndSayWhatTheyTake) {
  const SettingsHandle settings = newSettings();
  const std::vector<std::pair<const char*, const char*>> values = {
      {"window", "0"}, {"window", "2.5"},   {"window", "1e99"}, {"window", "many"}, {"window", ""},
      {"tr", "nan"},   {"high-pass", "1,"}, {"bcg", "yes"},     {"notch", "50:"},   {"line-noise", "50,,60"}};
  for (const auto& [name, value] : values)
    EXPECT_EQ(set(settings, name, value), EMEG_BAD_SETTING) << name << " " << value;
  set(settings, "window", "0");
  EXPECT_STREQ(emeg_settings_error(settings.get()),
               "The setting \"window\" cannot be \"0\"; it takes: integer, 1 to 1000.");
  EXPECT_EQ(set(settings, "window", "1"), EMEG_OK);
  EXPECT_STREQ(emeg_settings_error(settings.get()), "");
}

TEST(LibrarySettings, TakeNumbersInEveryForm) {
  const SettingsHandle settings = newSettings();
  EXPECT_EQ(emeg_settings_set_number(settings.get(), "high-pass", 0.1), EMEG_OK);
  EXPECT_EQ(emeg_settings_set_number(settings.get(), "bcg", 1), EMEG_OK);
  EXPECT_EQ(emeg_settings_set_number(settings.get(), "bcg", 0.5), EMEG_BAD_SETTING);
  EXPECT_EQ(emeg_settings_set_number(settings.get(), "high-pass", std::numeric_limits<double>::infinity()),
            EMEG_BAD_SETTING);
}

TEST(LibrarySettings, NeedThreeOnsetsThatAreNumbers) {
  const SettingsHandle settings = newSettings();
  const std::vector<double> onsets = {2, 4, 6};
  const std::vector<double> broken = {2, std::numeric_limits<double>::quiet_NaN(), 6};
  EXPECT_EQ(emeg_settings_set_volume_onsets(settings.get(), onsets.data(), 3), EMEG_OK);
  EXPECT_EQ(emeg_settings_set_slice_onsets(settings.get(), onsets.data(), 2), EMEG_BAD_SETTING);
  EXPECT_EQ(emeg_settings_set_volume_onsets(settings.get(), broken.data(), 3), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_settings_set_beats(settings.get(), broken.data(), 3), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_settings_set_volume_onsets(settings.get(), nullptr, 3), EMEG_BAD_ARGUMENT);
  EXPECT_EQ(emeg_settings_set_volume_onsets(settings.get(), nullptr, 0), EMEG_OK);
}

TEST(LibrarySettings, OfACopyAreItsOwn) {
  const SimulatedSignal signal(1);
  const SettingsHandle settings = newSettings();
  emeg_settings* copied = nullptr;
  ASSERT_EQ(emeg_settings_copy(settings.get(), &copied), EMEG_OK);
  const SettingsHandle copy(copied);
  ASSERT_EQ(set(copy, "rate", "500"), EMEG_OK);
  double rate = 0;
  emeg_correction_output(correctionOf(signal, settings.get()).get(), nullptr, &rate);
  EXPECT_DOUBLE_EQ(rate, SimulatedSignal::rate);
  emeg_correction_output(correctionOf(signal, copy.get()).get(), nullptr, &rate);
  EXPECT_DOUBLE_EQ(rate, 500);
}

TEST(LibrarySettings, ThatContradictTheRecordingOrEachOtherAreRefusedBeforeASampleIsTaken) {
  const SimulatedSignal signal(1); // 18 s at 2000 Hz
  using Pairs = std::vector<std::pair<const char*, const char*>>;
  const std::vector<Pairs> cases = {{{"high-pass", "1000"}},
                                    {{"high-pass", "-1"}},
                                    {{"low-pass", "1e300"}},
                                    {{"rate", "250"}, {"low-pass", "130"}},
                                    {{"high-pass", "40"}, {"low-pass", "30"}},
                                    {{"notch", "1:4"}},
                                    {{"notch", "50:-2"}},
                                    {{"notch", "999:4"}},
                                    {{"line-noise", "0"}},
                                    {{"line-noise", "1001"}},
                                    {{"rate", "20001"}},
                                    {{"tr", "6.1"}},
                                    {{"first", "3"}},
                                    {{"tr", "2"}, {"first", "19"}},
                                    {{"repair-saturation", "1"}},
                                    {{"as-plugin", "1"}, {"tr", "2"}},
                                    {{"as-plugin", "1"}, {"slices", "20"}},
                                    {{"as-plugin", "1"}, {"ecg", "EEG0"}}};
  for (const Pairs& pairs : cases) {
    const SettingsHandle settings = newSettings();
    for (const auto& [name, value] : pairs) ASSERT_EQ(set(settings, name, value), EMEG_OK) << name;
    emeg_correction* correction = nullptr;
    EXPECT_EQ(emeg_correction_create(settings.get(), describe(signal).get(), nullptr, &correction),
              EMEG_BAD_SETTING)
        << pairs.back().first << " " << pairs.back().second;
    EXPECT_STRNE(emeg_correction_error(correction), "");
    emeg_correction_free(correction);
  }
}

TEST(LibrarySettings, AllTogetherAreStillACorrection) {
  const SimulatedSignal signal;
  const SettingsHandle settings = newSettings();
  const std::vector<std::pair<const char*, const char*>> values = {
      {"slice-wise", "1"}, {"window", "20"},  {"line-noise", "50"}, {"high-pass", "0.5"},
      {"low-pass", "70"},  {"notch", "60:2"}, {"rate", "250"},      {"scale", "1"},
      {"tr", "1.05"},      {"slices", "10"},  {"first", "2"},       {"average-reference", "1"}};
  for (const auto& [name, value] : values) ASSERT_EQ(set(settings, name, value), EMEG_OK) << name;
  const CorrectionHandle correction = correctionOf(signal, settings.get());
  const std::vector<double> result = resultOf(correction.get(), signal.channels);
  EXPECT_EQ(result.size(), 2u * 4500u);
  EXPECT_GT(rms(result), 10);
  EXPECT_LT(rms(result), 400); // ten times 28 microvolts at most
}
