#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

const std::string endOfFile = "Error reading file: <br>Attempt to read beyond the end of file.";

/// Opens what a user might choose by mistake; every failure is exactly one message box.
struct BrokenInput : ::testing::Test {
  std::string path(const std::string& name) const { return folder.path(name); }
  void expectRefusedCtc(const std::string& ctcPath, const std::string& message) {
    QuietConverter converter;
    host.calls.clear();
    host.fileAnswers = {"", "", ctcPath};
    EXPECT_FALSE(converter.openInput());
    EXPECT_EQ(host.boxes(), Lines{message}) << ctcPath;
    EXPECT_TRUE(host.logLines().empty());
  }
  void expectRefusedCcd(const std::string& ccdPath, const std::string& message) {
    QuietConverter converter;
    host.calls.clear();
    host.fileAnswers = {ccdPath};
    EXPECT_FALSE(converter.openInput());
    EXPECT_EQ(host.boxes(), Lines{message}) << ccdPath;
    EXPECT_EQ(host.questions().size(), 1u);
  }
  /// The whole run ends with one message box before anything is asked, and leaves nothing behind.
  void expectRefusedHeader(int nrOfChannels, int32_t nrOfTimePoints, float samplingFrequency,
                           const std::string& partOfMessage) {
    writeFile(path("run1.ctc"),
              ctcBytes(1, 2, nrOfChannels, nrOfTimePoints, samplingFrequency, std::string(4000, '\0')));
    PluginConverter converter;
    host.calls.clear();
    host.fileAnswers = {"", "", path("run1.ctc")};
    host.integerAnswers = {1};
    host.yesNoAnswers = {1};
    EXPECT_FALSE(converter.start());
    ASSERT_EQ(host.boxes().size(), 1u);
    EXPECT_NE(host.boxes()[0].find(partOfMessage), std::string::npos) << host.boxes()[0];
    EXPECT_EQ(folder.names(), Lines{"run1.ctc"});
  }
  TestFolder folder;
  ScriptedHost host;
};

TEST_F(BrokenInput, AMissingCtcFileIsReported) {
  expectRefusedCtc(path("nothing.ctc"), "Error accessing CTC file.<br>No such file or directory.");
}

TEST_F(BrokenInput, AFolderAsCtcPathIsReported) {
  std::filesystem::create_directory(path("folder.ctc"));
  expectRefusedCtc(path("folder.ctc"), "Error accessing CTC file.<br>Is a directory.");
}

TEST_F(BrokenInput, AFileTakenForAFolderIsReported) {
  writeFile(path("file"), "");
  expectRefusedCtc(path("file/run1.ctc"), "Error accessing CTC file.<br>Not a directory.");
}

TEST_F(BrokenInput, APathOfOneToThreeCharactersCannotBeOpened) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  for (const char* name : {"a", "ab", "abc"}) {
    writeFile(name, countingRecording(1, 4).bytes());
    QuietConverter converter;
    host.calls.clear();
    host.fileAnswers = {"", "", name};
    EXPECT_FALSE(converter.openInput());
    ASSERT_EQ(host.boxes().size(), 1u);
    EXPECT_EQ(host.boxes()[0].find("Error accessing CTC file.<br>"), 0u);
  }
  writeFile(".ctc", countingRecording(1, 4).bytes());
  QuietConverter converter;
  host.fileAnswers = {"", "", ".ctc"};
  EXPECT_TRUE(converter.openInput()) << "four characters are enough";
  std::filesystem::current_path(before);
}

TEST_F(BrokenInput, AHeaderShorterThanThirtyTwoBytesIsReported) {
  const std::string whole = countingRecording(1, 10).bytes();
  for (const size_t length : {0u, 1u, 16u, 31u}) {
    writeFile(path("run1.ctc"), whole.substr(0, length));
    expectRefusedCtc(path("run1.ctc"), endOfFile);
  }
}

TEST_F(BrokenInput, AnUnsupportedTypeIsReported) {
  for (const int32_t type : {4, 0, 5, -1, std::numeric_limits<int32_t>::max()}) {
    writeFile(path("run1.ctc"), ctcBytes(type, 2, 1, 10, 100, std::string(40, '\0')));
    expectRefusedCtc(path("run1.ctc"), "Unsupported data type");
  }
}

TEST_F(BrokenInput, AMissingCcdIsReported) {
  expectRefusedCcd(path("nothing.ccd"), "Error accessing CCD file.<br>No such file or directory.");
}

TEST_F(BrokenInput, AFolderAsCcdIsReported) {
  std::filesystem::create_directory(path("folder.ccd"));
  expectRefusedCcd(path("folder.ccd"), "Error accessing CCD file.<br>Is a directory.");
}

TEST_F(BrokenInput, ATruncatedCcdIsReported) {
  ChannelDescription description;
  description.header.setCtcFileName("run1.ctc");
  description.channelRecords.assign(3, CcdChannelRecord::make("C", 0, 100));
  description.extraRecords.resize(2);
  const std::vector<unsigned char> bytes = encodeCcdFile(description);
  const std::string whole(bytes.begin(), bytes.end());
  ASSERT_EQ(whole.size(), 584u + 3 * 420 + 2 * 48);
  for (const size_t length : {size_t{0}, size_t{583}, size_t{584}, size_t{584 + 3 * 420 - 1},
                              size_t{584 + 3 * 420}, whole.size() - 1}) {
    writeFile(path("run1.ccd"), whole.substr(0, length));
    expectRefusedCcd(path("run1.ccd"), endOfFile);
  }
}

TEST_F(BrokenInput, ACcdThatNamesNoCtcFileNamesItsOwnFolder) {
  ChannelDescription description;
  const std::vector<unsigned char> bytes = encodeCcdFile(description);
  writeFile(path("run1.ccd"), {bytes.begin(), bytes.end()});
  expectRefusedCcd(path("run1.ccd"), "Error accessing CTC file.<br>Is a directory.");
}

TEST_F(BrokenInput, ACcdWhoseCtcFileIsMissingIsReported) {
  ChannelDescription description;
  description.header.setCtcFileName("gone.ctc");
  const std::vector<unsigned char> bytes = encodeCcdFile(description);
  writeFile(path("run1.ccd"), {bytes.begin(), bytes.end()});
  expectRefusedCcd(path("run1.ccd"), "Error accessing CTC file.<br>No such file or directory.");
}

TEST_F(BrokenInput, FileNamesThatFillTheirFieldsAreCutAtTheirLastByte) {
  ChannelDescription description;
  std::fill(description.header.bytes.begin() + 1, description.header.bytes.begin() + 513,
            static_cast<unsigned char>('n'));
  const std::vector<unsigned char> bytes = encodeCcdFile(description);
  writeFile(path("run1.ccd"), {bytes.begin(), bytes.end()});
  QuietConverter converter;
  host.fileAnswers = {path("run1.ccd")};
  EXPECT_FALSE(converter.openInput());
  EXPECT_EQ(converter.inputPathBuffer.path(), path(std::string(255, 'n')));
}

TEST_F(BrokenInput, ASamplingFrequencyThatIsNotFiniteAndPositiveEndsTheRun) {
  const float infinity = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const float frequency : {0.0f, -0.0f, -250.0f, infinity, -infinity, nan})
    expectRefusedHeader(2, 100, frequency, "sampling frequency");
}

TEST_F(BrokenInput, ASamplingFrequencyBelowTenHertzEndsAnArtifactCorrection) {
  expectRefusedHeader(2, 100, 9.99f, "sampling frequency");
}

TEST_F(BrokenInput, ARecordingWithoutTimePointsEndsTheRun) {
  for (const int32_t count : {0, -1, std::numeric_limits<int32_t>::min()})
    expectRefusedHeader(2, count, 100, "time points");
}

TEST_F(BrokenInput, AChannelCountOfZeroOrLessFindsNoChannelsAfterDefiningParameters) {
  for (const int count : {0, -1, 32768, 65535}) {
    writeFile(path("run1.ctc"), ctcBytes(1, 2, count, 100, 100, std::string(4000, '\0')));
    PluginConverter converter;
    host.calls.clear();
    host.fileAnswers = {"", "", path("run1.ctc")};
    EXPECT_FALSE(converter.start());
    ASSERT_GE(host.calls.size(), 2u);
    EXPECT_EQ(host.calls[host.calls.size() - 2], "log " + line("Defining parameters")) << count;
    EXPECT_EQ(host.calls.back(), "box No channels found!") << count;
    EXPECT_EQ(folder.names(), Lines{"run1.ctc"});
  }
}

TEST_F(BrokenInput, AnEmptyChosenPathCannotBeOpened) {
  QuietConverter converter;
  EXPECT_FALSE(converter.openCtcFile(""));
  ASSERT_EQ(host.boxes().size(), 1u);
  EXPECT_EQ(host.boxes()[0].find("Error accessing CTC file.<br>"), 0u);
}

} // namespace
} // namespace emeg
