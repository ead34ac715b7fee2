#include <emeg/emeg.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>
#include <string>

namespace {

std::string contentOf(const std::string& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// The words in front of the first bracket behind every EMEG_API.
std::set<std::string> declaredFunctions() {
  const std::string header = contentOf(EMEG_SOURCE_DIR "/include/emeg/emeg.h");
  const std::string mark = "\nEMEG_API ";
  std::set<std::string> names;
  for (size_t at = header.find(mark); at != std::string::npos; at = header.find(mark, at + 1)) {
    const size_t bracket = header.find('(', at);
    const size_t start = header.find_last_of(" *", bracket) + 1;
    names.insert(header.substr(start, bracket - start));
  }
  return names;
}

std::string outputOf(const std::string& command) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string text;
  std::array<char, 4096> part{};
  while (pipe && std::fgets(part.data(), static_cast<int>(part.size()), pipe.get()) != nullptr)
    text += part.data();
  return text;
}

/// Without the name of the version itself.
std::set<std::string> exportedSymbols() {
  std::istringstream lines(
      outputOf("nm -D --defined-only --without-symbol-versions --format=posix '" EMEG_LIBRARY_PATH "'"));
  std::set<std::string> names;
  std::string name, kind, rest;
  while (lines >> name >> kind && std::getline(lines, rest))
    if (kind != "A") names.insert(name);
  return names;
}

std::set<std::string> includesOf(const std::string& header) {
  std::istringstream lines(contentOf(header));
  const std::string word = "#include ";
  std::set<std::string> names;
  std::string line;
  while (std::getline(lines, line))
    if (line.rfind(word, 0) == 0) names.insert(line.substr(word.size()));
  return names;
}

} // namespace

TEST(ExportsOfTheLibrary, AreTheFunctionsOfTheHeaderAndNothingElse) {
  ASSERT_GT(declaredFunctions().size(), 20u);
  EXPECT_EQ(exportedSymbols(), declaredFunctions());
}

TEST(PublicHeaders, IncludeOnlyEachOtherAndTheStandardLibrary) {
  EXPECT_EQ(includesOf(EMEG_SOURCE_DIR "/include/emeg/emeg.h"),
            (std::set<std::string>{"<emeg/version.h>", "<stddef.h>", "<stdint.h>"}));
  for (const std::string& name : includesOf(EMEG_SOURCE_DIR "/include/emeg/emeg.hpp"))
    EXPECT_TRUE(name == "<emeg/emeg.h>" || name.find_first_of("./\"") == std::string::npos) << name;
}

TEST(VersionOfTheLibrary, IsThatOfTheHeaderAndOfTheProject) {
  EXPECT_STREQ(emeg_version(), EMEG_PROJECT_VERSION);
  const std::string numbers = std::to_string(EMEG_VERSION_MAJOR) + "." + std::to_string(EMEG_VERSION_MINOR) +
                              "." + std::to_string(EMEG_VERSION_PATCH);
  EXPECT_EQ(numbers, EMEG_PROJECT_VERSION);
  EXPECT_STREQ(EMEG_VERSION_TEXT, EMEG_PROJECT_VERSION);
}
