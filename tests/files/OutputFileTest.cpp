#include "files/formats/OutputFile.h"

#include "tests/files/FileSizeLimit.h"
#include "tests/files/ScratchFolder.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <vector>

namespace emeg {
namespace {

TEST(OutputFile, AppearsUnderItsNameOnlyWhenCommitted) {
  ScratchFolder folder;
  OutputFile output;
  ASSERT_TRUE(output.create(folder.path("run.ctc")));
  ASSERT_TRUE(output.write("abcd", 4));
  ASSERT_TRUE(output.seek(1));
  ASSERT_TRUE(output.write("X", 1));
  EXPECT_FALSE(folder.has("run.ctc"));
  EXPECT_TRUE(folder.has("run.ctc.part"));
  ASSERT_TRUE(output.commit());
  EXPECT_EQ(folder.read("run.ctc"), "aXcd");
  EXPECT_FALSE(folder.has("run.ctc.part"));
}

TEST(OutputFile, WithoutACommitNothingRemains) {
  ScratchFolder folder;
  {
    OutputFile output;
    ASSERT_TRUE(output.create(folder.path("run.ctc")));
    ASSERT_TRUE(output.write("abcd", 4));
  }
  EXPECT_EQ(folder.nrOfEntries(), 0);
}

TEST(OutputFile, AnOlderFileStaysUntilTheCommitReplacesIt) {
  ScratchFolder folder;
  folder.write("run.ctc", "older");
  {
    OutputFile output;
    ASSERT_TRUE(output.create(folder.path("run.ctc")));
    ASSERT_TRUE(output.write("newer", 5));
  }
  EXPECT_EQ(folder.read("run.ctc"), "older");

  OutputFile output;
  ASSERT_TRUE(output.create(folder.path("run.ctc")));
  ASSERT_TRUE(output.write("newer", 5));
  EXPECT_EQ(folder.read("run.ctc"), "older");
  ASSERT_TRUE(output.commit());
  EXPECT_EQ(folder.read("run.ctc"), "newer");
}

TEST(OutputFile, PlacesThatCannotHoldAFileAreRefusedAtOnce) {
  ScratchFolder folder;
  OutputFile output;
  EXPECT_FALSE(output.create(""));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(output.create(folder.path("missing/run.ctc")));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(output.create(folder.write("plain", "x") + "/run.ctc"));
  EXPECT_EQ(errno, ENOTDIR);
  std::filesystem::create_directory(folder.path("taken"));
  EXPECT_FALSE(output.create(folder.path("taken")));
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(output.create("/dev/null"));
  EXPECT_EQ(errno, EINVAL);
  EXPECT_FALSE(output.commit());
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(folder.nrOfEntries(), 2) << "nothing but the two obstacles";
}

TEST(OutputFile, AFolderUnderTheTemporaryNameIsNotRemoved) {
  ScratchFolder folder;
  std::filesystem::create_directory(folder.path("run.ctc.part"));
  {
    OutputFile output;
    EXPECT_FALSE(output.create(folder.path("run.ctc")));
    EXPECT_EQ(errno, EISDIR);
  }
  EXPECT_TRUE(folder.has("run.ctc.part"));
}

TEST(OutputFile, AFolderMadeInTheMeantimeFailsTheCommit) {
  ScratchFolder folder;
  OutputFile output;
  ASSERT_TRUE(output.create(folder.path("run.ctc")));
  std::filesystem::create_directory(folder.path("run.ctc"));
  EXPECT_FALSE(output.commit());
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(folder.has("run.ctc.part"));
}

TEST(OutputFile, AFullDiskFailsTheCommitAndLeavesTheOlderFile) {
  ScratchFolder folder;
  folder.write("run.ctc", "older");
  bool committed = true;
  int reason = 0;
  {
    OutputFile output;
    ASSERT_TRUE(output.create(folder.path("run.ctc")));
    ASSERT_TRUE(output.write("newer", 5));
    FileSizeLimit full(0);
    committed = output.commit();
    reason = errno;
  }
  EXPECT_FALSE(committed);
  EXPECT_EQ(reason, EFBIG);
  EXPECT_EQ(folder.read("run.ctc"), "older");
  EXPECT_EQ(folder.nrOfEntries(), 1);
}

TEST(OutputFile, AFailedWriteFailsTheCommitEvenWhenThereIsRoomAgain) {
  ScratchFolder folder;
  const std::vector<char> megabyte(1 << 20, 'x');
  OutputFile output;
  ASSERT_TRUE(output.create(folder.path("run.ctc")));
  bool written = true;
  {
    FileSizeLimit full(1 << 16);
    written = output.write(megabyte.data(), megabyte.size());
  }
  EXPECT_FALSE(written);
  EXPECT_FALSE(output.commit());
  EXPECT_EQ(errno, EFBIG);
  EXPECT_EQ(folder.nrOfEntries(), 0);
}

} // namespace
} // namespace emeg
