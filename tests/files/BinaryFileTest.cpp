#include "files/formats/BinaryFile.h"

#include "tests/files/FileSizeLimit.h"
#include "tests/files/ScratchFolder.h"

#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

namespace emeg {
namespace {

TEST(BinaryFile, WhatWasWrittenReadsBack) {
  ScratchFolder folder;
  BinaryFile file;
  ASSERT_TRUE(file.create(folder.path("a")));
  EXPECT_TRUE(file.write("hello\r\n", 7));
  EXPECT_EQ(file.tell(), 7);
  EXPECT_TRUE(file.close());
  EXPECT_FALSE(file.isOpen());
  EXPECT_EQ(folder.read("a"), "hello\r\n");

  ASSERT_TRUE(file.openForReading(folder.path("a")));
  EXPECT_EQ(file.size(), 7);
  std::array<char, 4> part{};
  ASSERT_TRUE(file.seek(1));
  ASSERT_TRUE(file.read(part.data(), part.size()));
  EXPECT_EQ(std::string(part.begin(), part.end()), "ello");
  EXPECT_EQ(file.size(), 7);
  EXPECT_EQ(file.tell(), 5) << "asking for the size keeps the position";
}

TEST(BinaryFile, AMissingFileIsReportedAsMissing) {
  ScratchFolder folder;
  BinaryFile file;
  errno = EACCES;
  EXPECT_FALSE(file.openForReading(folder.path("none")));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(file.openForReading(""));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(file.create(""));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(file.openForReading(folder.write("plain", "x") + "/below"));
  EXPECT_EQ(errno, ENOTDIR);
}

TEST(BinaryFile, AFolderIsNoFile) {
  ScratchFolder folder;
  BinaryFile file;
  EXPECT_FALSE(file.openForReading(folder.path("")));
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(file.create(folder.path("")));
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(file.createForUpdate(folder.path("")));
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(file.isOpen());
}

TEST(BinaryFile, DevicesAndPipesAreRefusedWithoutWaitingForThem) {
  ScratchFolder folder;
  const std::string pipe = folder.path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  BinaryFile file;
  EXPECT_FALSE(file.openForReading(pipe));
  EXPECT_EQ(errno, EINVAL);
  EXPECT_FALSE(file.create(pipe));
  EXPECT_EQ(errno, EINVAL);
  EXPECT_FALSE(file.openForReading("/dev/zero"));
  EXPECT_EQ(errno, EINVAL);
}

TEST(BinaryFile, AShortReadIsNoErrorOfTheSystem) {
  ScratchFolder folder;
  BinaryFile file;
  ASSERT_TRUE(file.openForReading(folder.write("a", "abc")));
  std::array<char, 8> buffer{};
  errno = EIO;
  EXPECT_FALSE(file.read(buffer.data(), buffer.size()));
  EXPECT_EQ(errno, 0);
  ASSERT_TRUE(file.seek(1));
  EXPECT_EQ(file.readSome(buffer.data(), buffer.size()), 2u);
  EXPECT_EQ(errno, 0);
  EXPECT_EQ(file.readSome(buffer.data(), buffer.size()), 0u);
}

TEST(BinaryFile, ReadingFromAFileOpenedForWritingFails) {
  ScratchFolder folder;
  BinaryFile file;
  ASSERT_TRUE(file.create(folder.path("a")));
  char byte = 0;
  EXPECT_FALSE(file.read(&byte, 1));
  EXPECT_EQ(errno, EBADF);
}

TEST(BinaryFile, AClosedFileRefusesEveryOperation) {
  BinaryFile file;
  char byte = 0;
  const auto refused = [](bool result) { return !result && errno == EBADF; };
  EXPECT_TRUE(refused(file.read(&byte, 1)));
  EXPECT_TRUE(refused(file.write(&byte, 1)));
  EXPECT_TRUE(refused(file.flush()));
  EXPECT_TRUE(refused(file.seek(0)));
  EXPECT_EQ(file.size(), -1);
  EXPECT_EQ(file.tell(), -1);
  EXPECT_TRUE(file.close());
}

TEST(BinaryFile, SeekingBeforeTheStartFails) {
  ScratchFolder folder;
  BinaryFile file;
  ASSERT_TRUE(file.openForReading(folder.write("a", "abc")));
  EXPECT_FALSE(file.seek(-1));
  EXPECT_EQ(errno, EINVAL);
}

TEST(BinaryFile, ReadsAndWritesMayAlternateWithoutSeeking) {
  ScratchFolder folder;
  BinaryFile file;
  ASSERT_TRUE(file.createForUpdate(folder.path("a")));
  ASSERT_TRUE(file.write("abcdef", 6));
  ASSERT_TRUE(file.seek(0));
  std::array<char, 2> two{};
  ASSERT_TRUE(file.read(two.data(), 2));
  ASSERT_TRUE(file.write("XY", 2));
  ASSERT_TRUE(file.read(two.data(), 2));
  EXPECT_EQ(std::string(two.begin(), two.end()), "ef");
  ASSERT_TRUE(file.write("gh", 2));
  EXPECT_EQ(file.size(), 8);
  EXPECT_TRUE(file.close());
  EXPECT_EQ(folder.read("a"), "abXYefgh");
}

TEST(BinaryFile, PositionsGoBeyondFourGigabytes) {
  ScratchFolder folder;
  const int64_t far = int64_t{5} << 30;
  BinaryFile file;
  ASSERT_TRUE(file.create(folder.path("sparse")));
  ASSERT_TRUE(file.seek(far));
  ASSERT_TRUE(file.write("z", 1));
  EXPECT_EQ(file.tell(), far + 1);
  ASSERT_TRUE(file.close());

  ASSERT_TRUE(file.openForReading(folder.path("sparse")));
  EXPECT_EQ(file.size(), far + 1);
  char byte = 0;
  ASSERT_TRUE(file.seek(far));
  ASSERT_TRUE(file.read(&byte, 1));
  EXPECT_EQ(byte, 'z');
  ASSERT_TRUE(file.seek(far - (int64_t{4} << 30)));
  ASSERT_TRUE(file.read(&byte, 1));
  EXPECT_EQ(byte, 0) << "the position was not cut to 32 bits";
}

TEST(BinaryFile, AFullDiskFailsTheWrite) {
  ScratchFolder folder;
  const std::vector<char> megabyte(1 << 20, 'x');
  BinaryFile file;
  ASSERT_TRUE(file.create(folder.path("a")));
  bool written = true;
  int reason = 0;
  {
    FileSizeLimit full(1 << 16);
    written = file.write(megabyte.data(), megabyte.size());
    reason = errno;
  }
  EXPECT_FALSE(written);
  EXPECT_EQ(reason, EFBIG);
  EXPECT_FALSE(file.close()) << "what was lost stays lost, though there is room again";
  EXPECT_EQ(errno, EFBIG);
}

TEST(BinaryFile, AFullDiskFailsTheCloseOfBufferedData) {
  ScratchFolder folder;
  BinaryFile file;
  ASSERT_TRUE(file.create(folder.path("a")));
  ASSERT_TRUE(file.write("hello", 5));
  bool closed = true;
  int reason = 0;
  {
    FileSizeLimit full(0);
    closed = file.close();
    reason = errno;
  }
  EXPECT_FALSE(closed);
  EXPECT_EQ(reason, EFBIG);
}

TEST(BinaryFile, LeavingAScopeKeepsTheErrorNumber) {
  ScratchFolder folder;
  const std::string path = folder.write("a", "abc");
  {
    BinaryFile file;
    ASSERT_TRUE(file.openForReading(path));
    errno = EDOM;
  }
  EXPECT_EQ(errno, EDOM);
}

} // namespace
} // namespace emeg
