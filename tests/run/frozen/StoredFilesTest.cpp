#include "tests/run/frozen/StoredFiles.h"
#include "tests/run/frozen/FrozenRun.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

namespace emeg::test {

TEST(StoredFiles, TheHashIsTheSha256OfTheStandardsExample) {
  EXPECT_EQ(sha256OfBytes("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(StoredFiles, TheFirstDifferingLineIsNamed) {
  EXPECT_EQ(firstDifference({"a", "b"}, {"a", "b"}), "");
  EXPECT_EQ(firstDifference({"a", "x", "y"}, {"a", "b", "c"}), "line 2 is\n  x\nand should be\n  b");
  EXPECT_EQ(firstDifference({"a"}, {"a", "b"}), "line 2 is\n  (the lines end)\nand should be\n  b");
  EXPECT_EQ(firstDifference({"a", "b"}, {"a"}), "line 2 is\n  b\nand should be\n  (the lines end)");
}

TEST(StoredFiles, BelongToARunThatIsStillMade) {
  std::set<std::string> names;
  for (const FrozenRun& run : frozenRuns())
    EXPECT_TRUE(names.insert(run.name).second) << run.name << " twice";
  for (const char* folder : {"transcripts", "hashes"}) {
    for (const auto& entry :
         std::filesystem::directory_iterator(std::string(EMEG_FROZEN_FOLDER) + "/" + folder)) {
      const std::string name = entry.path().stem().string();
      if (name.rfind("Reference_", 0) != 0) {
        EXPECT_EQ(names.count(name), 1u) << entry.path();
      }
    }
  }
}

} // namespace emeg::test
