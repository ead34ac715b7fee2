#include "engine/settings/SettingList.h"

#include "engine/CorrectionSettings.h"

#include <gtest/gtest.h>
#include <set>

namespace emeg {

TEST(SettingList, EverySettingHasItsOwnNameAndKeyAndAHelpText) {
  std::set<std::string> names;
  std::set<std::string> keys;
  for (const Setting& setting : correctionSettings()) {
    EXPECT_TRUE(names.insert(setting.name).second) << setting.name;
    EXPECT_TRUE(keys.insert(setting.key).second) << setting.key;
    EXPECT_FALSE(setting.help.empty()) << setting.name;
    EXPECT_NE(setting.help.back(), '.') << setting.name;
    EXPECT_EQ(setting.kind == SettingKind::Flag, setting.defaultText.empty()) << setting.name;
    EXPECT_EQ(setting.kind == SettingKind::Flag, *setting.placeholder == 0) << setting.name;
    EXPECT_EQ(settingNamed(correctionSettings(), setting.name), &setting);
  }
  EXPECT_EQ(settingNamed(correctionSettings(), "tea"), nullptr);
}

TEST(SettingList, DefaultsAreThoseOfTheSettingsThemselves) {
  const CorrectionSettings defaults;
  const auto defaultOf = [](const char* name) {
    return std::stoi(settingNamed(correctionSettings(), name)->defaultText);
  };
  EXPECT_EQ(defaultOf("window"), defaults.timing.windowSlices);
  EXPECT_EQ(defaultOf("decimate"), defaults.decimation);
  EXPECT_EQ(defaultOf("scale"), defaults.scalingOrder);
}

TEST(SettingList, ALineOfHelpHoldsUnitRangeAndDefault) {
  EXPECT_EQ(settingNamed(correctionSettings(), "window")->helpLine(),
            "Half-length of the averaging window, in slices, 1 to 1000 [150]");
  EXPECT_EQ(settingNamed(correctionSettings(), "high-pass")->helpLine(),
            "Remove what lies below this frequency, in Hz [none]");
  EXPECT_EQ(settingNamed(correctionSettings(), "bcg")->helpLine(),
            "Remove the heart beat (BCG) artifact, too");
}

} // namespace emeg
