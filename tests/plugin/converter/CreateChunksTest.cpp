#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

/// Ends the run once the chunk files are there.
class ChunkingConverter : public QuietConverter {
public:
  using QuietConverter::QuietConverter;
  std::function<void()> inspect = [] {};
  bool afterChunkFilesHook() override {
    inspect();
    return false;
  }
};

std::string chunkName(int chunk) {
  return std::string("run1Chunk") + (chunk < 10 ? "0" : "") + std::to_string(chunk) + ".tmp";
}

std::vector<float> floatsOf(const std::string& bytes) {
  std::vector<float> floats(bytes.size() / sizeof(float));
  std::memcpy(floats.data(), bytes.data(), floats.size() * sizeof(float));
  return floats;
}

/// Chunks a recording without cutting or correcting anything; the chunks come back as [channel][time point]
/// over the whole 32 files.
Channels chunked(const std::string& bytes, bool littleEndianData, ChosenRecording& chosen, bool expected) {
  writeFile(chosen.ctcPath(), bytes);
  chosen.host.fileAnswers = {"", "", chosen.ctcPath()};
  chosen.host.integerAnswers = {0};
  chosen.host.calls.clear();
  ChunkingConverter converter(littleEndianData);
  converter.options.selectTimeInterval = true; // for a name of its own
  converter.options.forceHeaderUpdate = true;
  chosen.host.dialogIntegers = {{2, 1}};
  Channels channels;
  bool reached = false;
  converter.inspect = [&] {
    reached = true;
    const int64_t perChunk = converter.span.timePointsPerChunk;
    channels.resize(static_cast<size_t>(converter.selection.nrOfSelectedChannels));
    for (int chunk = 0; chunk < 32; ++chunk) {
      const std::vector<float> floats = floatsOf(readFile(chosen.folder.path(chunkName(chunk))));
      ASSERT_EQ(static_cast<int64_t>(floats.size()), perChunk * static_cast<int64_t>(channels.size()));
      for (size_t i = 0; i < floats.size(); ++i)
        channels[i / static_cast<size_t>(perChunk)].push_back(static_cast<double>(floats[i]));
    }
  };
  EXPECT_FALSE(converter.start());
  EXPECT_EQ(reached, expected);
  for (std::vector<double>& channel : channels)
    channel.resize(static_cast<size_t>(converter.input.nrOfTimePoints));
  return channels;
}

Channels chunked(const Recording& recording, bool littleEndianData = true) {
  ChosenRecording chosen(recording);
  return chunked(recording.bytes(), littleEndianData, chosen, true);
}

TEST(CreateChunks, EveryReadableTypeAndOrganisationGivesTheSameSamples) {
  Recording recording = countingRecording(3, 117);
  recording.samples[1][5] = -32768;
  recording.samples[2][116] = 32767;
  for (const int32_t type : {1, 2, 3}) {
    for (const int32_t organisation : {1, 2}) {
      recording.dataType = type;
      recording.dataOrganisation = organisation;
      EXPECT_EQ(chunked(recording), recording.samples) << type << " " << organisation;
    }
  }
}

TEST(CreateChunks, SixtyFourBitFloatsAreRoundedToThirtyTwoBits) {
  Recording recording = countingRecording(1, 40);
  recording.dataType = 2;
  recording.samples[0][3] = 0.1;
  EXPECT_EQ(chunked(recording)[0][3], static_cast<double>(0.1f));
}

TEST(CreateChunks, BytesOfBigEndianDataAreSwapped) {
  for (const auto& [type, size] : {std::pair<int32_t, size_t>{1, 4}, {2, 8}, {3, 2}}) {
    for (const int32_t organisation : {1, 2}) {
      Recording recording = countingRecording(3, 70);
      recording.dataType = type;
      recording.dataOrganisation = organisation;
      std::string bytes = recording.bytes();
      for (size_t at = 32; at < bytes.size(); at += size)
        std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                     bytes.begin() + static_cast<std::ptrdiff_t>(at + size));
      ChosenRecording chosen(recording);
      EXPECT_EQ(chunked(bytes, false, chosen, true), recording.samples) << type << " " << organisation;
    }
  }
}

TEST(CreateChunks, ThirtyThreeTimePointsStillMakeThirtyTwoFilesOfFullSize) {
  const Recording recording = countingRecording(2, 33);
  ChosenRecording chosen(recording);
  EXPECT_EQ(chunked(recording.bytes(), true, chosen, true), recording.samples);
  EXPECT_EQ(chosen.folder.names(), Lines{"run1.ctc"}) << "chunk files go with the converter";
}

TEST(CreateChunks, OneTimePointIsEnough) {
  const Recording recording = countingRecording(2, 1);
  EXPECT_EQ(chunked(recording), recording.samples);
}

TEST(CreateChunks, LogsEveryChunkFromOneToThirtyTwo) {
  const Recording recording = countingRecording(2, 100);
  ChosenRecording chosen(recording);
  chunked(recording.bytes(), true, chosen, true);
  const Lines log = chosen.host.logLines();
  ASSERT_EQ(log.size(), 33u);
  for (size_t chunk = 1; chunk <= 32; ++chunk)
    EXPECT_EQ(log[chunk], line("Creating chunk #" + std::to_string(chunk) + "/32"));
}

TEST(CreateChunks, MissingSamplesOfAMultiplexedFileAreZeroAndLoggedOnce) {
  const Recording recording = countingRecording(3, 100);
  ChosenRecording chosen(recording);
  const std::string bytes = recording.bytes();
  // 60 whole time points and one sample of the next.
  const Channels channels = chunked(bytes.substr(0, 32 + 60 * 3 * 4 + 4 + 3), true, chosen, true);
  ASSERT_EQ(channels.size(), 3u);
  for (size_t c = 0; c < 3; ++c) {
    for (size_t t = 0; t < 100; ++t) {
      const bool there = t < 60 || (t == 60 && c == 0);
      EXPECT_EQ(channels[c][t], there ? recording.samples[c][t] : 0.0) << c << " " << t;
    }
  }
  int lines = 0;
  for (const std::string& text : chosen.host.logLines())
    if (text == line("Input file ends early: 40 of 100 time points are missing and were set to 0.")) ++lines;
  EXPECT_EQ(lines, 1);
}

TEST(CreateChunks, HalfOfTheTimePointsMayBeMissing) {
  const Recording recording = countingRecording(2, 100);
  ChosenRecording chosen(recording);
  chunked(recording.bytes().substr(0, 32 + 50 * 2 * 4), true, chosen, true);
  EXPECT_TRUE(chosen.host.boxes().empty());
  EXPECT_TRUE(chosen.host.logged(
      line("Input file ends early: 50 of 100 time points are missing and were set to 0.")));
}

TEST(CreateChunks, MoreThanHalfMissingIsAReadingError) {
  const Recording recording = countingRecording(2, 100);
  ChosenRecording chosen(recording);
  chunked(recording.bytes().substr(0, 32 + 50 * 2 * 4 - 1), true, chosen, false);
  EXPECT_EQ(chosen.host.boxes(), Lines{"Error reading file: <br>Attempt to read beyond the end of file."});
  EXPECT_EQ(chosen.folder.names(), Lines{"run1.ctc"});
}

TEST(CreateChunks, AHeaderAloneIsAReadingError) {
  const Recording recording = countingRecording(2, 100);
  ChosenRecording chosen(recording);
  chunked(recording.bytes().substr(0, 32), true, chosen, false);
  EXPECT_EQ(chosen.host.boxes(), Lines{"Error reading file: <br>Attempt to read beyond the end of file."});
}

TEST(CreateChunks, AShortFileThatIsStoredChannelAfterChannelIsAReadingError) {
  Recording recording = countingRecording(2, 100);
  recording.dataOrganisation = 1;
  const std::string bytes = recording.bytes();
  ChosenRecording chosen(recording);
  chunked(bytes.substr(0, bytes.size() - 1), true, chosen, false);
  EXPECT_EQ(chosen.host.boxes(), Lines{"Error reading file: <br>Attempt to read beyond the end of file."});
  EXPECT_EQ(chosen.folder.names(), Lines{"run1.ctc"});
}

TEST(CreateChunks, AFileLongerThanItsHeaderSaysIsReadAsTheHeaderSays) {
  const Recording recording = countingRecording(2, 100);
  ChosenRecording chosen(recording);
  EXPECT_EQ(chunked(recording.bytes() + std::string(1000, 'x'), true, chosen, true), recording.samples);
  EXPECT_TRUE(chosen.host.boxes().empty());
}

TEST(CreateChunks, AChunkFileThatCannotBeCreatedIsReportedAndTheOthersStay) {
  const Recording recording = countingRecording(2, 100);
  ChosenRecording chosen(recording);
  std::filesystem::create_directory(chosen.folder.path(chunkName(3)));
  chunked(recording.bytes(), true, chosen, false);
  EXPECT_EQ(chosen.host.boxes(), Lines{"Error #" + std::to_string(EISDIR) + " while creating chunk 3."});
  EXPECT_EQ(chosen.host.logLines().back(), line("Creating chunk #4/32"));
  EXPECT_EQ(chosen.folder.names(),
            (Lines{"run1.ctc", chunkName(0), chunkName(1), chunkName(2), chunkName(3)}));
  EXPECT_EQ(readFile(chosen.folder.path(chunkName(0))).size(), 4u * 2 * 4);
}

/// An input step of its own: the recording in three files of 40 time points, behind 7 bytes of header each.
/// The second file may end early.
class SplitInput : public ChunkingConverter {
public:
  SplitInput(const TestFolder& folder, int timePointsOfSecondPart)
      : folder_(folder), timePointsOfSecondPart_(timePointsOfSecondPart) {}
  bool openInput() override {
    const Recording whole = countingRecording(3, 120);
    pretendInput(*this, 3, 120, 100);
    inputPathBuffer = PathBuffer(folder_.path("run1.ctc"));
    outputPathBuffer = PathBuffer(folder_.path("run1.ctc"));
    input.inputSampleFormat = SampleFormat::Float32;
    input.fileSize = 1000000;
    chunkLayout.nrOfSourceChunks = 3;
    chunkLayout.sourceChunkLength = 40;
    for (size_t part = 0; part < 3; ++part) {
      const int64_t first = 40 * static_cast<int64_t>(part);
      const int64_t last = first + (part == 1 ? timePointsOfSecondPart_ : 40);
      Recording piece;
      for (const std::vector<double>& channel : whole.samples)
        piece.samples.emplace_back(channel.begin() + first, channel.begin() + last);
      const std::string path = folder_.path("part" + std::to_string(part));
      writeFile(path, std::string(7, '#') + piece.sampleBytes());
      if (!parts_[part].openForReading(path)) return false;
      chunkLayout.sourceChunks.push_back({&parts_[part], 7});
    }
    return true;
  }

private:
  const TestFolder& folder_;
  int timePointsOfSecondPart_;
  std::array<BinaryFile, 3> parts_;
};

/// Time points 11 ... 114 through chunk files of 4; `missing` says which are expected to be 0.
void expectSplitInput(int timePointsOfSecondPart, const std::function<bool(int)>& missing) {
  TestFolder folder;
  ScriptedHost host;
  host.integerAnswers = {0};
  host.floatAnswers = {110, 1150};
  SplitInput converter(folder, timePointsOfSecondPart);
  converter.options.selectTimeInterval = true;
  bool reached = false;
  converter.inspect = [&] {
    reached = true;
    for (int chunk = 0; chunk < 26; ++chunk) {
      const std::vector<float> floats = floatsOf(readFile(folder.path(chunkName(chunk))));
      ASSERT_EQ(floats.size(), 12u);
      for (int c = 0; c < 3; ++c) {
        for (int j = 0; j < 4; ++j) {
          const int t = 11 + 4 * chunk + j;
          EXPECT_EQ(floats[static_cast<size_t>(4 * c + j)],
                    missing(t) ? 0.0f : static_cast<float>(1000 * c + t))
              << c << " " << t;
        }
      }
    }
  };
  EXPECT_FALSE(converter.start());
  EXPECT_TRUE(reached);
  EXPECT_TRUE(host.boxes().empty());
}

TEST(CreateChunks, ReadsFromAGivenSourceChunking) {
  expectSplitInput(40, [](int) { return false; });
}

TEST(CreateChunks, WhatAGivenSourceLacksIsZeroAndNeverWhatTheBufferHeld) {
  expectSplitInput(37, [](int t) { return t >= 77 && t < 80; });
}

} // namespace
} // namespace emeg
