#include "plugin/converter/run/MachineResources.h"

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <windows.h>

namespace emeg {
namespace {

std::string temporaryFolder() {
  std::array<char, MAX_PATH> buffer{};
  GetTempPathA(static_cast<DWORD>(buffer.size()), buffer.data());
  return buffer.data(); // ends in a separator
}

TEST(MachineResources, AreKnownOnWindows) {
  const MachineResources found = availableResources(temporaryFolder() + "run1.ctc");
  EXPECT_GT(found.memory, uint64_t{1} << 20);
  EXPECT_LT(found.memory, uint64_t{1} << 50);
  EXPECT_GT(found.disk, uint64_t{1} << 20);
  EXPECT_LT(found.disk, uint64_t{1} << 60);
}

TEST(MachineResources, AreThoseOfTheFilesFolderHoweverItIsWritten) {
  std::string slashes = temporaryFolder();
  for (char& c : slashes)
    if (c == '\\') c = '/';
  for (const std::string& path : {slashes + "run1.ctc", std::string("run1.ctc"), std::string("C:run1.ctc")})
    EXPECT_NE(availableResources(path).disk, unknownAmount) << path;
  EXPECT_EQ(availableResources(temporaryFolder() + "no such folder\\run1.ctc").disk, unknownAmount);
}

} // namespace
} // namespace emeg
