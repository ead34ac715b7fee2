#include "tests/install/InstalledTree.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

const std::string lib = EMEG_LIBDIR "/";

} // namespace

TEST(Installation, PutsEverythingInItsPlace) {
  const InstalledTree tree;
  for (const std::string& file : {std::string("bin/emeg"),
                                  std::string("include/emeg/emeg.h"),
                                  std::string("include/emeg/emeg.hpp"),
                                  std::string("include/emeg/version.h"),
                                  lib + "libemeg.so",
                                  lib + "libemeg.so." EMEG_PROJECT_VERSION,
                                  lib + "cmake/emeg/emegConfig.cmake",
                                  lib + "cmake/emeg/emegConfigVersion.cmake",
                                  lib + "pkgconfig/emeg.pc",
                                  std::string("share/man/man1/emeg.1"),
                                  std::string("share/man/man1/emeg-correct.1"),
                                  std::string("share/man/man1/emeg-simulate.1"),
                                  std::string("share/bash-completion/completions/emeg"),
                                  std::string("share/zsh/vendor-completions/_emeg"),
                                  std::string("share/fish/vendor_completions.d/emeg.fish"),
                                  std::string("share/doc/emeg/LICENSE"),
                                  std::string("share/doc/emeg/CHANGELOG.md"),
                                  std::string("share/doc/emeg/CITATION.cff"),
                                  std::string("share/doc/emeg/library.md"),
                                  std::string("share/doc/emeg/examples/correct.c")})
    EXPECT_TRUE(tree.has(file)) << file;
}

TEST(Installation, HoldsNoStaticPartsNoPrivateHeadersAndNoPlugIn) {
  const InstalledTree tree;
  for (const auto& entry : fs::recursive_directory_iterator(tree.prefix())) {
    EXPECT_NE(entry.path().extension(), ".a") << entry.path();
    EXPECT_EQ(entry.path().string().find("EMEGArtifactPlugin"), std::string::npos) << entry.path();
  }
  for (const auto& entry : fs::recursive_directory_iterator(tree.prefix() / "include"))
    EXPECT_TRUE(entry.is_directory() || entry.path().parent_path().filename() == "emeg") << entry.path();
}

TEST(Installation, InstallsThePlugInWhereItIsAskedFor) {
  if (!fs::exists(EMEG_BUILD_DIR "/EMEGArtifactPlugin.so")) GTEST_SKIP() << "built without the plug-in";
  const InstalledTree tree("plugin");
  EXPECT_TRUE(tree.has(lib + "emeg/plugin/EMEGArtifactPlugin.so"));
  EXPECT_FALSE(tree.has("bin/emeg"));
}

TEST(Installation, HasAPageForEveryCommandThatTheProgramNames) {
  const InstalledTree tree;
  const std::string pages = (tree.prefix() / "share/man/man1").string();
  const CommandResult named =
      runCommand("grep -o '^.BR emeg.*' '" + pages + "/emeg.1' | wc -l; ls '" + pages + "' | grep -c emeg-");
  const size_t end = named.output.find('\n');
  EXPECT_GT(std::stoi(named.output), 4);
  EXPECT_EQ(std::stoi(named.output), std::stoi(named.output.substr(end))) << named.output;
}

TEST(Installation, CompletionsAreAcceptedByTheirShells) {
  const InstalledTree tree;
  const std::string share = (tree.prefix() / "share").string();
  EXPECT_EQ(runCommand("bash -n '" + share + "/bash-completion/completions/emeg'").status, 0);
  const CommandResult completed =
      runCommand("bash -c '. " + share +
                 "/bash-completion/completions/emeg; COMP_WORDS=(emeg corr); COMP_CWORD=1; _emeg; echo "
                 "${COMPREPLY[0]}'");
  EXPECT_EQ(completed.output, "correct\n");
}
