#include "tests/install/InstalledTree.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>

namespace {

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// The examples, in an installed tree with a simulated recording.
class Examples : public testing::Test {
protected:
  void SetUp() override {
    run("cd '" + folder() + "' && prefix/bin/emeg simulate gap run.vhdr --channels 4 --seconds 30");
  }

  void run(const std::string& command) {
    const CommandResult result = runCommand(command);
    ASSERT_EQ(result.status, 0) << command << "\n" << result.output;
  }

  std::string folder() const { return tree_.folder().string(); }

  /// Both programs find the scan, and leave the same samples.
  void expectBothToCorrect(const std::string& programs) {
    const std::string environment = "LD_LIBRARY_PATH='" + (tree_.prefix() / EMEG_LIBDIR).string() + "' ";
    run("cd '" + folder() + "' && " + environment + programs + "_c run.eeg c.raw 4 5000 >c.json");
    run("cd '" + folder() + "' && " + environment + programs + "_cpp run.eeg cpp.raw 4 5000 >cpp.json");
    EXPECT_EQ(contentOf(tree_.folder() / "c.raw"), contentOf(tree_.folder() / "cpp.raw"));
    EXPECT_EQ(contentOf(tree_.folder() / "c.raw").size(), contentOf(tree_.folder() / "run.eeg").size());
    EXPECT_NE(contentOf(tree_.folder() / "c.raw"), contentOf(tree_.folder() / "run.eeg"));
    for (const char* const file : {"c.json", "cpp.json"}) {
      const nlohmann::json findings = nlohmann::json::parse(contentOf(tree_.folder() / file));
      ASSERT_EQ(findings.at("Scans").size(), 1u) << file;
      EXPECT_EQ(findings.at("Scans").at(0).at("SlicesPerVolume"), 20) << file;
    }
  }

  InstalledTree tree_;
};

} // namespace

TEST_F(Examples, AreBuiltThroughTheCMakePackage) {
  run("cd '" + folder() + "' && " EMEG_CMAKE " -S prefix/share/doc/emeg/examples -B built" +
      " -DCMAKE_PREFIX_PATH='" + tree_.prefix().string() + "' && " EMEG_CMAKE " --build built");
  expectBothToCorrect("built/correct");
}

TEST_F(Examples, AreBuiltThroughPkgConfig) {
  const std::string package =
      "PKG_CONFIG_PATH='" + (tree_.prefix() / EMEG_LIBDIR / "pkgconfig").string() + "' ";
  const std::string flags = "$(" + package + "pkg-config --cflags --libs emeg)";
  run("cd '" + folder() + "' && cc -std=c99 -Wall -Wextra -Wpedantic -Werror " +
      "prefix/share/doc/emeg/examples/correct.c -o correct_c " + flags);
  run("cd '" + folder() + "' && " EMEG_CXX " -std=c++17 -Wall -Wextra -Wpedantic -Werror " +
      "prefix/share/doc/emeg/examples/correct.cpp -o correct_cpp " + flags);
  expectBothToCorrect("./correct");
}

TEST_F(Examples, AreRefusedByPackagesOfAnotherMajorVersion) {
  std::filesystem::create_directory(tree_.folder() / "other");
  std::ofstream(tree_.folder() / "other/CMakeLists.txt")
      << "cmake_minimum_required(VERSION 3.16)\nproject(other NONE)\nfind_package(emeg 1 REQUIRED)\n";
  const CommandResult result =
      runCommand(EMEG_CMAKE " -S '" + folder() + "/other' -B '" + folder() +
                 "/otherBuilt' -DCMAKE_PREFIX_PATH='" + tree_.prefix().string() + "'");
  EXPECT_NE(result.status, 0);
  EXPECT_NE(result.output.find("version: " EMEG_PROJECT_VERSION), std::string::npos) << result.output;
}
