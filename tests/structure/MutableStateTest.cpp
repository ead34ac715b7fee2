// What the built libraries hold that a program can write to. Two corrections may run in two threads, so there
// is nothing but what is made once and guards itself: shared tables of transforms, the list of settings.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>

#include <cxxabi.h>

namespace {

bool startsWith(const std::string& text, const std::string& beginning) {
  return text.rfind(beginning, 0) == 0;
}

/// Sections that stay writable once a program runs. (Those of relocated constants do not.)
bool isWritable(const std::string& section) {
  if (startsWith(section, ".data.rel.ro")) return false;
  for (const char* const writable : {".data", ".bss", ".tdata", ".tbss", "*COM*"})
    if (startsWith(section, writable)) return true;
  return false;
}

std::string demangled(const std::string& symbol) {
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, nullptr), std::free);
  return name == nullptr ? symbol : name.get();
}

/// The name of the variable in a line of a symbol table (value, flags, section, tab, size, visibility, name);
/// nothing when the line holds something else. The compiler's own pointers to exception types and to its
/// unwinder are no variables.
std::optional<std::string> mutableVariableIn(const std::string& line) {
  const std::size_t tab = line.find('\t');
  if (tab == std::string::npos || line.find(" O ") > tab) return std::nullopt;
  if (!isWritable(line.substr(line.rfind(' ', tab) + 1, tab - line.rfind(' ', tab) - 1))) return std::nullopt;
  const std::string symbol = line.substr(line.find_last_of(" \t") + 1);
  if (startsWith(symbol, "DW.ref.")) return std::nullopt;
  return demangled(symbol);
}

std::set<std::string> mutableVariablesOf(const std::string& library) {
  const std::string command = "objdump -t '" + library + "'";
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string text;
  std::array<char, 4096> part{};
  while (pipe && std::fgets(part.data(), static_cast<int>(part.size()), pipe.get()) != nullptr)
    text += part.data();
  EXPECT_NE(text.find("SYMBOL TABLE"), std::string::npos) << command << " says nothing";
  std::istringstream lines(text);
  std::set<std::string> names;
  std::string line;
  while (std::getline(lines, line))
    if (const auto name = mutableVariableIn(line)) names.insert(*name);
  return names;
}

using Names = std::set<std::string>;

} // namespace

TEST(MutableState, IsReadFromTheLinesOfASymbolTable) {
  EXPECT_EQ(mutableVariableIn("0000000000000008 l     O .bss\t0000000000000004 counter"), "counter");
  EXPECT_EQ(mutableVariableIn("0000000000000000 g     O .data\t0000000000000008 .hidden _ZN4emeg5tableE"),
            "emeg::table");
  EXPECT_EQ(mutableVariableIn("0000000000000000 l     O .data.rel.local\t0000000000000008 names"), "names");
  EXPECT_EQ(mutableVariableIn("0000000000000000 l     O .tbss\t0000000000000004 ofThread"), "ofThread");
  EXPECT_EQ(mutableVariableIn("0000000000000008       O *COM*\t0000000000000008 common"), "common");
  EXPECT_EQ(mutableVariableIn("0000000000000000 l     O .rodata\t0000000000000004 constant"), std::nullopt);
  EXPECT_EQ(mutableVariableIn("0000000000000000 l     O .data.rel.ro.local\t0000000000000048 kernels"),
            std::nullopt);
  EXPECT_EQ(mutableVariableIn("0000000000000000 l    d  .bss\t0000000000000000 .bss"), std::nullopt);
  EXPECT_EQ(mutableVariableIn("0000000000000000 g     F .text\t0000000000000010 function"), std::nullopt);
  EXPECT_EQ(mutableVariableIn("FFTTables.cpp.o:     file format elf64-x86-64"), std::nullopt);
}

TEST(MutableState, OfTransformsIsTheirSharedTablesAndWhatTheMachineOffers) {
  const Names expected = {"emeg::fftTables()::tables", "guard variable for emeg::fftTables()::tables",
                          "emeg::bestSimdLevel()::level", "guard variable for emeg::bestSimdLevel()::level"};
  EXPECT_EQ(mutableVariablesOf(EMEG_DSP_PATH), expected);
}

TEST(MutableState, IsNotInArtifactComputationsFileFormatsAndConverter) {
  for (const char* const library : {EMEG_ARTIFACTS_PATH, EMEG_FILES_PATH, EMEG_CONVERTER_PATH})
    EXPECT_EQ(mutableVariablesOf(library), Names()) << library;
}

TEST(MutableState, OfTheEngineIsItsListOfSettingsWhichIsMadeOnce) {
  const Names expected = {"emeg::correctionSettings()::list",
                          "guard variable for emeg::correctionSettings()::list"};
  EXPECT_EQ(mutableVariablesOf(EMEG_ENGINE_PATH), expected);
}

TEST(MutableState, OfTheBridgeIsItsTableOfHostFunctions) {
  EXPECT_EQ(mutableVariablesOf(EMEG_BRIDGE_PATH), Names{"emeg::hostFunctions"});
}
