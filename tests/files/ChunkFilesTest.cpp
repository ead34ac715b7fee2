#include "files/formats/ChunkFiles.h"

#include "tests/files/FileSizeLimit.h"
#include "tests/files/ScratchFolder.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

namespace emeg {
namespace {

constexpr int nrOfChunks = ChunkFiles::nrOfChunks;

/// Creates all chunk files of `timePointsPerChunk` x `nrOfChannels` floats; sample t of channel k is 1000 k +
/// t.
void fillWithRamps(ChunkFiles& chunks, int64_t timePointsPerChunk, int nrOfChannels) {
  const auto p = static_cast<size_t>(timePointsPerChunk);
  std::vector<float> buffer(p * static_cast<size_t>(nrOfChannels));
  for (int chunk = 0; chunk < nrOfChunks; ++chunk) {
    for (size_t i = 0; i < buffer.size(); ++i) {
      buffer[i] = static_cast<float>(1000 * (i / p) + static_cast<size_t>(chunk) * p + i % p);
    }
    ASSERT_TRUE(chunks.create(chunk));
    ASSERT_TRUE(chunks.writeChunk(chunk, buffer.data()));
  }
}

TEST(ChunkFiles, LieBesideTheInputUnderNumberedNames) {
  ChunkFiles chunks;
  chunks.setLayout("D:/eeg/run1", 2, 3);
  EXPECT_EQ(chunks.pathOf(0), "D:/eeg/run1Chunk00.tmp");
  EXPECT_EQ(chunks.pathOf(31), "D:/eeg/run1Chunk31.tmp");
  EXPECT_EQ(chunks.timePointsPerChunk(), 2);
}

TEST(ChunkFiles, OfAShortRangeAllHaveTheSameSize) {
  // 33 time points give two per chunk: chunks 0 to 16 hold data, the later ones exist all the same.
  ScratchFolder folder;
  ChunkFiles chunks;
  chunks.setLayout(folder.path("run"), 2, 3);
  fillWithRamps(chunks, 2, 3);
  for (int chunk = 0; chunk < nrOfChunks; ++chunk) {
    EXPECT_EQ(std::filesystem::file_size(chunks.pathOf(chunk)), 2u * 3u * 4u) << chunk;
  }
  EXPECT_EQ(folder.nrOfEntries(), 32);
  std::vector<float> channel(33);
  ASSERT_TRUE(chunks.readChannel(2, 33, channel.data()));
  for (size_t t = 0; t < 33; ++t) EXPECT_EQ(channel[t], 2000.0f + static_cast<float>(t));
}

TEST(ChunkFiles, HoldChannelAfterChannelInMachineFloats) {
  ScratchFolder folder;
  ChunkFiles chunks;
  chunks.setLayout(folder.path("run"), 3, 2);
  const std::vector<float> buffer = {1, 2, 3, 10, 20, 30};
  ASSERT_TRUE(chunks.create(4));
  ASSERT_TRUE(chunks.writeChunk(4, buffer.data()));
  const std::string bytes = folder.read("runChunk04.tmp");
  EXPECT_EQ(bytes, std::string(reinterpret_cast<const char*>(buffer.data()), 24));
  std::vector<float> read(6);
  ASSERT_TRUE(chunks.readChunk(4, read.data()));
  EXPECT_EQ(read, buffer);
}

TEST(ChunkFiles, AChannelIsReadOverAllChunksAndEndsWhereAsked) {
  ScratchFolder folder;
  ChunkFiles chunks;
  chunks.setLayout(folder.path("run"), 5, 3);
  fillWithRamps(chunks, 5, 3);
  for (const size_t count :
       {size_t{0}, size_t{1}, size_t{4}, size_t{5}, size_t{6}, size_t{159}, size_t{160}}) {
    std::vector<float> channel(count + 1, -1.0f);
    ASSERT_TRUE(chunks.readChannel(1, static_cast<int64_t>(count), channel.data()));
    for (size_t t = 0; t < count; ++t) ASSERT_EQ(channel[t], 1000.0f + static_cast<float>(t));
    EXPECT_EQ(channel[count], -1.0f) << "nothing is written behind the last sample";
  }
}

TEST(ChunkFiles, AChannelWrittenBackLeavesTheOthersAlone) {
  ScratchFolder folder;
  ChunkFiles chunks;
  chunks.setLayout(folder.path("run"), 5, 3);
  fillWithRamps(chunks, 5, 3);
  std::vector<float> channel(160);
  std::iota(channel.begin(), channel.end(), 5000.0f);
  ASSERT_TRUE(chunks.writeChannel(1, 73, channel.data()));
  std::vector<float> read(160);
  for (const int k : {0, 2}) {
    ASSERT_TRUE(chunks.readChannel(k, 160, read.data()));
    for (size_t t = 0; t < 160; ++t)
      ASSERT_EQ(read[t], 1000.0f * static_cast<float>(k) + static_cast<float>(t));
  }
  ASSERT_TRUE(chunks.readChannel(1, 160, read.data()));
  for (size_t t = 0; t < 160; ++t) {
    ASSERT_EQ(read[t], (t < 73 ? 5000.0f : 1000.0f) + static_cast<float>(t));
  }
}

TEST(ChunkFiles, FewerOutputTimePointsNeverTouchTheLaterChunks) {
  ScratchFolder folder;
  ChunkFiles chunks;
  chunks.setLayout(folder.path("run"), 4, 1);
  const std::vector<float> samples = {1, 2, 3, 4, 5, 6, 7, 8};
  ASSERT_TRUE(chunks.create(0));
  ASSERT_TRUE(chunks.create(1));
  EXPECT_TRUE(chunks.writeChannel(0, 8, samples.data())) << "chunk 2 does not exist and is not missed";
  std::vector<float> read(8);
  EXPECT_TRUE(chunks.readChannel(0, 8, read.data()));
  EXPECT_EQ(read, samples);
  read.resize(9);
  EXPECT_FALSE(chunks.readChannel(0, 9, read.data()));
  EXPECT_EQ(errno, EBADF);
}

TEST(ChunkFiles, RequestsOutsideTheLayoutAreRefused) {
  ScratchFolder folder;
  ChunkFiles chunks;
  chunks.setLayout(folder.path("run"), 2, 2);
  fillWithRamps(chunks, 2, 2);
  std::vector<float> samples(128);
  const auto refused = [](bool result) { return !result && errno == EINVAL; };
  EXPECT_TRUE(refused(chunks.readChannel(2, 4, samples.data())));
  EXPECT_TRUE(refused(chunks.readChannel(-1, 4, samples.data())));
  EXPECT_TRUE(refused(chunks.writeChannel(0, 65, samples.data())));
  EXPECT_TRUE(refused(chunks.create(32)));
  EXPECT_TRUE(refused(chunks.create(-1)));
  EXPECT_TRUE(refused(chunks.readChunk(32, samples.data())));
  EXPECT_TRUE(refused(chunks.writeChunk(-1, samples.data())));
  EXPECT_TRUE(chunks.readChannel(0, -5, samples.data())) << "nothing asked, nothing read";
}

TEST(ChunkFiles, ThatWereShortenedFailTheReading) {
  ScratchFolder folder;
  ChunkFiles chunks;
  chunks.setLayout(folder.path("run"), 2, 2);
  fillWithRamps(chunks, 2, 2);
  std::filesystem::resize_file(chunks.pathOf(7), 9);
  std::vector<float> samples(64);
  EXPECT_FALSE(chunks.readChunk(7, samples.data()));
  EXPECT_EQ(errno, 0);
  EXPECT_FALSE(chunks.readChannel(1, 64, samples.data()));
  EXPECT_TRUE(chunks.readChannel(1, 14, samples.data()));
}

TEST(ChunkFiles, DisappearWhenTheRunIsDone) {
  ScratchFolder folder;
  ChunkFiles chunks;
  chunks.setLayout(folder.path("run"), 2, 1);
  fillWithRamps(chunks, 2, 1);
  chunks.closeAndRemove();
  EXPECT_EQ(folder.nrOfEntries(), 0);
}

TEST(ChunkFiles, DisappearWithARunThatEndsEarly) {
  ScratchFolder folder;
  {
    ChunkFiles chunks;
    chunks.setLayout(folder.path("run"), 2, 1);
    fillWithRamps(chunks, 2, 1);
  }
  EXPECT_EQ(folder.nrOfEntries(), 0);
}

TEST(ChunkFiles, StayWhenTheyAreToBeKept) {
  ScratchFolder folder;
  {
    ChunkFiles chunks;
    chunks.setLayout(folder.path("run"), 2, 1);
    fillWithRamps(chunks, 2, 1);
    chunks.keepOnDisk();
  }
  EXPECT_EQ(folder.nrOfEntries(), 32);
}

TEST(ChunkFiles, OfOthersAreNotRemoved) {
  ScratchFolder folder;
  folder.write("runChunk05.tmp", "not ours");
  {
    ChunkFiles chunks;
    chunks.setLayout(folder.path("run"), 2, 1);
    ASSERT_TRUE(chunks.create(0));
    chunks.setLayout(folder.path("other"), 2, 1);
  }
  EXPECT_EQ(folder.read("runChunk05.tmp"), "not ours");
  EXPECT_EQ(folder.nrOfEntries(), 1) << "the one that was made is removed under the name it was made with";
}

TEST(ChunkFiles, ThatCannotBeCreatedSayWhy) {
  ScratchFolder folder;
  std::filesystem::create_directory(folder.path("runChunk03.tmp"));
  ChunkFiles chunks;
  chunks.setLayout(folder.path("run"), 2, 1);
  EXPECT_TRUE(chunks.create(2));
  EXPECT_FALSE(chunks.create(3));
  EXPECT_EQ(errno, EISDIR);
  chunks.closeAndRemove();
  EXPECT_TRUE(folder.has("runChunk03.tmp")) << "only what was created is removed";
  chunks.setLayout(folder.path("missing/run"), 2, 1);
  EXPECT_FALSE(chunks.create(0));
  EXPECT_EQ(errno, ENOENT);
}

TEST(ChunkFiles, AFullDiskFailsTheWriteThatMetIt) {
  ScratchFolder folder;
  ChunkFiles chunks;
  chunks.setLayout(folder.path("run"), 64, 2);
  fillWithRamps(chunks, 64, 2);
  const std::vector<float> samples(128);
  bool chunkWritten = true;
  bool channelWritten = true;
  int chunkReason = 0;
  int channelReason = 0;
  {
    FileSizeLimit full(100);
    chunkWritten = chunks.writeChunk(0, samples.data());
    chunkReason = errno;
    channelWritten = chunks.writeChannel(1, 64, samples.data());
    channelReason = errno;
  }
  EXPECT_FALSE(chunkWritten);
  EXPECT_EQ(chunkReason, EFBIG);
  EXPECT_FALSE(channelWritten);
  EXPECT_EQ(channelReason, EFBIG);
}

TEST(ChunkFiles, AnEmptyLayoutHoldsNothing) {
  ScratchFolder folder;
  ChunkFiles chunks;
  chunks.setLayout(folder.path("run"), -3, -2);
  EXPECT_EQ(chunks.timePointsPerChunk(), 0);
  ASSERT_TRUE(chunks.create(0));
  const float sample = 0;
  EXPECT_TRUE(chunks.writeChunk(0, &sample));
  EXPECT_EQ(folder.read("runChunk00.tmp"), "");
  EXPECT_FALSE(chunks.writeChannel(0, 1, &sample));
}

} // namespace
} // namespace emeg
