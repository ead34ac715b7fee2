#include <emeg/emeg.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

std::string contentOf(const std::string& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::set<std::string> declaredFunctions() {
  const std::string header = contentOf(EMEG_SOURCE_DIR "/include/emeg/emeg.h");
  const std::regex declaration(R"(EMEG_API[^;(]*?\b(emeg_\w+)\()");
  std::set<std::string> names;
  for (std::sregex_iterator found(header.begin(), header.end(), declaration), end; found != end; ++found)
    names.insert((*found)[1]);
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
  const std::string text = contentOf(header);
  const std::regex line(R"(# *include *([<"][^>"]*))");
  std::set<std::string> names;
  for (std::sregex_iterator found(text.begin(), text.end(), line), end; found != end; ++found)
    names.insert((*found)[1]);
  return names;
}

} // namespace

TEST(ExportsOfTheLibrary, AreTheFunctionsOfTheHeaderAndNothingElse) {
  ASSERT_GT(declaredFunctions().size(), 20u);
  EXPECT_EQ(exportedSymbols(), declaredFunctions());
}

TEST(PublicHeaders, IncludeOnlyEachOtherAndTheStandardLibrary) {
  EXPECT_EQ(includesOf(EMEG_SOURCE_DIR "/include/emeg/emeg.h"),
            (std::set<std::string>{"<emeg/version.h", "<stddef.h", "<stdint.h"}));
  for (const std::string& name : includesOf(EMEG_SOURCE_DIR "/include/emeg/emeg.hpp"))
    EXPECT_TRUE(name == "<emeg/emeg.h" || name.find_first_of("./\"") == std::string::npos) << name;
}

TEST(VersionOfTheLibrary, IsThatOfTheHeaderAndOfTheProject) {
  EXPECT_STREQ(emeg_version(), EMEG_PROJECT_VERSION);
  const std::string numbers = std::to_string(EMEG_VERSION_MAJOR) + "." + std::to_string(EMEG_VERSION_MINOR) +
                              "." + std::to_string(EMEG_VERSION_PATCH);
  EXPECT_EQ(numbers, EMEG_PROJECT_VERSION);
  EXPECT_STREQ(EMEG_VERSION_TEXT, EMEG_PROJECT_VERSION);
}
