#include "app/correct/CorrectParameters.h"
#include "app/correct/RunOptions.h"
#include "engine/settings/SettingList.h"
#include "tests/app/SimulatedFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::HasSubstr;

std::vector<Setting> allSettings() {
  std::vector<Setting> all(correctionSettings().begin(), correctionSettings().end());
  all.insert(all.end(), runOptions().begin(), runOptions().end());
  return all;
}

std::string orDash(const std::string& text) {
  return text.empty() ? "-" : text;
}

/// The line of an option in the manual's table.
std::string tableLineOf(const Setting& setting) {
  const std::string placeholder = *setting.placeholder != 0 ? std::string(" ") + setting.placeholder : "";
  return std::string("| `--") + setting.name + placeholder + "` | " + setting.help + " | " +
         orDash(setting.unit) + " | " + orDash(setting.rangeText()) + " | " + orDash(setting.defaultText) +
         " |\n";
}

} // namespace

TEST(OptionTable, OfTheManualIsMadeOfTheSettings) {
  std::string expected;
  for (const Setting& setting : allSettings()) expected += tableLineOf(setting);
  EXPECT_THAT(bytesOf(EMEG_DOCS "/correct.md"), HasSubstr(expected));
}

TEST(OptionTable, EverySettingIsAnOptionWithItsHelp) {
  std::string help = runEmeg({"correct", "--help"}).out;
  // Lines are broken and indented.
  std::string flat;
  for (const char letter : help)
    if (const bool isBlank = letter == '\n' || letter == ' '; !isBlank || flat.empty() || flat.back() != ' ')
      flat += isBlank ? ' ' : letter;
  for (const Setting& setting : allSettings()) {
    EXPECT_THAT(flat, HasSubstr(std::string("--") + setting.name));
    EXPECT_THAT(flat, HasSubstr(setting.helpLine()));
    EXPECT_THAT(flat, HasSubstr(setting.group));
  }
}

TEST(OptionTable, EveryMemberOfTheParametersIsASetting) {
  const CorrectParameters parameters;
  size_t count = 0;
  visitSettings(parameters, [&count](const char* name, const auto&) {
    ++count;
    EXPECT_NE(settingNamed(correctionSettings(), name), nullptr) << name;
  });
  EXPECT_EQ(count, correctionSettings().size());
  count = 0;
  visitRunOptions(parameters, [&count](const char* name, const auto&) {
    ++count;
    EXPECT_NE(settingNamed(runOptions(), name), nullptr) << name;
  });
  EXPECT_EQ(count, runOptions().size());
}

} // namespace emeg
