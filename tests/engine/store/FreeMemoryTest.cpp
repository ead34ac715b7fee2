#include "engine/store/FreeMemory.h"

#include "tests/TestFolder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace emeg {

namespace {

/// A system of control groups in a folder.
class FreeMemory : public testing::Test {
protected:
  void write(const std::string& name, const std::string& text) const {
    const std::filesystem::path path(folder / name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
  }
  uint64_t found() const { return freeMemoryInGroups(folder / "cgroup", folder.path()); }

  const TestFolder folder;
};

} // namespace

TEST_F(FreeMemory, OfAMachineIsThere) {
  EXPECT_GT(freeMemory(), 1000000u);
}

TEST_F(FreeMemory, WithoutGroupsIsUnknown) {
  EXPECT_EQ(found(), unknownAmount);
  write("cgroup", "nonsense\n7:\n0::relative\n");
  EXPECT_EQ(found(), unknownAmount);
}

TEST_F(FreeMemory, OfVersion2IsTheLimitWithoutWhatIsUsed) {
  write("cgroup", "0::/job\n");
  write("job/memory.max", "1000000\n");
  write("job/memory.current", "300000\n");
  EXPECT_EQ(found(), 700000u);
  write("job/memory.stat", "anon 200000\ninactive_file 100000\n");
  EXPECT_EQ(found(), 800000u) << "cached pages can be taken back";
  write("job/memory.current", "2000000\n");
  EXPECT_EQ(found(), 0u);
  write("job/memory.max", "max\n");
  EXPECT_EQ(found(), unknownAmount);
}

TEST_F(FreeMemory, IsLimitedByEveryGroupAbove) {
  write("cgroup", "0::/batch/job\n");
  write("batch/job/memory.max", "1000000\n");
  write("batch/job/memory.current", "0\n");
  write("batch/memory.max", "500000\n");
  write("batch/memory.current", "100000\n");
  EXPECT_EQ(found(), 400000u);
}

TEST_F(FreeMemory, InAContainerIsThatOfTheTop) {
  write("cgroup", "0::/docker/0123456789\n");
  write("memory.max", "900000\n");
  write("memory.current", "100000\n");
  EXPECT_EQ(found(), 800000u);
}

TEST_F(FreeMemory, OfVersion1IsReadFromTheMemoryController) {
  write("cgroup", "12:cpu,cpuacct:/job\n11:memory:/job\n");
  write("memory/job/memory.limit_in_bytes", "1000000\n");
  write("memory/job/memory.usage_in_bytes", "600000\n");
  write("memory/job/memory.stat", "total_inactive_file 50000\n");
  EXPECT_EQ(found(), 450000u);
}

} // namespace emeg
