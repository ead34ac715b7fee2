#include "app/correct/FileChecksums.h"

#include "files/exchange/RecordingReader.h"
#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace emeg {

namespace {

std::string sumOf(const TestFolder& folder, const std::string& path) {
  const std::string command = "sha256sum '" + path + "' > '" + (folder / "sum.txt") + "'";
  EXPECT_EQ(std::system(command.c_str()), 0);
  return bytesOf(folder / "sum.txt").substr(0, 64);
}

/// Reads a stretch of a recording in blocks and compares all checksums.
void expectSums(const TestFolder& folder, const std::string& path, int64_t first, int64_t end,
                int64_t block) {
  const auto reader = openRecording(path);
  FileChecksums checksums(reader->header().files);
  reader->showBytesTo(&checksums);
  std::vector<double> values;
  for (int64_t at = first; at < end; at += block) {
    const int64_t count = std::min(block, end - at);
    values.resize(static_cast<size_t>(count) * reader->header().channels.size());
    reader->read(at, count, values);
  }
  for (const InputFile& file : checksums.finish([] {}))
    EXPECT_EQ(file.sha256, sumOf(folder, file.path)) << file.path;
}

} // namespace

TEST(FileChecksums, AreThoseOfTheFilesInEveryFormatAndWhateverIsRead) {
  const TestFolder folder;
  for (const char* name : {"run.vhdr", "run.edf", "run.bdf", "run.ctc"}) {
    copyOf(scanRecording())->save(folder / name);
    for (const int64_t block : {1000, 1337, 40000}) {
      SCOPED_TRACE(std::string(name) + ", blocks of " + std::to_string(block));
      expectSums(folder, folder / name, 0, 40000, block);
      expectSums(folder, folder / name, 2500, 30001, block);
    }
    expectSums(folder, folder / name, 0, 0, 1);
  }
}

TEST(FileChecksums, OfFilesThatAreNotReadInOrder) {
  const TestFolder folder;
  const std::string path = folder / "data";
  std::string bytes;
  for (int i = 0; i < 100000; ++i) bytes += static_cast<char>(i * i);
  std::ofstream(path, std::ios::binary) << bytes;
  FileChecksums checksums({path});
  const auto show = [&](size_t from, size_t length) {
    checksums.bytesRead(path, static_cast<int64_t>(from),
                        {reinterpret_cast<const unsigned char*>(bytes.data()) + from, length});
  };
  show(50, 100);      // begins behind the beginning
  show(30000, 5000);  // a jump
  show(150, 2000);    // back
  show(34000, 10000); // overlapping
  checksums.bytesRead(folder / "other", 0, {});
  const auto sums = checksums.finish([] {});
  ASSERT_EQ(sums.size(), 1u);
  EXPECT_EQ(sums[0].sha256, sumOf(folder, path));
}

TEST(FileChecksums, OfAFileThatIsNotThereAreEmpty) {
  const TestFolder folder;
  FileChecksums checksums({folder / "missing"});
  EXPECT_EQ(checksums.finish([] {})[0].sha256, "");
}

} // namespace emeg
