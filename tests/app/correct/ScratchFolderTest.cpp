#include "app/correct/ScratchFolder.h"

#include "app/correct/CorrectParameters.h"
#include "tests/TestFolder.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(ScratchFolder, IsRemovedWithEverythingInIt) {
  const TestFolder folder;
  {
    const ScratchFolder scratch(folder.path());
    std::ofstream(scratch.file("recording.ctc")) << "samples";
    EXPECT_EQ(folder.names().size(), 1u);
  }
  EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(ScratchFolder, TwoRunsNeverMeet) {
  const TestFolder folder;
  const ScratchFolder one(folder.path());
  const ScratchFolder other(folder.path());
  EXPECT_NE(one.path(), other.path());
  EXPECT_THAT(staleScratchFolders(folder.path()), IsEmpty());
}

TEST(ScratchFolder, OneThatNoProcessUsesIsStale) {
  const TestFolder folder;
  const std::string left = folder / ".emeg-scratch-abcdef";
  std::filesystem::create_directory(left);
  std::ofstream(left + "/in-use").close();
  const ScratchFolder living(folder.path());
  EXPECT_THAT(staleScratchFolders(folder.path()), ElementsAre(left));
}

TEST(ScratchFolder, CannotBeMadeInAPlaceThatIsNotThere) {
  const TestFolder folder;
  EXPECT_THROW(ScratchFolder(folder / "nowhere"), FailedRun);
}

TEST(Room, NeedsOnOneDiskAreAddedUp) {
  const TestFolder folder;
  const uint64_t half = std::filesystem::space(folder.path()).available / 2 + (uint64_t{1} << 30);
  EXPECT_NO_THROW(checkRoom({{folder.path(), 1}, {folder.path(), half}}));
  EXPECT_THROW(checkRoom({{folder.path(), half}, {folder.path(), half}}), FailedRun);
}

TEST(Room, AShortageNamesTheBytesTheFolderAndTheRemedy) {
  const TestFolder folder;
  try {
    checkRoom({{folder.path(), uint64_t{1} << 60}});
    FAIL();
  } catch (const FailedRun& failure) {
    EXPECT_THAT(failure.what(), HasSubstr("1152921504606846976 bytes"));
    EXPECT_THAT(failure.what(), HasSubstr(folder.path()));
    EXPECT_THAT(failure.what(), HasSubstr("--scratch"));
  }
}

} // namespace emeg
