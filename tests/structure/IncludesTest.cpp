#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

struct Floor {
  std::string folder;
  int level;
};

// The longest matching folder counts. docs/architecture.md draws the same picture.
const std::vector<Floor> floors = {
    {"dsp/", 1},
    {"files/formats/", 1},
    {"artifacts/", 2},
    {"files/exchange/", 2},
    {"engine/", 3},
    {"include/emeg/", 4},
    {"library/", 4},
    {"plugin/bridge/", 5},
    {"plugin/converter/messages/", 5},
    {"plugin/converter/", 6},
    {"plugin/", 7},
    {"host/", 7},
    {"app/", 5},
};

std::optional<int> floorOf(const std::string& path) {
  std::optional<int> level;
  size_t longest = 0;
  for (const Floor& floor : floors) {
    if (path.rfind(floor.folder, 0) == 0 && floor.folder.size() > longest) {
      longest = floor.folder.size();
      level = floor.level;
    }
  }
  return level;
}

/// The name between the quotes of an include line; nothing for any other line.
std::optional<std::string> quotedInclude(const std::string& line) {
  const size_t word = line.find("include \"");
  if (line.find_first_not_of(' ') != line.find('#') || word == std::string::npos) return std::nullopt;
  const size_t start = line.find('"', word) + 1;
  const size_t end = line.find('"', start);
  if (end == std::string::npos) return std::nullopt;
  return line.substr(start, end - start);
}

std::vector<std::string> projectIncludesOf(const fs::path& file) {
  std::ifstream stream(file);
  std::vector<std::string> names;
  std::string line;
  while (std::getline(stream, line))
    if (const auto name = quotedInclude(line)) names.push_back(*name);
  return names;
}

std::vector<std::string> sourceFiles() {
  std::vector<std::string> files;
  const fs::path root = EMEG_SOURCE_DIR;
  for (const char* folder :
       {"dsp", "files", "artifacts", "engine", "library", "include", "plugin", "host", "app"}) {
    for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
      const std::string extension = entry.path().extension().string();
      if (extension == ".h" || extension == ".cpp")
        files.push_back(fs::relative(entry.path(), root).string());
    }
  }
  return files;
}

} // namespace

TEST(Includes, AreReadFromTheLinesThatHoldThem) {
  EXPECT_EQ(quotedInclude("#include \"dsp/RealFFT.h\""), "dsp/RealFFT.h");
  EXPECT_EQ(quotedInclude("  #include \"a.h\" // why"), "a.h");
  EXPECT_EQ(quotedInclude("#include <vector>"), std::nullopt);
  EXPECT_EQ(quotedInclude("// #include \"a.h\""), std::nullopt);
}

TEST(Includes, EveryIncludeOfTheProjectIsWrittenFromItsRootAndExists) {
  const std::vector<std::string> files = sourceFiles();
  ASSERT_GT(files.size(), 50u);
  for (const std::string& file : files)
    for (const std::string& include : projectIncludesOf(fs::path(EMEG_SOURCE_DIR) / file))
      EXPECT_TRUE(fs::exists(fs::path(EMEG_SOURCE_DIR) / include)) << file << " includes " << include;
}

TEST(Includes, NoFileIncludesOneFromAHigherFloor) {
  for (const std::string& file : sourceFiles()) {
    const std::optional<int> own = floorOf(file);
    ASSERT_TRUE(own) << file << " stands on no floor";
    for (const std::string& include : projectIncludesOf(fs::path(EMEG_SOURCE_DIR) / file)) {
      const std::optional<int> other = floorOf(include);
      if (other) {
        EXPECT_LE(*other, *own) << file << " looks up to " << include;
      }
    }
  }
}

// Computations can be read, tested and timed alone: they know neither host nor file.
TEST(Includes, ComputationsIncludeNothingOfHostsOrFiles) {
  for (const std::string& file : sourceFiles()) {
    if (file.rfind("dsp/", 0) != 0 && file.rfind("artifacts/", 0) != 0) continue;
    for (const std::string& include : projectIncludesOf(fs::path(EMEG_SOURCE_DIR) / file)) {
      const bool isAllowed = include.rfind("artifacts/", 0) == 0 || include.rfind("dsp/", 0) == 0;
      EXPECT_TRUE(isAllowed) << file << " includes " << include;
    }
  }
}

// Its store may be a file, which files/formats knows to open under every name.
TEST(Includes, TheEngineIncludesOnlyComputationsFileFormatsAndItself) {
  for (const std::string& file : sourceFiles()) {
    if (file.rfind("engine/", 0) != 0) continue;
    for (const std::string& include : projectIncludesOf(fs::path(EMEG_SOURCE_DIR) / file)) {
      // The store in a file is one file with numbers in it, no format.
      const bool isAllowed = include.rfind("engine/", 0) == 0 || include.rfind("artifacts/", 0) == 0 ||
                             include.rfind("dsp/", 0) == 0 || include == "files/formats/BinaryFile.h";
      EXPECT_TRUE(isAllowed) << file << " includes " << include;
    }
  }
}

// The command line is a shell over the engine as the plug-in is.
TEST(Includes, TheCommandLineIncludesNothingOfThePlugInOrItsConverter) {
  for (const std::string& file : sourceFiles()) {
    if (file.rfind("app/", 0) != 0) continue;
    for (const std::string& include : projectIncludesOf(fs::path(EMEG_SOURCE_DIR) / file)) {
      EXPECT_NE(include.rfind("plugin/", 0), 0u) << file << " includes " << include;
    }
  }
}

TEST(Includes, ProgramsDoNotIncludeThePlugInsShell) {
  for (const std::string& file : sourceFiles()) {
    if (file.rfind("host/", 0) != 0) continue;
    for (const std::string& include : projectIncludesOf(fs::path(EMEG_SOURCE_DIR) / file))
      EXPECT_NE(include.rfind("plugin/", 0), 0u) << file << " includes " << include;
  }
}
