#include "tests/install/InstalledTree.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>

namespace {

std::string firstMatch(const std::string& file, const std::string& expression) {
  std::ifstream stream(std::string(EMEG_SOURCE_DIR "/") + file);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  std::smatch match;
  return std::regex_search(text, match, std::regex(expression)) ? match[1].str() : "";
}

} // namespace

TEST(Version, OfTheProgramIsTheProjects) {
  EXPECT_EQ(runCommand(EMEG_BUILD_DIR "/emeg --version").output, "emeg " EMEG_PROJECT_VERSION "\n");
}

TEST(Version, OfTheCitationIsTheProjects) {
  EXPECT_EQ(firstMatch("CITATION.cff", "\nversion: \"([^\"]+)\""), EMEG_PROJECT_VERSION);
}

TEST(Version, OfTheChangelogsNewestEntryIsTheProjects) {
  EXPECT_EQ(firstMatch("CHANGELOG.md", "\n## \\[([0-9.]+)\\] - [0-9]{4}-[0-9]{2}-[0-9]{2}\n"),
            EMEG_PROJECT_VERSION);
}

TEST(Version, OfTheManualPagesIsTheProjects) {
  const InstalledTree tree("program");
  const CommandResult title =
      runCommand("head -1 '" + (tree.prefix() / "share/man/man1/emeg.1").string() + "'");
  EXPECT_NE(title.output.find("emeg " EMEG_PROJECT_VERSION), std::string::npos) << title.output;
}

// The workstation shows it, and has never shown another.
TEST(Version, OfThePlugInIsAConstantOfItsOwn) {
  EXPECT_EQ(firstMatch("plugin/EMEGArtifactPlugin.cpp", "getPluginVersion\\(\\) \\{\\s*return \"([^\"]+)\";"),
            "1.0");
}
