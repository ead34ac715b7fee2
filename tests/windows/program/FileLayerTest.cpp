#include "files/formats/BinaryFile.h"
#include "files/formats/ChunkFiles.h"
#include "files/formats/FileSystem.h"
#include "files/formats/OutputFile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>
#include <windows.h>

namespace emeg {
namespace {

/// A folder of its own in the temporary folder, whose name has a space and, in the code page of western
/// Europe, the letter ä and the euro sign.
class WindowsFiles : public testing::Test {
protected:
  WindowsFiles() {
    std::array<char, MAX_PATH> buffer{};
    GetTempPathA(static_cast<DWORD>(buffer.size()), buffer.data());
    folder_ = std::string(buffer.data()) + "emeg \xe4 \x80 " + std::to_string(GetCurrentProcessId());
    EXPECT_NE(CreateDirectoryA(folder_.c_str(), nullptr), 0);
  }
  ~WindowsFiles() override {
    WIN32_FIND_DATAA found{};
    const HANDLE search = FindFirstFileA(path("*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
      do std::remove(path(found.cFileName).c_str());
      while (FindNextFileA(search, &found) != 0);
      FindClose(search);
    }
    RemoveDirectoryA(folder_.c_str());
  }

  std::string path(const std::string& name) const { return folder_ + "\\" + name; }

  void write(const std::string& name, const std::string& content) const {
    BinaryFile file;
    ASSERT_TRUE(file.create(path(name)));
    ASSERT_TRUE(file.write(content.data(), content.size()));
    ASSERT_TRUE(file.close());
  }
  std::string read(const std::string& name) const {
    BinaryFile file;
    if (!file.openForReading(path(name))) return "cannot be opened";
    std::string content(static_cast<size_t>(file.size()), '\0');
    return file.read(content.data(), content.size()) ? content : "cannot be read";
  }
  bool isThere(const std::string& name) const { return pathKind(path(name)) == PathKind::RegularFile; }

  std::string folder_;
};

TEST_F(WindowsFiles, KeepTheirBytesAsTheyAreWritten) {
  write("a", "one\ntwo\r\n\x1a three");
  EXPECT_EQ(read("a"), "one\ntwo\r\n\x1a three");
}

TEST_F(WindowsFiles, HavePositionsBeyondFourGigabytes) {
  const int64_t distant = int64_t{5} << 30;
  BinaryFile file;
  ASSERT_TRUE(file.create(path("sparse")));
  ASSERT_TRUE(file.seek(distant));
  ASSERT_TRUE(file.write("z", 1));
  EXPECT_EQ(file.tell(), distant + 1);
  ASSERT_TRUE(file.close());

  ASSERT_TRUE(file.openForReading(path("sparse")));
  EXPECT_EQ(file.size(), distant + 1);
  char byte = 0;
  ASSERT_TRUE(file.seek(distant));
  ASSERT_TRUE(file.read(&byte, 1));
  EXPECT_EQ(byte, 'z');
  ASSERT_TRUE(file.seek(distant - (int64_t{4} << 30)));
  ASSERT_TRUE(file.read(&byte, 1));
  EXPECT_EQ(byte, 0) << "the position was not cut to 32 bits";
}

TEST_F(WindowsFiles, TakeWritesBeyondFourGigabytesInAFileOpenForUpdate) {
  const int64_t distant = (int64_t{6} << 30) + 3;
  BinaryFile file;
  ASSERT_TRUE(file.createForUpdate(path("sparse")));
  ASSERT_TRUE(file.write("start", 5));
  ASSERT_TRUE(file.seek(distant));
  ASSERT_TRUE(file.write("abc", 3));
  ASSERT_TRUE(file.seek(distant + 1));
  std::array<char, 2> two{};
  ASSERT_TRUE(file.read(two.data(), 2));
  EXPECT_EQ(std::string(two.begin(), two.end()), "bc");
  ASSERT_TRUE(file.seek(0));
  std::array<char, 5> five{};
  ASSERT_TRUE(file.read(five.data(), 5));
  EXPECT_EQ(std::string(five.begin(), five.end()), "start");
}

TEST_F(WindowsFiles, AreReadAndWrittenInTurnsWithoutSeeking) {
  BinaryFile file;
  ASSERT_TRUE(file.createForUpdate(path("a")));
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
  EXPECT_EQ(read("a"), "abXYefgh");
}

TEST_F(WindowsFiles, ReplaceAnOlderFileOfTheSameName) {
  write("run1_GRA.ctc", "of yesterday");
  OutputFile output;
  ASSERT_TRUE(output.create(path("run1_GRA.ctc")));
  ASSERT_TRUE(output.write("of today", 8));
  EXPECT_EQ(read("run1_GRA.ctc"), "of yesterday") << "untouched until the new one is complete";
  ASSERT_TRUE(output.commit());
  EXPECT_EQ(read("run1_GRA.ctc"), "of today");
  EXPECT_FALSE(isThere("run1_GRA.ctc.part"));
}

TEST_F(WindowsFiles, StayAsTheyWereWhenAnotherProgramHasThemOpen) {
  write("run1_GRA.ctc", "in use");
  BinaryFile viewer;
  ASSERT_TRUE(viewer.openForReading(path("run1_GRA.ctc")));
  OutputFile output;
  ASSERT_TRUE(output.create(path("run1_GRA.ctc")));
  ASSERT_TRUE(output.write("new", 3));
  EXPECT_FALSE(output.commit());
  EXPECT_EQ(errno, EACCES);
  EXPECT_EQ(read("run1_GRA.ctc"), "in use");
  EXPECT_FALSE(isThere("run1_GRA.ctc.part"));
}

TEST_F(WindowsFiles, ThatWereNotCompletedAreRemoved) {
  {
    OutputFile output;
    ASSERT_TRUE(output.create(path("a")));
    ASSERT_TRUE(output.write("half", 4));
    EXPECT_TRUE(isThere("a.part"));
  }
  EXPECT_FALSE(isThere("a.part"));
  EXPECT_FALSE(isThere("a"));
}

TEST_F(WindowsFiles, OfChunksAreRemovedWhileTheyAreOpen) {
  ChunkFiles chunks;
  chunks.setLayout(path("run1"), 2, 1);
  const std::vector<float> samples = {1.5f, -2.0f};
  ASSERT_TRUE(chunks.create(0));
  ASSERT_TRUE(chunks.writeChunk(0, samples.data()));
  EXPECT_TRUE(isThere("run1Chunk00.tmp"));
  std::vector<float> back(2);
  ASSERT_TRUE(chunks.readChannel(0, 2, back.data()));
  EXPECT_EQ(back, samples);
  chunks.closeAndRemove();
  EXPECT_FALSE(isThere("run1Chunk00.tmp"));
}

TEST_F(WindowsFiles, AreFoundWithBothSeparators) {
  write("a", "text");
  std::string slashes = path("a");
  for (char& c : slashes)
    if (c == '\\') c = '/';
  BinaryFile file;
  EXPECT_TRUE(file.openForReading(slashes));
}

TEST_F(WindowsFiles, FoldersAndDevicesAreNoFiles) {
  BinaryFile file;
  EXPECT_FALSE(file.openForReading(folder_));
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(file.create(folder_));
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(file.openForReading("NUL"));
  EXPECT_EQ(errno, EINVAL);
  OutputFile output;
  EXPECT_FALSE(output.create("NUL"));
  EXPECT_EQ(errno, EINVAL);
}

TEST_F(WindowsFiles, ThatAreMissingAreReportedAsMissing) {
  BinaryFile file;
  EXPECT_FALSE(file.openForReading(path("none")));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(file.create(path("none\\below")));
  EXPECT_EQ(errno, ENOENT);
}

} // namespace
} // namespace emeg
