#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <string>

#include <dlfcn.h>

namespace {

// The C functions, the members of the two classes, and what the C++ ABI needs with them: both constructor
// variants, the three destructor variants, typeinfo, its name, and the vtables.
const std::set<std::string> expectedSymbols = {
    "createPlugin",
    "getAuthor",
    "getGUIScript",
    "getHelpFile",
    "getPluginDescription",
    "getPluginName",
    "getPluginVersion",
    "_ZN19LMTRPluginInterfaceC1Ev",
    "_ZN19LMTRPluginInterfaceC2Ev",
    "_ZN19LMTRPluginInterfaceC1ERKS_",
    "_ZN19LMTRPluginInterfaceC2ERKS_",
    "_ZN19LMTRPluginInterfaceaSERKS_",
    "_ZN19LMTRPluginInterfaceD0Ev",
    "_ZN19LMTRPluginInterfaceD1Ev",
    "_ZN19LMTRPluginInterfaceD2Ev",
    "_ZTV19LMTRPluginInterface",
    "_ZTI19LMTRPluginInterface",
    "_ZTS19LMTRPluginInterface",
    "_ZN18EMEGArtifactPluginC1Ev",
    "_ZN18EMEGArtifactPluginC2Ev",
    "_ZN18EMEGArtifactPluginC1ERKS_",
    "_ZN18EMEGArtifactPluginC2ERKS_",
    "_ZN18EMEGArtifactPluginaSERKS_",
    "_ZN18EMEGArtifactPluginD0Ev",
    "_ZN18EMEGArtifactPluginD1Ev",
    "_ZN18EMEGArtifactPluginD2Ev",
    "_ZN18EMEGArtifactPlugin7executeEv",
    "_ZN18EMEGArtifactPlugin10initPluginEv",
    "_ZTV18EMEGArtifactPlugin",
    "_ZTI18EMEGArtifactPlugin",
    "_ZTS18EMEGArtifactPlugin",
};

std::string outputOf(const std::string& command) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string text;
  std::array<char, 4096> part{};
  while (pipe && std::fgets(part.data(), static_cast<int>(part.size()), pipe.get()) != nullptr)
    text += part.data();
  return text;
}

std::set<std::string> dynamicSymbols() {
  std::istringstream lines(outputOf("nm -D --defined-only --format=posix '" EMEG_PLUGIN_PATH "'"));
  std::set<std::string> names;
  std::string line;
  while (std::getline(lines, line)) names.insert(line.substr(0, line.find(' ')));
  return names;
}

} // namespace

TEST(ExportedSymbols, AreTheListedOnesAndNothingElse) {
  EXPECT_EQ(dynamicSymbols(), expectedSymbols);
}

TEST(ExportedSymbols, HelpFileAndGUIScriptAreOneFunctionWithTwoNames) {
  void* const library = dlopen(EMEG_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  void* const helpFile = dlsym(library, "getHelpFile");
  EXPECT_NE(helpFile, nullptr);
  EXPECT_EQ(helpFile, dlsym(library, "getGUIScript"));
  dlclose(library);
}

TEST(ExportedSymbols, TheLibraryNeedsOnlyTheSystemsStandardLibraries) {
  std::istringstream lines(outputOf("objdump -p '" EMEG_PLUGIN_PATH "'"));
  std::set<std::string> needed;
  std::string word;
  while (lines >> word)
    if (word == "NEEDED" && lines >> word) needed.insert(word.substr(0, word.find(".so")));
  ASSERT_FALSE(needed.empty());
  for (const std::string& name : needed) {
    EXPECT_THAT(name, testing::AnyOf("libc", "libm", "libstdc++", "libgcc_s", "libdl", "libasan", "libubsan",
                                     "libtsan", "ld-linux-x86-64"));
  }
}
